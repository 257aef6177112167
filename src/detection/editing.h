// Event editing and grouping: the commands that change group numbers, reject
// and delete events and clean the event table.
//
// Every command that changes the table first records an undo step in
// ws.history (only when something actually changes, so undo never has empty
// steps) and leaves ws.selectedEvent valid: 0 for an empty table, otherwise
// the same event when it survives, else the nearest row.
//
// Group entries: the text is read as a number (blanks around it allowed).
// Below 0 or above 255 changes nothing; 255 is accepted (it rejects). A
// fraction is rounded ties to even. Cancel, an empty answer and a text that is
// not a number change nothing and show no message.
//
// "Selected events" are the 1-based rows selected in the grid; when that list
// is empty the current event (ws.selectedEvent) stands for it. Rows outside
// the table are ignored, repeated rows count once.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// What an edit changed, for the redraw. No edit here can fail: a cancelled
// or unreadable answer simply changes nothing, so this stays a report of
// changes rather than a command result.
struct EditResult {
    bool changed = false;       // the table changed (an undo step was recorded)
    int32_t regrouped = 0;      // events whose group number changed
    int32_t deleted = 0;        // events removed from the table
    std::optional<int32_t> group;  // the group number entered, when one was accepted
};

// Reads a group entry: the number 0..255, or nothing for an entry that must
// change nothing (cancel, empty, not a number, below 0, above 255).
std::optional<int32_t> ParseGroupEntry(std::optional<std::string_view> entry);

// menu_markasgp / menu_Group: asks "Group Number" and gives the selected
// events that group. Asks nothing when no event is selected.
EditResult GroupSelectedEvents(Workspace& ws, Dialogs& dialogs, std::span<const int32_t> rows);
// menu_MarkAllEvents: asks and gives every event the group. Asks nothing for
// an empty table.
EditResult GroupAllEvents(Workspace& ws, Dialogs& dialogs);
// menu_MarkAllWindow: asks and gives the group to the events of the screen
// shown (sampleIndex, or time when sampleIndex is 0, within the screen).
// Needs an open recording; asks nothing for an empty table.
EditResult GroupWindowEvents(Workspace& ws, Dialogs& dialogs);
// menu_Unmark: the current event's group back to 0.
EditResult UnmarkEvent(Workspace& ws);
// menu_UnmarkGrouped: asks for a group and sets its events to 0; 0 resets
// every event. Asks nothing for an empty table.
EditResult UnmarkGroup(Workspace& ws, Dialogs& dialogs);
// menu_RejectThisEvent: the current event's group to 255.
EditResult RejectEvent(Workspace& ws);
// menu_RejectEvents: the selected events' group to 255. Only with a recording
// open and a non-empty table.
EditResult RejectSelectedEvents(Workspace& ws, std::span<const int32_t> rows);
// menu_DeletEvent: removes the current event; the row after it becomes
// current.
EditResult DeleteEvent(Workspace& ws);
// menu_deleteevents: rejects the selected events, then deletes every rejected
// event (earlier rejections included), as one undo step. Does nothing without
// a recording or when the table holds exactly one event.
EditResult DeleteSelectedEvents(Workspace& ws, std::span<const int32_t> rows);
// menu_DeleteRejected: sorts the table by group (the table sort) and cuts it
// before the first event of group 255. Without rejected events the table is
// left as it is, unsorted.
EditResult DeleteRejectedEvents(Workspace& ws);
// menu_RemoveDuplicates: walking from the last row down to row 2, deletes
// every event whose time equals exactly the time of the row before it, then
// shows "Found n duplicate events and they are safely removed." (also for 0).
EditResult RemoveDuplicateEvents(Workspace& ws, Dialogs& dialogs);

// Brings ws.selectedEvent back into 0..Count() (after an undo, a load, ...).
void KeepSelectionValid(Workspace& ws);

}  // namespace vess
