// An amplitude threshold in the channel's unit turned into counts, so that
// the amplitude test of every candidate compares integers instead of
// converting each amplitude.
#pragma once

#include <cstdint>
#include <optional>

#include "recording/recording.h"

namespace vess {

// The least difference of counts, 0 .. 65535, whose Bit2pA2 is at least
// units (65536 when none is). nullopt when Bit2pA2 does not grow with the
// counts (a scaling of negative sign), where only Bit2pA2 itself can answer.
std::optional<int32_t> LeastCountsReaching(const Recording& rec, float units);

}  // namespace vess
