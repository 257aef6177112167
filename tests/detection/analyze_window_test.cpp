// AnalyzeWindow on hand-built traces: one analytic event measured in full,
// and the rules about where the search starts, which baseline is read, what
// is stored twice and what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "detection/analyze_window.h"
#include "detection/detector.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::DoubleExp;
using test::TestParams;
using test::TraceFile;

// Rise tau 10 samples, decay tau 100, continuous peak 10000 counts (100 pA
// at 100 counts/pA) at t = 25.58 after the onset at 600. Golden values by
// hand from the curve (bisection) and its samples: sampled peak t = 26 (9999
// counts); start at the onset (rise 26); 10-90 % from linear interpolation
// 0.8176..14.2915 samples = 0.6737 ms (continuous 0.6734); rise to 50 % from
// t = 5: 21; half-width 105.437 - 5.072 samples = 5.018 ms; three-point mean
// below 0.32 x 9999 first at t = 151 (decay 125); area by samples 488.00
// pA ms (integral 487.27); slope 99.99 x 0.8 / 0.6737 = 118.74 pA/ms.
TEST(AnalyzeWindow, MeasuresAnAnalyticDoubleExponential) {
    TraceFile file(test::EventTrace(2048, {{600, DoubleExp{10, 100, 10000}}}), 100.0f);
    const Screen screen(*file.rec, 0, 4);
    EventTable events;
    const AnalyzeWindowResult result = AnalyzeWindow(screen, TestParams(), events);
    ASSERT_EQ(std::tuple(events.Count(), result.eventsAdded), std::tuple(1, 1));
    const EventRecord& e = events[1];
    EXPECT_FLOAT_EQ(e.time, 626 * 0.05f);
    EXPECT_EQ(std::tuple(e.sampleIndex, e.amplitude, e.baseline, e.riseTime, e.decayTime, e.rise50, e.baseOffset),
              std::tuple(626, 9999, 0, 26, 125, 21, 120));
    const std::tuple<double, double, double> measured[] = {
        {e.rise1090, 0.6737, 0.0001}, {e.halfWidth, 5.018, 0.005}, {e.area, 488.0, 0.5}, {e.slope1090, 118.74, 0.01}};
    for (const auto& [value, byHand, tolerance] : measured) EXPECT_NEAR(value, byHand, tolerance);
    // Marks: peak, middle of the baseline window (506 + 20), start, decay.
    std::vector<int64_t> marks;
    for (const auto& m : result.marks) marks.push_back(m.index);
    EXPECT_TRUE(marks == (std::vector<int64_t>{626, 526, 600, 751}) && result.status.ok());
    // Downward events (direction 0 read as -1): positive amplitude and rise, negative slope.
    TraceFile downward(test::EventTrace(2048, {{600, DoubleExp{10, 100, 2000}}}, -1));
    for (int16_t direction : {int16_t(-1), int16_t(0)}) {
        const EventTable events = test::AnalyzeScreen(*downward.rec, 0, TestParams(direction));
        ASSERT_EQ(events.Count(), 1) << "direction " << direction;
        EXPECT_EQ(std::pair(events[1].peakDirection, events[1].amplitude), std::pair(int16_t(-1), 2000));
        EXPECT_GT(events[1].rise1090, 0.0f);
        EXPECT_NEAR(events[1].slope1090, -2000 * 0.8 / events[1].rise1090, 0.01);
    }
}

// The first screen's search starts at BaseOffset + SearchLen (320): an event
// peaking at 75 is not seen, while the last range reaches into the next
// screen. There that event is at index 75, its baseline read from the end of
// the previous screen (level 100; zeros before index 0 would give 0).
TEST(AnalyzeWindow, FirstScreenStartsLateLaterScreensReadThePreviousOne) {
    // Sampled peak t = 25 (999.83 and 999.91 at 25 and 26 round to 1000; the earliest wins).
    std::vector<int16_t> trace = test::EventTrace(4096, {{50, DoubleExp{10, 100, 1000}}, {1074, DoubleExp{10, 100, 1000}}});
    for (int16_t& v : trace) v = int16_t(v + 100);
    TraceFile file(trace);
    const EventTable first = test::AnalyzeScreen(*file.rec, 0, TestParams());
    ASSERT_EQ(first.Count(), 1);
    EXPECT_EQ(first[1].relativeTime, 1024 + 75);
    const EventTable second = test::AnalyzeScreen(*file.rec, 4, TestParams());
    ASSERT_EQ(second.Count(), 1);
    const EventRecord& e = second[1];
    EXPECT_EQ(std::tuple(e.relativeTime, e.sampleIndex, e.baseline, e.amplitude), std::tuple(75, 1024 + 75, 100, 1000));
    EXPECT_EQ(e.time, first[1].time);
}

// The duplicate guard compares a new event with the last record only: a
// second pass over a screen of one event adds nothing, over two repeats both.
TEST(AnalyzeWindow, DuplicateGuardLooksAtTheLastRecordOnly) {
    TraceFile file(test::EventTrace(4096, {{1024 + 100, DoubleExp{10, 60, 500}}, {1024 + 650, DoubleExp{10, 60, 500}}}));
    const Screen two(*file.rec, 4, 4);
    EventTable events;
    AnalyzeWindow(two, TestParams(), events);
    ASSERT_EQ(events.Count(), 2);
    EXPECT_EQ(AnalyzeWindow(two, TestParams(), events).eventsAdded, 2);
    ASSERT_EQ(events.Count(), 4);
    EXPECT_TRUE(events[3] == events[1] && events[4] == events[2]);
    // Blocks 6..7 hold the second event only.
    const Screen one(*file.rec, 6, 2);
    EventTable single;
    AnalyzeWindow(one, TestParams(), single);
    ASSERT_EQ(single.Count(), 1);
    EXPECT_EQ((std::tuple{AnalyzeWindow(one, TestParams(), single).eventsAdded, single.Count()}), std::tuple(0, 1));
}

// Any period below one sample before rounding (0.6) fails the run with the
// message; exactly one sample is accepted. Periods round half to even.
TEST(AnalyzeWindow, ImproperParametersFailWithTheMessageAndAddNothing) {
    TraceFile file(test::EventTrace(2048, {{600, DoubleExp{10, 100, 1000}}}));
    const Screen screen(*file.rec, 0, 4);
    EventTable events;
    AnalysisParameters params;
    CommandResult refused = CommandResult::Ok();
    for (int32_t AnalysisParameters::*period :
         {&AnalysisParameters::PeriodToSearchMax, &AnalysisParameters::PeriodStartBaseline,
          &AnalysisParameters::PeriodBaselineAverage, &AnalysisParameters::PeriodFindDecayTime}) {
        params = TestParams();
        params.*period = 30;  // 0.6 samples at 50 us
        refused = AnalyzeWindow(screen, params, events).status;
        EXPECT_EQ((std::tuple{refused.failed(), events.Count()}), std::tuple(true, 0));
    }
    EXPECT_EQ(refused.caption(), "Improper Analysis Parameters");
    EXPECT_EQ(refused.message(),
              "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
              "Paramters' command under File menu.");
    params = TestParams();
    params.PeriodBaselineAverage = 50;  // exactly one sample
    EXPECT_TRUE(AnalyzeWindow(screen, params, events).status.ok());
    EXPECT_GE(events.Count(), 1);
    AnalysisParameters p = TestParams();
    p.PeriodToSearchMax = 125;    // 2.5 samples
    p.PeriodStartBaseline = 175;  // 3.5
    p.PeriodFindDecayTime = 74;   // 1.48
    const auto len = ConvertPeriods(p, 50);
    ASSERT_TRUE(len.has_value());
    EXPECT_EQ(std::tuple(len->searchLen, len->baseOffset, len->decayLen), std::tuple(2, 4, 1));
}
// The smoothed value divides by NumberPointsPeak, not by the points summed;
// FindMax keeps the earliest of equal values in either direction.
TEST(Detector, SmoothingAndEarliestExtreme) {
    std::vector<int16_t> trace(2048, 0);
    std::tie(trace[699], trace[700], trace[701]) = std::tuple(10, 20, 31);
    std::fill_n(trace.begin() + 800, 6, 50);
    std::fill_n(trace.begin() + 900, 6, -50);
    TraceFile file(trace);
    const Screen screen(*file.rec, 0, 4);
    AnalysisParameters p = TestParams();
    auto detector = [&](int16_t npp, int16_t dir) {
        p.NumberPointsPeak = npp;
        p.PeakDirection = dir;
        return Detector(screen, p, *ConvertPeriods(p, 50));
    };
    // 61 / 2 = 30.5 -> 30 and 51 / 2 = 25.5 -> 26 (to even); 61 / 3.
    EXPECT_EQ(std::tuple(detector(1, 1).GetAverageValue(700), detector(2, 1).GetAverageValue(700),
                         detector(3, 1).GetAverageValue(700), detector(2, 1).GetAverageValue(701)),
              std::tuple(20, 30, 20, 26));
    for (int16_t npp : {int16_t(1), int16_t(2), int16_t(3)}) {
        const PeakPoint up = detector(npp, 1).FindMax(760, 100);
        EXPECT_EQ(up.index, npp == 1 ? 800 : 801) << npp;  // smoothing needs a full window
        const PeakPoint down = detector(npp, -1).FindMax(860, 100);
        EXPECT_EQ(down.index, npp == 1 ? 900 : 901) << npp;
        EXPECT_EQ(up.value, detector(npp, 1).GetAverageValue(up.index));
    }
    EXPECT_EQ(detector(2, 1).FindMax(-1500, 3000).index, 801);  // reaching past the buffered screens
}

}  // namespace
}  // namespace vess
