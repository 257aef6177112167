// The group window's commands without the window: numbers typed into its
// boxes, the trace edits and jump, auto-rejection after fits, the special
// analyses over the traces of a superimposed set, the traces as text and the
// picture as a plot description.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "group_analysis/ecg_delineation.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/trace_analysis_run.h"
#include "group_analysis/results_plots.h"
#include "group_analysis/trace_commands.h"
#include "group_analysis/trace_plot.h"
#include "group_analysis/trace_text.h"
#include "recording/data_array.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/read_back.h"

namespace vess::group {
namespace {

TEST(GroupWindowEntries, OnlyAWholeNumberInRangeReplacesTheValue) {
    struct Case { const char* entry; double number; int whole; };
    // Previous values 9 (number) and 4 (whole), range 0..255.
    for (const Case& c : {Case{" 12 ", 12, 12}, Case{"2.5", 2.5, 4}, Case{"12abc", 9, 4}, Case{"", 9, 4},
                          Case{"nan", 9, 4}, Case{"256", 9, 4}, Case{"-1", 9, 4}, Case{"255", 255, 255}}) {
        EXPECT_EQ(NumberEntryOr(c.entry, 9, 0, 255), c.number) << c.entry;
        EXPECT_EQ(WholeEntryOr(c.entry, 4, 0, 255), c.whole) << c.entry;
    }
}

// Four events of group 3; traces 1 and 2 are events 2 and 4.
struct Grouped {
    Grouped() {
        for (int i = 0; i < 4; ++i) ws.events.Append({.group = 3});
    }
    Workspace ws;
    TraceSet set{.count = 2, .points = {}, .eventIndex = {0, 2, 4}};
    ScriptedDialogs d;
};

TEST(TraceEdits, TheAverageStaysTheEventsChangeUndoablyAndJumpsStayInTheSet) {
    Grouped g;
    EXPECT_FALSE(ShowFailure(g.d, RemoveTraceCommand(g.ws, g.set, 0)));
    EXPECT_EQ(g.d.Messages().back().text, "Cannot remove the averaged trace.");
    EXPECT_FALSE(ShowFailure(g.d, RegroupTraceCommand(g.ws, g.set, 0, 3, g.d)));
    EXPECT_EQ(g.d.Messages().back().text, "Cannot regroup the averaged trace.");

    EXPECT_TRUE(RemoveTraceCommand(g.ws, g.set, 2));
    EXPECT_EQ(g.ws.events[4].group, 0);
    EXPECT_EQ(g.ws.events[2].group, 3);
    g.ws.history.Undo(g.ws.events);
    EXPECT_EQ(g.ws.events[4].group, 3);

    // The answers that change nothing, then one that does.
    for (std::optional<std::string> answer : {std::optional<std::string>{}, std::optional<std::string>{"256"},
                                              std::optional<std::string>{"7x"}, std::optional<std::string>{""}}) {
        g.d.AnswerInput(answer);
        EXPECT_FALSE(RegroupTraceCommand(g.ws, g.set, 1, 3, g.d)) << answer.value_or("cancel");
        EXPECT_EQ(g.ws.events[2].group, 3);
    }
    g.d.AnswerInput("7");
    EXPECT_TRUE(RegroupTraceCommand(g.ws, g.set, 1, 3, g.d));
    EXPECT_EQ(g.ws.events[2].group, 7);
    EXPECT_EQ(g.d.Transcript().back().caption, "Group Number");

    EXPECT_FALSE(ShowFailure(g.d, JumpTargetCommand(g.set, AnalysisType::Superimpose, g.d).status()));
    EXPECT_EQ(g.d.Messages().back().text,
              "This function will only work when trace is shown as individual or average.");
    struct Case { const char* answer; std::optional<int32_t> trace; };
    for (const Case& c : {Case{"1", 1}, Case{"99", 2}, Case{"-3", 0}, Case{"one", std::nullopt}}) {
        g.d.AnswerInput(c.answer);
        const auto target = JumpTargetCommand(g.set, AnalysisType::Individual, g.d);
        EXPECT_EQ(target ? std::optional(*target) : std::nullopt, c.trace) << c.answer;
    }
}

TEST(TraceEdits, AutoRejectAsksOnlyAfterSuperimposedFitsWithAReadableCriterionAndUndoes) {
    Grouped g;
    std::vector<TraceFit> fits(2);
    fits[0].trace = 1, fits[0].values.rSquared = 0.999;
    fits[1].trace = 2, fits[1].values.rSquared = 0.5;
    const RejectChoice choice{.byRSquared = true, .minRSquared = "0.98"};
    EXPECT_EQ(AutoRejectAfterFits(g.ws, g.set, AnalysisType::Individual, fits, choice, g.d), 0);
    EXPECT_EQ(AutoRejectAfterFits(g.ws, g.set, AnalysisType::Superimpose, fits,
                                  {.byRSquared = true, .minRSquared = "high"}, g.d), 0);
    EXPECT_TRUE(g.d.Transcript().empty());
    g.d.AnswerYesNo(true);
    EXPECT_EQ(AutoRejectAfterFits(g.ws, g.set, AnalysisType::Superimpose, fits, choice, g.d), 1);
    EXPECT_EQ(g.d.Transcript().back().caption, "Auto-rejection");
    EXPECT_EQ(g.d.Transcript().back().text.substr(0, 119),
              "Found 1 events that qualify the automatic rejection criterion.  The following is the list of events: 4.  Would you like");
    EXPECT_EQ(g.ws.events[4].group, 0);
    EXPECT_EQ(g.ws.events[2].group, 3);
    g.ws.history.Undo(g.ws.events);
    EXPECT_EQ(g.ws.events[4].group, 3);
    EXPECT_EQ(RegroupTwoExponentialCommand(g.ws, g.set, {1, 2}, 9, g.d), 2);
    EXPECT_EQ(g.ws.events[2].group, 9);
    EXPECT_EQ(g.d.Messages().back().text,
              "Found 2 event(s) that fits better with sum of two exponential function.  These events are regrouped as Group #9.  You will need to display the group again in Display tab to refresh the group display.");
}

// Three traces of 300 points at 0.1 ms, each a triangle above a baseline of
// 3: up from 10 to 11 ms and down to the baseline at 15 ms, 40, 80 and 120
// units tall. Area 40 x 5 / 2 = 100 units ms for the first, so charges of
// 0.1, 0.2 and 0.3 pC for traces in pA.
TraceSet Triangles() {
    TraceSet set{.length = 300, .count = 3, .intervalUs = 100, .points = std::vector<int16_t>(1200, 3), .eventIndex = {0, 1, 2, 3}};
    for (int t = 1; t <= 3; ++t)
        for (int j = 100; j <= 150; ++j) {
            const double shape = j <= 110 ? (j - 100) / 10.0 : (150 - j) / 40.0;
            set.points[std::size_t(t * 300 + j)] = int16_t(3 + std::lround(40 * t * shape));
        }
    return set;
}

TEST(TraceAnalysisRun, AmperometryGivesOneRowPerTraceAndAStopKeepsOnlyWhatWasDone) {
    TraceAnalysisInput in{.analysis = TraceAnalysis::Amperometric, .set = Triangles(), .scale = {.intervalUs = 100, .units = ""},
                          .traces = {}, .from = 0, .to = 299, .group = 5, .settings = {}};
    in.traces = TracesToFit(in.set, AnalysisType::Superimpose, 0);
    std::vector<double> shares;
    const TraceAnalysisRun run = RunTraceAnalyses(in, [&](double done, const std::string&) {
        shares.push_back(done);
        return true;
    });
    EXPECT_EQ(run.kind, ResultKind::Amperometric);
    EXPECT_FALSE(run.stopped);
    EXPECT_EQ(shares, (std::vector<double>{0, 1.0 / 3, 2.0 / 3}));
    ASSERT_EQ(run.outcomes.size(), 3u);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(run.outcomes[std::size_t(k)].trace, k + 1);
        ASSERT_EQ(run.outcomes[std::size_t(k)].rows.size(), 1u);
        EXPECT_NEAR(run.outcomes[std::size_t(k)].rows[0][8], 0.1 * (k + 1), 1e-9) << "charge, trace " << k + 1;
    }
    // The three peaks under one legend.
    const auto marks = JoinedMarks(run);
    ASSERT_FALSE(marks.empty());
    EXPECT_EQ(marks[0].legend, "Imax");
    EXPECT_EQ(marks[0].y, (std::vector<double>{43, 83, 123}));
    ResultsTable results;
    AppendTraceAnalysisRows(results, run, 5);
    ASSERT_EQ(results.Count(), 3);
    EXPECT_EQ(ReadResultRow(results[3]).eventIndex, 3);

    int calls = 0;
    const TraceAnalysisRun stopped = RunTraceAnalyses(in, [&](double, const std::string&) { return ++calls < 2; });
    EXPECT_TRUE(stopped.stopped);
    EXPECT_EQ(stopped.outcomes.size(), 1u);
    // A diffusion fit stopped part-way gives no row; the ECG is no job.
    EXPECT_TRUE(RunsAsJob(in.analysis, in.traces.size()));
    EXPECT_FALSE(RunsAsJob(TraceAnalysis::Ecg, 1));
    in.analysis = TraceAnalysis::Diffusion, in.traces = {1}, in.from = 100;
    EXPECT_TRUE(RunsAsJob(in.analysis, 1));
    calls = 0;
    const TraceAnalysisRun walk = RunTraceAnalyses(in, [&](double, const std::string&) { return ++calls < 5; });
    EXPECT_TRUE(walk.stopped);
    EXPECT_TRUE(walk.outcomes.empty());
}

TEST(TraceAnalysisRun, StoredNumbersOutsideTheirRangesKeepTheDefaultsAndQtcTakesTheMeanInterval) {
    GroupAnalysisSettings stored;
    stored.electrons = std::numeric_limits<double>::quiet_NaN(), stored.release = -1;
    stored.deadRadius = 0, stored.km = 0.5, stored.walkEdge = "Reflecting";
    TraceAnalysisSettings s;
    ApplyStoredSettings(s, stored);
    EXPECT_EQ(s.ampero.electrons, 2);
    EXPECT_EQ(s.walk.release, WalkModel{}.release);
    EXPECT_EQ(s.walk.deadRadius, 0);
    EXPECT_EQ(s.walk.km, 0.5);
    EXPECT_FALSE(s.walk.diffusingEdge);
    // QTc takes the mean interval of beats in order.
    EXPECT_EQ(MeanRrForQtc(std::vector<double>{800, 1000}), 900);
    EXPECT_TRUE(std::isnan(MeanRrForQtc(std::vector<double>{800, -5})));
    EXPECT_TRUE(std::isnan(MeanRrForQtc(std::vector<double>{})));
}

// Trace and curve data as text, their prompts and the text file, the
// histogram of a work array, and the picture as a plot description.

// Two traces of three points, 500 us apart; a level is counts / 2 + 0.5.
struct SmallSet : ::testing::Test {
    TraceSet set{.length = 3, .count = 2, .intervalUs = 500, .points = {10, 20, 30, 9, 18, 27, 11, 22, 33}, .eventIndex = {}};
    UnitScale scale{.gain = 2, .range = 1, .resolution = 1, .offset = 0.5, .intervalUs = 500, .units = "pA"};
    ScriptedDialogs dialogs;
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
    const auto read = [&] { return test::ReadText(dir / "trace.txt"); };
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
    array.Assign(std::vector<float>{1, 1, 2, 3.5f});
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
    array.Assign(std::vector<float>{0, 1e6f, 5});
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
    TraceSet set{.length = 11, .count = 2, .intervalUs = 500, .points = {}, .eventIndex = {0, 1, 2}};
    for (int j = 0; j <= 10; ++j) set.points.push_back(int16_t(j));
    set.points.insert(set.points.end(), 11, 20);
    set.points.insert(set.points.end(), 11, 40);
    return set;
}

TEST(TracePlot, RangeFollowsTheDrawnRowsUnderGainAndOffsetAndScaleBarsAreRoundAndAtMostAQuarter) {
    const TraceSet set = Rows();
    struct Case { bool all; double gain, offset; AxisRange range; };
    // The average spans 0..10: centre 5, half 5 x 1.1 / gain, moved by the offset.
    for (const Case& c : {Case{false, 1, 0, {-0.5, 10.5}}, Case{false, 2, 0, {2.25, 7.75}},
                          Case{false, 1, 3, {2.5, 13.5}}, Case{true, 1, 0, {19, 41}}}) {
        const AxisRange r = TraceYRange(set, {}, {.all = c.all, .gain = c.gain, .offset = c.offset});
        EXPECT_DOUBLE_EQ(r.lower, c.range.lower);
        EXPECT_DOUBLE_EQ(r.upper, c.range.upper);
    }

    for (auto [span, bar] : {std::pair{25.5, 5.0}, {40.0, 10.0}, {8.0, 2.0}, {0.37, 0.05}, {0.0, 0.0}})
        EXPECT_NEAR(ScaleBarLength(span), bar, 1e-12) << span;
}

TEST(TracePlot, DrawsTheHighlightLastCursorsAndLabelledBarsAndARightClickPicksATrace) {
    const TraceSet set = Rows();
    const UnitScale scale{.units = "pA"};
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

    EXPECT_EQ(PickedTrace(set, {}, {.all = true}, 0, 10, 33, 1), 2);
    EXPECT_EQ(PickedTrace(set, {}, {.all = true}, 0, 10, 25, 1), 1);
    EXPECT_EQ(PickedTrace(set, {}, {.trace = 0}, 4, 6, 5.5, 1), 0);
    EXPECT_EQ(PickedTrace(set, {}, {.trace = 0}, 4, 6, 8, 1), -1);
}

}  // namespace
}  // namespace vess::group
