// The status bar and the window title of the main window. Each label is set
// only when what it shows changed: the next screen changes the screen's
// number and perhaps the event count, and nothing else needs rebuilding.
// The recording's name, channel and units are read again only when its
// samples' version changed (another recording or channel), and the events
// label only when the count or the settings the events were made with did.
#include <QLabel>

#include "app/main_window.h"
#include "detection/detection_start.h"
#include "detection/navigation.h"

namespace vess {

void MainWindow::RefreshStatus() {
    RefreshFilterIndicator();
    const Recording* rec = ws_.recording.get();
    const bool fresh = !statusShown_;
    StatusShown& shown = fresh ? statusShown_.emplace() : *statusShown_;
    const uint64_t samples = rec ? rec->SamplesVersion() : 0;
    const bool openChanged = fresh || shown.open != (rec != nullptr);
    const bool recordingChanged = openChanged || shown.samples != samples;
    bool nameChanged = openChanged, channelChanged = openChanged;
    if (rec && recordingChanged) {
        std::string fileName = rec->FileName(), units = rec->Units();
        nameChanged = nameChanged || fileName != shown.fileName;
        channelChanged = channelChanged || int(rec->Channel()) != shown.channel || units != shown.units;
        shown.fileName = std::move(fileName);
        shown.units = std::move(units);
        shown.channel = rec->Channel();
    }
    shown.open = rec != nullptr;
    shown.samples = samples;
    if (!rec) {
        if (openChanged) {
            statusFile_->setText(tr("No recording open"));
            statusChannel_->clear();
            statusScreen_->clear();
            setWindowTitle("Vessantorium");
        }
        statusPointer_->clear();
    } else {
        if (nameChanged) statusFile_->setText(QString::fromStdString(shown.fileName));
        if (channelChanged)
            statusChannel_->setText(
                tr("Channel %1 (%2)").arg(shown.channel).arg(QString::fromStdString(shown.units)));
        const ScreenGeometry g = GeometryOf(ws_);
        const int64_t screen = ws_.screenStartBlock / g.blocksPerScreen + 1;
        const int64_t screens = g.LastScreenStart() / g.blocksPerScreen + 1;
        // Set on every screen: the count of screens is filled in once.
        if (openChanged || screens != shown.screens)
            shown.screenText = tr("Screen %1 of %2").arg(QStringLiteral("%1"), QString::number(screens));
        if (openChanged || screen != shown.screen || screens != shown.screens)
            statusScreen_->setText(shown.screenText.arg(screen));
        shown.screen = screen;
        shown.screens = screens;
        const bool modified = ws_.history.Modified();
        if (nameChanged || modified != shown.modified)
            setWindowTitle(QString("%1%2 - Vessantorium")
                               .arg(QString::fromStdString(shown.fileName))
                               .arg(modified ? "*" : ""));
        shown.modified = modified;
    }
    // The events label reads the count, the recording and what the events
    // were made with.
    if (recordingChanged || shown.eventCount != ws_.events.Count() || shown.madeFor != ws_.eventsMadeFor ||
        shown.madeWith != ws_.eventsMadeWith) {
        std::string events = EventsStatusText(ws_);
        if (fresh || events != shown.events) statusEvents_->setText(QString::fromStdString(events));
        shown.events = std::move(events);
        shown.eventCount = ws_.events.Count();
        shown.madeFor = ws_.eventsMadeFor;
        shown.madeWith = ws_.eventsMadeWith;
    }
}

}  // namespace vess
