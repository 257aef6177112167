// The filter indicator of the main window's status bar: which filter is
// applied, whether the trace view shows it and which trace detection reads.
#include <QLabel>
#include <QStatusBar>

#include "app/main_window.h"
#include "signal/filter_commands.h"

namespace vess {

void MainWindow::BuildFilterIndicator() {
    statusFilter_ = new QLabel(this);
    statusFilter_->setObjectName("lbFilter");
    statusFilter_->setToolTip(tr("Shift+F switches between the filtered and the recorded trace"));
    statusBar()->addPermanentWidget(statusFilter_);
    statusFilter_->hide();
}

void MainWindow::RefreshFilterIndicator() {
    if (!statusFilter_) return;
    const bool applied = ws_.recording && ws_.recording->HasFiltered();
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
