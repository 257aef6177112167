#include "app/screenshot.h"

#include <QAction>
#include <QApplication>
#include <QPixmap>
#include <QThread>

#include "app/main_window.h"

namespace vess {

bool TakeScreenshot(MainWindow& window, const QString& pngPath, int screens) {
    // Let the file lists read their folders.
    for (int i = 0; i < 20; ++i) {
        QApplication::processEvents();
        QThread::msleep(10);
    }
    if (window.Ws().recording) {
        window.Action("menu_Analyze")->trigger();
        for (int i = 1; i < screens; ++i) window.Action("menu_AnalyzeNext")->trigger();
        // Back to the first screen, with its first event selected.
        window.Action("menu_FirstEvent")->trigger();
        window.Action("menu_NextEvent")->trigger();
    }
    QApplication::processEvents();
    return window.grab().save(pngPath, "PNG");
}

}  // namespace vess
