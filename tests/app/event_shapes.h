// Hand-built events for the main window's tests: a difference of
// exponentials (rise 10, decay 100 samples) whose top is `peak` counts.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "recording/rounding.h"

namespace vess::test {

inline void AddEvent(std::vector<int16_t>& trace, int64_t onset, double peak) {
    constexpr double rise = 10, decay = 100;
    const double tp = rise * decay / (decay - rise) * std::log(decay / rise);
    const double scale = peak / (std::exp(-tp / decay) - std::exp(-tp / rise));
    for (int64_t i = onset; i < int64_t(trace.size()); ++i) {
        const double t = double(i - onset);
        trace[std::size_t(i)] =
            Clamp16(trace[std::size_t(i)] + RoundEven(scale * (std::exp(-t / decay) - std::exp(-t / rise))));
    }
}

}  // namespace vess::test
