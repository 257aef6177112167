// Detection over the displayed screen: tiles it with search ranges, measures
// the extreme point of each and appends the accepted events to the table.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/dialogs.h"
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
    bool improperParameters = false;  // the message was shown, nothing was done
    int32_t eventsAdded = 0;
    std::vector<DetectionMark> marks;  // four per added event
};

// Detects events on the screen and appends them to events. A period shorter
// than one sample shows the "Improper Analysis Parameters" message instead.
AnalyzeWindowResult AnalyzeWindow(const Screen& screen, const AnalysisParameters& params,
                                  EventTable& events, Dialogs& dialogs);

}  // namespace vess
