#include "recording/sample_range.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vess {

void FoldRange(std::span<const int16_t> values, int16_t& low, int16_t& high) {
    constexpr std::size_t kLanes = 16;
    typedef int16_t Lanes __attribute__((vector_size(kLanes * sizeof(int16_t))));
    Lanes lo, hi;
    for (std::size_t k = 0; k < kLanes; ++k) {
        lo[k] = low;
        hi[k] = high;
    }
    std::size_t i = 0;
    for (; i + kLanes <= values.size(); i += kLanes) {
        Lanes v;
        std::memcpy(&v, values.data() + i, sizeof v);
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
    }
    for (std::size_t k = 0; k < kLanes; ++k) {
        low = std::min<int16_t>(low, lo[k]);
        high = std::max<int16_t>(high, hi[k]);
    }
    for (; i < values.size(); ++i) {
        low = std::min(low, values[i]);
        high = std::max(high, values[i]);
    }
}

}  // namespace vess
