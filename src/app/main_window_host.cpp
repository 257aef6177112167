// The main window as the registered commands see it: the buttons and the
// grid's context menu over their commands, the redraws after a command, the
// non-stop run and the checks before detecting.
#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "app/nonstop_runner.h"
#include "detection/detection_start.h"
#include "detection/editing.h"
#include "detection/suggest_from_recording.h"
#include "detection/ui/event_sound.h"
#include "recording/command_result.h"
#include "recording/ui/event_grid_model.h"

namespace vess {
namespace {

// How long the status bar says what the suggestion chose.
constexpr int kSuggestionShownMs = 20000;

}  // namespace

void MainWindow::BuildMenus() {
    BuildRegisteredCommands();

    // The buttons run the same actions and follow their enabling.
    const char* buttonActions[] = {"menu_Analyze", "menu_AnalyzeNext", "menu_NonStop", "menu_Stop",
                                   "menu_Reset", "menu_SaveSettings", "menu_SaveSettings"};
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        QAction* a = Action(buttonActions[i]);
        QPushButton* b = buttons_[i];
        connect(b, &QPushButton::clicked, a, &QAction::trigger);
        connect(a, &QAction::enabledChanged, b, &QPushButton::setEnabled);
        b->setToolTip(a->toolTip());
        b->setEnabled(a->isEnabled());
    }

    // Editing commands on the grid's context menu.
    for (const char* name : {"menu_Group", "menu_RejectEvents", "menu_deleteevents", "menu_Unmark"})
        grid_->addAction(Action(name));
}

void MainWindow::StartNonStop() {
    progress_->setFormat(tr("Non-stop analysis: %v screens"));
    nonStop_->Start(dialogs_);
    RefreshActions();
}

void MainWindow::StopNonStop() {
    if (nonStop_->Running()) nonStop_->Stop();
    RefreshTrace();
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

void MainWindow::EventsStored(int count) { sound_->Stored(count, ws_.settings.soundOn); }

void MainWindow::Redraw(bool eventsChanged) {
    if (eventsChanged) KeepSelectionValid(ws_);
    AfterEdit(eventsChanged);
}

void MainWindow::RedrawTrace(bool reread) {
    if (reread) screen_.reset();
    RefreshTrace();
    RefreshStatus();
    RefreshActions();
}

void MainWindow::RedrawAll(bool eventsChanged) {
    if (eventsChanged) {
        KeepSelectionValid(ws_);
        gridModel_->ContentChanged();
    }
    RefreshAll();
}

void MainWindow::ClearReadouts() {
    ResetProgress();
    statusPointer_->clear();
}

}  // namespace vess
