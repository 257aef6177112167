// Batch analysis from the signal menu: one batch window, a child of the main
// window, over the current settings.
#include <QMenu>

#include "app/main_window.h"
#include "batch/texts.h"
#include "batch/ui/batch_window.h"

namespace vess {

void MainWindow::AddBatchActions(QMenu* m) {
    QAction* a = AddAction(m, "menu_Batch", QString::fromUtf8(batch_texts::kMenuAction.data()), {},
                           nullptr, nullptr);
    connect(a, &QAction::triggered, this, [this] {
        auto* w = findChild<BatchWindow*>("BatchWindow");
        if (!w) {
            w = new BatchWindow(ws_, dialogs_, *jobs_, this);
            w->setWindowFlag(Qt::Window);
            w->setAttribute(Qt::WA_DeleteOnClose);
        }
        w->show();
        w->raise();
        w->activateWindow();
    });
}

}  // namespace vess
