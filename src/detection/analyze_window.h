// Detection over the displayed screen: tiles it with search ranges, measures
// the extreme point of each and appends the accepted events to the table.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/command_result.h"
#include "recording/event_table.h"
#include "recording/screen.h"
#include "recording/settings.h"

namespace vess {

// Where an accepted event is marked on the trace (window index and level in
// counts). The drawing code chooses how; MarkColour gives the customary
// colour value (0xBBGGRR) of each kind.
struct DetectionMark {
    enum class Kind { Peak, BaselineMiddle, Start, Decay };
    Kind kind;
    int64_t index;
    int16_t level;
};
uint32_t MarkColour(DetectionMark::Kind kind);

struct MeasuredEvent;
// The four marks of a measured event, appended to marks.
void AddMarks(const Screen& screen, const MeasuredEvent& e, std::vector<DetectionMark>& marks);

struct AnalyzeWindowResult {
    // Failed with the "Improper Analysis Parameters" message when a period is
    // shorter than one sample: nothing was done and nothing was shown.
    CommandResult status = CommandResult::Ok();
    int32_t eventsAdded = 0;
    std::vector<DetectionMark> marks;  // four per added event
};

// Detects events on the screen and appends them to events. A period shorter
// than one sample fails the run instead (the caller shows why).
AnalyzeWindowResult AnalyzeWindow(const Screen& screen, const AnalysisParameters& params,
                                  EventTable& events);

}  // namespace vess
