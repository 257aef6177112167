// The status bar and the window title of the main window. Each label is set
// only when what it shows changed: the next screen changes the screen's
// number and perhaps the event count, and nothing else needs rebuilding.
#include <QLabel>

#include "app/main_window.h"
#include "detection/detection_start.h"
#include "detection/navigation.h"

namespace vess {

MainWindow::StatusShown MainWindow::StatusNow() const {
    StatusShown now;
    now.events = EventsStatusText(ws_);
    const Recording* rec = ws_.recording.get();
    if (!rec) return now;
    now.open = true;
    now.fileName = rec->FileName();
    now.channel = rec->Channel();
    now.units = rec->Units();
    now.modified = ws_.history.Modified();
    const ScreenGeometry g = GeometryOf(ws_);
    now.screen = ws_.screenStartBlock / g.blocksPerScreen + 1;
    now.screens = g.LastScreenStart() / g.blocksPerScreen + 1;
    return now;
}

void MainWindow::RefreshStatus() {
    RefreshFilterIndicator();
    StatusShown now = StatusNow();
    const StatusShown* was = statusShown_ ? &*statusShown_ : nullptr;
    const auto changed = [was, &now](auto StatusShown::*... fields) {
        return !was || ((was->*fields != now.*fields) || ...);
    };
    if (!now.open) {
        if (changed(&StatusShown::open)) {
            statusFile_->setText(tr("No recording open"));
            statusChannel_->clear();
            statusScreen_->clear();
            setWindowTitle("Vessantorium");
        }
        statusPointer_->clear();
    } else {
        if (changed(&StatusShown::open, &StatusShown::fileName))
            statusFile_->setText(QString::fromStdString(now.fileName));
        if (changed(&StatusShown::open, &StatusShown::channel, &StatusShown::units))
            statusChannel_->setText(
                tr("Channel %1 (%2)").arg(now.channel).arg(QString::fromStdString(now.units)));
        if (changed(&StatusShown::open, &StatusShown::screen, &StatusShown::screens))
            statusScreen_->setText(
                tr("Screen %1 of %2").arg(QString::number(now.screen), QString::number(now.screens)));
        if (changed(&StatusShown::open, &StatusShown::fileName, &StatusShown::modified))
            setWindowTitle(QString("%1%2 - Vessantorium")
                               .arg(QString::fromStdString(now.fileName))
                               .arg(now.modified ? "*" : ""));
    }
    if (changed(&StatusShown::events)) statusEvents_->setText(QString::fromStdString(now.events));
    statusShown_ = std::move(now);
}

}  // namespace vess
