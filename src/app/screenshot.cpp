#include "app/screenshot.h"

#include <QAction>
#include <QCoreApplication>
#include <QPixmap>
#include <QTimer>

#include "app/main_window.h"

namespace vess {
namespace {
// Time the event loop gets to let the file lists read their folders, and
// then to lay out and redraw the analysed screens.
constexpr int kSettleMs = 200;
constexpr int kRedrawMs = 50;
}  // namespace

void ScheduleScreenshot(MainWindow& window, const QString& pngPath, int screens) {
    QTimer::singleShot(kSettleMs, &window, [&window, pngPath, screens] {
        if (window.Ws().recording) {
            window.Action("menu_Analyze")->trigger();
            for (int i = 1; i < screens; ++i) window.Action("menu_AnalyzeNext")->trigger();
            // Back to the first screen, with its first event selected.
            window.Action("menu_FirstEvent")->trigger();
            window.Action("menu_NextEvent")->trigger();
        }
        QTimer::singleShot(kRedrawMs, &window, [&window, pngPath] {
            QCoreApplication::exit(window.grab().save(pngPath, "PNG") ? 0 : 1);
        });
    });
}

}  // namespace vess
