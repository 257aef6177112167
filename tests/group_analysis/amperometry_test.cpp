// Amperometric spikes built from straight pieces, so that every level
// crossing and the area (trapezoids are exact on straight pieces) are known
// from the geometry of the spike; the diffusion simulator and its fit.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "group_analysis/amperometry.h"
#include "group_analysis/radial_diffusion.h"

namespace vess::group {
namespace {

constexpr double kDt = 0.1, kBase = 3;

// Baseline 3 pA for 30 ms; the piecewise-linear spike through the given
// (ms, pA above baseline) corners, baseline outside them.
SampledTrace Spike(std::vector<std::pair<double, double>> corners, double ms = 30) {
    SampledTrace t{0, kDt, {}};
    for (int i = 0; i * kDt < ms; ++i) {
        const double x = i * kDt;
        double v = 0;
        for (std::size_t k = 0; k + 1 < corners.size(); ++k) {
            const auto [x0, y0] = corners[k];
            const auto [x1, y1] = corners[k + 1];
            if (x >= x0 - 1e-9 && x <= x1 + 1e-9) v = y0 + (y1 - y0) * (x - x0) / (x1 - x0);
        }
        t.y.push_back(kBase + v);
    }
    return t;
}

// Triangle: up from 10 to 11 ms to 40 pA, down to baseline at 15 ms. Area
// 40 x 5 / 2 = 100 pA ms = 0.1 pC.
const std::vector<std::pair<double, double>> kTriangle = {{10, 0}, {11, 40}, {15, 0}};

TEST(Amperometry, TriangleMeasuresFollowFromItsCornersForEachRiseRangeAndElectrons) {
    const AmperoSpike s = MeasureAmperoSpike(Spike(kTriangle), {});
    EXPECT_NEAR(s.baseline, kBase, 1e-12);
    EXPECT_NEAR(s.imax, 40, 1e-12);
    EXPECT_NEAR(s.timeToPeak, 1, 1e-9);
    EXPECT_NEAR(s.rise, 0.4, 1e-9);        // 50 % at 10.5 ms, 90 % at 10.9 ms
    EXPECT_NEAR(s.riseSlope, 40, 1e-9);
    EXPECT_NEAR(s.halfWidth, 2.5, 1e-9);   // 10.5 to 13 ms
    EXPECT_NEAR(s.decay, 2.12, 1e-9);      // 90 % at 11.4, 37 % at 13.52 ms
    EXPECT_NEAR(s.charge, 0.1, 1e-12);
    EXPECT_FALSE(Measured(s.footDuration)) << "a spike rising straight from baseline has no foot";
    // Molecules N = Q / (n e): 0.1 pC over one or two elementary charges.
    struct Case { const char* rise; double electrons, riseMs, molecules; };
    for (const Case c : {Case{"25-75% Rise", 1, 0.5, 0.1e-12 / 1.602176634e-19},
                         Case{"10-90% Rise", 2, 0.8, 0.1e-12 / (2 * 1.602176634e-19)}}) {
        AmperoSettings a;
        ASSERT_TRUE(SetAmperoRise(a, c.rise));
        a.electrons = c.electrons;
        const AmperoSpike m = MeasureAmperoSpike(Spike(kTriangle), a);
        EXPECT_NEAR(m.rise, c.riseMs, 1e-9) << c.rise;
        EXPECT_NEAR(m.molecules, c.molecules, 1e-3) << c.rise;
    }
    AmperoSettings bad;
    EXPECT_FALSE(SetAmperoRise(bad, "90-50% Rise"));
    EXPECT_FALSE(SetAmperoDecay(bad, "37-90%"));
}

TEST(Amperometry, FootBeforeTheUpstrokeAndSpikesCutOffOrAbsent) {
    // A 4 pA foot from 8 to 10 ms, then up to 40 pA at 11 ms and down by 15.
    const AmperoSpike s = MeasureAmperoSpike(Spike({{7.9, 0}, {8, 4}, {10, 4}, {11, 40}, {15, 0}}), {});
    EXPECT_NEAR(s.footDuration, 2.1, 1e-6);             // 7.9 to 10 ms
    EXPECT_NEAR(s.footCharge, (0.2 + 8) / 1000, 1e-9);  // ramp 0.2 + plateau 8 pA ms
    EXPECT_NEAR(s.footAmplitude, 8.2 / 2.1, 1e-6);      // mean current over the foot
    EXPECT_NEAR(s.charge, (8.2 + 22 + 80) / 1000, 1e-12);
    // Cut off before it comes back, or absent: not measured.
    const AmperoSpike cut = MeasureAmperoSpike(Spike(kTriangle, 13), {});
    EXPECT_NEAR(cut.imax, 40, 1e-12);
    EXPECT_FALSE(Measured(cut.charge)) << "the spike has not come back to baseline";
    EXPECT_FALSE(Measured(cut.molecules));
    const AmperoSpike flat = MeasureAmperoSpike(Spike({}), {});
    EXPECT_FALSE(Measured(flat.rise));
    EXPECT_FALSE(Measured(flat.charge));
}

// The diffusion simulator against the two analytic solutions it must
// reproduce, and the fit on traces simulated with known parameters plus
// noise.
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
