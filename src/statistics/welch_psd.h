// One-sided power spectral density by Welch's method, shared by the noise
// spectrum of a trace and the heart-rate spectrum: periodic Hann windows,
// each window's own mean removed, periodograms averaged.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace vess {

struct WelchPsdResult {
    std::vector<double> frequencyHz;  // k * fs / n, k = 0 .. n/2
    std::vector<double> density;      // unit^2/Hz
    int windows = 0;                  // 0 when there were too few values
};

// Windows of min(windowPoints, values) points (at least 4) stepping by
// (1 - overlapPercent / 100) of a window. Every bin but DC and, for an even
// window, Nyquist carries the power of its negative frequency too.
WelchPsdResult WelchPsd(std::span<const double> y, double fs, int windowPoints, double overlapPercent);

// Writes the values from start on into window (window.size() of them).
using WelchReader = std::function<void(std::size_t start, std::span<double> window)>;
// The same over count values read one window at a time, so that a long
// stretch is never held whole.
WelchPsdResult WelchPsd(std::size_t count, const WelchReader& read, double fs, int windowPoints,
                        double overlapPercent);

}  // namespace vess
