// Further peaks of a complex event: events that rise out of the decay of the
// event stored just before them, inside the same search range.
#pragma once

#include <optional>

#include "detection/detector.h"

namespace vess {

// Looks for a separate peak after the stored peak at lastPeak. The detector's
// floor must be at lastPeak, so that the measuring loop never steps back onto
// the stored event.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak);

}  // namespace vess
