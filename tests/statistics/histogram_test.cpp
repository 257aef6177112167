#include <gtest/gtest.h>

#include <cmath>

#include "recording/scripted_dialogs.h"
#include "statistics/binning.h"
#include "statistics/histogram.h"
#include "stats_fixture.h"

namespace vess {
namespace {

using test::TempDir;

TEST(BinRule, ValuesFallIntoBinsRoundedDown) {
    // 0.5 -> bin 0; 1.0 and 1.5 -> bin 1.
    const std::vector<double> v = {0.5, 1.0, 1.5};
    const BinnedCounts b = CountIntoBins(v, 1.0);
    EXPECT_EQ(b.lowestBin, 0);
    EXPECT_EQ(b.counts, (std::vector<int32_t>{1, 2}));
    // -0.5 falls in bin -1, left edge -1 (not in bin 0 as truncation would put it).
    const std::vector<double> negative = {-0.5, 0.25};
    const BinnedCounts n = CountIntoBins(negative, 1.0);
    EXPECT_EQ(n.lowestBin, -1);
    EXPECT_EQ(n.LeftEdge(0, 1.0), -1.0);
    EXPECT_EQ(n.counts, (std::vector<int32_t>{1, 1}));
}

TEST(BinRule, NonFiniteValuesAreLeftOut) {
    const std::vector<double> v = {INFINITY, 2.5, NAN, -INFINITY, 2.7};
    const BinnedCounts b = CountIntoBins(v, 1.0);
    EXPECT_FALSE(b.tooManyBins);
    EXPECT_EQ(b.lowestBin, 2);
    EXPECT_EQ(b.counts, (std::vector<int32_t>{2}));
    EXPECT_TRUE(CountIntoBins(std::vector<double>{NAN}, 1.0).counts.empty());
}

TEST(BinRule, SixtyThousandBinsAndNoMore) {
    const std::vector<double> over = {0, 60000};  // 60001 bins
    EXPECT_TRUE(CountIntoBins(over, 1.0).tooManyBins);
    const std::vector<double> limit = {0, 59999.5};  // exactly 60000 bins
    const BinnedCounts b = CountIntoBins(limit, 1.0);
    EXPECT_FALSE(b.tooManyBins);
    EXPECT_EQ(b.counts.size(), 60000u);
}

TEST(Histograms, KindsTitlesAndAxes) {
    const std::vector<double> v = {0.5, 1.0, 1.5, 3.2};
    const HistogramPlot f = MakeHistogram(HistogramKind::Frequency, v, 1.0, "Amplitude", "pA");
    EXPECT_EQ(f.plot.title, " Frequency Histogram  Amplitude bin size=1pA");
    EXPECT_EQ(f.plot.yAxis, "Number of Events");
    EXPECT_EQ(f.plot.series[0].x, (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(f.plot.series[0].y, (std::vector<double>{1, 2, 0, 1}));

    const HistogramPlot c = MakeHistogram(HistogramKind::CumulativeBins, v, 1.0, "Amplitude", "pA");
    EXPECT_EQ(c.plot.title, "Cumulative Amplitude Histogram   bin size=1pA");
    EXPECT_EQ(c.plot.yAxis, "Cumulative Fraction");
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

TEST(Histograms, CodesCarrySourceAndKind) {
    EXPECT_EQ(DecodeHistogramCode(14)->source, HistogramSource::DataArray1);
    EXPECT_EQ(DecodeHistogramCode(35)->kind, HistogramKind::CumulativeBins);
    EXPECT_EQ(DecodeHistogramCode(55)->source, HistogramSource::DataArray2);
    EXPECT_EQ(DecodeHistogramCode(61)->kind, HistogramKind::Inverse);
    EXPECT_EQ(DecodeHistogramCode(75)->source, HistogramSource::DataArray2);
    for (int bad : {0, 16, 20, 36, 76, -1}) EXPECT_FALSE(DecodeHistogramCode(bad)) << bad;
}

using HistogramCommandTest = test::FiveEventsTest;

TEST_F(HistogramCommandTest, EventSourceAsksGroupThenBin) {
    dialogs.AnswerInput("1").AnswerInput("10");
    const auto plot = HistogramCommand(ws, dialogs, 2);  // event times in s
    ASSERT_TRUE(plot);
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Group Number");
    EXPECT_EQ(dialogs.Transcript()[0].text,
              "Please enter group number to plot grouped events only.  Entering zero will plot all events.");
    EXPECT_EQ(dialogs.Transcript()[1].caption, "Bin Size");
    EXPECT_EQ(dialogs.Transcript()[1].text, "Please enter the bin size for Time in sec.");
    // Group 1: 10, 20, 45 ms = 0.01, 0.02, 0.045 s: all in bin 0 of 10 s.
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{3}));
}

TEST_F(HistogramCommandTest, MissingGroupAndTooManyBinsAreSaid) {
    dialogs.AnswerInput("9");
    EXPECT_FALSE(HistogramCommand(ws, dialogs, 1));
    EXPECT_EQ(dialogs.Messages().back().text, "There is no events with group number 9.  Try another group.");

    std::vector<float> wide = {0, 60000};
    ws.array1.Assign(wide);
    dialogs.AnswerInput("ms").AnswerInput("1");
    EXPECT_FALSE(HistogramCommand(ws, dialogs, 14));
    EXPECT_EQ(dialogs.Transcript()[dialogs.Transcript().size() - 3].caption, "x-axis unit");
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
    EXPECT_EQ(dialogs.Messages().back().text, "Too many bins!  Please readjust the bin size and try again.");
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
    EXPECT_EQ(h.plot.xAxis, "Time (sec)");

    Workspace ws;
    ScriptedDialogs dialogs;
    std::vector<float> three = {1, 2, 3}, two = {1, 2};
    ws.array1.Assign(three);
    ws.array2.Assign(two);
    EXPECT_FALSE(RunningAverageCommand(ws, dialogs));
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
    EXPECT_EQ(h.plot.xAxis, "Time (s)");
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
    EXPECT_TRUE(dialogs.Transcript()[0].text.starts_with(
        "This function will generate an amplitude frequency histogram from the displayed trace.  Set the area "
        "of baseline with the two vertical cursors and set the amplitude range with the two horizontal cursors.  "
        "Please enter the bin size for Noise Amplitude in "));
    EXPECT_EQ(plot->yAxis, "Number of Events");
}

}  // namespace
}  // namespace vess
