// The Help menu: the user guide in a window of its own (F1) and the About box
// with the program's version.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextBrowser>

#include "recording/dialogs.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"

namespace vess {
namespace {

constexpr const char* kHelpMenu = "&Help";
constexpr const char* kGuideName = "user-guide.md";

// Installed beside the program (share/doc/vessantorium under the install
// prefix, or the program's own folder), else the source tree it was built from.
QString UserGuidePath() {
    const QDir program(QCoreApplication::applicationDirPath());
    const QStringList candidates = {
        program.filePath(QString("../share/doc/vessantorium/") + kGuideName),
        program.filePath(kGuideName),
        QString(VESS_SOURCE_DOCS) + "/" + kGuideName,
    };
    for (const QString& path : candidates)
        if (QFileInfo(path).isFile()) return QFileInfo(path).canonicalFilePath();
    return {};
}

// The guide's own window (one of the tool windows, told apart by its type).
class UserGuideWindow : public QTextBrowser {
public:
    using QTextBrowser::QTextBrowser;
};

void ShowUserGuide(CommandHost& host) {
    const QString path = UserGuidePath();
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        host.Asker().Message("User Guide", "The user guide (" + std::string(kGuideName) +
                                               ") was not found beside the program.");
        return;
    }
    const QString text = QString::fromUtf8(file.readAll());
    host.Tools().Show<UserGuideWindow>([&](QWidget* owner) {
        auto* guide = new UserGuideWindow(owner);
        guide->setObjectName("UserGuide");
        guide->setWindowTitle(QObject::tr("Vessantorium User Guide"));
        guide->setOpenExternalLinks(true);
        guide->setSearchPaths({QFileInfo(path).absolutePath()});  // its pictures
        guide->setMarkdown(text);
        guide->resize(820, 900);
        return guide;
    });
}

void ShowAbout(CommandHost& host) {
    host.Asker().Message("About Vessantorium",
                         "Vessantorium " VESS_VERSION "\n\n"
                         "Detection, measurement and review of spontaneous synaptic events in "
                         "ABF recordings, with group averaging and fitting, statistics and "
                         "heart-rate analysis.");
}

void AddHelpCommands(CommandRegistry& r) {
    r.AddMenu({kHelpMenu, "menu_Help", 1000});
    r.Add({.objectName = "menu_help",
           .menuPath = kHelpMenu,
           .caption = QObject::tr("&User Guide"),
           .keys = {QKeySequence(Qt::Key_F1)},
           .toolTip = QObject::tr("Open the user guide  (F1)"),
           .run = ShowUserGuide});
    r.Add({.objectName = "menu_About",
           .menuPath = kHelpMenu,
           .caption = QObject::tr("&About Vessantorium"),
           .order = 1,
           .separatorBefore = true,
           .run = ShowAbout});
}

const CommandRegistration registration{AddHelpCommands};

}  // namespace
}  // namespace vess
