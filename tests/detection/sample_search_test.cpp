// The fast paths of threshold detection against the plain ones. The vector
// searches against plain loops over the same samples: lengths around the
// vector width (where the tail is read with overlapping lanes), ties,
// extremes at either end and at the 16-bit limits, and sums long enough to
// need more than one stretch of 32-bit lanes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "detection/count_threshold.h"
#include "detection/detector.h"
#include "detection/sample_search.h"
#include "trace_helpers.h"

namespace vess {
namespace {

FirstExtreme PlainFirstExtreme(const std::vector<int16_t>& v, int32_t n, bool greatest) {
    FirstExtreme best{0, v[0]};
    for (int32_t i = 1; i < n; ++i)
        if (greatest ? v[i] > best.value : v[i] < best.value) best = {i, v[i]};
    return best;
}

TEST(SampleSearch, FirstExtremeMatchesAPlainLoop) {
    std::mt19937 rng(11);
    std::vector<std::vector<int16_t>> runs;
    for (int32_t n : {1, 2, 7, 8, 9, 15, 16, 17, 40, 199, 200, 201}) {
        // Few distinct values, so that ties are common.
        std::vector<int16_t> v(static_cast<std::size_t>(n));
        for (auto& x : v) x = int16_t(int(rng() % 5) - 2);
        runs.push_back(v);
        // The extremes only in the last sample, then only in the first.
        std::vector<int16_t> last(std::size_t(n), 0), first(std::size_t(n), 0);
        last.back() = 32767;
        first.front() = -32768;
        runs.push_back(last);
        runs.push_back(first);
        std::vector<int16_t> full(static_cast<std::size_t>(n));
        for (auto& x : full) x = int16_t(rng());
        runs.push_back(full);
    }
    for (const auto& v : runs) {
        for (bool greatest : {true, false}) {
            const FirstExtreme got = FirstExtremeOf(v.data(), int32_t(v.size()), greatest);
            const FirstExtreme want = PlainFirstExtreme(v, int32_t(v.size()), greatest);
            EXPECT_EQ(got.offset, want.offset) << v.size() << " samples, greatest " << greatest;
            EXPECT_EQ(got.value, want.value) << v.size() << " samples, greatest " << greatest;
        }
    }
}

TEST(SampleSearch, SumMatchesAPlainLoop) {
    std::mt19937 rng(12);
    for (int64_t n : {0L, 1L, 7L, 8L, 9L, 40L, (1L << 17) + 13, 3L << 17}) {
        for (int16_t fill : {int16_t(-32768), int16_t(32767), int16_t(0)}) {
            std::vector<int16_t> v(std::size_t(n), fill);
            if (fill == 0)
                for (auto& x : v) x = int16_t(rng());
            int64_t want = 0;
            for (int16_t x : v) want += x;
            EXPECT_EQ(SumOf(v.data(), n), want) << n << " samples of " << fill;
        }
    }
}

// The start and decay walks read the screen's memory directly when no decay
// is taken off; a decay of 1e-300 (which leaves every non-zero sample as it
// is) sends them through the general path. Both must give the same extent and
// area for a peak at every index of the screen's reach, events and noise
// alike, up to the edges where the walks leave the screens in memory.
TEST(SampleSearch, WalksFromMemoryMatchTheGeneralPath) {
    std::mt19937 rng(13);
    std::normal_distribution<double> noise(0, 6);
    std::vector<int16_t> trace(3 * 1024);
    for (auto& x : trace) x = int16_t(std::lround(-2000 + noise(rng)));
    for (int64_t onset : {100, 700, 1010, 1500, 2040, 2900})
        test::AddEvent(trace, onset, {10, 80, 120}, -1);
    test::TraceFile file(trace);
    const Screen screen(*file.rec, 4, 4);  // the middle screen; the others around it
    const AnalysisParameters p = test::TestParams(-1);
    const Detector det(screen, p, *ConvertPeriods(p, 50));
    int64_t events = 0;
    for (int64_t peak = -1024; peak < 2048; ++peak) {
        MeasuredEvent fast, general;
        fast.peak = general.peak = peak;
        fast.baseline = general.baseline = det.FindBaseline(peak - 120, 40);
        fast.amplitudeCounts = general.amplitudeCounts =
            std::abs(screen.GetSampleValue(peak) - fast.baseline);
        general.under = {1e-300, -100000, 1e9};
        det.WalkExtent(fast);
        det.WalkExtent(general);
        ASSERT_EQ(fast.start, general.start) << peak;
        ASSERT_EQ(fast.decay, general.decay) << peak;
        ASSERT_EQ(fast.decayLevel, general.decayLevel) << peak;
        ASSERT_EQ(fast.areaUnitsMs, general.areaUnitsMs) << peak;
        if (fast.decay - peak > 20) ++events;
    }
    EXPECT_GT(events, 100);  // long decay walks were compared, not only noise
}

// LeastCountsReaching against a count-by-count search, for scalings that
// make the boundary fall between counts, on a count and beyond the range.
TEST(LeastCountsReaching, MatchesConvertingEveryCount) {
    test::TempDir dir;
    const std::vector<int16_t> samples(512, 0);
    int k = 0;
    for (float countsPerUnit : {1.0f, 3.7f, 0.25f, 1000.0f}) {
        const auto rec = test::MakeRecording(dir / ("r" + std::to_string(k++) + ".abf"), samples,
                                             50, countsPerUnit);
        for (float units : {-1.0f, 0.0f, 5.0f, 5.0001f, 17.3f, 65535.0f / countsPerUnit, 1e9f,
                            std::numeric_limits<float>::quiet_NaN()}) {
            int32_t expected = 0;
            while (expected <= 65535 && !(rec->Bit2pA2(expected) >= units)) ++expected;
            EXPECT_EQ(LeastCountsReaching(*rec, units), expected)
                << countsPerUnit << " counts per unit, threshold " << units;
        }
    }
}

}  // namespace
}  // namespace vess
