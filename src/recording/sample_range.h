// The range of a run of 16-bit samples, taken sixteen lanes at a time.
#pragma once

#include <cstdint>
#include <span>

namespace vess {

// low and high widened to take in every value (sixteen running minima and
// maxima side by side in two vector registers, folded at the end).
void FoldRange(std::span<const int16_t> values, int16_t& low, int16_t& high);

}  // namespace vess
