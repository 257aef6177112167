#include <QMenu>

#include "app/main_window.h"

namespace vess {

void MainWindow::AddBatchActions(QMenu*) {}

}  // namespace vess
