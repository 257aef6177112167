// The recording commands of the main window's File menu: Open Recording
// (Ctrl+O) and the list of recent recordings.
#include <QAction>
#include <QFileInfo>
#include <QMenu>

#include "recording/dialogs.h"
#include "recording/recent_recordings.h"
#include "recording/ui/command_registry.h"
#include "recording/workspace.h"

namespace vess {
namespace {

constexpr const char* kFileMenu = "&File";
const FileDialogRequest kOpenRecording{"Open Recording", "ABF File (*.ABF)|*.ABF|Event File (*.EVT)|*.EVT",
                                       "ABF", {}};

void OpenRecording(CommandHost& host) {
    if (const auto path = host.Asker().OpenFile(kOpenRecording))
        host.OpenPath(QString::fromStdString(*path));
}

// One entry per recent recording, "&1 name   (folder)", newest first.
void FillRecent(QMenu* menu, CommandHost& host) {
    const auto recent = ReadRecentRecordings(host.Ws().iniPath);
    if (recent.empty()) {
        menu->addAction(QObject::tr("(none)"))->setEnabled(false);
        return;
    }
    for (std::size_t i = 0; i < recent.size(); ++i) {
        const QString path = QString::fromStdString(recent[i]);
        const QFileInfo info(path);
        QAction* a = menu->addAction(QString("&%1 %2   (%3)")
                                         .arg((i + 1) % 10)
                                         .arg(info.fileName(), info.absolutePath()));
        a->setObjectName(QString("menu_Recent%1").arg(i + 1));
        a->setToolTip(path);
        QObject::connect(a, &QAction::triggered, menu, [&host, path] {
            if (ShowFailure(host.Asker(), CheckRecentRecording(host.Ws().iniPath, path.toStdString())))
                host.OpenPath(path);
        });
    }
}

void AddRecordingCommands(CommandRegistry& r) {
    r.Add({.objectName = "menu_OpenRecording",
           .menuPath = kFileMenu,
           .caption = QObject::tr("&Open Recording..."),
           .keys = {QKeySequence(Qt::CTRL | Qt::Key_O)},  // no platform keys before the application exists
           .toolTip = QObject::tr("Open an ABF recording or an event file  (Ctrl+O)"),
           .before = "menu_OpenEvent",
           .enabledWhen = WhenIdle,
           .run = OpenRecording});
    r.Add({.objectName = "menu_RecentRecordings",
           .menuPath = kFileMenu,
           .caption = QObject::tr("Recent Recor&dings"),
           .order = 1,
           .before = "menu_OpenEvent",
           .enabledWhen = WhenIdle,
           .fillMenu = FillRecent});
}

const CommandRegistration registration{AddRecordingCommands};

}  // namespace
}  // namespace vess
