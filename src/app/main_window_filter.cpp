// The digital filter of the main window: the filter form, the frequency
// response, applying and removing the filter, the key that switches the
// trace view between the filtered and the recorded trace, and the choice
// of the trace that detection reads.
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "graphs/ui/graph_frame.h"
#include "recording/screen.h"
#include "signal/filter_commands.h"
#include "signal/filter_texts.h"
#include "signal/ui/filter_dialog.h"

namespace vess {

void MainWindow::AddFilterActions(QMenu* m) {
    AddAction(m, "menu_Filter", tr("&Digital Filter..."), {},
              "Low- or high-pass filter of the channel, its frequency response", &MainWindow::OnFilterDialog);
    QAction* show = AddAction(m, "menu_ShowFiltered", tr("Show &Filtered Trace"), {QKeySequence("Shift+F")},
                              "Show the filtered or the recorded trace (Shift+F)", &MainWindow::OnToggleFiltered);
    show->setCheckable(true);
    QAction* detect = AddAction(m, "menu_DetectOnFiltered", tr("Detect on the filtered trace"), {},
                                "Detection and measurement read the filtered trace while a filter is applied",
                                nullptr);
    detect->setCheckable(true);
    detect->setChecked(ws_.settings.detectOnFiltered);
    connect(detect, &QAction::toggled, this, &MainWindow::OnDetectOnFiltered);
    AddAction(m, "menu_RemoveFilter", tr("&Remove Filter"), {}, "Go back to the recorded trace",
              &MainWindow::OnRemoveFilter);
    statusFilter_ = new QLabel(this);
    statusFilter_->setObjectName("lbFilter");
    statusFilter_->setToolTip(tr("Shift+F switches between the filtered and the recorded trace"));
    statusBar()->addPermanentWidget(statusFilter_);
    statusFilter_->hide();
}

void MainWindow::OnFilterDialog() {
    if (!ws_.recording) return dialogs_.Message(texts::kFilterCaption, texts::kFilterNoRecording);
    tools_.Show<FilterDialog>([this](QWidget* owner) {
        auto* d = new FilterDialog(FilterChoiceFromSettings(ws_.settings), SampleRateHz(*ws_.recording), owner);
        connect(d, &FilterDialog::ResponseRequested, this, &MainWindow::OnFilterResponse);
        connect(d, &FilterDialog::ApplyRequested, this, &MainWindow::OnFilterApply);
        connect(d, &FilterDialog::RemoveRequested, this, &MainWindow::OnRemoveFilter);
        connect(d, &QDialog::finished, d, &QObject::deleteLater);
        return d;
    });
}

void MainWindow::OnFilterResponse(const FilterChoice& choice) {
    if (!ws_.recording) return;
    const double fs = SampleRateHz(*ws_.recording);
    if (const std::string why = FilterChoiceProblem(choice, fs); !why.empty())
        return dialogs_.Message(texts::kFilterCaption, why);
    ShowPlot(FilterResponsePlot(choice, fs));
}

void MainWindow::OnFilterApply(const FilterChoice& choice) {
    if (Busy()) return;
    auto request = PrepareFilter(ws_, dialogs_, choice);
    if (!request) return;
    jobs_->Start(MakeJob(std::string(texts::kFilterCaption),
                         [r = std::move(*request)](const JobProgress& progress) {
                             return FilterFromFile(r, [&](double done) { return progress(done, {}); });
                         },
                         [this](FilteredChannel filtered) {
                             if (!AttachFiltered(ws_, dialogs_, std::move(filtered))) return;
                             ws_.showFiltered = true;
                             screen_.reset();
                             RefreshTrace();
                             RefreshStatus();
                         }),
                 this);
}

void MainWindow::OnRemoveFilter() {
    RemoveFilter(ws_);
    screen_.reset();
    RefreshTrace();
    RefreshStatus();
}

void MainWindow::OnToggleFiltered() {
    ws_.showFiltered = !ws_.showFiltered;
    screen_.reset();
    RefreshTrace();
    RefreshStatus();
}

void MainWindow::OnDetectOnFiltered(bool on) {
    SetDetectOnFiltered(ws_, on);
    RefreshStatus();
}

void MainWindow::RefreshFilterIndicator() {
    if (!statusFilter_) return;
    const bool applied = ws_.recording && ws_.recording->HasFiltered();
    if (QAction* show = Action("menu_ShowFiltered")) {
        const QSignalBlocker block(show);
        show->setEnabled(applied);
        show->setChecked(applied && ws_.showFiltered);
    }
    if (QAction* remove = Action("menu_RemoveFilter")) remove->setEnabled(applied);
    if (QAction* detect = Action("menu_DetectOnFiltered")) {
        const QSignalBlocker block(detect);
        detect->setChecked(ws_.settings.detectOnFiltered);
    }
    // Settings loaded from a file may have changed the choice.
    if (ws_.recording) ws_.recording->ReadFiltered(ws_.settings.detectOnFiltered);
    statusFilter_->setVisible(applied);
    if (!applied) return;
    const FilterChoice choice = FilterChoiceFromSettings(ws_.settings);
    const QString filter = QString::fromStdString(FilterName(choice));
    const QString detection = DetectsOnFiltered(ws_) ? tr("; detection on filtered") : tr("; detection on recorded");
    if (ws_.showFiltered) {
        statusFilter_->setText(tr(" FILTERED: %1%2 ").arg(filter, detection));
        statusFilter_->setStyleSheet("QLabel { background: #ffd54f; color: black; font-weight: bold; }");
    } else {
        statusFilter_->setText(tr(" Recorded trace (filter %1 off view)%2 ").arg(filter, detection));
        statusFilter_->setStyleSheet("QLabel { background: #e0e0e0; color: black; }");
    }
    // The other status fields stretch; this one keeps room for its text.
    statusFilter_->setMinimumWidth(statusFilter_->sizeHint().width());
}

}  // namespace vess
