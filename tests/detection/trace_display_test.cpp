// The core of the trace display: the frame each screen opens in, the overview
// of a whole recording, and the time-axis labels.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>

#include "detection/axis_ticks.h"
#include "detection/decimate.h"
#include "detection/display_fit.h"
#include "detection/overview.h"
#include "detection/trace_zoom.h"
#include "support/test_recording.h"

namespace vess {
namespace {

// 1000 samples at 0, 20 at -200 (an event), 4 at +5000 (an artefact): with a
// tail of 5 samples the robust range is -200..0, the median 0.
std::vector<int16_t> EventAndArtefact() {
    std::vector<int16_t> v(1000, 0);
    v.insert(v.end(), 20, -200);
    v.insert(v.end(), 4, 5000);
    return v;
}

TEST(FitFrame, FitsTheEventsNotTheArtefactWithTheBaselineTowardsTheQuietSide) {
    const auto v = EventAndArtefact();
    // Margin 0.08 x 200 = 16. Downward: the baseline a quarter below the top,
    // so span = max((0 + 16) / 0.25, (200 + 16) / 0.75) = 288, top = 0 + 72.
    const DisplayFrame down = FitFrame(v, -1);
    EXPECT_EQ(std::pair(down.spanCounts, down.centreCounts), std::pair(288.0, 72.0 - 144));
    // Upward events: the baseline a quarter above the bottom, so the same
    // range needs span = max(16 / 0.75, 216 / 0.25) = 864, top = 0.75 x 864.
    const DisplayFrame up = FitFrame(v, 1);
    EXPECT_EQ(std::pair(up.spanCounts, up.centreCounts), std::pair(864.0, 648.0 - 432));
    // A flat or empty screen still gets the smallest span, about its level.
    const std::vector<int16_t> flat(1024, 77);
    EXPECT_DOUBLE_EQ(FitFrame(flat, -1).spanCounts, kMinFrameSpanCounts);
    const VisibleCounts f = VisibleRange({}, FitFrame(flat, -1).centreCounts, kMinFrameSpanCounts);
    EXPECT_TRUE(f.bottomCounts < 77 && f.topCounts > 77) << f.bottomCounts << " " << f.topCounts;
    EXPECT_DOUBLE_EQ(FitFrame({}, -1).spanCounts, kMinFrameSpanCounts);
    // Fit all samples: 5200 counts with 8 % margin each side, gain
    // 288 / (5200 x 1.16), the middle 2400 at the frame's centre -72.
    const DisplayScale all = FitAllSamples(v, down);
    EXPECT_EQ(std::tuple(all.gain, all.offsetCounts), std::tuple(288 / (5200 * 1.16), -72 - 2400));
    EXPECT_GT(StepDisplay(all, DisplayStep::IncreaseGain, down.spanCounts).gain, all.gain);
    // An event-rich screen, 4096 samples of flat noise with 12 sharp downward peaks of -900
    // counts: the peaks are rarer than the 0.5 % that the fitted frame leaves out, so without
    // them the frame cuts every peak off.
    std::vector<int16_t> samples(4096);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(int(i * 7919 % 21) - 10);
    for (std::size_t k = 0; k < 12; ++k) samples[200 + k * 300] = -900;
    const std::vector<int16_t> peaks(12, -900);
    const auto bottomOf = [](const DisplayFrame& f) { return f.centreCounts - f.spanCounts / 2; };
    const DisplayFrame plain = FitFrame(samples, -1);
    EXPECT_GT(bottomOf(plain), -900);  // what users saw: every peak off the bottom
    const DisplayFrame withPeaks = FitFrame(samples, -1, peaks);
    EXPECT_LE(bottomOf(withPeaks), -900);
    // The baseline keeps its place a quarter below the top.
    const double top = withPeaks.centreCounts + withPeaks.spanCounts / 2;
    EXPECT_NEAR((top - 0) / withPeaks.spanCounts, kBaselineFromEdge, 0.02);
}

// Longer than one reading chunk (1024 blocks), a partial last block, spikes
// on both sides of the chunk boundary; columns hold their blocks' extremes.
TEST(Overview, BlockExtremesOfTheRecordingMatchTheSamples) {
    test::TempDir dir;
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> noise(-50, 50);
    std::vector<int16_t> v(2100 * 256 + 77);
    for (auto& s : v) s = int16_t(noise(rng));
    v[1024 * 256 - 1] = 9000;
    v[1024 * 256] = -9000;
    v.back() = 12000;
    const auto rec = test::MakeRecording(dir / "long.abf", v);
    const BlockExtremes blocks = RecordingBlockExtremes(*rec);
    const BlockExtremes expected = SummariseBlocks(v, 256);
    ASSERT_EQ(blocks.min.size(), 2101u);
    EXPECT_TRUE(blocks.min == expected.min && blocks.max == expected.max);
    for (int columns : {333, 2101, 5000}) {
        const auto cols = OverviewColumns(blocks, columns);
        ASSERT_EQ(cols.size(), std::size_t(std::min(columns, 2101)));
        const auto n = int64_t(blocks.min.size()), c = int64_t(cols.size());
        for (int64_t k = 0; k < c; ++k) {
            const auto b = v.begin() + std::min<int64_t>(int64_t(v.size()), k * n / c * 256);
            const auto e = v.begin() + std::min<int64_t>(int64_t(v.size()), (k + 1) * n / c * 256);
            ASSERT_EQ(std::tuple(cols[std::size_t(k)].min, cols[std::size_t(k)].max),
                      std::tuple(*std::min_element(b, e), *std::max_element(b, e))) << columns << " " << k;
        }
    }
    EXPECT_TRUE(OverviewColumns(blocks, 0).empty() && OverviewColumns({}, 100).empty());

    // The range leaves out a rare artefact.
    std::vector<ColumnExtremes> cols(1000, ColumnExtremes{-100, 80});
    cols[500] = {-30000, 30000};
    cols[10] = {-250, 20};  // an event: within the range
    const LevelRange r = OverviewRange(cols);
    EXPECT_EQ(std::tuple(r.low, r.high), std::tuple(-100, 80));  // 5 of 1000 columns may lie beyond each side
    cols.assign(100, ColumnExtremes{-250, 80});
    EXPECT_EQ(OverviewRange(cols).low, -250);
}

double SevenPxPerChar(const std::string& s) { return 7.0 * double(s.size()); }

// "50" of a 51.2 ms screen at 781 px (to 788 px) fell under "ms" (786..800).
TEST(AxisTicks, NoLabelOverlapsTheUnitOrItsNeighbour) {
    const auto ticks = AxisTicks(0, 51.2, 800, 90, 14, SevenPxPerChar);
    ASSERT_EQ(ticks.size(), 6u);
    EXPECT_EQ(std::tuple(ticks[4].label, ticks[5].label), std::tuple("40", ""));  // left out, its tick kept
    EXPECT_DOUBLE_EQ(ticks[5].position, 50 / 51.2 * 800);
    for (double width : {200.0, 333.0, 640.0, 1021.0}) {
        for (double t0 = 0; t0 < 3000; t0 += 51.2 * 7) {
            const double t1 = t0 + 51.2 * (1 + int(t0) % 5);
            double lastRight = -1e9;
            int labelled = 0;
            for (const AxisTick& t : AxisTicks(t0, t1, width, 90, 14, SevenPxPerChar)) {
                ASSERT_TRUE(t.value >= t0 - 1e-9 && t.value <= t1 + 1e-9) << t.value;
                if (t.label.empty()) continue;
                ++labelled;
                const double half = SevenPxPerChar(t.label) / 2;
                EXPECT_GT(t.position - half, lastRight) << width << " " << t0;
                EXPECT_LE(t.position + half, width - 14) << width << " " << t0 << " " << t.label;
                lastRight = t.position + half;
            }
            EXPECT_GE(labelled, 1) << width << " " << t0;
        }
    }
    // Labels carry the decimals of their step.
    EXPECT_EQ(std::tuple(TickLabel(1.5, 0.5), TickLabel(100, 20), TickLabel(-1e-12, 0.02), TickLabel(3e-11, 1e-11)),
              std::tuple("1.5", "100", "0.00", "3e-11"));
    EXPECT_EQ(std::tuple(NiceStep(51.2, 8), NiceStep(0, 8)), std::tuple(10, 1));
}

std::vector<int16_t> NoisyTrace(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> noise(-300, 300);
    std::vector<int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<int16_t>(noise(rng));
    if (n > 10) {
        v[n / 3] = 32767;
        v[2 * n / 3] = -32768;
    }
    return v;
}

// Columns tile the input and hold its true extremes and edge samples;
// below two samples a column the samples are drawn as they are.
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
            EXPECT_EQ(std::tuple(c.min, c.max, c.first, c.last),
                      std::tuple(*std::min_element(b, e), *std::max_element(b, e), *b, *(e - 1)));
            next += c.count;
        }
        EXPECT_EQ(next, n);
    }
    const auto v = NoisyTrace(1024, 3);
    // 1.7 samples per column, exactly 2, no columns, no samples.
    EXPECT_EQ(std::tuple(Decimate(v, 600).plain, Decimate(v, 512).plain, Decimate(v, 0).plain,
                         Decimate(std::span<const int16_t>{}, 100).plain),
              std::tuple(true, false, true, true));
}

// A screen's levels are counted over the screen's own span when it is narrow
// and selected in a copy when it is wide; long runs use the full histogram.
// On both sides of each switch and at the extreme levels, the tails and the
// median are the levels at those ranks of the sorted run (the median the lower one).
TEST(ScreenLevels, TailsAndMedianAreTheLevelsAtTheirRanksForNarrowAndWideSpans) {
    const struct {
        std::size_t n;
        int spread, base;  // levels drawn from [base - spread, base + spread]
    } cases[] = {{1, 0, 7},        {2, 3, -32768 + 3},       {4096, 0, 100},   {4096, 40, -12},
                 {4096, 8000, 0},  {4096, 9000, 0},          {4096, 32767, 0}, {16383, 30, 32767 - 30},
                 {16384, 30, 500}, {16384, 30, -32768 + 30}, {40000, 200, -7}, {40000, 30, 32767 - 30}};
    uint32_t state = 11;  // fixed-seed LCG
    for (const auto& c : cases) {
        std::vector<int16_t> v(c.n);
        for (int16_t& x : v) {
            state = state * 1664525u + 1013904223u;
            const int offset = c.spread == 0 ? 0 : int(state >> 8) % (2 * c.spread + 1) - c.spread;
            x = int16_t(std::clamp(c.base + offset, -32768, 32767));
        }
        std::vector<int16_t> sorted = v;
        std::sort(sorted.begin(), sorted.end());
        for (const double fraction : {0.0, 0.005, 0.5}) {
            SCOPED_TRACE(testing::Message() << "n " << c.n << " spread " << c.spread << " tail " << fraction);
            const std::size_t tail = std::size_t(double(c.n) * fraction);
            const LevelSummary s = RobustRangeAndMedian(v, fraction);
            const LevelRange r = RobustRange(v, fraction);
            EXPECT_EQ(std::tuple(s.range.low, s.range.high, s.median),
                      std::tuple(sorted[tail], sorted[c.n - 1 - tail], sorted[(c.n - 1) / 2]));
            EXPECT_EQ(std::tuple(r.low, r.high, MedianLevel(v)), std::tuple(s.range.low, s.range.high, s.median));
        }
    }
}
// The zoom stays inside the screen and never narrower than a few samples.
TEST(TraceZoom, LimitsOfTimeAndRectangleZooms) {
    const TraceZoom screen{0, 1024, -100, 100};
    const struct { double at, factor, first, last; } times[] = {
        {512, 0.5, 256, 768},   // centred
        {0, 0.5, 0, 512},       // the left edge stays
        {1024, 0.5, 512, 1024}, // the right edge stays
        {512, 1e-6, 508, 516},  // the narrowest
        {100, 4, 0, 1024},      // out: the whole screen
    };
    for (const auto& t : times) {
        const TraceZoom z = ZoomTime(screen, t.at, t.factor, 1024);
        EXPECT_EQ(std::tuple(z.firstIndex, z.lastIndex), std::tuple(t.first, t.last)) << t.at << " " << t.factor;
    }
    // Corners in any order, clipped to the screen; a click leaves the view.
    EXPECT_EQ(ZoomToRectangle(screen, 900, 10, -50, 50, 1024), (TraceZoom{0, 900, 10, 50}));
    EXPECT_EQ(ZoomToRectangle(screen, 100, 10, 104, 50, 1024), screen);
    EXPECT_EQ(ZoomToRectangle(screen, 100, 10, 300, 11, 1024), screen);
    EXPECT_DOUBLE_EQ(WheelZoomFactor(-120), 1.25);
}

}  // namespace
}  // namespace vess
