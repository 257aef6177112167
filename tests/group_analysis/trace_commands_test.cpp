// The group window's commands without the window: numbers typed into its
// boxes, the trace edits and jump, auto-rejection after fits, and the
// special analyses over the traces of a superimposed set.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "group_analysis/ecg_delineation.h"
#include "group_analysis/trace_analysis_run.h"
#include "group_analysis/trace_commands.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"

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
        for (int i = 0; i < 4; ++i) {
            EventRecord e;
            e.group = 3;
            ws.events.Append(e);
        }
        set.count = 2;
        set.eventIndex = {0, 2, 4};
    }
    Workspace ws;
    TraceSet set;
    ScriptedDialogs d;
};

TEST(TraceEdits, TheAverageStaysAndTheEventsChangeUndoably) {
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
}

TEST(TraceEdits, JumpNeedsOneShownTraceAndStaysInTheSet) {
    Grouped g;
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

TEST(TraceEdits, AutoRejectAsksOnlyAfterSuperimposedFitsWithAReadableCriterion) {
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
    EXPECT_EQ(g.ws.events[4].group, 0);
    EXPECT_EQ(g.ws.events[2].group, 3);
}

// Three traces of 300 points at 0.1 ms, each a triangle above a baseline of
// 3: up from 10 to 11 ms and down to the baseline at 15 ms, 40, 80 and 120
// units tall. Area 40 x 5 / 2 = 100 units ms for the first, so charges of
// 0.1, 0.2 and 0.3 pC for traces in pA.
TraceSet Triangles() {
    TraceSet set;
    set.count = 3;
    set.length = 300;
    set.intervalUs = 100;
    set.points.assign(4 * 300, 3);
    set.eventIndex = {0, 1, 2, 3};
    for (int t = 1; t <= 3; ++t)
        for (int j = 100; j <= 150; ++j) {
            const double shape = j <= 110 ? (j - 100) / 10.0 : (150 - j) / 40.0;
            set.points[std::size_t(t * 300 + j)] = int16_t(3 + std::lround(40 * t * shape));
        }
    return set;
}

TEST(TraceAnalysisRun, AmperometryGivesOneRowPerTraceAndStopsWhenAsked) {
    TraceAnalysisInput in{.analysis = TraceAnalysis::Amperometric, .set = Triangles(), .scale = {},
                          .traces = {}, .from = 0, .to = 299, .group = 5, .settings = {}};
    in.scale.intervalUs = 100;
    in.traces = TracesToFit(in.set, AnalysisType::Superimpose, 0);
    EXPECT_TRUE(RunsAsJob(in.analysis, in.traces.size()));
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
}

TEST(TraceAnalysisRun, AStoppedDiffusionFitGivesNoRow) {
    TraceAnalysisInput in{.analysis = TraceAnalysis::Diffusion, .set = Triangles(), .scale = {},
                          .traces = {1}, .from = 100, .to = 299, .group = 1, .settings = {}};
    in.scale.intervalUs = 100;
    EXPECT_TRUE(RunsAsJob(in.analysis, 1));
    EXPECT_FALSE(RunsAsJob(TraceAnalysis::Ecg, 1));
    int calls = 0;
    const TraceAnalysisRun run = RunTraceAnalyses(in, [&](double, const std::string&) { return ++calls < 5; });
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(run.outcomes.empty());
}

TEST(TraceAnalysisRun, StoredNumbersOutsideTheirRangesKeepTheDefaults) {
    GroupAnalysisSettings stored;
    stored.electrons = std::numeric_limits<double>::quiet_NaN();
    stored.release = -1;
    stored.deadRadius = 0;
    stored.km = 0.5;
    stored.walkEdge = "Reflecting";
    TraceAnalysisSettings s;
    ApplyStoredSettings(s, stored);
    EXPECT_EQ(s.ampero.electrons, 2);
    EXPECT_EQ(s.walk.release, WalkModel{}.release);
    EXPECT_EQ(s.walk.deadRadius, 0);
    EXPECT_EQ(s.walk.km, 0.5);
    EXPECT_FALSE(s.walk.diffusingEdge);
}

TEST(TraceAnalysisRun, QtcTakesTheMeanIntervalOfBeatsInOrder) {
    EXPECT_EQ(MeanRrForQtc(std::vector<double>{800, 1000}), 900);
    EXPECT_TRUE(std::isnan(MeanRrForQtc(std::vector<double>{800, -5})));
    EXPECT_TRUE(std::isnan(MeanRrForQtc(std::vector<double>{})));
}

}  // namespace
}  // namespace vess::group
