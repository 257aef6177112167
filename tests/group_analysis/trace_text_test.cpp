// Trace and curve data as text, their prompts and the text file, and the
// histogram of a work array.
#include <gtest/gtest.h>

#include "group_analysis/results_plots.h"
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
    EXPECT_FALSE(CurveDataText(std::nullopt, "pA", dialogs));
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
    EXPECT_FALSE(DataArrayHistogramCommand(array, 2, dialogs));
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
    EXPECT_FALSE(DataArrayHistogramCommand(array, 1, dialogs));
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace
}  // namespace vess::group
