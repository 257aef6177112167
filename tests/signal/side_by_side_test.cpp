#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "recording/rounding.h"
#include "signal/filter_design.h"
#include "signal/sos_runner.h"

namespace vess {
namespace {

// The zero-phase file filter covers two streams of one design sharing a
// loop; these are the ways round it: a cascade longer than the loops are
// made for, and two different designs. Each stream still gives, bit for bit,
// what it gives alone (outputs, rounded counts and the state carried on),
// streams of unequal length and counts beyond 16 bits included.
TEST(SosRunner, SideBySideWithoutASharedLoopEqualsEachStreamAlone) {
    FilterChoice elliptic;  // 16 poles: 8 sections
    elliptic.cutoffHz = 700;
    elliptic.order = 16;
    FilterChoice high;
    high.kind = FilterKind::Butterworth;
    high.pass = FilterPass::High;
    high.cutoffHz = 3;
    high.order = 4;
    std::vector<Biquad> ten = DesignFilter(elliptic, 20000).sections;
    const std::vector<Biquad> two = DesignFilter(high, 20000).sections;
    ten.insert(ten.end(), two.begin(), two.end());
    std::vector<double> a(2500), b(1900);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = 3e4 * std::sin(0.37 * double(i)) + double(i % 53);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = 4e4 * std::cos(0.011 * double(i)) - double(i % 7);
    for (const auto& [aSections, bSections] : {std::pair{ten, ten}, std::pair{two, ten}}) {
        SosRunner aAlone(aSections), bAlone(bSections), aPaired(aSections), bPaired(bSections);
        std::vector<double> aWant = a, bWant = b, aGot = a, bGot = b;
        aAlone.Process(aWant);
        bAlone.Process(bWant);
        std::vector<int16_t> counts(b.size()), rounded;
        ProcessSideBySide(aPaired, aGot, bPaired, bGot, counts);
        for (double v : bWant) rounded.push_back(RoundClamp16(v));
        EXPECT_EQ(aGot, aWant) << aSections.size();
        EXPECT_EQ(bGot, bWant) << aSections.size();
        EXPECT_EQ(counts, rounded) << aSections.size();
        EXPECT_EQ(aPaired.CurrentState(), aAlone.CurrentState());
        EXPECT_EQ(bPaired.CurrentState(), bAlone.CurrentState());
    }
}

}  // namespace
}  // namespace vess
