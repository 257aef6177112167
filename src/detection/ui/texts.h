// Texts of the trace view and its commands, exactly as the user sees them
// (inner spacing included: the key names line up in the tool-tips).
#pragma once

#include "detection/texts.h"

namespace vess::ui_text {

// Analysis and event commands (those the detection commands also name are
// kept there, once).
inline constexpr const char* kTipAnalyze = detection_texts::kTipAnalyzeWindow;
inline constexpr const char* kTipAnalyzeNext = detection_texts::kTipAnalyzeNext;
inline constexpr const char* kTipNonStop = detection_texts::kTipNonStop;
inline constexpr const char* kTipStop = detection_texts::kTipInterrupt;
inline constexpr const char* kTipReject = "Reject selected event               (J)";
inline constexpr const char* kTipRecalculate = detection_texts::kTipRecalculate;
inline constexpr const char* kTipDelete = "Delete selected event                        (K)";
inline constexpr const char* kTipDoublePeak = detection_texts::kTipDoublePeak;
inline constexpr const char* kTipUnmark = "Unmark selected event from a group    (U)";
inline constexpr const char* kTipGroupAll = "Group all events                               (N)";
inline constexpr const char* kTipGroupWindow = "Group all events in this window           (M)";

// Mouse commands on the trace.
inline constexpr const char* kTipClickDetect = detection_texts::kTipDetectClick;
inline constexpr const char* kTipClickSelect = "Select an event      (Right mouse click)";
inline constexpr const char* kTipClickRecalculate = detection_texts::kTipRecalculateClick;
inline constexpr const char* kTipClickDelete = "Delete event         (Ctrl+Left mouse click)";
inline constexpr const char* kTipClickDoublePeak = detection_texts::kTipDoublePeakClick;
inline constexpr const char* kTipClickReject = "Reject an event      (Ctrl+Shift+Left mouse click)";
inline constexpr const char* kTipClickDetectLow = detection_texts::kTipDetectTenth;

// Display commands.
inline constexpr const char* kTipGainUp = "Increase display gain     (Home)";
inline constexpr const char* kTipGainDown = "Decrease display gain    (End)";
inline constexpr const char* kTipOffsetUp = "Increase display offset   (Page Up)";
inline constexpr const char* kTipOffsetDown = "Decrease display offset   (Page Down)";
inline constexpr const char* kTipFitDisplay = "Fit the display to every sample of this screen   (H)";
inline constexpr const char* kTipResetDisplay = "Reset display gain and offset   (0)";

// The overview strip and the screen length.
inline constexpr const char* kTipOverview =
    "The whole recording: events are ticks along the bottom, the screen shown is highlighted, "
    "orange columns reach beyond the range drawn.  Click or drag to show that screen.";
inline constexpr const char* kTipBlocksPerScreen =
    "256-point blocks shown on one screen.  Analysis searches screen by screen, so this also "
    "changes what detection searches.";

// Navigation commands.
inline constexpr const char* kTipFirstScreen = "Jump to First Screen     (A)";
inline constexpr const char* kTipPrevScreen = "Jump to Prev. Screen    (S)";
inline constexpr const char* kTipNextScreen = "Jump to Next Screen     (D)";
inline constexpr const char* kTipLastScreen = "Jump to Last Screen      (F)";
inline constexpr const char* kTipFirstEvent = "Jump to First Event     (Z)";
inline constexpr const char* kTipPrevEvent = "Jump to Prev. Event    (X)";
inline constexpr const char* kTipNextEvent = "Jump to Next Event     (C)";
inline constexpr const char* kTipLastEvent = "Jump to Last Event      (V)";
inline constexpr const char* kTipNextEventNextWindow = "Jump to Next Event in Next Window (B)";
inline constexpr const char* kTipFirstInSequence = "Jump to First Event in Sequence   (Q)";
inline constexpr const char* kTipPrevInSequence = "Jump to Prev. Event in Sequence  (W)";
inline constexpr const char* kTipNextInSequence = "Jump to Next Event in Sequence   (E)";
inline constexpr const char* kTipLastInSequence = "Jump to Last Event in Sequence    (R)";
inline constexpr const char* kTipFirstGrouped = "Jump to First Grouped Event     (1)";
inline constexpr const char* kTipPrevGrouped = "Jump to Prev. Grouped Event    (2)";
inline constexpr const char* kTipNextGrouped = "Jump to Next Grouped Event     (3)";
inline constexpr const char* kTipLastGrouped = "Jump to Last Grouped Event      (4)";
inline constexpr const char* kTipJumpTime = "Jump to Specific Time      (T)";
inline constexpr const char* kTipJumpInterval = "Jump to Next Time Interval (CTL-T)";
inline constexpr const char* kTipJumpEvent = "Jump to Event Number       (Y)";

// Cursor read-out.
inline constexpr const char* kCursorX1 = "x1:";
inline constexpr const char* kCursorY1 = "  y1:";
inline constexpr const char* kCursorX2 = "x2:";
inline constexpr const char* kCursorY2 = "  y2:";

}  // namespace vess::ui_text
