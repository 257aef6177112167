#include <QMenu>

#include "app/main_window.h"

namespace vess {

void MainWindow::AddSignalToolActions(QMenu*) {}

}  // namespace vess
