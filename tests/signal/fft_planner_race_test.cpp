// Two threads planning FFTs at once through the two paths that plan them:
// the convolver of detection (batch and accuracy-check workers) and the
// Welch estimate of the noise and heart-rate spectra (the GUI thread). An
// unlocked planner corrupts FFTW's heap within a few hundred plans.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <thread>
#include <vector>

#include "detection/fft_convolution.h"
#include "statistics/welch_psd.h"

namespace vess {
namespace {

TEST(FftPlanner, ConvolversAndSpectraPlannedOnTwoThreadsAtOnce) {
    constexpr int kRounds = 2000;
    int convolutionErrors = 0, spectrumErrors = 0;
    std::thread convolving([&] {
        for (int r = 0; r < kRounds; ++r) {
            // A causal filter of 3 + r % 40 taps over a delta gives the taps
            // back, one after the other.
            std::vector<double> taps(std::size_t(3 + r % 40));
            for (std::size_t k = 0; k < taps.size(); ++k) taps[k] = double(k + 1);
            FftConvolver conv(taps, 0);
            std::vector<double> input(taps.size() * 2 - 1, 0.0), output;
            input[taps.size() - 1] = 1;
            conv.Filter(input, output);
            for (std::size_t i = 0; i < output.size(); ++i)
                if (std::abs(output[i] - taps[i]) > 1e-9) ++convolutionErrors;
        }
    });
    for (int r = 0; r < kRounds; ++r) {
        // A sine at bin 4 of a window of 16 + r points: its density peaks
        // at bin 4 whatever the window length. Each length is new to the
        // planner, so every round plans afresh.
        const int n = 16 + r;
        std::vector<double> y(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i) y[std::size_t(i)] = std::sin(2 * std::numbers::pi * 4 * i / n);
        const WelchPsdResult s = WelchPsd(y, 1.0, n, 0);
        const auto peak = std::max_element(s.density.begin(), s.density.end());
        if (peak - s.density.begin() != 4) ++spectrumErrors;
    }
    convolving.join();
    EXPECT_EQ(convolutionErrors, 0);
    EXPECT_EQ(spectrumErrors, 0);
}

}  // namespace
}  // namespace vess
