// Further peaks of a complex event: events that rise out of the decay of the
// event stored just before them, inside the same search range.
#pragma once

#include <functional>
#include <optional>

#include "detection/detector.h"

namespace vess {

// The most distinct bump on one side of a point, on three-point means:
// walking from near to far (step +1 forwards, -1 backwards), the point that
// rises most, in the event direction, above the least extreme point met
// before it on the walk. riseCounts is 0 when nothing rises.
//
// With deepEnough, only troughs that the trace has fallen into count: a
// trough is taken when deepEnough(fall) holds for its fall below the point
// just before near (the peak the walk starts from). A trace still rising
// after that peak, or wavering on its top, then makes no bump.
struct Bump {
    int64_t peak = 0;
    int64_t trough = 0;
    double riseCounts = 0;
};
Bump MostDistinctBump(const Screen& screen, int16_t direction, int64_t near, int64_t far, int step,
                      const std::function<bool(double fallCounts)>& deepEnough = {});

// Three-point mean of the samples around i.
double Mean3(const Screen& screen, int64_t i);

// Looks for a separate peak after the stored peak at lastPeak: the trace must
// fall from that peak into a trough and rise from it again, each by at least
// the amplitude threshold, and the further peak must lie after the trough.
// The detector's floor must be at lastPeak, so that the measuring loop never
// steps back onto the stored event.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak);

}  // namespace vess
