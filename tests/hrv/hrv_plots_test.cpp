#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hrv/plot_commands.h"
#include "hrv/plots.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/beats.h"

namespace vess::hrv {
namespace {

using test::BeatsAt;

TEST(HrvPlots, HistogramsAskTheBinAndKeepTheLimit) {
    Workspace ws = BeatsAt({0, 800, 1600, 3200});
    ScriptedDialogs d;
    d.AnswerInput("100");
    const auto rr = RRHistogramCommand(ws, d);
    ASSERT_TRUE(rr);
    EXPECT_EQ(d.Transcript()[0].caption, "Bin Size");
    EXPECT_EQ(d.Transcript()[0].text, "Please enter the bin size for RR Interval in msec.");
    EXPECT_EQ(rr->title, "RR Interval Histogram  Frequency Histogram   bin size=100 msec");
    EXPECT_EQ(rr->yAxis, "Number of RR Intervals");
    // 800, 800 in bin 8 and 1600 in bin 16: bins 8..16.
    ASSERT_EQ(rr->series.at(0).x.size(), 9u);
    EXPECT_EQ(rr->series[0].x.front(), 800);
    EXPECT_EQ(rr->series[0].y.front(), 2);
    EXPECT_EQ(rr->series[0].y.back(), 1);

    d.AnswerInput("2");
    const auto delta = DeltaRRHistogramCommand(ws, d);
    ASSERT_TRUE(delta);
    EXPECT_EQ(delta->yAxis, "Number of Pairs of RR Intervals");
    EXPECT_EQ(delta->title.rfind("Delta RR Interval Histogram ", 0), 0u);

    // 800 ms in bins of 0.01 ms: 80001 bins are refused.
    d.AnswerInput("0.01");
    EXPECT_FALSE(RRHistogramCommand(ws, d));
    EXPECT_EQ(d.Messages().back().caption, "Too many bins");
    EXPECT_EQ(d.Messages().back().text, "Too many bins!  Please readjust the bin size and try again.");
    d.AnswerInput("");
    EXPECT_FALSE(RRHistogramCommand(ws, d));
    EXPECT_TRUE(d.AllAnswersUsed());
}

TEST(HrvPlots, LorenzEllipseArcsAndTachogram) {
    Workspace ws = BeatsAt({0, 800, 1650, 2400, 3300, 4000, 4850});
    ScriptedDialogs d;
    const auto plot = LorenzPlotCommand(ws, d);
    ASSERT_TRUE(plot);
    const PlotData& lorenz = *plot;
    EXPECT_EQ(lorenz.xAxis, "R(i)R(i+1) Interval (msec)");
    EXPECT_EQ(lorenz.yAxis, "R(i+1)R(i+2) Interval (msec)");
    EXPECT_EQ(lorenz.title.rfind("Lorenz Plot ", 0), 0u);
    ASSERT_EQ(lorenz.series.size(), 4u);  // points, two arcs of the ellipse, identity line
    EXPECT_EQ(lorenz.series[0].x.size(), 5u);
    // Each arc is drawn in x order, and together they meet at the extremes.
    for (int a : {1, 2}) EXPECT_TRUE(std::is_sorted(lorenz.series[a].x.begin(), lorenz.series[a].x.end()));
    EXPECT_DOUBLE_EQ(lorenz.series[1].x.front(), lorenz.series[2].x.front());
    EXPECT_DOUBLE_EQ(lorenz.series[1].x.back(), lorenz.series[2].x.back());

    const auto tachogram = TachogramPlotCommand(ws, d);
    ASSERT_TRUE(tachogram);
    const PlotData& tacho = *tachogram;
    EXPECT_EQ(tacho.title, "Tachogram ");
    EXPECT_EQ(tacho.xAxis, "Beat #");
    EXPECT_EQ(tacho.series[0].x, (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(tacho.series[0].y[1], 850);
}

TEST(HrvPlots, SpectrumShadesTheBands) {
    SpectrumResult s;
    for (int k = 0; k <= 200; ++k) {
        s.frequencyHz.push_back(k / 256.0 * 4);
        s.densityMs2PerHz.push_back(1);
    }
    const Bands bands;
    const PlotData p = SpectrumPlot(s, bands);
    ASSERT_EQ(p.bands.size(), 3u);
    EXPECT_EQ(p.bands[1].label, "LF");
    EXPECT_DOUBLE_EQ(p.bands[1].from, 0.04);
    EXPECT_DOUBLE_EQ(p.bands[2].to, 0.40);
    EXPECT_LE(p.series[0].x.back(), 0.40);  // drawn up to the top of the HF band
}

}  // namespace
}  // namespace vess::hrv
