#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "detection/exponential_grid.h"

namespace vess {
namespace {

// The fit as one would write it, every exponential computed where it is used.
ExponentialFit Direct(const std::vector<double>& y, double lowest, double range) {
    ExponentialFit best;
    const double n = double(y.size());
    for (int g = 0; g < kDecayGridSteps; ++g) {
        const double tau = lowest * std::pow(range, double(g) / (kDecayGridSteps - 1));
        double sKY = 0, sKK = 0, sYY = 0;
        for (std::size_t k = 0; k < y.size(); ++k) {
            const double e = std::exp((n - double(k)) / tau);
            sKY += e * y[k];
            sKK += e * e;
            sYY += y[k] * y[k];
        }
        const double a = sKY / sKK;
        if (sYY - a * sKY < best.sse) best = {a, tau, sYY - a * sKY};
    }
    return best;
}

// The tabulated fit equals the direct one to the bit, on noisy decays: short
// and long stretches on one grid (the table grown and reused), another grid,
// and a stretch too long to tabulate. A noiseless decay whose time constant
// is on the grid is found exactly: its value at the onset and that tau.
TEST(ExponentialGrid, TabulatedFitEqualsDirectFit) {
    struct Case {
        std::size_t points;
        double lowest, range;
    };
    const Case cases[] = {{8, 25, 16}, {600, 25, 16}, {1200, 25, 16}, {600, 25, 16},
                          {300, 25, 1.12}, {50000, 900, 16}};
    uint32_t state = 99;  // fixed-seed LCG noise
    for (const Case& c : cases) {
        std::vector<double> y(c.points);
        for (std::size_t k = 0; k < y.size(); ++k) {
            state = state * 1664525u + 1013904223u;
            y[k] = -40 * std::exp(double(y.size() - k) / (c.lowest * 3)) + double(state >> 24) / 16 - 8;
        }
        const ExponentialFit got = FitExponentialOnGrid(y, c.lowest, c.range);
        const ExponentialFit want = Direct(y, c.lowest, c.range);
        EXPECT_EQ(got.amplitude, want.amplitude) << c.points;
        EXPECT_EQ(got.tauPoints, want.tauPoints) << c.points;
        EXPECT_EQ(got.sse, want.sse) << c.points;
    }
    const double tau = 25 * std::pow(16, 10.0 / (kDecayGridSteps - 1));  // grid point 10
    std::vector<double> decay(400);
    for (std::size_t k = 0; k < decay.size(); ++k) decay[k] = 7 * std::exp(double(decay.size() - k) / tau);
    const ExponentialFit exact = FitExponentialOnGrid(decay, 25, 16);
    EXPECT_EQ(exact.tauPoints, tau);
    EXPECT_NEAR(exact.amplitude, 7, 1e-9);
}

}  // namespace
}  // namespace vess
