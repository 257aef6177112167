// Prompts and labels of the event editing and grouping commands. The prompt
// texts are shown to the user exactly as written here, double spaces and
// spelling included.
#pragma once

namespace vess::editing_texts {

// menu_markasgp / menu_Group
inline constexpr const char* kGroupSelectedCaption = "Group Number";
inline constexpr const char* kGroupSelectedPrompt =
    "Please enter the group number.  (Entering 0 will remove from current group.)";
// menu_MarkAllEvents
inline constexpr const char* kGroupAllCaption = "Mark all events as a group";
inline constexpr const char* kGroupAllPrompt =
    "Please enter the group number(range: 0-255) you would like to mark all events.";
// menu_MarkAllWindow
inline constexpr const char* kGroupWindowCaption = "Mark events in this widnow as a group";
inline constexpr const char* kGroupWindowPrompt =
    "Please enter the group number(range: 0-255) you would like to mark events in this window.";
// menu_UnmarkGrouped
inline constexpr const char* kUnmarkGroupCaption = "Unmark Grouped Events";
inline constexpr const char* kUnmarkGroupPrompt =
    "Please enter the group number you would like to unmark.  (Entering 0 will unmark all the "
    "events.)";
// menu_RemoveDuplicates: kDuplicatesBefore + count + kDuplicatesAfter.
inline constexpr const char* kDuplicatesBefore = "Found ";
inline constexpr const char* kDuplicatesAfter = " duplicate events and they are safely removed.";
// Our own caption for that message box.
inline constexpr const char* kDuplicatesCaption = "Remove Duplicates";

// Undo/redo labels (our own).
inline constexpr const char* kLabelGroupSelected = "Group selected events";
inline constexpr const char* kLabelGroupAll = "Group all events";
inline constexpr const char* kLabelGroupWindow = "Group events in window";
inline constexpr const char* kLabelUnmark = "Unmark event";
inline constexpr const char* kLabelUnmarkGroup = "Unmark group";
inline constexpr const char* kLabelRejectEvent = "Reject event";
inline constexpr const char* kLabelRejectSelected = "Reject selected events";
inline constexpr const char* kLabelDeleteEvent = "Delete event";
inline constexpr const char* kLabelDeleteSelected = "Delete selected events";
inline constexpr const char* kLabelDeleteRejected = "Delete rejected events";
inline constexpr const char* kLabelRemoveDuplicates = "Remove duplicate events";

}  // namespace vess::editing_texts
