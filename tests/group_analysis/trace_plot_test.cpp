// The group window's picture as a plot description: its y range under gain
// and offset, the scale bars, what is drawn and which trace a click picks.
#include <gtest/gtest.h>

#include "group_analysis/trace_plot.h"

namespace vess::group {
namespace {

// Three rows of 11 points at 0.5 ms: the average 0..10, trace 1 at 20 and
// trace 2 at 40 throughout (counts are units here).
TraceSet Rows() {
    TraceSet set;
    set.count = 2, set.length = 11, set.intervalUs = 500;
    set.eventIndex = {0, 1, 2};
    for (int j = 0; j <= 10; ++j) set.points.push_back(int16_t(j));
    set.points.insert(set.points.end(), 11, 20);
    set.points.insert(set.points.end(), 11, 40);
    return set;
}

TEST(TracePlot, RangeFollowsTheDrawnRowsUnderGainAndOffset) {
    const TraceSet set = Rows();
    struct Case { bool all; double gain, offset; AxisRange range; };
    // The average spans 0..10: centre 5, half 5 x 1.1 / gain, moved by the offset.
    for (const Case& c : {Case{false, 1, 0, {-0.5, 10.5}}, Case{false, 2, 0, {2.25, 7.75}},
                          Case{false, 1, 3, {2.5, 13.5}}, Case{true, 1, 0, {19, 41}}}) {
        const AxisRange r = TraceYRange(set, {}, {.all = c.all, .gain = c.gain, .offset = c.offset});
        EXPECT_DOUBLE_EQ(r.lower, c.range.lower);
        EXPECT_DOUBLE_EQ(r.upper, c.range.upper);
    }
}

TEST(TracePlot, ScaleBarsAreRoundAndAtMostAQuarter) {
    for (auto [span, bar] : {std::pair{25.5, 5.0}, {40.0, 10.0}, {8.0, 2.0}, {0.37, 0.05}, {0.0, 0.0}})
        EXPECT_NEAR(ScaleBarLength(span), bar, 1e-12) << span;
}

TEST(TracePlot, DrawsTheHighlightLastCursorsAndLabelledBars) {
    const TraceSet set = Rows();
    UnitScale scale;
    scale.units = "pA";
    const PlotData all = TracePlot(set, scale, {.all = true, .highlighted = 1, .cursors = {2, 10}}, "t");
    // Trace 2, then the highlighted trace 1 over it, then the two cursors.
    ASSERT_EQ(all.series.size(), 4u);
    EXPECT_EQ(all.series[0].y.front(), 40);
    EXPECT_EQ(all.series[1].y.front(), 20);
    EXPECT_EQ(all.series[1].colour, kHighlightColour);
    EXPECT_EQ(all.series[2].x, (std::vector<double>{1, 1}));
    EXPECT_EQ(all.series[3].x, (std::vector<double>{5, 5}));
    EXPECT_EQ(all.yAxis, "Amplitude (pA)");

    // 5 ms of trace and 11 pA of range (0..10 widened by 10 %): bars of 1 ms and 2 pA.
    const PlotData bars = TracePlot(set, scale, {.every = 2, .scaleBars = true}, "t");
    EXPECT_EQ(bars.series[0].x.size(), 6u);   // every second point
    EXPECT_EQ(bars.series[bars.series.size() - 2].legend, "1 ms");
    EXPECT_EQ(bars.series.back().legend, "2 pA");
}

TEST(TracePlot, ARightClickPicksTheNearestOrTheShownTraceWhenNear) {
    const TraceSet set = Rows();
    EXPECT_EQ(PickedTrace(set, {}, {.all = true}, 0, 10, 33, 1), 2);
    EXPECT_EQ(PickedTrace(set, {}, {.all = true}, 0, 10, 25, 1), 1);
    EXPECT_EQ(PickedTrace(set, {}, {.trace = 0}, 4, 6, 5.5, 1), 0);
    EXPECT_EQ(PickedTrace(set, {}, {.trace = 0}, 4, 6, 8, 1), -1);
}

}  // namespace
}  // namespace vess::group
