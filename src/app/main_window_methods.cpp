// The detection-method commands of the main window: the method chosen beside
// the parameters, the suggestion from the recording, the kernel learned from
// the accepted events, the accuracy check (table and plot) and the removal of
// near duplicates. Each is a core command followed by a redraw.
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QStatusBar>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "detection/accuracy_check.h"
#include "detection/detection_start.h"
#include "detection/kernel_command.h"
#include "detection/method_texts.h"
#include "detection/near_duplicates.h"
#include "detection/suggest_from_recording.h"
#include "detection/ui/accuracy_window.h"
#include "detection/ui/parameter_panel.h"
#include "graphs/ui/graph_frame.h"
#include "recording/ui/event_grid_model.h"

namespace vess {
namespace {

// How long the status bar says what the suggestion chose.
constexpr int kSuggestionShownMs = 20000;

}  // namespace

void MainWindow::BuildMethodActions(QMenu* analysis, QMenu* events) {
    analysis->addSeparator();
    AddAction(analysis, "menu_SuggestFromRecording", method_texts::kSuggestAction, {}, nullptr,
              &MainWindow::OnSuggestFromRecording);
    AddAction(analysis, "menu_LearnKernel", method_texts::kLearnKernelAction, {}, nullptr,
              &MainWindow::OnLearnKernel);
    AddAction(analysis, "menu_CheckAccuracy", method_texts::kCheckAction, {}, nullptr,
              &MainWindow::OnCheckAccuracy);
    QAction* after = Action("menu_RemoveDuplicates");
    QAction* near = AddAction(nullptr, "menu_RemoveNearDuplicates",
                              method_texts::kNearDuplicatesAction, {}, nullptr,
                              &MainWindow::OnRemoveNearDuplicates);
    const QList<QAction*> list = events->actions();
    const qsizetype at = list.indexOf(after);
    events->insertAction(at >= 0 && at + 1 < list.size() ? list[at + 1] : nullptr, near);
    connect(params_, &ParameterPanel::MethodChosen, this, &MainWindow::OnMethodChosen);
    connect(params_, &ParameterPanel::MethodParametersEdited, this, &MainWindow::OnMethodParametersEdited);
}

void MainWindow::OnMethodChosen(DetectionMethod method) {
    ws_.settings.method.method = method;
    RefreshAll();
}

void MainWindow::OnSuggestFromRecording() {
    if (Busy()) return;
    ShowFailure(dialogs_, SuggestFromRecordingCommand(ws_, dialogs_));
    RefreshAll();
}

void MainWindow::OnLearnKernel() {
    if (Busy()) return;
    ShowFailure(dialogs_, LearnKernelCommand(ws_, dialogs_));
    RefreshAll();
}

// The check runs as a job over a copy of the channel's first
// minutes: the main window stays usable, and the table and plot come when it
// ends. Asked again while one runs, the window is only raised.
void MainWindow::OnCheckAccuracy() {
    if (NonStopRunning()) return;
    const auto make = [this](QWidget* owner) {
        auto* w = new AccuracyWindow(*jobs_, owner);
        connect(w, &AccuracyWindow::Finished, this,
                [](const AccuracyReport& report) { ShowPlot(AccuracyPlot(report)); });
        return w;
    };
    // Shown and raised, not activated: the keys stay with the trace.
    AccuracyWindow* check = tools_.Find<AccuracyWindow>();
    if (check && check->Running()) {
        check->show();
        check->raise();
        return;
    }
    if (jobs_->Running()) return;
    if (!ws_.recording) {
        dialogs_.Message(method_texts::kCheckCaption, method_texts::kNoRecording);
        return;
    }
    Outcome<AccuracyInput> input = PrepareAccuracyCheck(ws_, AccuracyOptions{});
    if (!ShowFailure(dialogs_, input.status())) return;
    if (!check) check = tools_.Show<AccuracyWindow>(make);
    check->Start(std::move(input.value()));
    check->show();
    check->raise();
}

void MainWindow::OnRemoveNearDuplicates() {
    if (Busy()) return;
    AfterEdit(RemoveNearDuplicatesCommand(ws_, dialogs_).changed);
}

bool MainWindow::ReadyToDetect(bool wholeRecording) {
    if (const std::string chosen = SuggestOnFirstAnalysis(ws_); !chosen.empty()) {
        RefreshAll();  // the suggestion changes the boxes
        statusBar()->showMessage(QString::fromStdString(chosen), kSuggestionShownMs);
    }
    if (!UnreachableThresholds(ws_).empty()) {
        const bool go = ShowFailure(dialogs_, CheckThresholdsBeforeDetecting(ws_, dialogs_));
        RefreshAll();
        if (!go) return false;
    }
    const int32_t before = ws_.events.Count();
    if (wholeRecording && !ReplaceEventsBeforeDetecting(ws_, dialogs_)) return false;
    if (ws_.events.Count() != before) {
        gridModel_->ContentChanged();
        AfterEdit(true);
    }
    NoteDetectionSettings(ws_);
    return true;
}

void MainWindow::OnMethodParametersEdited(const MethodParameters& method) {
    ws_.settings.method = method;
}

}  // namespace vess
