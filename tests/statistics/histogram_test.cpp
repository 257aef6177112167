#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <numeric>
#include <random>

#include "recording/event_time.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "statistics/array_fill.h"
#include "statistics/binning.h"
#include "statistics/correlogram.h"
#include "statistics/data_analysis.h"
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

    // At most 60000 bins, counted before any conversion to integers; no saturation.
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

TEST_F(HistogramCommandTest, EventSourceAsksGroupThenBinAndSaysWhatIsMissing) {
    dialogs.AnswerInput("1").AnswerInput("10");
    const auto plot = HistogramCommand(ws, dialogs, 2);  // event times in s
    ASSERT_TRUE(plot);
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Group Number");
    EXPECT_EQ(dialogs.Transcript()[1].text, "Please enter the bin size for Time in sec.");
    // Group 1: 10, 20, 45 ms = 0.01, 0.02, 0.045 s: all in bin 0 of 10 s.
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{3}));

    dialogs.AnswerInput("9");
    EXPECT_FALSE(ShowFailure(dialogs, HistogramCommand(ws, dialogs, 1).status()));
    EXPECT_EQ(dialogs.Messages().back().text, "There is no events with group number 9.  Try another group.");
    ws.array1.Assign(std::vector<float>{0, 60000});
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
    ws.array1.Assign(std::vector<float>{1, 2, 3});
    ws.array2.Assign(std::vector<float>{1, 2});
    EXPECT_FALSE(ShowFailure(dialogs, RunningAverageCommand(ws, dialogs).status()));
    EXPECT_EQ(dialogs.Messages()[0].caption, "Try Again");
}

TEST(Coastline, LengthTimeCourseAndTheCommandOnTheDisplayedScreen) {
    const std::vector<double> trace = {0, 1, -1, -1, 2, 2};
    EXPECT_EQ(CoastlineLength(trace), 1 + 2 + 0 + 3 + 0);
    // 1 ms a sample, 2 ms bins: steps from samples 0,1 | 2,3 | 4.
    const HistogramPlot h = MakeCoastlineTimeCourse(trace, 1.0, 2.0, "pA");
    EXPECT_EQ(h.plot.series[0].y, (std::vector<double>{3, 3, 0}));
    EXPECT_EQ(h.plot.series[0].x, (std::vector<double>{0, 0.002, 0.004}));
    EXPECT_EQ(h.plot.title, " Coastline Time Course   bin size=2 ms");

    TempDir dir;
    std::vector<int16_t> samples(4096, 0);
    for (std::size_t i = 0; i < samples.size(); i += 2) samples[i] = 2;  // 1 unit up and down
    Workspace ws;
    ws.recording = test::OffsetRecording(dir, samples);
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("1000");
    ASSERT_TRUE(CoastlineCommand(ws, dialogs));
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
    const std::vector<float> x = {0, 1, 2, 4};
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

// Values that were not measured (NaN) or overflowed (infinities) in every
// statistic, rejected events in the sources, and event times taken from the
// sample index.
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double Value(const TestOutcome& o, const std::string& label) { return o.table.Find(label)->values.at(0); }

// Identical samples must give no difference however many values were not
// measured: t 0 with p 1 (F 1), never -Infinity with p 0. A float array read
// from text turns 1e39 into +infinity.
TEST(NotMeasured, TestsLeaveOutNonFiniteValuesAndCountThem) {
    const std::vector<double> halfWidths{1.5, 2.0, kNaN, 2.5, 3.0};
    const std::vector<double> overflowed{1.5, 2.0, kInf, 2.5, 3.0};
    struct Case {
        StatTest test;
        const std::vector<double>& a;
        const char* statistic;
        double expected;
        const char* note;
    } cases[] = {
        {StatTest::TTestEqualVar, halfWidths, "t Stat", 0, "2 values that were not measured were left out"},
        {StatTest::TTestUnequalVar, overflowed, "t Stat", 0, "2 values that were not measured were left out"},
        {StatTest::TTestPaired, halfWidths, "t Stat", 0, "1 value that was not measured was left out"},
        {StatTest::FTest, overflowed, "F Stat", 1, "2 values that were not measured were left out"},
    };
    for (const Case& c : cases) {
        const auto o = RunTest(c.test, c.a, c.a);
        ASSERT_TRUE(o) << StatTestMenuCaption(c.test);
        EXPECT_EQ(Value(*o, c.statistic), c.expected) << StatTestMenuCaption(c.test);
        EXPECT_NEAR(Value(*o, "P value: two-tail"), 1.0, 1e-12) << StatTestMenuCaption(c.test);
        EXPECT_EQ(o->table.note, c.note) << StatTestMenuCaption(c.test);
        EXPECT_FALSE(o->Significant());
    }
    // The regression drops the pair whose x was not measured: y = 2x on the rest.
    ScriptedDialogs dialogs;
    const std::vector<double> x{1, kNaN, 3, 4}, y{2, 100, 6, 8};
    const auto reg = RunTest(StatTest::LinearRegression, x, y);
    ASSERT_TRUE(reg);
    EXPECT_EQ(Value(*reg, "n"), 3);
    EXPECT_DOUBLE_EQ(reg->table.Find("The Equation is")->values.at(1), 2.0);
    // Nothing measured at all is refused with its reason.
    const std::vector<double> none{kNaN, kNaN, kNaN};
    EXPECT_FALSE(ShowFailure(dialogs, RunTest(StatTest::TTestEqualVar, none, halfWidths).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "Not measured");
}

TEST(NotMeasured, ColumnStatisticsAndHistogramsSayWhatTheyLeftOut) {
    const std::vector<double> a{1, 2, kNaN, 3}, b{4, 5, 6};
    const std::span<const double> series[] = {a, b};
    const std::string titles[] = {"Array #1", "Array #2"};
    const ResultTable t = DescriptiveTable(series, titles);
    EXPECT_EQ(t.Find("Average")->values, (std::vector<double>{2, 5}));
    EXPECT_EQ(t.note, "Array #1: 1 value that was not measured was left out");

    const HistogramPlot h = MakeHistogram(HistogramKind::CumulativeBins, a, 1, "Half-width", "msec");
    EXPECT_EQ(h.plot.series.at(0).y.back(), 1.0);  // the fractions of the three measured values
    EXPECT_EQ(h.plot.note, "1 value that was not measured was left out");
    // A running average of a value that was not measured is no average at all.
    const std::vector<double> times{0.1, 0.2, 0.3}, values{1, kNaN, 3};
    const HistogramPlot running = MakeRunningAverage(times, values, 1);
    EXPECT_EQ(running.plot.series.at(0).y, std::vector<double>{2});
    // Float arrays step by 2 above 2^24: a histogram of such values says so.
    const std::vector<double> late{16777218.0, 16777220.0};
    EXPECT_NE(MakeHistogram(HistogramKind::Frequency, late, 1, "Time", "").plot.note.find("lost precision"),
              std::string::npos);
}

// "All events" (group 0) leaves out rejected events; 255 picks them.
using Sources = test::FiveEventsTest;
TEST_F(Sources, RejectedEventsStayOutOfAllEvents) {
    ws.events[2].group = uint8_t(kGroupRejected);  // the event at 30 ms, amplitude -4
    ws.events[2].amplitude = -1540;                // a rejected test pulse
    dialogs.AnswerYesNo(true).AnswerInput("0");
    ASSERT_TRUE(PutEventDataCommand(ws, dialogs, 1, ArrayField::Amplitude));
    EXPECT_EQ(ws.array1.UpperBound(), 4);
    // Sorted times 10, 20, 45, 50 without the rejected 30.
    EXPECT_EQ(InterEventIntervals(ws.events, 0), (std::vector<float>{10, 25, 5}));
    EXPECT_EQ(EventSourceValues(ws, HistogramSource::Amplitude, 0).size(), 4u);
    EXPECT_EQ(EventSourceValues(ws, HistogramSource::Amplitude, 255),
              std::vector<double>{double(ws.recording->Bit2pA2(-1540))});
}

// Late events of a long recording: the 32-bit time in ms no longer holds one
// sample of 50 us after two hours, the sample index does.
TEST(ExactEventTimes, IntervalsComeFromTheSampleIndex) {
    EventTable events;
    const int32_t twoHours = 144'000'000;  // samples of 50 us
    for (const int32_t s : {twoHours, twoHours + 1, twoHours + 3})
        events.Append(EventRecord{.time = float(double(s) * 0.05), .sampleIndex = s});
    ASSERT_EQ(events[1].time, events[2].time);  // the float cannot tell them apart
    EXPECT_EQ(InterEventIntervals(events, 0, 50), (std::vector<float>{0.05f, 0.1f}));

    struct Case {
        float timeMs;
        int32_t sampleIndex;
        double expected;
    } cases[] = {
        {7200000.0f, twoHours + 1, 7200000.05},  // agrees within the float: the exact time
        {100.0f, 0, 100.0},                      // never set: the stored time
        {100.0f, 9999, 100.0},                   // the time was edited since: the stored time
        {float(kNaN), 2000, kNaN},               // not measured stays not measured
    };
    for (const Case& c : cases) {
        const double t = ExactEventTimeMs(EventRecord{.time = c.timeMs, .sampleIndex = c.sampleIndex}, 50);
        if (std::isnan(c.expected))
            EXPECT_TRUE(std::isnan(t));
        else
            EXPECT_DOUBLE_EQ(t, c.expected) << c.sampleIndex;
    }
}

}  // namespace
}  // namespace vess
