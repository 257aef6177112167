#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "detection/decimate.h"

namespace vess {
namespace {

// A screen's levels are counted over the screen's own span when it is narrow
// and selected in a copy when it is wide: on both sides of that switch, and of
// the switch to the full histogram for long runs, the tails and the median are
// the levels at those ranks of the sorted run (the median the lower one).
TEST(ScreenLevels, TailsAndMedianAreTheLevelsAtTheirRanksForNarrowAndWideSpans) {
    struct Case {
        std::size_t n;
        int spread;  // levels drawn from [base - spread, base + spread]
        int base;
    };
    const Case cases[] = {
        {1, 0, 7},         {2, 3, -32768 + 3}, {4096, 0, 100},     {4096, 40, -12},
        {4096, 8000, 0},   {4096, 9000, 0},    {4096, 32767, 0},   {16383, 30, 32767 - 30},
        {16384, 30, 500},  {40000, 200, -7},
    };
    uint32_t state = 11;  // fixed-seed LCG
    for (const Case& c : cases) {
        std::vector<int16_t> v(c.n);
        for (int16_t& x : v) {
            state = state * 1664525u + 1013904223u;
            const int offset = c.spread == 0 ? 0 : int(state >> 8) % (2 * c.spread + 1) - c.spread;
            x = int16_t(std::clamp(c.base + offset, -32768, 32767));
        }
        std::vector<int16_t> sorted = v;
        std::sort(sorted.begin(), sorted.end());
        for (const double fraction : {0.0, 0.005, 0.5}) {
            const std::size_t tail = std::size_t(double(c.n) * fraction);
            const LevelSummary s = RobustRangeAndMedian(v, fraction);
            const LevelRange r = RobustRange(v, fraction);
            SCOPED_TRACE(testing::Message() << "n " << c.n << " spread " << c.spread << " tail " << fraction);
            EXPECT_EQ(s.range.low, sorted[tail]);
            EXPECT_EQ(s.range.high, sorted[c.n - 1 - tail]);
            EXPECT_EQ(r.low, s.range.low);
            EXPECT_EQ(r.high, s.range.high);
            EXPECT_EQ(s.median, sorted[(c.n - 1) / 2]);
            EXPECT_EQ(MedianLevel(v), s.median);
        }
    }
}

}  // namespace
}  // namespace vess
