#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "statistics/correlogram.h"

namespace vess {
namespace {

TEST(Correlogram, ThreeEqualTimesGiveThreeZeroDifferences) {
    const std::vector<double> x = {5, 5, 5};
    const Correlogram c = AutoCorrelogram(x, 1.0, 10);
    EXPECT_EQ(c.firstBin, 0);
    ASSERT_EQ(c.counts.size(), 11u);
    EXPECT_EQ(c.counts[0], 3);
    EXPECT_EQ(std::accumulate(c.counts.begin(), c.counts.end(), 0.0), 3);
}

TEST(Correlogram, CrossBinsRunFromMinusToPlusMaximum) {
    const std::vector<double> a = {0}, b = {-2, -0.5, 0.5, 2, 2.5};
    const Correlogram c = CrossCorrelogram(a, b, 1.0, 2);
    EXPECT_EQ(c.firstBin, -2);
    // -2 -> bin -2, -0.5 -> bin -1, 0.5 -> bin 0, 2 -> bin 2 (at the range), 2.5 outside.
    EXPECT_EQ(c.counts, (std::vector<double>{1, 1, 1, 0, 1}));
    const PlotData p = CrossCorrelogramPlot(c, 2, 1.0, "ms");
    EXPECT_EQ(p.title, " Cross-correlogram of Array#2 against Array #1  bin size=1");
    EXPECT_EQ(p.yAxis, "Cross-correlation");
    EXPECT_EQ(p.series[0].x.front(), -2.0);
}

TEST(Correlogram, MovingWindowCountsEqualThePairwiseDefinition) {
    std::mt19937_64 rng(20240601);
    std::uniform_real_distribution<double> time(0, 2000);
    std::uniform_int_distribution<int> grid(0, 400);
    for (int round = 0; round < 4; ++round) {
        std::vector<double> a(700), b(500);
        // Half the rounds on a coarse grid, so that many differences land
        // exactly on bin edges and on the range limit.
        for (double& v : a) v = round % 2 ? time(rng) : grid(rng) * 0.5;
        for (double& v : b) v = round % 2 ? time(rng) : grid(rng) * 0.5;
        const double bin = round % 2 ? 0.7 : 0.5;
        const int64_t maxBins = 40;
        EXPECT_EQ(AutoCorrelogram(a, bin, maxBins).counts, AutoCorrelogramPairwise(a, bin, maxBins).counts);
        EXPECT_EQ(CrossCorrelogram(a, b, bin, maxBins).counts, CrossCorrelogramPairwise(a, b, bin, maxBins).counts);
        std::sort(a.begin(), a.end());  // event times come sorted
        EXPECT_EQ(AutoCorrelogram(a, bin, maxBins).counts, AutoCorrelogramPairwise(a, bin, maxBins).counts);
    }
}

TEST(Correlogram, CommandAsksItsQuestionsAndNormalises) {
    Workspace ws;
    std::vector<float> x = {0, 1, 2, 4};
    ws.array1.Assign(x);
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("ms").AnswerInput("1").AnswerInput("3").AnswerYesNo(true);
    const auto plot = AutoCorrelogramCommand(ws, dialogs, 1);
    ASSERT_TRUE(plot);
    const auto& t = dialogs.Transcript();
    EXPECT_EQ(t[1].text, "Please enter the bin size for Interval in ms.");
    EXPECT_EQ(t[2].caption, "Maximum Number of Bin");
    EXPECT_EQ(t[3].caption, "Normalize");
    EXPECT_EQ(t[3].text, "Do you want to normalize by the total number of events?");
    // Differences 1, 2, 4, 1, 3, 2 within 3 ms: bins 1: 2, 2: 2, 3: 1; over 4 elements.
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{0, 0.5, 0.5, 0.25}));
    EXPECT_EQ(plot->title, " Auto-correlogram of Array#1  bin size=1");
    EXPECT_EQ(plot->yAxis, "Auto-correlation");

    dialogs.AnswerInput("ms").AnswerInput("1").AnswerInput("60001");
    EXPECT_FALSE(CrossCorrelogramCommand(ws, dialogs, 1));  // Array #2 empty: nothing asked
    ws.array2.Assign(x);
    EXPECT_FALSE(CrossCorrelogramCommand(ws, dialogs, 1));
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
    EXPECT_TRUE(dialogs.Transcript()[dialogs.Transcript().size() - 2].text.find("upper and lower range") !=
                std::string::npos);
}

}  // namespace
}  // namespace vess
