// The diffusion simulator against the two analytic solutions it must
// reproduce, and the fit on traces simulated with known parameters plus
// noise.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "group_analysis/radial_diffusion.h"

namespace vess::group {
namespace {

// W0(x) for x >= 0 by Halley's iteration on w e^w = x.
double LambertW0(double x) {
    double w = std::log1p(x);
    for (int k = 0; k < 50; ++k) {
        const double e = std::exp(w), f = w * e - x;
        const double step = f / (e * (w + 1) - (w + 2) * f / (2 * w + 2));
        w -= step;
        if (std::fabs(step) < 1e-15 * (1 + std::fabs(w))) break;
    }
    return w;
}

TEST(RadialDiffusion, PointSourceSpreadsAsInAnUnboundedMedium) {
    // N in the centre shell, no uptake, the edge far away:
    // C(r, t) = N (4 pi D t)^-3/2 exp(-r² / 4 D t), D in µm²/ms.
    WalkModel m{.vmax = 0, .diffusion = 2.7e-6, .deadRadius = 0, .totalRadius = 120};
    RadialDiffusion walk(m);
    const double n = 1000, d = 2.7e-6 * 1e5, t = 200;
    walk.Concentration()[0] = n / (4.0 / 3 * std::numbers::pi);
    walk.Advance(t);
    for (const int shell : {0, 5, 10, 20}) {
        const double r = shell + 0.5;  // the shell's middle
        const double exact = n * std::pow(4 * std::numbers::pi * d * t, -1.5) * std::exp(-r * r / (4 * d * t));
        EXPECT_NEAR(walk.Concentration()[std::size_t(shell)] / exact, 1, 0.02) << "shell " << shell;
    }
}

TEST(RadialDiffusion, UniformUptakeFollowsMichaelisMenten) {
    // No dead space and a holding edge keep the tissue uniform, so
    // dC/dt = -Vmax C / (Km + C): C(t) = Km W((C0/Km) exp((C0 - Vmax t) / Km)).
    const WalkModel m{.release = 2, .vmax = 3.5, .km = 0.24, .deadRadius = 0, .diffusingEdge = false};
    const auto c = SimulateElectrode(m, 201, 5);
    for (const std::size_t i : {20u, 80u, 120u, 200u}) {
        const double t = double(i) * 5 / 1000;  // s
        const double exact = m.km * LambertW0(m.release / m.km * std::exp((m.release - m.vmax * t) / m.km));
        EXPECT_NEAR(c[i], exact, 1e-4 * m.release) << "t = " << t << " s";
    }
}

TEST(RadialDiffusion, FitRecoversReleaseVmaxAndKmFromANoisyTrace) {
    const WalkModel truth;  // the defaults: 2 µM, 3.5 µM/s, 0.24 µM
    SampledTrace trace{0, 5, SimulateElectrode(truth, 500, 5)};
    const double peak = *std::max_element(trace.y.begin(), trace.y.end());
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0, 0.02 * peak);
    for (double& v : trace.y) v += noise(rng);
    WalkModel start = truth;
    start.release = 1.5, start.vmax = 2.5, start.km = 0.4;
    const WalkFit fit = FitWalk(trace, start, {});
    EXPECT_NEAR(fit.model.release / truth.release, 1, 0.05);
    EXPECT_NEAR(fit.model.vmax / truth.vmax, 1, 0.05);
    EXPECT_NEAR(fit.model.km / truth.km, 1, 0.05);
    EXPECT_NEAR(fit.stdev / (0.02 * peak), 1, 0.1) << "the residual is the noise";
}

}  // namespace
}  // namespace vess::group
