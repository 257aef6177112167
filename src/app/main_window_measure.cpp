// Measurement commands on single events: click detection, recalculation,
// double peaks, baseline and threshold, RMS noise. Each is one core command
// followed by a redraw.
#include <QAction>
#include <QApplication>

#include "app/main_window.h"
#include "detection/double_peak.h"
#include "detection/editing.h"
#include "detection/noise_commands.h"
#include "detection/point_commands.h"
#include "detection/ui/parameter_panel.h"
#include "recording/ui/event_grid_model.h"

namespace vess {

void MainWindow::DetectAtClick(int64_t index, bool lowThresholds) {
    const int32_t before = ws_.events.Count();
    const PointCommandResult r = DetectAtPoint(ws_, dialogs_, index, lowThresholds);
    if (r.eventIndex > 0) {
        ws_.selectedEvent = r.eventIndex;
        if (ws_.settings.SoundOn) QApplication::beep();
    }
    AfterEdit(ws_.events.Count() != before || r.eventIndex > 0);
}

void MainWindow::OnRecalculate() {
    if (ws_.selectedEvent < 1 || NonStopRunning()) return;
    AfterEdit(RecalculateEvent(ws_, dialogs_, ws_.selectedEvent).eventIndex > 0);
}

void MainWindow::OnDoublePeak() {
    if (NonStopRunning() || ws_.selectedEvent < 1) return;
    const int32_t before = ws_.events.Count();
    AnalyzeDoublePeak(ws_, dialogs_, ws_.selectedEvent);
    AfterEdit(ws_.events.Count() != before);
}

void MainWindow::OnScanDoublePeak() {
    if (NonStopRunning()) return;
    const int32_t before = ws_.events.Count();
    ScanDoublePeaks(ws_, dialogs_);
    KeepSelectionValid(ws_);
    AfterEdit(ws_.events.Count() != before);
}

void MainWindow::OnBaselineThreshold() {
    if (NonStopRunning() || !ws_.recording) return;
    if (BaselineThreshold(ws_, dialogs_).applied) RefreshAll();
}

void MainWindow::OnRmsNoise() {
    if (NonStopRunning() || !ws_.recording) return;
    ShowRmsNoise(ws_, dialogs_);
}

}  // namespace vess
