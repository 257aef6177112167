// The non-stop run's progress and the mouse commands on the trace of the
// main window.
#include <QAction>
#include <QProgressBar>
#include <QTableView>

#include <cmath>

#include "app/main_window.h"
#include "app/nonstop_runner.h"
#include "detection/double_peak.h"
#include "detection/point_commands.h"
#include "detection/screen_commands.h"
#include "detection/editing.h"
#include "detection/ui/analysis_commands.h"
#include "detection/ui/event_sound.h"
#include "detection/ui/trace_view.h"
#include "recording/ui/event_grid_model.h"

namespace vess {
namespace {

// How near (in pixels) a click must fall to an event's peak to pick it.
constexpr double kPickRadiusPx = 10;

}  // namespace

void MainWindow::OnNonStopProgress(bool finished) {
    const NonStopAnalysis::Progress p = nonStop_->GetProgress();
    progress_->setRange(0, int(std::max<int64_t>(1, p.screensTotal)));
    progress_->setValue(int(p.screensDone));
    progress_->setFormat(tr("%1 of %2 screens, %3 events found")
                             .arg(p.screensDone)
                             .arg(p.screensTotal)
                             .arg(p.eventsFound));
    if (ws_.events.Count() > 0) ws_.selectedEvent = ws_.events.Count();
    AfterEdit(false);
    if (finished) {
        RefreshActions();
        ReportReadFaultOnce();
    }
}

// ---- Mouse commands on the trace ---------------------------------------------

void MainWindow::OnTraceClicked(int64_t index, Qt::MouseButton button,
                                Qt::KeyboardModifiers modifiers) {
    if (!ws_.recording || nonStop_->Running()) return;
    const auto mods = modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    // The stored event whose peak lies nearest the click, within reach.
    int32_t picked = 0;
    double best = kPickRadiusPx;
    const double clickX = trace_->XOfIndex(double(index) + 0.5);
    for (int32_t k = 1; k <= ws_.events.Count(); ++k) {
        const auto peak = trace_->PeakIndexOf(ws_.events[k]);
        if (!peak) continue;
        const double d = std::abs(trace_->XOfIndex(double(*peak) + 0.5) - clickX);
        if (d <= best) best = d, picked = k;
    }

    if (button == Qt::RightButton && mods == Qt::NoModifier) {
        if (picked) {
            ws_.selectedEvent = picked;
            ShowSelection();
        }
        return;
    }
    if (button != Qt::LeftButton) return;
    if (mods == Qt::ControlModifier || mods == (Qt::ControlModifier | Qt::ShiftModifier)) {
        if (!picked) return;
        ws_.selectedEvent = picked;
        const EditResult r = mods == Qt::ControlModifier ? DeleteEvent(ws_) : RejectEvent(ws_);
        AfterEdit(r.changed);
        return;
    }
    if (mods == Qt::ShiftModifier) {
        if (!picked) return;
        ws_.selectedEvent = picked;
        RecalculateSelectedEvent(*this);
        return;
    }
    if (mods == Qt::AltModifier) {
        const int32_t before = ws_.events.Count();
        ShowDoublePeak(*this, DetectDoublePeakAtPoint(ws_, index), before);
        return;
    }
    const bool lowThresholds = mods == (Qt::ControlModifier | Qt::AltModifier);
    if (mods != Qt::NoModifier && !lowThresholds) return;
    DetectAtClick(index, lowThresholds);
}

void MainWindow::DetectAtClick(int64_t index, bool lowThresholds) {
    const int32_t before = ws_.events.Count();
    const auto r = DetectAtPoint(ws_, index, lowThresholds);
    const int32_t stored = ShowFailure(dialogs_, r.status()) ? r->eventIndex : 0;
    if (stored > 0) ws_.selectedEvent = stored;
    sound_->Stored(ws_.events.Count() - before, ws_.settings.soundOn);
    AfterEdit(ws_.events.Count() != before || stored > 0);
}

}  // namespace vess
