// Files dropped on the main window: an ABF recording or an event file opens
// as a click in the file list does; anything else is not accepted.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>

#include "app/main_window.h"

namespace vess {
namespace {

// The first dropped local file that is a recording or an event file.
QString DroppedRecording(const QMimeData* data) {
    if (!data || !data->hasUrls()) return {};
    for (const QUrl& url : data->urls()) {
        if (!url.isLocalFile()) continue;
        const QString suffix = QFileInfo(url.toLocalFile()).suffix().toLower();
        if (suffix == "abf" || suffix == "evt") return url.toLocalFile();
    }
    return {};
}

}  // namespace

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!Busy() && !DroppedRecording(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QString path = DroppedRecording(event->mimeData());
    if (path.isEmpty() || Busy()) return;
    event->acceptProposedAction();
    OpenPath(path);
}

}  // namespace vess
