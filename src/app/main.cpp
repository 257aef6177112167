// The desktop workbench: loads the settings from the program's folder, opens
// the file given on the command line, and shows the main window.
//
//   vessantorium [FILE.abf|FILE.EVT]
//   vessantorium --screenshot OUT.png [--screens N] [--window main|group] FILE.abf
//       opens FILE, analyses its first N screens (default 8), saves a picture
//       of the main window (or of the group window with the average of the
//       events and its fit) to OUT.png and exits.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include <filesystem>

#include "app/main_window.h"
#include "app/qt_dialogs.h"
#include "app/screenshot.h"
#include "app/unattended_dialogs.h"
#include "recording/settings_file.h"
#include "recording/texts.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Vessantorium");
    QApplication::setOrganizationName("Vessantorium");
    QCommandLineParser parser;
    parser.setApplicationDescription("Detection and review of synaptic events in ABF recordings");
    parser.addHelpOption();
    parser.addOption({"screenshot", "Save a picture of the window to <png> and exit.", "png"});
    parser.addOption({"screens", "Screens to analyse before a screenshot.", "n", "8"});
    parser.addOption({"window", "Window of the screenshot: main, or group (the events' average and its fit).",
                      "name", "main"});
    parser.addPositionalArgument("file", "ABF or event file to open.");
    parser.process(app);

    vess::Workspace ws;
    ws.iniPath = vess::DefaultIniPath(QCoreApplication::applicationDirPath().toStdString());
    std::vector<std::string> settingsProblems;
    ws.settings = vess::LoadIniSettings(ws.iniPath, &settingsProblems);
    // A new installation sizes screens and group stretches by each recording's rate.
    ws.settings.lengthsFollowRate = vess::IsNewInstallation(ws.iniPath);
    // Made absolute against the folder the program was started in.
    QStringList files;
    for (const QString& f : parser.positionalArguments()) files << QFileInfo(f).absoluteFilePath();
    const QString screenshotPath = QFileInfo(parser.value("screenshot")).absoluteFilePath();
    if (!files.isEmpty())  // start in the folder of the file given
        ws.settings.dataFolder = QFileInfo(files.first()).absolutePath().toStdString();

    vess::QtDialogs asked;
    vess::UnattendedDialogs unattended;  // a screenshot waits for no answer
    vess::Dialogs& dialogs = parser.isSet("screenshot") ? static_cast<vess::Dialogs&>(unattended) : asked;
    vess::MainWindow window(ws, dialogs);
    asked.SetParent(&window);
    asked.SetStartFolder([&ws] { return ws.Folder(); });
    window.show();
    if (!settingsProblems.empty())
        dialogs.Message(std::string(vess::texts::kSettingsNotLoadedCaption),
                        vess::SettingsProblemsText(ws.iniPath, settingsProblems));
    if (!files.isEmpty()) window.OpenPath(files.first());

    if (parser.isSet("screenshot"))
        vess::ScheduleScreenshot(window, screenshotPath, parser.value("screens").toInt(),
                                 parser.value("window") == "group" ? vess::ScreenshotWindow::Group
                                                                   : vess::ScreenshotWindow::Main);
    return app.exec();
}
