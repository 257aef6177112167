// Amperometric spikes built from straight pieces, so that every level
// crossing and the area (trapezoids are exact on straight pieces) are known
// from the geometry of the spike.
#include <gtest/gtest.h>

#include <cmath>

#include "group_analysis/amperometry.h"

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

TEST(Amperometry, TriangleMeasuresFollowFromItsCorners) {
    const AmperoSpike s = MeasureAmperoSpike(Spike(kTriangle), {});
    EXPECT_NEAR(s.baseline, kBase, 1e-12);
    EXPECT_NEAR(s.imax, 40, 1e-12);
    EXPECT_NEAR(s.timeToPeak, 1, 1e-9);
    EXPECT_NEAR(s.rise, 0.4, 1e-9);        // 50 % at 10.5 ms, 90 % at 10.9 ms
    EXPECT_NEAR(s.riseSlope, 40, 1e-9);
    EXPECT_NEAR(s.halfWidth, 2.5, 1e-9);   // 10.5 to 13 ms
    EXPECT_NEAR(s.decay, 2.12, 1e-9);      // 90 % at 11.4, 37 % at 13.52 ms
    EXPECT_NEAR(s.charge, 0.1, 1e-12);
    // N = Q / (n e): 0.1 pC over two elementary charges.
    EXPECT_NEAR(s.molecules, 0.1e-12 / (2 * 1.602176634e-19), 1e-3);
    EXPECT_FALSE(Measured(s.footDuration)) << "a spike rising straight from baseline has no foot";
}

TEST(Amperometry, RiseRangesAndElectrons) {
    struct Case { const char* rise; double electrons, riseMs, molecules; };
    for (const Case c : {Case{"25-75% Rise", 1, 0.5, 0.1e-12 / 1.602176634e-19},
                         Case{"10-90% Rise", 2, 0.8, 0.1e-12 / (2 * 1.602176634e-19)}}) {
        AmperoSettings s;
        ASSERT_TRUE(SetAmperoRise(s, c.rise));
        s.electrons = c.electrons;
        const AmperoSpike m = MeasureAmperoSpike(Spike(kTriangle), s);
        EXPECT_NEAR(m.rise, c.riseMs, 1e-9) << c.rise;
        EXPECT_NEAR(m.molecules, c.molecules, 1e-3) << c.rise;
    }
    AmperoSettings s;
    EXPECT_FALSE(SetAmperoRise(s, "90-50% Rise"));
    EXPECT_FALSE(SetAmperoDecay(s, "37-90%"));
}

TEST(Amperometry, FootBeforeTheUpstroke) {
    // A 4 pA foot from 8 to 10 ms, then up to 40 pA at 11 ms and down by 15.
    const AmperoSpike s = MeasureAmperoSpike(Spike({{7.9, 0}, {8, 4}, {10, 4}, {11, 40}, {15, 0}}), {});
    EXPECT_NEAR(s.footDuration, 2.1, 1e-6);             // 7.9 to 10 ms
    EXPECT_NEAR(s.footCharge, (0.2 + 8) / 1000, 1e-9);  // ramp 0.2 + plateau 8 pA ms
    EXPECT_NEAR(s.footAmplitude, 8.2 / 2.1, 1e-6);      // mean current over the foot
    EXPECT_NEAR(s.charge, (8.2 + 22 + 80) / 1000, 1e-12);
}

TEST(Amperometry, SpikeCutOffOrAbsentIsNotMeasured) {
    const AmperoSpike cut = MeasureAmperoSpike(Spike(kTriangle, 13), {});
    EXPECT_NEAR(cut.imax, 40, 1e-12);
    EXPECT_FALSE(Measured(cut.charge)) << "the spike has not come back to baseline";
    EXPECT_FALSE(Measured(cut.molecules));
    const AmperoSpike flat = MeasureAmperoSpike(Spike({}), {});
    EXPECT_FALSE(Measured(flat.rise));
    EXPECT_FALSE(Measured(flat.charge));
}

}  // namespace
}  // namespace vess::group
