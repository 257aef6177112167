#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "recording/rounding.h"
#include "signal/filter_design.h"
#include "signal/sos_runner.h"

namespace vess {
namespace {

// Two streams run side by side give, bit for bit, what each gives alone with
// its outputs rounded after: 1 to 10 sections (the fixed cascades and the
// longer fallback), streams of unequal length, and two different designs
// (which cannot share a loop).
TEST(SosRunner, SideBySideEqualsEachStreamAlone) {
    FilterChoice elliptic;
    elliptic.kind = FilterKind::Elliptic;
    elliptic.cutoffHz = 700;
    elliptic.order = 16;
    std::vector<Biquad> all = DesignFilter(elliptic, 20000).sections;
    FilterChoice high;
    high.kind = FilterKind::Butterworth;
    high.pass = FilterPass::High;
    high.cutoffHz = 3;
    high.order = 3;
    const auto highSections = DesignFilter(high, 20000).sections;
    all.insert(all.end(), highSections.begin(), highSections.end());
    ASSERT_EQ(all.size(), 10u);
    std::vector<double> a(2500), b(1900);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = 3e4 * std::sin(0.37 * double(i)) + double(i % 53);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = 4e4 * std::cos(0.011 * double(i)) - double(i % 7);
    for (std::size_t n = 1; n <= all.size(); ++n) {
        const std::vector<Biquad> sections(all.begin(), all.begin() + std::ptrdiff_t(n));
        const std::vector<Biquad> other(all.begin(), all.begin() + std::ptrdiff_t(n == 1 ? 2 : 1));
        for (const bool same : {true, false}) {
            SosRunner aAlone(sections), bAlone(same ? sections : other);
            SosRunner aPaired(sections), bPaired(same ? sections : other);
            aAlone.SettleAt(-5);
            aPaired.SettleAt(-5);
            std::vector<double> aWant = a, bWant = b, aGot = a, bGot = b;
            aAlone.Process(aWant);
            bAlone.Process(bWant);
            std::vector<int16_t> counts(b.size());
            ProcessSideBySide(aPaired, aGot, bPaired, bGot, counts);
            std::vector<int16_t> rounded;
            for (double v : bWant) rounded.push_back(RoundClamp16(v));
            EXPECT_EQ(aGot, aWant) << n << " sections, same " << same;
            EXPECT_EQ(bGot, bWant) << n << " sections, same " << same;
            EXPECT_EQ(counts, rounded) << n << " sections, same " << same;
            // The states carry on as after the separate runs.
            EXPECT_EQ(aPaired.CurrentState(), aAlone.CurrentState());
            EXPECT_EQ(bPaired.CurrentState(), bAlone.CurrentState());
        }
    }
}

}  // namespace
}  // namespace vess
