// Analysis commands of the main window: the buttons Command1..Command5, the
// non-stop run and the mouse commands on the trace.
#include <QAction>
#include <QProgressBar>
#include <QTableView>

#include <cmath>

#include "app/main_window.h"
#include "app/nonstop_runner.h"
#include "detection/screen_commands.h"
#include "detection/editing.h"
#include "detection/ui/event_sound.h"
#include "detection/ui/trace_view.h"
#include "recording/ui/event_grid_model.h"

namespace vess {
namespace {

// How near (in pixels) a click must fall to an event's peak to pick it.
constexpr double kPickRadiusPx = 10;

}  // namespace

void MainWindow::OnAnalyze() {
    if (!ws_.recording || nonStop_->Running() || !ReadyToDetect()) return;
    const AnalyzeWindowResult r = AnalyzeCurrentScreen(ws_, dialogs_);
    sound_->Stored(r.eventsAdded, ws_.settings.soundOn);
    if (r.eventsAdded > 0) ws_.selectedEvent = ws_.events.Count();
    AfterEdit(false);
}

void MainWindow::OnAnalyzeNext() {
    if (!ws_.recording || nonStop_->Running() || !ReadyToDetect()) return;
    const NextWindowResult r = AnalyzeNextWindow(ws_, dialogs_);
    sound_->Stored(r.analysis.eventsAdded, ws_.settings.soundOn);
    if (r.analysis.eventsAdded > 0) ws_.selectedEvent = ws_.events.Count();
    AfterEdit(false);
}

void MainWindow::OnNonStop() {
    if (!ws_.recording || nonStop_->Running() || !ReadyToDetect(true)) return;
    progress_->setFormat(tr("Non-stop analysis: %v screens"));
    nonStop_->Start(dialogs_);
    RefreshActions();
}

void MainWindow::OnStop() {
    if (nonStop_->Running()) nonStop_->Stop();
    RefreshTrace();
}

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

void MainWindow::OnReset() {
    if (nonStop_->Running()) return;
    if (ResetEvents(ws_, dialogs_)) {
        ws_.selectedEvent = 0;
        ResetProgress();
        AfterEdit(true);
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
        OnRecalculate();
        return;
    }
    if (mods == Qt::AltModifier) {
        DetectDoublePeakAt(index);
        return;
    }
    const bool lowThresholds = mods == (Qt::ControlModifier | Qt::AltModifier);
    if (mods != Qt::NoModifier && !lowThresholds) return;
    DetectAtClick(index, lowThresholds);
}

}  // namespace vess
