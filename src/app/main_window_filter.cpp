#include <QMenu>

#include "app/main_window.h"

namespace vess {

void MainWindow::AddFilterActions(QMenu*) {}

}  // namespace vess
