// Measuring and fitting traces of the trace set, the group assignments,
// auto-rejection and the comparison of one- and two-exponential fits.
#include <gtest/gtest.h>

#include <cmath>

#include "group_analysis/decay_fit.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/group_assign.h"
#include "recording/workspace.h"

namespace vess::group {
namespace {

// A trace set of one 400-point trace at 100 us: baseline 100 counts for 50
// points, then a jump to 100 - 1000 that decays as 1000 exp(-t / 40 points),
// so its decay levels are hand-computable: the 0.368 point is where
// exp(-k/40) <= 0.368, k = ceil(40 ln(1/0.368)) = ceil(39.98) = 40.
// shape(j) gives another trace instead.
TraceSet DecaySet(double (*shape)(int) = [](int j) { return j < 50 ? 100 : 100 - 1000 * std::exp(-(j - 50) / 40.0); }) {
    TraceSet set{.length = 400, .count = 1, .prePoints = 50, .intervalUs = 100, .points = std::vector<int16_t>(800), .eventIndex = {0, 7}};
    for (std::size_t j = 0; j < 400; ++j) set.points[j] = set.points[400 + j] = int16_t(std::nearbyint(shape(int(j))));
    return set;
}

const UnitScale kScale{.gain = 10, .intervalUs = 100, .units = "pA"};  // 10 counts per pA, no offset
const FitSettings kOneExponential{.model = {1, true}, .simplex = {}};

TEST(MeasureTrace, LevelsRiseHalfWidthDecayAndArea) {
    const TraceMeasurements m = MeasureTrace(DecaySet().Row(1), 50, -1, RiseRange::R1090, kScale);
    EXPECT_EQ(m.baseline, 100);
    EXPECT_EQ(m.peak, 50);
    EXPECT_EQ(m.amplitude, -1000);
    // 0.9: k >= 40 ln(1/0.9) = 4.21 -> 5; 0.5: 27.7 -> 28; 0.368: 40; 0.1:
    // 92.1, but the stored count at k = 92 is 1000 e^-2.3 = 100.26 -> 100,
    // already within 10 %.
    const auto& d = m.decayPoints;
    EXPECT_EQ((std::array{d[kDecay90], d[kDecay50], d[kDecay368], d[kDecay10]}), (std::array{55, 78, 90, 142}));
    EXPECT_NEAR(m.decay9037Ms, 3.5, 1e-9);              // 35 points of 0.1 ms
    EXPECT_NEAR(m.halfWidthMs, (78 - 49) * 0.1, 1e-9);  // step: the 50 % point before is 49
    EXPECT_EQ(m.riseMs, 0.0);                           // instant rise
    // Area: -100 pA x 0.1 ms x sum exp(-k/40) over k = 0..349, a geometric
    // sum, within the rounding of the stored counts.
    EXPECT_NEAR(m.areaUnitsMs, -10 * (1 - std::exp(-350 / 40.0)) / (1 - std::exp(-1 / 40.0)), 0.05);
}

// An average aligned on its peak: baseline 100 for 30 points, a linear rise
// over 20 points to 100 - 1000 at point 50, then a decay too slow (tau 4000
// points) to fall back to half amplitude within the trace. The baseline is
// the flat stretch before the rise, not the mean of the whole stretch before
// the peak (that would be (30 x 100 - 20 x 400) / 50 = -100 and an amplitude
// of -800); half-width and decay 90-37 % are not measured.
TEST(MeasureTrace, BaselineBeforeTheRiseAndLevelsNeverReached) {
    const TraceSet set = DecaySet([](int j) {
        return j < 30 ? 100 : j < 50 ? 100 - 1000 * (j - 29) / 21.0 : 100 - 1000 * std::exp(-(j - 50) / 4000.0);
    });
    const TraceFit fit = FitTrace(set, 1, -1, 3, kScale, kOneExponential);
    // The foot of the rise below its 10 % point (point 30, 52 counts) is
    // still averaged in: 98 of 100.
    EXPECT_NEAR(fit.measured.baseline, 100, 2);
    EXPECT_NEAR(fit.measured.amplitude, -1000, 2);
    EXPECT_TRUE(std::isnan(fit.values.halfWidth));
    EXPECT_TRUE(std::isnan(fit.values.decay9037));
    EXPECT_NE(fit.report.find("Half-width : not measured  Decay90-37% : not measured"), std::string::npos)
        << fit.report;
}

TEST(FitTrace, RecoversTheDecayAndFillsTheRowAndReport) {
    const TraceSet set = DecaySet();
    FitSettings f = kOneExponential;
    const TraceFit fit = FitTrace(set, 1, -1, 3, kScale, f);
    EXPECT_EQ(std::pair(fit.from, fit.to), std::pair(50, 399));
    EXPECT_NEAR(fit.fit.parameters[0], 4.0, 0.01);    // 40 points of 0.1 ms
    EXPECT_NEAR(fit.fit.parameters[1], -100.0, 0.1);  // -1000 counts
    EXPECT_NEAR(fit.fit.parameters[6], 10.0, 0.05);   // baseline 100 counts
    EXPECT_EQ(std::pair(fit.values.eventIndex, fit.values.group), std::pair(7, 3));
    EXPECT_EQ(fit.curve.size(), 350u);
    for (const std::string& part : {std::string("Number of Trace : 1\r\nPeak Amplitude : -100.00 pA\r\n"), std::string("Decay90-37% : 3.50ms"),
                                   "\r\n" + FitEquation(f.model, fit.fit.parameters) + "\r\nStandard errors: tau1 "})
        EXPECT_NE(fit.report.find(part), std::string::npos) << part;
    EXPECT_GT(fit.values.standardErrors[0], 0);
    EXPECT_EQ(FitEquation({2, true}, {4, -100, 25.5, 2.25, 0, 0, 10}),
              "y=(-100.00)*exp(-x/4.00)+(2.25)*exp(-x/25.50)+(10.000)");

    f.range = FitRange::Decay1090;
    const TraceFit part = FitTrace(set, 0, -1, 3, kScale, f);
    EXPECT_EQ(std::pair(part.from, part.to), std::pair(55, 142));
    EXPECT_NE(part.report.find("Number of Traces Averaged : 1"), std::string::npos);

    // A fixed amplitude with either method: -100 pA e^(-t / 4 ms) on 10 pA.
    f = {.model = {1, true}, .useGuess = true, .guess = {2, -100, 0, 0, 0, 0, 0}, .simplex = {.fixAmplitudes = true}};
    for (FitMethod method : {FitMethod::LeastSquares, FitMethod::Simplex}) {
        f.method = method;
        const TraceFit fixed = FitTrace(set, 1, -1, 3, kScale, f);
        EXPECT_EQ(fixed.fit.parameters[1], -100.0);
        EXPECT_NEAR(fixed.fit.parameters[0], 4.0, 0.01);
        EXPECT_NEAR(fixed.fit.parameters[6], 10.0, 0.05);
        // Only the least-squares fit measures standard errors; a fixed
        // amplitude has none.
        EXPECT_EQ(std::isfinite(fixed.values.standardErrors[0]), method == FitMethod::LeastSquares);
        EXPECT_TRUE(std::isnan(fixed.values.standardErrors[1]));
        EXPECT_NE(fixed.report.find(method == FitMethod::Simplex ? "Restarts of the search: " : "Least squares from "),
                  std::string::npos);
    }
}

TEST(FitTrace, CollapsedAndFailedFitsGiveNoParameters) {
    // Three exponentials on a single one: a component collapses.
    const TraceFit fit = FitTrace(DecaySet(), 1, -1, 3, kScale, {.model = {3, true}, .simplex = {}});
    EXPECT_EQ(fit.fit.status, FitStatus::TooManyExponentials);
    EXPECT_TRUE(std::isnan(fit.values.tau1));
    EXPECT_TRUE(fit.curve.empty());
    EXPECT_NE(fit.report.find("Too many exponentials for the data"), std::string::npos);
    EXPECT_EQ(fit.report.find("y="), std::string::npos);
    // The status rules on a range of 1 ms steps over 100 ms, data of size 10.
    std::vector<double> x, y;
    for (int i = 0; i <= 100; ++i) x.push_back(i), y.push_back(10 * std::exp(-i / 10.0));
    const struct {
        ExpParameters p;
        FitStatus status;
    } cases[] = {
        {{-2, 10, 5, 1, 0, 0, 0}, FitStatus::Failed},                 // time constant below 0
        {{0.5, 10, 5, 1, 0, 0, 0}, FitStatus::TooManyExponentials},   // below one interval
        {{2, 10, 1001, 1, 0, 0, 0}, FitStatus::TooManyExponentials},  // beyond ten ranges
        {{2, 10, 2.001, 1, 0, 0, 0}, FitStatus::TooManyExponentials}, // equal time constants
        {{2, 10, 5, 1e-6, 0, 0, 0}, FitStatus::TooManyExponentials},  // zero amplitude
        {{2, 1e5, 5, -1e5, 0, 0, 0}, FitStatus::TooManyExponentials}, // cancelling amplitudes
        {{2, 10, 999, 1, 0, 0, 0}, FitStatus::Optimum}};
    for (const auto& c : cases) EXPECT_EQ(AssessFit({2, false}, c.p, x, y), c.status) << c.p[0] << " " << c.p[2];
    // Which traces each type fits.
    TraceSet three = DecaySet();
    three.count = 3;
    EXPECT_EQ(TracesToFit(three, AnalysisType::ScaledAverage, 2), std::vector<int32_t>{0});
    EXPECT_EQ(TracesToFit(three, AnalysisType::Individual, 2), std::vector<int32_t>{2});
    EXPECT_EQ(TracesToFit(three, AnalysisType::Superimpose, 2), (std::vector<int32_t>{1, 2, 3}));
}

// Events at these times (100 us a point); the second is rejected.
EventTable Events(std::initializer_list<double> timesMs) {
    EventTable t;
    for (double ms : timesMs)
        t.Append({.time = float(ms), .group = uint8_t(t.Count() == 1 ? kGroupRejected : 0), .sampleIndex = int32_t(ms * 10)});
    return t;
}

std::vector<int> Field(const GroupPlan& plan, auto EventRecord::*field) {
    std::vector<int> v;
    for (const EventRecord& r : plan.records) v.push_back(int(r.*field));
    return v;
}

TEST(GroupAssign, BurstsNumberTheirEventsAndGroupThem) {
    // Intervals 5, 5, 50, 3, 60, 4, 10: with a 10 ms maximum (an interval
    // must be shorter) and 2 events at least, events 1-3 and 4-5 and 6-7
    // form bursts; event 8 is alone.
    const EventTable t = Events({0, 5, 10, 60, 63, 123, 127, 137});
    const GroupPlan all = PlanBursts(t, {.maxIntervalMs = 10, .minEvents = 2, .group = 4});
    EXPECT_EQ(all.bursts, 3);
    EXPECT_EQ(Field(all, &EventRecord::burstNumber), (std::vector{1, 1, 1, 2, 2, 3, 3, 0}));
    EXPECT_EQ(Field(all, &EventRecord::burstEventNumber), (std::vector{1, 2, 3, 1, 2, 1, 2, 0}));
    EXPECT_EQ(all.counts.at(4), 7);
    // Three events at least: only the first run is a burst; first events only.
    const GroupPlan first =
        PlanBursts(t, {.maxIntervalMs = 10, .minEvents = 3, .firstEventsOnly = true, .group = 4});
    EXPECT_EQ(first.bursts, 1);
    EXPECT_EQ(first.counts.at(4), 1);
    EXPECT_EQ(Field(first, &EventRecord::burstNumber), (std::vector{1, 1, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(first.records[1].group, kGroupRejected);
}

TEST(GroupAssign, EpisodesBySweepOrWindowSkipRejectedEvents) {
    const EventTable t = Events({0, 5, 10, 60, 63, 123, 127});
    // Peaks at 0, 50, 100, 600, 630, 1230, 1270 points.
    const GroupPlan sweeps = PlanEpisodic(t, {.bySweep = true, .sweepStarts = {0, 500, 1000}, .firstGroup = 2});
    EXPECT_EQ(Field(sweeps, &EventRecord::group), (std::vector{2, 255, 2, 3, 3, 4, 4}));
    // Sweeps of their own lengths (0-629, 630-1249, 1250-): a peak on a
    // sweep's first point belongs to that sweep.
    const GroupPlan uneven = PlanEpisodic(t, {.bySweep = true, .sweepStarts = {0, 630, 1250}});
    EXPECT_EQ(Field(uneven, &EventRecord::group), (std::vector{1, 255, 1, 1, 2, 2, 3}));
    const GroupPlan windows = PlanEpisodic(t, {.bySweep = false, .sweepStarts = {}, .windowMs = 100});
    EXPECT_EQ(PreviewText(windows), "Group 1: 4 events\nGroup 2: 2 events\n");
}

TEST(GroupAssign, RandomGroupsAreEqualRepeatableAndUndoable) {
    Workspace ws;
    ws.events = Events({0, 5, 10, 60, 63, 123, 127, 130, 140});
    const GroupPlan a = PlanRandom(ws.events, {.groups = 2, .firstGroup = 5, .seed = 42});
    EXPECT_EQ(a.records, PlanRandom(ws.events, {.groups = 2, .firstGroup = 5, .seed = 42}).records);
    EXPECT_NE(a.records, PlanRandom(ws.events, {.groups = 2, .firstGroup = 5, .seed = 43}).records);
    EXPECT_EQ(std::pair(a.counts.at(5), a.counts.at(6)), std::pair(4, 4));  // 8 events that are not rejected
    const EventTable before = ws.events;
    ApplyGroupPlan(ws, a);
    EXPECT_EQ(ws.events.Records(), a.records);
    ASSERT_TRUE(ws.history.Undo(ws.events));
    EXPECT_EQ(ws.events, before);
}

TEST(AutoReject, ByRSquaredAndByConfidenceInterval) {
    // tau1 of 10, 10, 10, 10, 30: mean 14, SD sqrt(320/4) = 8.94; at 95 %
    // (z = 1.96) the interval is 14 +- 17.5, so 30 stays; at 50 %
    // (z = 0.674) it is 14 +- 6.03 and only 30 falls outside.
    // Trace 6 is a collapsed fit without tau1: outside any interval, and
    // left out of its mean and SD. Trace 1's R-sqr is the minimum: it stays.
    std::vector<TraceFit> fits;
    for (auto [tau1, rSquared] : {std::pair{10.0, 0.98}, {10.0, 0.80}, {10.0, 0.995}, {10.0, 0.97}, {30.0, 0.999},
                                  {kNotMeasured, 0.999}}) {
        TraceFit& f = fits.emplace_back();
        f.trace = int32_t(fits.size()), f.values.tau1 = tau1, f.values.rSquared = rSquared;
    }
    EXPECT_NEAR(NormalQuantile(95), 1.959964, 1e-5);
    EXPECT_EQ(TracesToReject(fits, {.minRSquared = 0.98, .confidencePercent = {}}), (std::vector<int32_t>{2, 4}));
    EXPECT_EQ(TracesToReject(fits, {.minRSquared = {}, .confidencePercent = 95}), std::vector<int32_t>{6});
    EXPECT_EQ(TracesToReject(fits, {.minRSquared = {}, .confidencePercent = 50}), (std::vector<int32_t>{5, 6}));
}

TEST(CompareFits, TwoExponentialsWinOnlyOnADoubleDecay) {
    // Trace 1 decays as one exponential, trace 2 as 600 e^(-t/10) + 600 e^(-t/100)
    // (points of 0.1 ms), both from a baseline of 0.
    TraceSet set{.length = 600, .count = 2, .prePoints = 20, .intervalUs = 100, .points = std::vector<int16_t>(1800),
                 .eventIndex = {0, 1, 2}};
    for (int j = 20; j < 600; ++j) {
        const double k = j - 20;
        set.points[std::size_t(600 + j)] = int16_t(std::nearbyint(-1200 * std::exp(-k / 30)));
        set.points[std::size_t(1200 + j)] =
            int16_t(std::nearbyint(-600 * std::exp(-k / 10) - 600 * std::exp(-k / 100)));
    }
    const UnitScale scale{.intervalUs = 100, .units = ""};
    const FitSettings f{.model = {2, false}, .simplex = {}};
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
