// Prompts and messages of the trace-view navigation commands. The two input
// boxes are shown exactly as written; the messages for entries that cannot be
// used are our own, in the program's style.
#pragma once

namespace vess::navigation_texts {

// Jump to Specific Time (T)
inline constexpr const char* kJumpTimeCaption = "Jump To";
inline constexpr const char* kJumpTimePrompt =
    "Please specify the time to jump to in milli second.";
// Our own: kJumpTimeNotNumber; kJumpTimeOutOfRange1 + entry + kJumpTimeOutOfRange2 + end
// + kJumpTimeOutOfRange3.
inline constexpr const char* kJumpTimeNotNumber =
    "The time must be a number.  Please specify the time in milli second.";
inline constexpr const char* kJumpTimeOutOfRange1 = "The time ";
inline constexpr const char* kJumpTimeOutOfRange2 =
    " is outside the data.  Please specify a time from 0 to ";
inline constexpr const char* kJumpTimeOutOfRange3 = " milli second.";

// Jump to Event Number (Y)
inline constexpr const char* kJumpEventCaption = "Jump To Event Number";
inline constexpr const char* kJumpEventPrompt = "Please specify the event number to jump to.";
// Our own: kJumpEventNone when the table is empty; kJumpEventOutOfRange1 + entry +
// kJumpEventOutOfRange2 + count + kJumpEventOutOfRange3 otherwise.
inline constexpr const char* kJumpEventNone = "There are no events to jump to.";
inline constexpr const char* kJumpEventOutOfRange1 = "There is no event number ";
inline constexpr const char* kJumpEventOutOfRange2 = ".  Please specify a number from 1 to ";
inline constexpr const char* kJumpEventOutOfRange3 = ".";

// Items of the group navigation box (cbGpNav): item 0, then "1" to "255".
inline constexpr const char* kGroupNavAll = "All groups";

}  // namespace vess::navigation_texts
