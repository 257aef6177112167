// The Edit and Events menus of the main window: undo and redo, grouping,
// unmarking, rejecting and deleting events, duplicates and sorting. Each is
// one core command followed by a redraw.
#include "detection/ui/editing_commands.h"

#include <QObject>

#include <vector>

#include "detection/editing.h"
#include "detection/method_texts.h"
#include "detection/near_duplicates.h"
#include "detection/ui/texts.h"
#include "recording/ui/command_registry.h"
#include "recording/workspace.h"

namespace vess {

void SortEventsBy(CommandHost& host, EventField field) {
    Workspace& ws = host.Ws();
    if (ws.events.Count() < 2) return;
    ws.history.Checkpoint(ws.events, QObject::tr("Sort events").toStdString());
    ws.events.Sort(field);
    host.Redraw(true);
}

namespace {

using namespace ui_text;

constexpr const char* kEditMenu = "&Edit";
constexpr const char* kEventsMenu = "E&vents";

bool WhenEventsInRecordingAndIdle(const CommandState& s) { return WhenEventsAndIdle(s) && s.RecordingOpen(); }

// Undo and redo name what they undo; the pointer read-out and the progress
// speak of the table before.
void UndoOrRedo(CommandHost& host, bool undo) {
    Workspace& ws = host.Ws();
    if (host.Busy() || !(undo ? ws.history.Undo(ws.events) : ws.history.Redo(ws.events))) return;
    host.ClearReadouts();
    host.Redraw(true);
}

void AddEditCommands(CommandRegistry& r) {
    r.AddMenu({kEditMenu, "menu_Edit", -90});
    r.Add({.objectName = "menu_Undo",
           .menuPath = kEditMenu,
           .caption = QObject::tr("&Undo"),
           .keys = {QKeySequence("Ctrl+Z")},
           .enabledWhen = [](const CommandState& s) { return s.ws.history.CanUndo() && !s.Busy(); },
           .run = [](CommandHost& host) { UndoOrRedo(host, true); },
           .captionWhen =
               [](const CommandState& s) {
                   return s.ws.history.CanUndo()
                              ? QObject::tr("&Undo %1").arg(QString::fromStdString(s.ws.history.UndoLabel()))
                              : QObject::tr("&Undo");
               },
           .captionStamp = [](const CommandState& s) { return s.ws.history.ListsStamp(); }});
    r.Add({.objectName = "menu_Redo",
           .menuPath = kEditMenu,
           .caption = QObject::tr("&Redo"),
           .keys = {QKeySequence("Ctrl+Y"), QKeySequence("Ctrl+Shift+Z")},
           .order = 1,
           .enabledWhen = [](const CommandState& s) { return s.ws.history.CanRedo() && !s.Busy(); },
           .run = [](CommandHost& host) { UndoOrRedo(host, false); },
           .captionWhen =
               [](const CommandState& s) {
                   return s.ws.history.CanRedo()
                              ? QObject::tr("&Redo %1").arg(QString::fromStdString(s.ws.history.RedoLabel()))
                              : QObject::tr("&Redo");
               },
           .captionStamp = [](const CommandState& s) { return s.ws.history.ListsStamp(); }});
}

void AddEventCommands(CommandRegistry& r) {
    r.AddMenu({kEventsMenu, "menu_Events", -80});
    double order = 0;
    // edit returns whether the event table changed.
    const auto add = [&](const char* name, const char* caption, QList<QKeySequence> keys, const char* tip,
                         bool (*enabled)(const CommandState&), bool (*edit)(CommandHost&),
                         const char* menu = kEventsMenu, bool separatorBefore = false) {
        r.Add({.objectName = name,
               .menuPath = menu,
               .caption = QObject::tr(caption),
               .keys = std::move(keys),
               .toolTip = tip ? QString(tip) : QString(),
               .order = order++,
               .separatorBefore = separatorBefore,
               .enabledWhen = enabled,
               .run = [edit](CommandHost& host) { host.Redraw(edit(host)); }});
    };
    const auto groupSelected = [](CommandHost& h) {
        const auto rows = h.SelectedRows();
        return GroupSelectedEvents(h.Ws(), h.Asker(), rows).changed;
    };

    add("menu_markasgp", "&Group Selected Events...", {QKeySequence("G")}, nullptr, WhenEventsAndIdle, groupSelected);
    // The same command on the grid's context menu.
    add("menu_Group", "Group Selected Events...", {}, nullptr, WhenEventsAndIdle, groupSelected, "");
    add("menu_MarkAllEvents", "Group &All Events...", {QKeySequence("Shift+N")}, kTipGroupAll, WhenEventsAndIdle,
        [](CommandHost& h) { return GroupAllEvents(h.Ws(), h.Asker()).changed; });
    add("menu_MarkAllWindow", "Group Events in This &Window...", {QKeySequence("M")}, kTipGroupWindow,
        WhenEventsInRecordingAndIdle, [](CommandHost& h) { return GroupWindowEvents(h.Ws(), h.Asker()).changed; });
    add("menu_Unmark", "&Unmark Selected Event", {QKeySequence("U")}, kTipUnmark, WhenEventSelectedAndIdle,
        [](CommandHost& h) { return UnmarkEvent(h.Ws()).changed; });
    add("menu_UnmarkGrouped", "Unmark Grouped Events...", {}, nullptr, WhenEventsAndIdle, [](CommandHost& h) { return UnmarkGroup(h.Ws(), h.Asker()).changed; });
    add("menu_RejectThisEvent", "&Reject Selected Event", {QKeySequence("J")}, kTipReject, WhenEventSelectedAndIdle,
        [](CommandHost& h) { return RejectEvent(h.Ws()).changed; }, kEventsMenu, true);
    add("menu_RejectEvents", "Reject Events Selected in the Grid", {}, nullptr, WhenEventsAndIdle,
        [](CommandHost& h) {
            const auto rows = h.SelectedRows();
            return RejectSelectedEvents(h.Ws(), rows).changed;
        });
    add("menu_DeletEvent", "&Delete Selected Event", {QKeySequence("K")}, kTipDelete, WhenEventSelectedAndIdle,
        [](CommandHost& h) { return DeleteEvent(h.Ws()).changed; });
    add("menu_deleteevents", "Delete Events Selected in the Grid", {QKeySequence("Shift+Del")}, nullptr,
        WhenEventsAndIdle, [](CommandHost& h) {
            const auto rows = h.SelectedRows();
            return DeleteSelectedEvents(h.Ws(), rows).changed;
        });
    add("menu_DeleteRejected", "Delete All Rejected Events", {}, nullptr, WhenEventsAndIdle,
        [](CommandHost& h) { return DeleteRejectedEvents(h.Ws()).changed; });
    add("menu_RemoveDuplicates", "Remove Duplicate Events", {}, nullptr, WhenEventsAndIdle,
        [](CommandHost& h) { return RemoveDuplicateEvents(h.Ws(), h.Asker()).changed; });
    add("menu_RemoveNearDuplicates", method_texts::kNearDuplicatesAction, {}, nullptr, WhenEventsAndIdle,
        [](CommandHost& h) { return RemoveNearDuplicatesCommand(h.Ws(), h.Asker()).changed; });

    // The group assignments of the group analysis commands come in front.
    r.Add({.objectName = "menu_Sort",
           .menuPath = kEventsMenu,
           .caption = QObject::tr("&Sort Events By"),
           .order = order++,
           .separatorBefore = true,
           .enabledWhen = [](const CommandState& s) { return s.ws.events.Count() > 1 && !s.Busy(); },
           .subMenu = true});
    const char* fields[] = {"Time", "Amplitude", "Time to Rise", "Time to Decay", "Area",
                            "Baseline", "Noise", "Group", "Channel", "Rise10-90", "Half-width",
                            "Rise 50", "Peak Direction", "Burst #", "Burst Event#", "Slope10-90",
                            "Relative Time"};
    for (int f = 0; f < kEventFieldCount; ++f)
        r.Add({.objectName = QString("menu_Sort%1").arg(f),
               .menuPath = QString(kEventsMenu) + "/&Sort Events By",
               .caption = fields[f],
               .order = order++,
               .run = [f](CommandHost& host) { SortEventsBy(host, EventField(f)); }});
}

void AddEditingCommands(CommandRegistry& r) {
    AddEditCommands(r);
    AddEventCommands(r);
}

const CommandRegistration registration{AddEditingCommands};

}  // namespace
}  // namespace vess
