#include "detection/count_threshold.h"

#include <cmath>

namespace vess {
namespace {

std::optional<int32_t> Search(const Recording& rec, float units) {
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

// Every screen of a run asks the same question of the same scaling: the last
// answer of this thread is kept with what it depends on.
struct Asked {
    float gain = 0, range = 0, units = 0;
    int32_t resolution = 0;
    bool operator==(const Asked&) const = default;
};

}  // namespace

std::optional<int32_t> LeastCountsReaching(const Recording& rec, float units) {
    thread_local std::optional<Asked> lastAsked;
    thread_local std::optional<int32_t> lastAnswer;
    const Asked asked{rec.Gain(), rec.Header().adcRange, units, rec.Header().adcResolution};
    if (lastAsked != asked) {
        lastAnswer = Search(rec, units);
        lastAsked = asked;
    }
    return lastAnswer;
}

}  // namespace vess
