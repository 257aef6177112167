#include "statistics/welch_psd.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "recording/fft_plan.h"

namespace vess {

WelchPsdResult WelchPsd(std::span<const double> y, double fs, int windowPoints, double overlapPercent) {
    const auto copy = [y](std::size_t start, std::span<double> window) {
        std::copy_n(y.begin() + std::ptrdiff_t(start), window.size(), window.begin());
    };
    return WelchPsd(y.size(), copy, fs, windowPoints, overlapPercent);
}

WelchPsdResult WelchPsd(std::size_t count, const WelchReader& read, double fs, int windowPoints,
                        double overlapPercent) {
    WelchPsdResult s;
    const int n = int(std::min<std::size_t>(count, std::size_t(std::max(windowPoints, 4))));
    if (n < 4) return s;
    const int step = std::max(1, int(std::nearbyint(n * (1 - overlapPercent / 100))));
    std::vector<double> window(static_cast<std::size_t>(n));
    double windowPower = 0;
    for (int i = 0; i < n; ++i) {
        window[std::size_t(i)] = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / n);  // periodic Hann
        windowPower += window[std::size_t(i)] * window[std::size_t(i)];
    }
    const int bins = n / 2 + 1;
    RealFft fft(n);
    double* in = fft.Samples();
    const std::complex<double>* out = fft.Spectrum();
    s.density.assign(std::size_t(bins), 0);
    for (std::size_t start = 0; start + std::size_t(n) <= count; start += std::size_t(step)) {
        read(start, std::span<double>(in, std::size_t(n)));
        double mean = 0;
        for (int i = 0; i < n; ++i) mean += in[i];
        mean /= n;
        for (int i = 0; i < n; ++i) in[i] = (in[i] - mean) * window[std::size_t(i)];
        fft.Forward();
        for (int k = 0; k < bins; ++k) s.density[std::size_t(k)] += std::norm(out[k]);
        ++s.windows;
    }
    for (int k = 0; k < bins; ++k) {
        const bool single = k == 0 || (n % 2 == 0 && k == n / 2);
        s.density[std::size_t(k)] *= (single ? 1.0 : 2.0) / (fs * windowPower * s.windows);
        s.frequencyHz.push_back(k * fs / n);
    }
    return s;
}

}  // namespace vess
