// The Lomb-Scargle periodogram, computed by turning each time's sine and
// cosine from one frequency to the next (a 3-hour series of 186 beats took
// seconds with four sines and cosines per beat and frequency), equals the
// textbook definition evaluated directly at every frequency.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "hrv/spectrum.h"

namespace vess::hrv {
namespace {

// Lomb's normalised periodogram at f, straight from its definition.
double DirectLomb(const std::vector<double>& t, const std::vector<double>& y, double f) {
    const double w = 2 * std::numbers::pi * f;
    double s2 = 0, c2 = 0;
    for (double ti : t) s2 += std::sin(2 * w * ti), c2 += std::cos(2 * w * ti);
    const double tau = std::atan2(s2, c2) / (2 * w);
    double yc = 0, ys = 0, cc = 0, ss = 0;
    for (std::size_t i = 0; i < t.size(); ++i) {
        const double c = std::cos(w * (t[i] - tau)), s = std::sin(w * (t[i] - tau));
        yc += y[i] * c, ys += y[i] * s, cc += c * c, ss += s * s;
    }
    return 0.5 * (yc * yc / cc + ys * ys / ss);
}

TEST(LombScargle, EveryFrequencyEqualsTheDefinition) {
    // Uneven beats far from time zero (hours into a recording): intervals of
    // 0.6 to 1.2 s carrying a 0.1 Hz and a 0.3 Hz modulation.
    std::mt19937 gen(5);
    std::uniform_real_distribution<double> interval(0.6, 1.2);
    std::vector<double> t{10800}, y;
    for (int i = 0; i < 300; ++i) t.push_back(t.back() + interval(gen));
    for (double ti : t) y.push_back(40 * std::sin(0.2 * std::numbers::pi * ti) + 15 * std::cos(0.6 * std::numbers::pi * ti));

    const SpectrumResult s = LombScargleDensity(t, y, 0.4, 4);
    ASSERT_EQ(s.error, "");
    const double span = t.back() - t.front(), df = 1 / (4 * span);
    ASSERT_EQ(s.frequencyHz.size(), std::size_t(std::floor(0.4 / df)) + 1);
    EXPECT_EQ(s.densityMs2PerHz[0], 0);
    double largest = 0;
    for (double d : s.densityMs2PerHz) largest = std::max(largest, d);
    for (std::size_t k = 1; k < s.frequencyHz.size(); ++k) {
        EXPECT_NEAR(s.frequencyHz[k], double(k) * df, 1e-12);
        const double expected = 2 * DirectLomb(t, y, double(k) * df) * span / double(t.size());
        EXPECT_NEAR(s.densityMs2PerHz[k], expected, 1e-9 * largest) << s.frequencyHz[k];
    }
}

}  // namespace
}  // namespace vess::hrv
