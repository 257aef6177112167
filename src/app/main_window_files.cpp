// File commands of the main window: opening from the file lists, event files,
// exports, settings and parameter files, the detection parameter boxes, and
// the questions before the window closes.
#include <QAction>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "app/main_window.h"
#include "app/nonstop_runner.h"
#include "detection/ui/parameter_panel.h"
#include "recording/texts.h"
#include "detection/ui/trace_view.h"
#include "recording/event_exports.h"
#include "recording/event_file.h"
#include "detection/editing.h"
#include "detection/screen_commands.h"
#include "recording/file_list.h"
#include "recording/parameter_file.h"
#include "recording/recent_recordings.h"
#include "recording/settings_file.h"
#include "recording/ui/event_grid_model.h"
#include "recording/ui/file_browser.h"

namespace vess {

void MainWindow::OpenPath(const QString& path) {
    // Resolved before the file lists change the current folder.
    const QFileInfo info(QFileInfo(path).absoluteFilePath());
    if (info.exists()) files_->SetFolder(info.absolutePath());
    OnFileChosen(info.absoluteFilePath());
}

void MainWindow::OnFileChosen(const QString& path) {
    if (Busy()) return;
    const Recording* before = ws_.recording.get();
    if (OpenFromFileList(ws_, path.toStdString(), dialogs_)) {
        fitColumns_ = true;
        if (!ws_.events.Empty()) ws_.selectedEvent = 1;
        RememberRecording(ws_.iniPath, path.toStdString());
        ClearStaleReadouts();
    }
    if (ws_.recording.get() != before) trace_->ResetScale();
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

void MainWindow::OnOpenEvent() {
    if (Busy()) return;
    if (ShowFailure(dialogs_, OpenEventFileCommand(ws_, dialogs_))) {
        ws_.selectedEvent = ws_.events.Empty() ? 0 : 1;
        gridModel_->ContentChanged();
        ClearStaleReadouts();
    }
    RefreshAll();
}

void MainWindow::OnSaveEvent() {
    // An event file names its data file: without a recording there is none.
    if (!ws_.recording) return;
    ShowFailure(dialogs_, SaveEventFileCommand(ws_, dialogs_));
    RefreshStatus();
}

void MainWindow::OnSaveData() { ShowFailure(dialogs_, SaveDataCommand(ws_, dialogs_)); }
void MainWindow::OnSaveAscii() { ShowFailure(dialogs_, SaveToAsciiFileCommand(ws_, dialogs_)); }

void MainWindow::OnDatInfo() {
    if (!ws_.recording) return;
    QDialog box(this);
    box.setObjectName("DatInfo");
    box.setWindowTitle(tr("Data File Information"));
    auto* text = new QPlainTextEdit(QString::fromStdString(ws_.recording->InfoReport()), &box);
    text->setReadOnly(true);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &box);
    connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    auto* layout = new QVBoxLayout(&box);
    layout->addWidget(text);
    layout->addWidget(buttons);
    box.resize(560, 640);
    box.exec();
}

void MainWindow::OnSaveSettings() { ShowFailure(dialogs_, SaveSettingsCommand(ws_, dialogs_)); }

void MainWindow::OnSaveSettingsCustom() { ShowFailure(dialogs_, SaveCustomSettingsCommand(ws_, dialogs_)); }

void MainWindow::OnLoadSettings() {
    if (ShowFailure(dialogs_, LoadCustomSettingsCommand(ws_, dialogs_))) {
        gridModel_->ContentChanged();
        RefreshAll();
    }
}

void MainWindow::OnSaveParameter() { ShowFailure(dialogs_, SaveParameterFileCommand(ws_, dialogs_)); }

void MainWindow::OnLoadParameter() {
    if (ShowFailure(dialogs_, LoadParameterFileCommand(ws_, dialogs_))) RefreshAll();
}

void MainWindow::OnSuggest(int entry) {
    if (Busy()) return;
    SuggestParameters(ws_, dialogs_, entry, [this] { return ResetEvents(ws_, dialogs_); });
    KeepSelectionValid(ws_);
    gridModel_->ContentChanged();
    RefreshAll();
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
