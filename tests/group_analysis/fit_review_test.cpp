// Auto-rejection and the comparison of one- and two-exponential fits.
#include <gtest/gtest.h>

#include <cmath>

#include "group_analysis/fit_review.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"

namespace vess::group {
namespace {

TraceFit Fit(int32_t trace, double tau1, double rSquared) {
    TraceFit f;
    f.trace = trace;
    f.values.tau1 = tau1;
    f.values.rSquared = rSquared;
    return f;
}

TEST(AutoReject, ByRSquaredAndByConfidenceInterval) {
    // tau1 of 10, 10, 10, 10, 30: mean 14, SD sqrt(320/4) = 8.94; at 95 %
    // (z = 1.96) the interval is 14 +- 17.5, so 30 stays; at 50 %
    // (z = 0.674) it is 14 +- 6.03 and only 30 falls outside.
    // Trace 6 is a collapsed fit without tau1: outside any interval, and
    // left out of its mean and SD.
    const std::vector<TraceFit> fits = {Fit(1, 10, 0.99), Fit(2, 10, 0.80), Fit(3, 10, 0.995),
                                        Fit(4, 10, 0.97), Fit(5, 30, 0.999), Fit(6, kNotMeasured, 0.999)};
    EXPECT_NEAR(NormalQuantile(95), 1.959964, 1e-5);
    EXPECT_EQ(TracesToReject(fits, {.minRSquared = 0.98}), (std::vector<int32_t>{2, 4}));
    EXPECT_EQ(TracesToReject(fits, {.confidencePercent = 95}), std::vector<int32_t>{6});
    EXPECT_EQ(TracesToReject(fits, {.confidencePercent = 50}), (std::vector<int32_t>{5, 6}));
}

TEST(AutoReject, AskedEventsLeaveTheirGroupUndoably) {
    Workspace ws;
    for (int i = 0; i < 4; ++i) {
        EventRecord e;
        e.group = 3;
        ws.events.Append(e);
    }
    TraceSet set;
    set.count = 2;
    set.eventIndex = {0, 2, 4};
    ScriptedDialogs d;
    d.AnswerYesNo(true);
    EXPECT_EQ(AutoRejectCommand(ws, set, {2}, d), 1);
    EXPECT_EQ(d.Transcript().back().caption, "Auto-rejection");
    EXPECT_EQ(d.Transcript().back().text.substr(0, 119),
              "Found 1 events that qualify the automatic rejection criterion.  The following is the list of events: 4.  Would you like");
    EXPECT_EQ(ws.events[4].group, 0);
    EXPECT_EQ(ws.events[2].group, 3);
    ws.history.Undo(ws.events);
    EXPECT_EQ(ws.events[4].group, 3);
    EXPECT_EQ(RegroupTwoExponentialCommand(ws, set, {1, 2}, 9, d), 2);
    EXPECT_EQ(ws.events[2].group, 9);
    EXPECT_EQ(d.Messages().back().text,
              "Found 2 event(s) that fits better with sum of two exponential function.  These events are regrouped as Group #9.  You will need to display the group again in Display tab to refresh the group display.");
}

TEST(CompareFits, TwoExponentialsWinOnlyOnADoubleDecay) {
    // Trace 1 decays as one exponential, trace 2 as 600 e^(-t/10) + 600 e^(-t/100)
    // (points of 0.1 ms), both from a baseline of 0.
    TraceSet set;
    set.count = 2;
    set.length = 600;
    set.prePoints = 20;
    set.intervalUs = 100;
    set.points.assign(3 * 600, 0);
    set.eventIndex = {0, 1, 2};
    for (int j = 20; j < 600; ++j) {
        const double k = j - 20;
        set.points[std::size_t(600 + j)] = int16_t(std::nearbyint(-1200 * std::exp(-k / 30)));
        set.points[std::size_t(1200 + j)] =
            int16_t(std::nearbyint(-600 * std::exp(-k / 10) - 600 * std::exp(-k / 100)));
    }
    UnitScale scale;
    scale.intervalUs = 100;
    FitSettings f;
    f.model = {2, false};
    const Comparison single = CompareFits(set, 1, -1, 1, scale, f, 0.5);
    EXPECT_FALSE(single.twoWon);
    EXPECT_EQ(single.chosen.values.exponentials, 1);
    EXPECT_NEAR(single.chosen.values.tau1, 3.0, 0.01);
    const Comparison dual = CompareFits(set, 2, -1, 1, scale, f, 0.5);
    EXPECT_TRUE(dual.twoWon);
    EXPECT_EQ(dual.chosen.values.exponentials, 2);
    // The F-test and AIC agree, and the chosen report carries them.
    EXPECT_LT(dual.test.p, 1e-10);
    EXPECT_LT(dual.test.aicTwo, dual.test.aicOne);
    EXPECT_NE(dual.chosen.report.find("\r\nChange in R-sqr: "), std::string::npos);
    EXPECT_NE(dual.chosen.report.find("F-test of the second exponential: F "), std::string::npos);
}

TEST(CompareFits, FTestAndAicOfNestedFits) {
    // RSS 10 with 2 parameters against RSS 4 with 4, on 20 points:
    // F = (6 / 2) / (4 / 16) = 12; with 2 numerator degrees of freedom the
    // upper tail is (1 + 2F / 16)^(-16 / 2) = 2.5^-8. AIC = 20 ln(RSS / 20) + 2k.
    const NestedFitTest t = CompareNestedFits({10, 0.9, 0}, 2, {4, 0.96, 0}, 4, 20);
    EXPECT_DOUBLE_EQ(t.f, 12.0);
    EXPECT_NEAR(t.p, std::pow(2.5, -8), 1e-12);
    EXPECT_NEAR(t.aicOne, 20 * std::log(0.5) + 4, 1e-12);
    EXPECT_NEAR(t.aicTwo, 20 * std::log(0.2) + 8, 1e-12);
    EXPECT_NEAR(t.rSquaredChangePercent, 0.06 / 0.9 * 100, 1e-12);
    // A perfect second fit leaves the F-test not measured.
    EXPECT_TRUE(std::isnan(CompareNestedFits({10, 0.9, 0}, 2, {0, 1, 0}, 4, 20).f));
}

}  // namespace
}  // namespace vess::group
