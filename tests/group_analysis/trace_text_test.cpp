// Trace and curve data as text, their prompts and the text file, the
// histogram of a work array, and the picture as a plot description.
#include <gtest/gtest.h>

#include "group_analysis/results_plots.h"
#include "group_analysis/trace_plot.h"
#include "group_analysis/trace_text.h"
#include "recording/data_array.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess::group {
namespace {

// Two traces of three points, 500 us apart; a level is counts / 2 + 0.5.
struct SmallSet : ::testing::Test {
    TraceSet set;
    UnitScale scale{.gain = 2, .range = 1, .resolution = 1, .offset = 0.5, .intervalUs = 500, .units = "pA"};
    ScriptedDialogs dialogs;
    void SetUp() override {
        set.length = 3;
        set.count = 2;
        set.intervalUs = 500;
        set.points = {10, 20, 30, 9, 18, 27, 11, 22, 33};
    }
};

TEST_F(SmallSet, TraceDataIsTheChosenTraceDividedByTheFactor) {
    dialogs.AnswerInput("2").AnswerInput("2");
    const auto text = TraceDataText(set, scale, "cell.abf", 3, dialogs);
    ASSERT_TRUE(text);
    // Trace 2 is 11, 22, 33 counts: 6, 11.5, 17 pA, halved.
    EXPECT_EQ(*text,
              "Group Analysis: cell.abf Group # 3 Trace # 2\r\n"
              "Time (ms) \tAmplitude (pA)\r\n"
              "0.0000\t3.0000\r\n0.5000\t5.7500\r\n1.0000\t8.5000\r\n");
    const auto& asked = dialogs.Transcript();
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].caption, "Copy Trace Data");
    EXPECT_EQ(asked[0].text,
              "Please specify the trace number to copy (Trace 0 is the average trace).  Range: 0 to 2");
    EXPECT_EQ(asked[1].caption, "Normalize Trace");

    // A trace past the last is the last; a factor of 0 leaves the values.
    dialogs.AnswerInput("9").AnswerInput("0");
    EXPECT_NE(TraceDataText(set, scale, "cell.abf", 3, dialogs)->find("Trace # 2\r\n"), std::string::npos);
    // Cancel at either question gives nothing.
    dialogs.AnswerInput(std::nullopt);
    EXPECT_FALSE(TraceDataText(set, scale, "cell.abf", 3, dialogs));
    dialogs.AnswerInput("0").AnswerInput("x");
    EXPECT_FALSE(TraceDataText(set, scale, "cell.abf", 3, dialogs));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(SmallSet, CurveDataIsTheExtractedTraceOrTheFittedCurve) {
    // Without a curve: a message and no question.
    EXPECT_FALSE(ShowFailure(dialogs, CurveDataText(std::nullopt, "pA", dialogs).status()));
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_EQ(dialogs.Messages().back().caption, "Curve Data");

    // The average (10, 20, 30 counts: 5.5, 10.5, 15.5 pA), as extracted.
    const ResultCurve extracted = TraceCurve(set, scale, 0, GroupAnalysisHeader("cell.abf", 3));
    dialogs.AnswerInput("1");
    EXPECT_EQ(*CurveDataText(extracted, "pA", dialogs),
              "Group Analysis: cell.abf Group # 3\r\nTime (ms) \tAmplitude (pA)\r\n"
              "0.0000\t5.5000\r\n0.5000\t10.5000\r\n1.0000\t15.5000\r\n");
    // A fitted curve from point 1 on, divided by 4.
    const ResultCurve fitted = FittedCurve(set, 1, {4.0, 2.0}, CurveFitHeader(3, 0));
    dialogs.AnswerInput("4");
    EXPECT_EQ(*CurveDataText(fitted, "pA", dialogs),
              "Curve Fit Group # 3 Trace # 0\r\nTime (ms) \tAmplitude (pA)\r\n"
              "0.5000\t1.0000\r\n1.0000\t0.5000\r\n");
}

TEST(TraceText, SavingAsksBeforeReplacing) {
    test::TempDir dir;
    ScriptedDialogs dialogs;
    dialogs.AnswerSaveFile((dir / "trace").string());
    ASSERT_TRUE(SaveTextFileCommand("first", dialogs));
    auto read = [&] {
        const auto bytes = ReadFileBytes(dir / "trace.txt");
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string("(missing)");
    };
    EXPECT_EQ(read(), "first");
    dialogs.AnswerSaveFile((dir / "trace.txt").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveTextFileCommand("second", dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");
    EXPECT_EQ(dialogs.Transcript().back().text, "File already exist.  Do you want to replace this file?");
    EXPECT_EQ(read(), "first");
    dialogs.AnswerSaveFile((dir / "trace.txt").string()).AnswerYesNo(true);
    EXPECT_TRUE(SaveTextFileCommand("second", dialogs));
    EXPECT_EQ(read(), "second");
}

TEST(DataArrayHistogram, BinsTheArrayOrSaysWhyNot) {
    ScriptedDialogs dialogs;
    DataArray array;
    EXPECT_FALSE(ShowFailure(dialogs, DataArrayHistogramCommand(array, 2, dialogs).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "Empty Data Array #2");
    EXPECT_EQ(dialogs.Messages().back().text,
              "The Data Array #2 is empty.  Please fill the array with data and try again.");

    // 1, 1, 2, 3.5 in bins of 1 from 1: 2, 1, 1.
    const std::vector<float> values{1, 1, 2, 3.5f};
    array.Assign(values);
    dialogs.AnswerInput("1");
    const auto plot = DataArrayHistogramCommand(array, 1, dialogs);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Bin Size");
    EXPECT_EQ(dialogs.Transcript().back().text, "Please enter the bin size for Data Array #1");
    ASSERT_TRUE(plot);
    EXPECT_EQ(plot->title, "Frequency Histogram");
    ASSERT_EQ(plot->series.size(), 1u);
    EXPECT_EQ(plot->series[0].legend, "Data Array #1");
    EXPECT_EQ(plot->series[0].x, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(plot->series[0].y, (std::vector<double>{2, 1, 1}));

    // 0 to 1e6 in bins of 1 is far past the bin limit.
    const std::vector<float> wide{0, 1e6f, 5};
    array.Assign(wide);
    dialogs.AnswerInput("1");
    EXPECT_FALSE(ShowFailure(dialogs, DataArrayHistogramCommand(array, 1, dialogs).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

// The group window's picture as a plot description: its y range under gain
// and offset, the scale bars, what is drawn and which trace a click picks.
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
