// Further peaks of a complex event: events that rise out of the decay of the
// event stored just before them, inside the same search range.
#pragma once

#include <optional>

#include "detection/detector.h"

namespace vess {

// The most distinct bump on one side of a point, on three-point means:
// walking from near to far (step +1 forwards, -1 backwards), the point that
// rises most, in the event direction, above the least extreme point met
// before it on the walk. riseCounts is 0 when nothing rises.
struct Bump {
    int64_t peak = 0;
    int64_t trough = 0;
    double riseCounts = 0;
};
Bump MostDistinctBump(const Screen& screen, int16_t direction, int64_t near, int64_t far, int step);

// Three-point mean of the samples around i.
double Mean3(const Screen& screen, int64_t i);

// Looks for a separate peak after the stored peak at lastPeak. The detector's
// floor must be at lastPeak, so that the measuring loop never steps back onto
// the stored event.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak);

}  // namespace vess
