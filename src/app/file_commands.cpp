// The File menu of the main window after opening a recording: event files,
// exports, the data file's information, settings and parameter files, the
// suggested parameters and leaving the program.
#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "detection/screen_commands.h"
#include "recording/event_exports.h"
#include "recording/event_file.h"
#include "recording/parameter_file.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "recording/command_result.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"

namespace vess {
namespace {

constexpr const char* kMenu = "&File";

void OpenEventFile(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (host.Busy()) return;
    const bool opened = ShowFailure(host.Asker(), OpenEventFileCommand(ws, host.Asker()));
    if (opened) {
        ws.selectedEvent = ws.events.Empty() ? 0 : 1;
        host.ClearReadouts();
    }
    host.RedrawAll(opened);
}

void SaveEventFile(CommandHost& host) {
    // An event file names its data file: without a recording there is none.
    if (!host.Ws().recording) return;
    ShowFailure(host.Asker(), SaveEventFileCommand(host.Ws(), host.Asker()));
    host.RedrawTrace(false);
}

void ShowDataFileInformation(CommandHost& host) {
    if (!host.Ws().recording) return;
    QDialog box(host.Tools().Owner());
    box.setObjectName("DatInfo");
    box.setWindowTitle(QObject::tr("Data File Information"));
    auto* text = new QPlainTextEdit(QString::fromStdString(host.Ws().recording->InfoReport()), &box);
    text->setReadOnly(true);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &box);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    auto* layout = new QVBoxLayout(&box);
    layout->addWidget(text);
    layout->addWidget(buttons);
    box.resize(560, 640);
    box.exec();
}

void Suggest(CommandHost& host, int entry) {
    Workspace& ws = host.Ws();
    if (host.Busy()) return;
    SuggestParameters(ws, host.Asker(), entry, [&] { return ResetEvents(ws, host.Asker()).ok(); });
    host.RedrawAll(true);
}

void AddFileCommands(CommandRegistry& r) {
    r.AddMenu({kMenu, "menu_File", -100});
    double order = 0;
    const auto add = [&](const char* name, const QString& caption, bool (*enabled)(const CommandState&),
                         void (*run)(CommandHost&), bool separatorBefore = false) {
        r.Add({.objectName = name,
               .menuPath = kMenu,
               .caption = caption,
               .order = order++,
               .separatorBefore = separatorBefore,
               .enabledWhen = enabled,
               .run = run});
    };
    // Ctrl+O opens a recording (registered with the recording's commands).
    r.Add({.objectName = "menu_OpenEvent",
           .menuPath = kMenu,
           .caption = QObject::tr("Open &Event File..."),
           .keys = {QKeySequence("Ctrl+Shift+O")},
           .order = order++,
           .enabledWhen = WhenRecordingOpenAndIdle,
           .run = OpenEventFile});
    r.Add({.objectName = "menu_SaveEvent",
           .menuPath = kMenu,
           .caption = QObject::tr("&Save Event File..."),
           .standardKey = QKeySequence::Save,
           .order = order++,
           .enabledWhen = WhenRecordingOpenAndIdle,
           .run = SaveEventFile});
    add("menu_SaveData", QObject::tr("Export Events as &Text (ATF)..."), WhenEventsAndIdle,
        [](CommandHost& h) { ShowFailure(h.Asker(), SaveDataCommand(h.Ws(), h.Asker())); }, true);
    add("menu_savetoAsciiFile", QObject::tr("Export Events as &ASCII..."), WhenEventsAndIdle,
        [](CommandHost& h) { ShowFailure(h.Asker(), SaveToAsciiFileCommand(h.Ws(), h.Asker())); });
    r.Add({.objectName = "menu_SaveGridCsv",
           .menuPath = kMenu,
           .caption = QObject::tr("Export Event &Grid as CSV..."),
           .toolTip = "Every column of the event grid, in the grid's units, as a CSV file",
           .order = order++,
           .enabledWhen = WhenEventsAndIdle,
           .run = [](CommandHost& h) { ShowFailure(h.Asker(), SaveGridCsvCommand(h.Ws(), h.Asker())); }});
    r.Add({.objectName = "menu_DatInfo",
           .menuPath = kMenu,
           .caption = QObject::tr("Data File &Information"),
           .keys = {QKeySequence("Ctrl+I")},
           .order = order++,
           .enabledWhen = WhenRecordingOpen,
           .run = ShowDataFileInformation});
    add("menu_SaveSettings", QObject::tr("Save Se&ttings"), nullptr,
        [](CommandHost& h) { ShowFailure(h.Asker(), SaveSettingsCommand(h.Ws(), h.Asker())); }, true);
    add("menu_SaveSettingsCustom", QObject::tr("Save &Custom Settings..."), nullptr,
        [](CommandHost& h) { ShowFailure(h.Asker(), SaveCustomSettingsCommand(h.Ws(), h.Asker())); });
    add("menu_LoadSettings", QObject::tr("&Load Custom Settings..."), nullptr, [](CommandHost& h) {
        if (ShowFailure(h.Asker(), LoadCustomSettingsCommand(h.Ws(), h.Asker()))) h.RedrawAll(true);
    });
    add("menu_SaveParameter", QObject::tr("Save &Parameters..."), WhenIdle,
        [](CommandHost& h) { ShowFailure(h.Asker(), SaveParameterFileCommand(h.Ws(), h.Asker())); });
    add("menu_LoadParameter", QObject::tr("Load Pa&rameters..."), nullptr, [](CommandHost& h) {
        if (ShowFailure(h.Asker(), LoadParameterFileCommand(h.Ws(), h.Asker()))) h.RedrawAll(false);
    });
    const QString suggest = QString::fromUtf8(texts::kSuggestParametersCaption.data(),
                                              qsizetype(texts::kSuggestParametersCaption.size()));
    r.Add({.objectName = "menu_SuggParam", .menuPath = kMenu, .caption = suggest, .order = order++, .subMenu = true});
    const char* kinds[] = {"1  Fast events", "2  Slow events", "3  Large events"};
    for (int k = 1; k <= 3; ++k)
        r.Add({.objectName = QString("menu_SuggParam%1").arg(k),
               .menuPath = QString(kMenu) + "/" + suggest,
               .caption = QObject::tr(kinds[k - 1]),
               .order = order++,
               .run = [k](CommandHost& h) { Suggest(h, k); }});
    r.Add({.objectName = "menu_Exit",
           .menuPath = kMenu,
           .caption = QObject::tr("E&xit"),
           .standardKey = QKeySequence::Quit,
           .order = order++,
           .separatorBefore = true,
           .run = [](CommandHost& h) { h.Tools().Owner()->close(); }});
}

const CommandRegistration registration{AddFileCommands};

}  // namespace
}  // namespace vess
