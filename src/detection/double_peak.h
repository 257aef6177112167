// Double peaks: a second, distinct peak inside the rise-to-decay stretch of
// a detected event (an event riding on the decay of another, or a shoulder
// on its rise that rises again). The second peak is stored as an event of its
// own, right after its event in the table, so the table stays in time order.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "detection/analyze_window.h"
#include "detection/detector.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

inline constexpr const char* kUndoDoublePeak = "Double peak";
inline constexpr const char* kUndoScanDoublePeak = "Scan for double peaks";

// Looks inside first's stretch (event start .. decay point) for a second peak:
// a trough after the peak (or before it, on the rise) and then a peak that
// rises from that trough by at least the amplitude threshold and by 5 % of
// the event's amplitude (both on three-point means, so single noisy samples
// do not make it), and that passes the amplitude and direction tests against
// the event's own baseline. The second peak is measured against that
// baseline; its start is the trough between the two peaks. The later side is
// tried first. nullopt when there is none.
std::optional<MeasuredEvent> FindSecondPeak(const Detector& det, const MeasuredEvent& first);

// The event stored in record r, as the measurements see it on the screen of
// det (peak, value, baseline, amplitude, start and decay point from the
// record); nullopt when its peak is not on that screen.
std::optional<MeasuredEvent> StoredEvent(const Detector& det, const EventRecord& r);

struct DoublePeakResult {
    int32_t firstIndex = 0;    // 1-based row of the event analysed (after any insertion)
    int32_t eventIndex = 0;    // 1-based row of the second peak; 0 when none was stored
    bool alreadyStored = false;  // the second peak was found but is already in the table
    std::vector<DetectionMark> marks;  // four per event stored
};

// menu_DoublePeak (L): the selected event (1-based), on the current screen.
// No second peak fails with the "Double Peak" message, table unchanged; so do
// no selected event, one off the screen and improper parameters. One undo
// step when a peak was stored.
Outcome<DoublePeakResult> AnalyzeDoublePeak(Workspace& ws, int32_t eventIndex);

// Alt+left click: the event at the clicked window index (found as a left click
// finds it); when it has a second peak, both are stored (the first one only if
// the table does not already hold it), as one undo step. Nothing at the point
// fails with the "No Event Found" message, no second peak the "Double Peak" one.
Outcome<DoublePeakResult> DetectDoublePeakAtPoint(Workspace& ws, int64_t windowIndex);

struct DoublePeakScanResult {
    int32_t eventsScanned = 0;  // rejected events (group 255) are not scanned
    int32_t peaksAdded = 0;
};

// menu_ScanDoublePeak: every event of the table, each on its own screen. The
// second peaks found are inserted after their events as one undo step; a
// summary message says how many events were scanned and how many peaks added.
// Fails only for improper parameters.
Outcome<DoublePeakScanResult> ScanDoublePeaks(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
