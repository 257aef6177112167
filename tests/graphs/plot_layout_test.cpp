#include <gtest/gtest.h>

#include <string>

#include "graphs/plot_layout.h"

namespace vess {
namespace {

PlotData PointsAt(std::vector<double> x, std::vector<double> y) {
    PlotData p;
    p.series.push_back(PlotSeries{SeriesKind::Scatter, std::move(x), std::move(y)});
    return p;
}

TEST(PlotLayout, LegendGoesToTheCornerWithFewestPointsInTheAxesScale) {
    const PlotRanges unit{{0, 10}, {0, 10}};
    const struct {
        PlotData plot;
        LegendCorner corner;
    } cases[] = {
        {PointsAt({}, {}), LegendCorner::TopRight},                         // ties: top right first
        {PointsAt({9.5}, {9.5}), LegendCorner::TopLeft},
        {PointsAt({9.5, 0.5}, {9.5, 9.5}), LegendCorner::BottomRight},
        {PointsAt({9.5, 0.5, 9.5, 9.5}, {9.5, 9.5, 0.5, 0.5}), LegendCorner::BottomLeft},
        {PointsAt({5, 50}, {5, 9.5}), LegendCorner::TopRight},              // outside the range: not counted
    };
    for (const auto& c : cases) EXPECT_EQ(LeastCoveredCorner(c.plot, unit, 0.3, 0.3), c.corner);

    // x = 500 on 1..1000 lies half-way on a linear axis, clear of both 30 %
    // corner boxes, and at 0.9 of a log axis, inside the right one.
    PlotData log = PointsAt({500}, {9.5});
    const PlotRanges decades{{1, 1000}, {0, 10}};
    EXPECT_EQ(LeastCoveredCorner(log, decades, 0.3, 0.3), LegendCorner::TopRight);
    log.xLog = true;
    EXPECT_EQ(LeastCoveredCorner(log, decades, 0.3, 0.3), LegendCorner::TopLeft);
}

TEST(PlotLayout, TitlesWrapBetweenWordsAndCutOnlyWordsWiderThanTheLine) {
    const auto chars = [](const std::string& t) { return double(t.size()); };
    const struct {
        const char* title;
        double width;
        const char* wrapped;
    } cases[] = {
        {"Noise spectrum", 20, "Noise spectrum"},
        {"Noise power spectral density", 12, "Noise power\nspectral\ndensity"},
        {"  spaced   words  ", 20, "spaced words"},
        {"a 171116sh_0020_saved.abf b", 8, "a\n171116sh\n_0020_sa\nved.abf\nb"},
        {"", 10, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(WrapTitle(c.title, c.width, chars), c.wrapped) << c.title;
}

}  // namespace
}  // namespace vess
