// Navigation of the trace view: which screen is shown and which event is
// selected after each keyboard command. Every function here is pure: it reads
// the workspace and returns where to go; ApplyNavigation moves there. Nothing
// is drawn.
//
// Screens are tiled from block 0 in steps of the blocks per screen, the same
// tiling that screen-by-screen analysis uses, so a screen reached by any jump
// is one that analysis would also visit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_record.h"
#include "recording/settings.h"
#include "recording/workspace.h"

namespace vess {

// Where the trace view stands after a command. Not moving is no failure (at
// the end of the recording there is nothing further to show), so moved stays
// a flag; the jumps that can be refused give an Outcome of it.
struct NavResult {
    int32_t screenStartBlock = 0;
    int32_t selectedEvent = 0;  // 1-based; 0 when none
    bool moved = false;         // false when the view stays (an end, nothing to go to, cancel)
};

// Sets ws.screenStartBlock and ws.selectedEvent from the result.
void ApplyNavigation(Workspace& ws, const NavResult& result);

// The recording laid out in screens.
struct ScreenGeometry {
    int32_t blockCount = 0;       // 0 when no recording is open
    int32_t blocksPerScreen = 1;
    double intervalUs = 0;        // per channel

    bool HasRecording() const { return blockCount > 0 && intervalUs > 0; }
    // Start block of the tiled screen that holds a block (clamped to the data).
    int32_t ScreenOfBlock(int64_t block) const;
    // Start block of the tiled screen that holds a sample index.
    int32_t ScreenOfSample(int64_t sample) const;
    int32_t LastScreenStart() const;
    // Time in ms of the first sample of a block.
    double BlockStartMs(int64_t block) const;
    // Time in ms just past the last sample of the data.
    double DataEndMs() const { return BlockStartMs(blockCount); }
};

ScreenGeometry GeometryOf(const Workspace& ws);

// Sample index (from the first data block) of a time in ms: ms x 1000 /
// interval, rounded ties to even.
int64_t TimeToSample(double timeMs, double intervalUs);
// Sample index of an event: its sampleIndex, or the sample of its time when
// sampleIndex is 0 (events made without detection).
int64_t EventSamplePosition(const EventRecord& record, double intervalUs);

// Keyboard navigation commands that need no input from the user.
enum class NavCommand {
    FirstScreen, PrevScreen, NextScreen, LastScreen,          // A S D F
    FirstEvent, PrevEvent, NextEvent, LastEvent,              // Z X C V (time order)
    NextEventInNextWindow,                                    // B
    FirstInSequence, PrevInSequence, NextInSequence, LastInSequence,  // Q W E R (grid rows)
    FirstGrouped, PrevGrouped, NextGrouped, LastGrouped,      // 1 2 3 4 (time order)
    NextTimeInterval,                                         // Ctrl+T
};

// Where a command leads from the current screen and selection. At either end
// the view stays where it is (moved false), without a sound.
//
// Event jumps (Z X C V, B, 1 2 3 4) go through the events in time order (ties
// by table row); the Sequence jumps (Q W E R) go through the grid rows as the
// table stands, so after a sort they follow the sorted order. With no event
// selected, Next/Prev start from the screen shown: Next picks the first event
// at or after its start, Prev the last event before its end.
//
// Grouped jumps visit events whose group is not 0; when settings.navigationGroup
// is 1..255 only events of that group (see GroupNavigationFilter).
NavResult Navigate(const Workspace& ws, NavCommand command);

// The screen of event `index` (1-based) with that event selected; the screen
// stays when no recording is open. Used for grid clicks and event jumps.
NavResult ShowEvent(const Workspace& ws, int32_t index);

// Jump to Specific Time (T): asks for a time in ms and shows the screen that
// holds it. A time that is not a number or lies outside the data fails with
// the message that says so. Cancelled without a recording or an answer.
Outcome<NavResult> JumpToTime(const Workspace& ws, Dialogs& dialogs);

// Jump to Event Number (Y): asks for an event number, selects it and shows
// its screen. An empty table, a non-number or a number out of range fails.
Outcome<NavResult> JumpToEventNumber(const Workspace& ws, Dialogs& dialogs);

// Group navigation box (cbGpNav): item i is GroupNavigate = i; item 0 is
// "All groups" (every group other than 0), items 1..255 one group each.
std::vector<std::string> GroupNavigationItems();
// The group the grouped jumps follow: 0 for all groups, else 1..255.
// GroupNavigate values outside 0..255 mean all groups.
int32_t GroupNavigationFilter(const Settings& settings);

// Vertical display scale of the trace (Home/End, Page Up/Page Down).
//
// A sample of c counts is drawn at height (c + offsetCounts) x gain within
// the full span (65536 counts at gain 1): gain enlarges the trace about the
// centre, a larger offset moves it up.
struct DisplayScale {
    double gain = 1;           // on the ladder 1, 1.25, 1.6, 2, 2.5, 3.2, 4, 5, 6.4, 8, 10, ...
    int32_t offsetCounts = 0;  // shifts the trace up, ADC counts
};

enum class DisplayStep { IncreaseGain, DecreaseGain, IncreaseOffset, DecreaseOffset };

inline constexpr double kMinDisplayGain = 0.01;
inline constexpr double kMaxDisplayGain = 1000;
inline constexpr double kFullSpanCounts = 65536;

// Gain moves one step of about 25 % up or down the ladder (a gain between
// ladder values moves to the next one), within kMinDisplayGain..kMaxDisplayGain.
// Offset moves by a tenth of the span visible at the current gain.
DisplayScale StepDisplay(const DisplayScale& scale, DisplayStep step,
                         double fullSpanCounts = kFullSpanCounts);

// Counts visible at the bottom and top of the trace for a trace centred on
// centreCounts (0 for the ADC's own centre).
struct VisibleCounts {
    double bottomCounts = 0;
    double topCounts = 0;
};
VisibleCounts VisibleRange(const DisplayScale& scale, double centreCounts = 0,
                           double fullSpanCounts = kFullSpanCounts);

// settings.DisplayGain (text; invalid or not positive reads as 1) and
// settings.displayOffsetCounts.
DisplayScale DisplayScaleFromSettings(const Settings& settings);
void StoreDisplayScale(Settings& settings, const DisplayScale& scale);

}  // namespace vess
