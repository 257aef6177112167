// Measurement commands on single events: click detection, recalculation,
// double peaks, baseline and threshold, RMS noise. Each is one core command
// followed by a redraw.
#include <QAction>

#include "app/main_window.h"
#include "detection/double_peak.h"
#include "detection/editing.h"
#include "detection/noise_commands.h"
#include "detection/point_commands.h"
#include "detection/ui/event_sound.h"
#include "detection/ui/parameter_panel.h"
#include "recording/ui/event_grid_model.h"

namespace vess {

void MainWindow::DetectAtClick(int64_t index, bool lowThresholds) {
    const int32_t before = ws_.events.Count();
    const PointCommandResult r = DetectAtPoint(ws_, dialogs_, index, lowThresholds);
    if (r.eventIndex > 0) ws_.selectedEvent = r.eventIndex;
    sound_->Stored(ws_.events.Count() - before, ws_.settings.soundOn);
    AfterEdit(ws_.events.Count() != before || r.eventIndex > 0);
}

void MainWindow::OnRecalculate() {
    if (!ws_.HasSelectedEvent() || Busy()) return;
    AfterEdit(RecalculateEvent(ws_, dialogs_, ws_.selectedEvent).eventIndex > 0);
}

void MainWindow::OnDoublePeak() {
    if (Busy() || !ws_.recording) return;
    const int32_t before = ws_.events.Count();
    AfterDoublePeak(AnalyzeDoublePeak(ws_, dialogs_, ws_.selectedEvent), before);
}

void MainWindow::DetectDoublePeakAt(int64_t index) {
    const int32_t before = ws_.events.Count();
    AfterDoublePeak(DetectDoublePeakAtPoint(ws_, dialogs_, index), before);
}

// The second peak (new or already stored) becomes the selected event, so that
// the next-event key goes on from it.
void MainWindow::AfterDoublePeak(const DoublePeakResult& r, int32_t countBefore) {
    const bool stored = ws_.events.Count() != countBefore;
    if (r.eventIndex > 0) ws_.selectedEvent = r.eventIndex;
    sound_->Stored(ws_.events.Count() - countBefore, ws_.settings.soundOn);
    AfterEdit(stored);
}

void MainWindow::OnScanDoublePeak() {
    if (Busy() || !ws_.recording) return;
    // The scan inserts rows: keep the same event selected, not the same row.
    const bool hadSelection = ws_.HasSelectedEvent();
    const EventRecord selected = hadSelection ? ws_.events[ws_.selectedEvent] : EventRecord{};
    const DoublePeakScanResult r = ScanDoublePeaks(ws_, dialogs_);
    if (hadSelection && r.peaksAdded > 0) {
        for (int32_t k = 1; k <= ws_.events.Count(); ++k)
            if (ws_.events[k] == selected) {
                ws_.selectedEvent = k;
                break;
            }
    }
    KeepSelectionValid(ws_);
    AfterEdit(r.peaksAdded > 0);
}

void MainWindow::OnBaselineThreshold() {
    if (Busy() || !ws_.recording) return;
    // Yes changes ThresholdAmplitude: the parameter boxes show it at once.
    if (BaselineThreshold(ws_, dialogs_).applied) RefreshAll();
}

void MainWindow::OnRmsNoise() {
    if (Busy() || !ws_.recording) return;
    ShowRmsNoise(ws_, dialogs_);
    RefreshTrace();
}

}  // namespace vess
