#include "detection/decimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vess {
namespace {

std::vector<int16_t> NoisyTrace(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> noise(-300, 300);
    std::vector<int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<int16_t>(noise(rng));
    // Single-sample spikes must survive the reduction at any width.
    if (n > 10) {
        v[n / 3] = 32767;
        v[2 * n / 3] = -32768;
    }
    return v;
}

// Every column's min and max equal the true extremes of the samples it
// covers, the columns tile the input without gaps, and first/last are the
// samples at the column edges.
TEST(Decimate, ColumnsHoldTrueExtremesAndTileTheInput) {
    for (const auto& [n, cols] : {std::pair{100000, 800}, {1025, 511}, {4096, 7}, {30001, 1000}}) {
        const auto v = NoisyTrace(std::size_t(n), unsigned(n));
        const auto d = Decimate(v, cols);
        ASSERT_FALSE(d.plain) << n << " samples, " << cols << " columns";
        ASSERT_EQ(d.columns.size(), std::size_t(cols));
        int64_t next = 0;
        for (const auto& c : d.columns) {
            ASSERT_EQ(c.firstIndex, next);
            ASSERT_GE(c.count, 2);
            const auto b = v.begin() + c.firstIndex, e = b + c.count;
            EXPECT_EQ(c.min, *std::min_element(b, e));
            EXPECT_EQ(c.max, *std::max_element(b, e));
            EXPECT_EQ(c.first, *b);
            EXPECT_EQ(c.last, *(e - 1));
            next += c.count;
        }
        EXPECT_EQ(next, n);
        // The spikes are visible somewhere.
        const auto top = std::max_element(d.columns.begin(), d.columns.end(),
                                          [](auto& a, auto& b) { return a.max < b.max; });
        EXPECT_EQ(top->max, 32767);
    }
}

// Below two samples per column, and for degenerate widths, samples are drawn
// as they are.
TEST(Decimate, FewSamplesPerColumnStayPlain) {
    const auto v = NoisyTrace(1024, 3);
    EXPECT_TRUE(Decimate(v, 600).plain);   // 1.7 samples per column
    EXPECT_FALSE(Decimate(v, 512).plain);  // exactly 2
    EXPECT_TRUE(Decimate(v, 0).plain);
    EXPECT_TRUE(Decimate(std::span<const int16_t>{}, 100).plain);
}

TEST(Decimate, BlockSummaryCoversAShortLastBlock) {
    std::vector<int16_t> v(600);
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = static_cast<int16_t>(i % 256);
    v[590] = -5;
    const auto s = SummariseBlocks(v, 256);
    ASSERT_EQ(s.min.size(), 3u);
    EXPECT_EQ(s.min[0], 0);
    EXPECT_EQ(s.max[0], 255);
    EXPECT_EQ(s.min[2], -5);
    EXPECT_EQ(s.max[2], 87);  // 599 % 256
}

}  // namespace
}  // namespace vess

namespace vess {
namespace {

// A rare artefact does not set the display span; the baseline sets the centre.
TEST(DisplayLevels, RobustRangeIgnoresRareArtefactsAndMedianFindsBaseline) {
    std::vector<int16_t> v(10000);
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = static_cast<int16_t>(100 + int(i % 21) - 10);
    v[500] = -30000;  // one artefact sample
    for (std::size_t i = 2000; i < 2100; ++i) v[i] = -400;  // an event, 1 % of the samples
    const LevelRange r = RobustRange(v, 0.0005);
    EXPECT_EQ(r.low, -400);   // the event's samples are more than the tail
    EXPECT_EQ(r.high, 110);
    EXPECT_EQ(RobustRange(v, 0).low, -30000);
    EXPECT_EQ(MedianLevel(v), 100);
    EXPECT_EQ(MedianLevel(std::vector<int16_t>{5, 1, 9, 7}), 5);  // lower median
}

// Short runs (a screen) are ranked by selection, long ones by a histogram of
// levels: on either side of the switch, at the extreme levels and with the
// tail at a half (where the two ranks swap for two samples), the levels are
// those at the tail's ranks of the sorted run.
TEST(DisplayLevels, RobustRangeIsTheLevelAtTheTailsRanksForShortAndLongRuns) {
    uint32_t state = 5;  // fixed-seed LCG over all 65,536 levels
    for (std::size_t n : {1, 2, 3, 1024, 16383, 16384, 40000}) {
        std::vector<int16_t> v(n);
        for (int16_t& x : v) x = int16_t((state = state * 1664525u + 1013904223u) >> 16);
        v.front() = -32768;
        v.back() = 32767;
        std::vector<int16_t> sorted = v;
        std::sort(sorted.begin(), sorted.end());
        for (double fraction : {0.0, 0.005, 0.5}) {
            const std::size_t tail = std::size_t(double(n) * fraction);
            const LevelRange r = RobustRange(v, fraction);
            EXPECT_EQ(r.low, sorted[tail]) << n << " " << fraction;
            EXPECT_EQ(r.high, sorted[n - 1 - tail]) << n << " " << fraction;
        }
    }
}

}  // namespace
}  // namespace vess
