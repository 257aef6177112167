#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "statistics/binning.h"
#include "statistics/correlogram.h"
#include "statistics/histogram.h"
#include "stats_fixture.h"

namespace vess {
namespace {

using test::TempDir;

// Bins are floor(value / bin size); values that are not finite are left out.
TEST(BinRule, ValuesFallIntoBinsRoundedDownAndNonFiniteOnesAreLeftOut) {
    struct Case {
        std::vector<double> values;
        int64_t lowestBin;
        std::vector<int32_t> counts;
    };
    const Case cases[] = {
        {{0.5, 1.0, 1.5}, 0, {1, 2}},
        {{-0.5, 0.25}, -1, {1, 1}},  // truncation would put -0.5 in bin 0
        {{INFINITY, 2.5, NAN, -INFINITY, 2.7}, 2, {2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.values));
        const BinnedCounts b = CountIntoBins(c.values, 1.0);
        EXPECT_FALSE(b.tooManyBins);
        EXPECT_EQ(b.lowestBin, c.lowestBin);
        EXPECT_EQ(b.counts, c.counts);
    }
    EXPECT_EQ(CountIntoBins(std::vector<double>{-0.5}, 1.0).LeftEdge(0, 1.0), -1.0);
    EXPECT_TRUE(CountIntoBins(std::vector<double>{NAN}, 1.0).counts.empty());
}

// At most 60000 bins, counted before any conversion to integers; no saturation.
TEST(BinRule, SixtyThousandBinsAndNoSaturation) {
    EXPECT_EQ(CountIntoBins(std::vector<double>{0, 59999.5}, 1.0).counts.size(), 60000u);
    EXPECT_TRUE(CountIntoBins(std::vector<double>{0, 60000}, 1.0).tooManyBins);
    EXPECT_TRUE(CountIntoBins(std::vector<double>{1e20}, 1.0).tooManyBins);
    const std::vector<double> values{100, 200, 300};
    for (double binSize : {100.0, 0.01}) EXPECT_FALSE(CountIntoBins(values, binSize).tooManyBins) << binSize;
    for (double binSize : {1e-17, 1e-19, double(INFINITY), double(NAN), 0.0, -1.0})
        EXPECT_TRUE(CountIntoBins(values, binSize).tooManyBins) << binSize;
}

TEST(Histograms, KindsTitlesAndAxes) {
    const std::vector<double> v = {0.5, 1.0, 1.5, 3.2};
    const HistogramPlot f = MakeHistogram(HistogramKind::Frequency, v, 1.0, "Amplitude", "pA");
    EXPECT_EQ(f.plot.title, " Frequency Histogram  Amplitude bin size=1pA");
    EXPECT_EQ(f.plot.series[0].x, (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(f.plot.series[0].y, (std::vector<double>{1, 2, 0, 1}));

    const HistogramPlot c = MakeHistogram(HistogramKind::CumulativeBins, v, 1.0, "Amplitude", "pA");
    EXPECT_EQ(c.plot.title, "Cumulative Amplitude Histogram   bin size=1pA");
    EXPECT_EQ(c.plot.series[0].y, (std::vector<double>{0.25, 0.75, 0.75, 1.0}));

    const std::vector<double> unsorted = {3, 1, 2, 4};
    const HistogramPlot nb = MakeHistogram(HistogramKind::CumulativeNoBins, unsorted, 0, "Area", "fC");
    EXPECT_EQ(nb.plot.series[0].x, (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(nb.plot.series[0].y, (std::vector<double>{0.25, 0.5, 0.75, 1.0}));
    const HistogramPlot inv = MakeHistogram(HistogramKind::Inverse, unsorted, 0, "Area", "fC");
    EXPECT_EQ(inv.plot.title, "Inverse Cumulative Area Histogram");
    EXPECT_EQ(inv.plot.yAxis, "Fraction");
    EXPECT_EQ(inv.plot.series[0].y, (std::vector<double>{0.75, 0.5, 0.25, 0.0}));

    // The frequency title is cut to 80 characters.
    const std::string longName(100, 'x');
    EXPECT_EQ(MakeHistogram(HistogramKind::Frequency, v, 1.0, longName, "").plot.title.size(), 80u);
}

using HistogramCommandTest = test::FiveEventsTest;

TEST_F(HistogramCommandTest, EventSourceAsksGroupThenBin) {
    dialogs.AnswerInput("1").AnswerInput("10");
    const auto plot = HistogramCommand(ws, dialogs, 2);  // event times in s
    ASSERT_TRUE(plot);
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Group Number");
    EXPECT_EQ(dialogs.Transcript()[1].text, "Please enter the bin size for Time in sec.");
    // Group 1: 10, 20, 45 ms = 0.01, 0.02, 0.045 s: all in bin 0 of 10 s.
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{3}));
}

TEST_F(HistogramCommandTest, MissingGroupAndTooManyBinsAreSaid) {
    dialogs.AnswerInput("9");
    EXPECT_FALSE(ShowFailure(dialogs, HistogramCommand(ws, dialogs, 1).status()));
    EXPECT_EQ(dialogs.Messages().back().text, "There is no events with group number 9.  Try another group.");

    std::vector<float> wide = {0, 60000};
    ws.array1.Assign(wide);
    dialogs.AnswerInput("ms").AnswerInput("1");
    EXPECT_FALSE(ShowFailure(dialogs, HistogramCommand(ws, dialogs, 14).status()));
    EXPECT_EQ(dialogs.Transcript()[dialogs.Transcript().size() - 3].caption, "x-axis unit");
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
}

TEST_F(HistogramCommandTest, CancelZeroBinAndEmptyArraysEndSilently) {
    dialogs.AnswerInput("0").AnswerInput("0");
    EXPECT_FALSE(HistogramCommand(ws, dialogs, 1));
    dialogs.AnswerInput(std::nullopt);
    EXPECT_FALSE(HistogramCommand(ws, dialogs, 21));
    EXPECT_FALSE(HistogramCommand(ws, dialogs, 15));  // Array #2 cleared: nothing asked
    EXPECT_TRUE(dialogs.Messages().empty());
    EXPECT_TRUE(dialogs.AllAnswersUsed());
    // Without bins nothing is asked beyond the group.
    dialogs.AnswerInput("0");
    const auto curve = HistogramCommand(ws, dialogs, 53);  // inter-event intervals
    ASSERT_TRUE(curve);
    EXPECT_EQ(curve->series[0].x, (std::vector<double>{5, 10, 10, 15}));
}

TEST(RunningAverage, MeansPerTimeBinSkippingEmptyBins) {
    const std::vector<double> t = {0.1, 0.2, 2.5, NAN, 2.7};  // a time that is not a number is left out
    const std::vector<double> v = {1, 3, 10, 99, 20};
    const HistogramPlot h = MakeRunningAverage(t, v, 1.0);
    EXPECT_EQ(h.plot.series[0].x, (std::vector<double>{0, 2}));  // bin 1 is empty and skipped
    EXPECT_EQ(h.plot.series[0].y, (std::vector<double>{2, 15}));

    Workspace ws;
    ScriptedDialogs dialogs;
    std::vector<float> three = {1, 2, 3}, two = {1, 2};
    ws.array1.Assign(three);
    ws.array2.Assign(two);
    EXPECT_FALSE(ShowFailure(dialogs, RunningAverageCommand(ws, dialogs).status()));
    EXPECT_EQ(dialogs.Messages()[0].caption, "Try Again");
}

TEST(Coastline, LengthAndTimeCourse) {
    const std::vector<double> trace = {0, 1, -1, -1, 2, 2};
    EXPECT_EQ(CoastlineLength(trace), 1 + 2 + 0 + 3 + 0);
    // 1 ms a sample, 2 ms bins: steps from samples 0,1 | 2,3 | 4.
    const HistogramPlot h = MakeCoastlineTimeCourse(trace, 1.0, 2.0, "pA");
    EXPECT_EQ(h.plot.series[0].y, (std::vector<double>{3, 3, 0}));
    EXPECT_EQ(h.plot.series[0].x, (std::vector<double>{0, 0.002, 0.004}));
    EXPECT_EQ(h.plot.title, " Coastline Time Course   bin size=2 ms");
}

TEST(Coastline, CommandOnTheDisplayedScreen) {
    TempDir dir;
    std::vector<int16_t> samples(4096, 0);
    for (std::size_t i = 0; i < samples.size(); i += 2) samples[i] = 2;  // 1 unit up and down
    Workspace ws;
    ws.recording = test::OffsetRecording(dir, samples);
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("1000");
    const auto plot = CoastlineCommand(ws, dialogs);
    ASSERT_TRUE(plot);
    // 4 blocks of 256 points on screen: 1023 steps of 1 unit.
    EXPECT_EQ(dialogs.Messages()[0].text, "The coastline length of the trace in this display window is 1023.000");
    EXPECT_EQ(dialogs.Transcript()[1].caption, "Time Bin");
}

TEST(NoiseHistogram, SamplesBetweenTheCursors) {
    TempDir dir;
    std::vector<int16_t> samples(4096, 0);
    for (int i = 0; i < 10; ++i) samples[std::size_t(i)] = int16_t(i);
    Workspace ws;
    ws.recording = test::OffsetRecording(dir, samples);
    ASSERT_TRUE(ws.recording);
    const double level0 = ws.recording->Bit2pA(0);
    // Samples 2..5 are levels +1..+2.5 units from level0; keep those within +1.5..+2.5.
    const NoiseCursors cursors{5, 2, level0 + 2.5, level0 + 1.5};
    EXPECT_EQ(NoiseAmplitudes(ws, cursors).size(), 3u);  // samples 3, 4 and 5
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("0.5");
    const auto plot = NoiseHistogramCommand(ws, dialogs, cursors);
    ASSERT_TRUE(plot);
    EXPECT_EQ(std::accumulate(plot->series[0].y.begin(), plot->series[0].y.end(), 0.0), 3);
}

TEST(Correlogram, CrossBinsRunFromMinusToPlusMaximum) {
    const std::vector<double> a = {0}, b = {-2, -0.5, 0.5, 2, 2.5};
    const Correlogram c = CrossCorrelogram(a, b, 1.0, 2);
    EXPECT_EQ(c.firstBin, -2);
    // -2 -> bin -2, -0.5 -> bin -1, 0.5 -> bin 0, 2 -> bin 2 (at the range), 2.5 outside.
    EXPECT_EQ(c.counts, (std::vector<double>{1, 1, 1, 0, 1}));
    const PlotData p = CrossCorrelogramPlot(c, 2, 1.0, "ms");
    EXPECT_EQ(p.title, " Cross-correlogram of Array#2 against Array #1  bin size=1");
    EXPECT_EQ(p.series[0].x.front(), -2.0);
}

TEST(Correlogram, MovingWindowCountsEqualThePairwiseDefinition) {
    std::mt19937_64 rng(20240601);
    std::uniform_real_distribution<double> time(0, 2000);
    std::uniform_int_distribution<int> grid(0, 400);
    for (int round = 0; round < 4; ++round) {
        std::vector<double> a(700), b(500);
        // Half the rounds on a coarse grid: differences on bin edges and the range limit.
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
    EXPECT_EQ(t[3].caption, "Normalize");
    // Differences 1, 2, 4, 1, 3, 2 within 3 ms: bins 1: 2, 2: 2, 3: 1; over 4 elements.
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{0, 0.5, 0.5, 0.25}));
    EXPECT_EQ(plot->title, " Auto-correlogram of Array#1  bin size=1");

    dialogs.AnswerInput("ms").AnswerInput("1").AnswerInput("60001");
    EXPECT_FALSE(CrossCorrelogramCommand(ws, dialogs, 1));  // Array #2 empty: nothing asked
    ws.array2.Assign(x);
    EXPECT_FALSE(ShowFailure(dialogs, CrossCorrelogramCommand(ws, dialogs, 1).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
    EXPECT_TRUE(dialogs.Transcript()[dialogs.Transcript().size() - 2].text.find("upper and lower range") !=
                std::string::npos);
}

}  // namespace
}  // namespace vess
