#include "detection/count_threshold.h"

#include <cmath>

namespace vess {

std::optional<int32_t> LeastCountsReaching(const Recording& rec, float units) {
    // Each step of Bit2pA2 (a division and a multiplication by positive
    // numbers, each rounded, then a rounding to float) keeps the order of
    // its input, so "Bit2pA2(c) >= units" turns true once and stays true.
    const double range = rec.Header().adcRange, resolution = rec.Header().adcResolution;
    if (!(rec.Gain() > 0 && range > 0 && resolution > 0)) return std::nullopt;
    auto reaches = [&](int32_t counts) { return rec.Bit2pA2(counts) >= units; };
    int32_t low = 0, high = 65536;  // the answer lies in [low, high]
    // The exact quotient narrows the search to a step or two around it.
    const double guess = std::ceil(double(units) * double(rec.Gain()) * resolution / range);
    if (guess >= 1 && guess <= 65535) {
        const int32_t g = int32_t(guess);
        if (reaches(g - 1)) high = g - 1;
        else if (!reaches(g + 1)) low = g + 2;
        else low = g, high = g + 1;
    }
    while (low < high) {
        const int32_t mid = low + (high - low) / 2;
        if (reaches(mid)) high = mid;
        else low = mid + 1;
    }
    return low;
}

}  // namespace vess
