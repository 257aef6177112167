// Commands at a point of the screen or on one event: detection at a clicked
// point (also at a tenth of the thresholds) and recalculation of an event.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "detection/analyze_window.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// What a point command changed; why it did nothing is its Outcome's failure.
struct PointCommandResult {
    int32_t eventIndex = 0;             // 1-based row stored or changed; 0 when none
    std::vector<DetectionMark> marks;   // four when an event was stored or changed
};

// Left click: the search range centred on the clicked window index gives the
// candidate, measured as in AnalyzeWindow and stored (with the same
// duplicate guard) as one undo step. With tenthThresholds the amplitude and
// area thresholds are divided by 10. A click where nothing passes the tests
// fails with "No Event Found", as do improper parameters with their message;
// cancelled without a recording.
Outcome<PointCommandResult> DetectAtPoint(Workspace& ws, int64_t windowIndex, bool tenthThresholds = false);

class Detector;
// The end of every click detection: fails when nothing was found, else
// stores the event (unless it repeats the last stored time) as one undo step
// and marks it.
Outcome<PointCommandResult> StoreClickedEvent(Workspace& ws, const Screen& screen, const Detector& det,
                                              const std::optional<MeasuredEvent>& e);

// menu_RecalculatePeak: measures event eventIndex (1-based) again on the
// current screen from its stored peak, with the current parameters, and
// replaces its measurements in place (group and burst numbers kept). Fails
// for no selected event, an event off the screen or nothing measured there.
Outcome<PointCommandResult> RecalculateEvent(Workspace& ws, int32_t eventIndex);

}  // namespace vess
