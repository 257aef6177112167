// The decay fit under a later event is only made where it could be
// significant; the bound that spares it must never spare a fit that is.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "detection/earlier_decay.h"
#include "detection/exponential_grid.h"

namespace vess {
namespace {

TEST(EarlierDecay, NoFitIsSparedThatWouldBeSignificant) {
    // Decays a exp(m / tau) in noise, their value at the onset from well
    // below to well above two residual SDs, both directions, short and long
    // stretches; the fine grid is fitted as FitEarlierDecay fits it.
    std::mt19937_64 rng(25);
    std::uniform_real_distribution<double> unit(0, 1);
    std::normal_distribution<double> noise(0, 1);
    constexpr double kRange = 16;
    const double step = std::pow(kRange, 1.0 / (kDecayGridSteps - 1));
    int spared = 0, significant = 0, closeCalls = 0;
    for (int trial = 0; trial < 1500; ++trial) {
        const std::size_t n = 8 + std::size_t(unit(rng) * 600);
        const double tauCentre = 40 + 200 * unit(rng), tau = tauCentre * (0.3 + 3 * unit(rng));
        const int direction = trial % 2 ? 1 : -1;
        const double atOnset = direction * 4 * unit(rng) * unit(rng);
        std::vector<double> y(n);
        for (std::size_t k = 0; k < n; ++k) y[k] = atOnset * std::exp(double(n - k) / tau) + noise(rng);
        const ExponentialFit coarse = FitExponentialOnGrid(y, tauCentre / 4, kRange);
        const ExponentialFit fine = FitExponentialOnGrid(y, coarse.tauPoints / step, step * step);
        const double ratio = direction * fine.amplitude / (2 * std::sqrt(std::max(fine.sse, 0.0) / double(n - 2)));
        const bool spare = NoDecayFitCanPass(y, coarse, coarse.tauPoints / step, coarse.tauPoints * step, direction);
        EXPECT_FALSE(spare && ratio > 1) << trial << ": ratio " << ratio;
        spared += spare;
        significant += ratio > 1;
        closeCalls += ratio > 0.8 && ratio < 1.2;
    }
    // Both outcomes occur, and fits near the test's threshold too.
    EXPECT_GT(spared, 300);
    EXPECT_GT(significant, 100);
    EXPECT_GT(closeCalls, 30);
}

}  // namespace
}  // namespace vess
