// The signal menu of the main window: digital filters, noise and trace tools,
// and batch runs over many recordings.
#include <QMenu>
#include <QMenuBar>

#include "app/main_window.h"

namespace vess {

void MainWindow::BuildSignalMenu() {
    QMenu* m = menuBar()->addMenu(tr("&Signal"));
    AddFilterActions(m);
    m->addSeparator();
    AddSignalToolActions(m);
    m->addSeparator();
    AddBatchActions(m);
}

}  // namespace vess
