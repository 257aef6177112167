// Files and parameters on the main window: opening from the file lists, the
// detection parameter boxes and method, and the questions before the window
// closes.
#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>

#include "app/main_window.h"
#include "app/nonstop_runner.h"
#include "recording/texts.h"
#include "recording/event_file.h"
#include "recording/file_list.h"
#include "recording/settings_file.h"
#include "detection/editing.h"
#include "detection/screen_commands.h"
#include "recording/recent_recordings.h"
#include "recording/ui/event_grid_model.h"
#include "recording/ui/file_browser.h"
#include "detection/ui/trace_view.h"

namespace vess {

void MainWindow::OpenPath(const QString& path) {
    // Resolved before the file lists change the current folder.
    const QFileInfo info(QFileInfo(path).absoluteFilePath());
    if (info.exists()) files_->SetFolder(info.absolutePath());
    OnFileChosen(info.absoluteFilePath());
}

void MainWindow::OnFileChosen(const QString& path) {
    if (Busy()) return;
    // The screen reads from the open recording, which opening another closes
    // while the view may still repaint (behind a question, or as the progress
    // bar clears): the view and the overview let go of it first and get the
    // new one with the refresh.
    ForgetScreen();
    if (ShowFailure(dialogs_, OpenFromFileList(ws_, path.toStdString(), dialogs_))) {
        fitColumns_ = true;
        if (!ws_.events.Empty()) ws_.selectedEvent = 1;
        RememberRecording(ws_.iniPath, path.toStdString());
        ClearReadouts();
        trace_->ResetScale();
    }
    gridModel_->ContentChanged();
    RefreshAll();
    ShowOpenFileInList();
}

void MainWindow::ShowOpenFileInList() {
    files_->ShowOpenFile(ws_.recording ? QString::fromStdString(ws_.recording->Path().string())
                                       : QString());
}

bool MainWindow::AskToSaveUnsavedEvents() {
    if (ws_.events.Empty() || !ws_.history.Modified()) return true;
    const Answer a = dialogs_.AskYesNoCancel(
        std::string(texts::kSavePreviousEventsCaption),
        texts::SavePreviousEventsText(ws_.events.Count(),
                                          ws_.recording ? ws_.recording->FileName() : std::string()));
    if (a == Answer::Cancel) return false;
    if (a == Answer::Yes) return ShowFailure(dialogs_, SaveEventFileCommand(ws_, dialogs_));
    return true;
}

void MainWindow::OnParametersEdited(const AnalysisParameters& params) {
    ws_.settings.analysis = params;
    RefreshTrace();  // the event direction places the baseline in the frame
}

void MainWindow::OnNumberPointsPeak(int points) {
    if (points == ws_.params().NumberPointsPeak) return;
    // Events measured with the old setting must be saved and reset first.
    if (ShowFailure(dialogs_, ConfirmResetForParameterChange(ws_, dialogs_))) {
        ws_.params().NumberPointsPeak = static_cast<int16_t>(points);
        ws_.selectedEvent = 0;
        gridModel_->ContentChanged();
    }
    RefreshAll();
}

void MainWindow::OnMethodChosen(DetectionMethod method) {
    ws_.settings.method.method = method;
    RefreshAll();
}

void MainWindow::OnMethodParametersEdited(const MethodParameters& method) { ws_.settings.method = method; }

void MainWindow::closeEvent(QCloseEvent* event) {
    if (nonStop_->Running()) nonStop_->Stop();
    // Events are never lost without a question.
    if (!AskToSaveUnsavedEvents()) {
        event->ignore();
        return;
    }
    RefreshStatus();  // the events may have been saved even if closing stops here
    if (!ShowFailure(dialogs_, AskSaveSettingsOnExit(ws_, dialogs_))) {
        event->ignore();
        return;
    }
    SaveGeometry();
    event->accept();
}

}  // namespace vess
