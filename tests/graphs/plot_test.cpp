#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "graphs/plot.h"
#include "graphs/plot_text.h"

namespace vess {
namespace {

PlotSeries Make(SeriesKind kind, std::vector<double> x, std::vector<double> y, std::string name = {}) {
    return {.kind = kind, .x = std::move(x), .y = std::move(y), .legend = std::move(name)};
}

TEST(FittedRanges, BarsSpanTheirBinsAndStandOnZero) {
    // Left-aligned bins of width 0.5 at 1.0 and 2.0 cover x 1.0..2.5;
    // y covers 0..4. A 5 % margin: x 0.925..2.575, y -0.2..4.2.
    PlotData p{"", "", "", {{.kind = SeriesKind::Bars, .x = {1.0, 2.0}, .y = {3, 4}, .legend = "", .barWidth = 0.5}}};
    PlotRanges r = FittedRanges(p);
    EXPECT_DOUBLE_EQ(r.x.lower, 0.925);
    EXPECT_DOUBLE_EQ(r.x.upper, 2.575);
    EXPECT_DOUBLE_EQ(r.y.lower, -0.2);
    EXPECT_DOUBLE_EQ(r.y.upper, 4.2);

    // Centred bars of unknown width take the smallest spacing (1): 0.5..2.5.
    p.series[0].barWidth = 0;
    p.series[0].barAlign = BarAlign::Centre;
    r = FittedRanges(p);
    EXPECT_DOUBLE_EQ(r.x.lower, 0.5 - 0.1);
    EXPECT_DOUBLE_EQ(r.x.upper, 2.5 + 0.1);
}

TEST(FittedRanges, LogarithmicAxesFitTheirPositiveValues) {
    // A spectrum from 0 Hz: 0 Hz and the zero power are left off; x 10..1000
    // and y 1e-6..1e-2 widen by 5 % of their 2 and 4 decades.
    PlotData p{"", "", "", {Make(SeriesKind::Lines, {0, 10, 100, 1000}, {5, 1e-2, 0, 1e-6})}};
    p.xLog = p.yLog = true;
    const PlotRanges r = FittedRanges(p);
    EXPECT_DOUBLE_EQ(r.x.lower, 10 / std::pow(100.0, 0.05));
    EXPECT_DOUBLE_EQ(r.x.upper, 1000 * std::pow(100.0, 0.05));
    EXPECT_DOUBLE_EQ(r.y.lower, 1e-6 / std::pow(1e4, 0.05));
    EXPECT_DOUBLE_EQ(r.y.upper, 1e-2 * std::pow(1e4, 0.05));
}

TEST(FittedRanges, DegenerateEmptyFixedAndNonFiniteData) {
    PlotData empty;
    EXPECT_EQ(FittedRanges(empty).x, (AxisRange{0, 1}));
    EXPECT_EQ(FittedRanges(empty).y, (AxisRange{0, 1}));

    // One point: +-1 around small values, +-10 % around large ones.
    const PlotData one{"", "", "", {Make(SeriesKind::Scatter, {3}, {500})}};
    EXPECT_EQ(FittedRanges(one).x, (AxisRange{2, 4}));
    EXPECT_EQ(FittedRanges(one).y, (AxisRange{450, 550}));

    // NaN and infinity are skipped; a fixed range overrides the fit.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    PlotData lines{"", "", "", {Make(SeriesKind::Lines, {0, nan, 10}, {0, 5, std::numeric_limits<double>::infinity()})}};
    EXPECT_EQ(FittedRanges(lines).x, (AxisRange{-1, 1}));  // only (0, 0) survives
    lines.xRange = AxisRange{-3, 3};
    EXPECT_EQ(FittedRanges(lines).x, (AxisRange{-3, 3}));

    // Colour maps and bands count.
    const PlotData map{"", "", "", {}, ColourMap{2, 2, -1, 1, 10, 20, {1, 2, 3, 4}, {}}, {{3, 5, "HF", {}}}};
    EXPECT_DOUBLE_EQ(FittedRanges(map).x.lower, -1 - 0.3);
    EXPECT_DOUBLE_EQ(FittedRanges(map).x.upper, 5 + 0.3);
    EXPECT_DOUBLE_EQ(FittedRanges(map).y.lower, 10 - 0.5);
}

TEST(SortByX, KeepsPairsAndColourValuesTogether) {
    PlotSeries s = Make(SeriesKind::Scatter, {3, 1, 2, 1}, {30, 10, 20, 11});
    s.z = {0.3, 0.1, 0.2, 0.11};
    SortByX(s);
    EXPECT_EQ(s.x, (std::vector<double>{1, 1, 2, 3}));
    EXPECT_EQ(s.y, (std::vector<double>{10, 11, 20, 30}));  // stable for equal x
    EXPECT_EQ(s.z, (std::vector<double>{0.1, 0.11, 0.2, 0.3}));
}

TEST(CombinePlots, NamesSeriesByTheirPlotsAndJoinsDifferentAxisTexts) {
    PlotData a{"First", "Time (sec)", "Number of Events", {Make(SeriesKind::Bars, {0}, {1})}};
    a.series[0].colour = Colour{1, 2, 3};
    const PlotData b{"Second", "Time (sec)", "Cumulative Fraction", {Make(SeriesKind::Steps, {0}, {1}, "kept")},
                     {}, {{1, 2, "", {}}}};
    const PlotData all = CombinePlots({a, b}, "All");
    EXPECT_EQ(all.title, "All");
    EXPECT_EQ(all.xAxis, "Time (sec)");
    EXPECT_EQ(all.yAxis, "Number of Events / Cumulative Fraction");
    ASSERT_EQ(all.series.size(), 2u);
    EXPECT_EQ(all.series[0].legend, "First");
    EXPECT_FALSE(all.series[0].colour.has_value());
    EXPECT_EQ(all.series[1].legend, "kept");
    EXPECT_EQ(all.bands.size(), 1u);
    EXPECT_TRUE(HasLegend(all));
    EXPECT_FALSE(HasLegend(a));
}

TEST(ColourClasses, SplitsTheZRangeIntoEqualStepsWithEndsClamped) {
    // z from 0 to 10 in 4 classes of 2.5: 0 and 2.4 -> 0; 2.5 -> 1; 7.5 and
    // 10 (the top end) -> 3; -5 below the range -> 0; 99 above -> 3; NaN none.
    const std::vector<double> z{0, 2.4, 2.5, 7.5, 10, -5, 99, std::nan("")};
    const auto c = ColourClasses(z, 4, 0, 10);
    ASSERT_EQ(c.size(), 4u);
    EXPECT_EQ(c[0], (std::vector<std::size_t>{0, 1, 5}));
    EXPECT_EQ(c[1], (std::vector<std::size_t>{2}));
    EXPECT_TRUE(c[2].empty());
    EXPECT_EQ(c[3], (std::vector<std::size_t>{3, 4, 6}));
    // A flat z puts everything into the first class.
    EXPECT_EQ(ColourClasses({5, 5}, 3, 5, 5)[0].size(), 2u);
    EXPECT_EQ(ZRange(z), (AxisRange{-5, 99}));
}

// Columns per series with blanks for shorter ones; colour values and maps
// give triples (a 2 x 2 map from x 0..1, y 10..20: cells at the range ends,
// row by row).
TEST(PlotToTabSeparated, SeriesColumnsAndColourTriples) {
    const PlotData steps{"", "Amplitude (pA)", "Cumulative Fraction",
                         {Make(SeriesKind::Steps, {1.5, 2, 3}, {0.25, 0.5, 1}, "Array #1"),
                          Make(SeriesKind::Steps, {0.1}, {1})}};
    const PlotData points{"", "", "", {{.kind = SeriesKind::Scatter, .x = {1}, .y = {2}, .legend = "", .z = {3}, .zAxis = "Group"}}};
    const PlotData map{"", "", "", {}, ColourMap{2, 2, 0, 1, 10, 20, {1, 2, 3, 4}, "Count"}};
    const std::pair<PlotData, const char*> cases[] = {
        {steps, "Amplitude (pA)\tArray #1\tAmplitude (pA)\tCumulative Fraction\r\n"
                "1.5\t0.25\t0.1\t1\r\n2\t0.5\t\t\r\n3\t1\t\t\r\n"},
        {points, "X\tY\tGroup\r\n1\t2\t3\r\n"},
        {map, "X\tY\tCount\r\n0\t10\t1\r\n1\t10\t2\r\n0\t20\t3\r\n1\t20\t4\r\n"},
    };
    for (const auto& [plot, text] : cases) EXPECT_EQ(PlotToTabSeparated(plot), text);
}

}  // namespace
}  // namespace vess
