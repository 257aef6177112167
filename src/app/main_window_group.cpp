// The group analysis menu of the main window: the group analysis window and
// the bulk group assignments.
#include <QMenuBar>

#include "app/main_window.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_window.h"

namespace vess {

group::GroupAnalysisWindow* MainWindow::OpenGroupAnalysis() {
    if (!groupWindow_) {
        groupWindow_ = new group::GroupAnalysisWindow(ws_, dialogs_, *jobs_, this);
        groupWindow_->setWindowFlag(Qt::Window);
    }
    groupWindow_->show();
    groupWindow_->raise();
    groupWindow_->activateWindow();
    return groupWindow_;
}

void MainWindow::BuildGroupAnalysisMenu() {
    QMenu* m = menuBar()->addMenu(tr("&Group Analysis"));
    m->setObjectName("menu_GroupAnalysis");
    QAction* open = m->addAction(tr("&Group Analysis and Curve Fitting"));
    open->setObjectName("menu_AnalyseGp");
    connect(open, &QAction::triggered, this, [this] { OpenGroupAnalysis(); });
    actions_["menu_AnalyseGp"] = open;
    // The Events menu's group assignments open the one dialog in their mode.
    for (auto [name, mode] : {std::pair{"menu_groupBursts", group::GroupAssignMode::Bursts},
                              std::pair{"menu_groupEpisodic", group::GroupAssignMode::Episodic},
                              std::pair{"menu_groupbyrandom", group::GroupAssignMode::Random}}) {
        const auto it = actions_.find(name);
        if (it == actions_.end()) continue;
        connect(it->second, &QAction::triggered, this, [this, mode] {
            group::GroupAssignDialog d(ws_, mode, this);
            d.exec();
            AfterEdit(true);
        });
    }
}

}  // namespace vess
