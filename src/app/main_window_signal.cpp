// The signal menu of the main window: digital filters, noise and trace tools.
#include <QMenu>
#include <QMenuBar>

#include "app/main_window.h"

namespace vess {

void MainWindow::BuildSignalMenu() {
    QMenu* m = menuBar()->addMenu(tr("&Signal"));
    AddFilterActions(m);
    m->addSeparator();
    AddSignalToolActions(m);
}

}  // namespace vess
