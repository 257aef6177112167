// AnalyzeWindow on hand-built traces: one analytic event measured in full,
// and the rules about where the search starts, which baseline is read, what
// is stored twice and what is refused.
#include <gtest/gtest.h>

#include "detection/analyze_window.h"
#include "detection/detector.h"
#include "detection/texts.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;
using test::TestParams;
using test::TraceFile;

// Rise tau 10 samples (0.5 ms), decay tau 100 samples (5 ms), continuous peak
// 10000 counts at t = 10*100/90*ln(10) = 25.58 samples after the onset; at
// 100 counts per pA that is 100 pA. Onset at index 600 of the first screen.
//
// Values of the continuous curve (found by bisection, then checked against
// the sampled trace):
//  - the sampled peak is t = 26 (9999.15 -> 9999 counts; t = 25 gives 9998.26),
//    so the amplitude is 9999 counts, 99.99 pA, against a baseline of 0;
//  - the event start is the onset (sample 0 is the only one within 1 %), so the
//    rise length is 26 samples;
//  - 10 % is crossed at t = 0.809 and 90 % at t = 14.277: 13.467 samples,
//    0.6734 ms. Linear interpolation between the samples (0, 1223 around 10 %,
//    8937, 9150 around 90 %) puts the points at 999.9/1223 = 0.8176 and
//    14 + (8999.1 - 8937)/213 = 14.2915, so the measured value is 0.6737 ms;
//  - the last sample before the 50 % point on the rise is t = 5 (x50 = 5.07):
//    rise to 50 % = 26 - 5 = 21 samples;
//  - the half-width is 105.437 - 5.072 = 100.365 samples = 5.018 ms;
//  - the three-point mean first falls to 0.32 x 9999 = 3199.7 at t = 151
//    (3170.3; at t = 150 it is 3202.1): decay length 151 - 26 = 125;
//  - the area is the integral of the curve from 0 to 151 samples:
//    K (100 (1 - e^-1.51) - 10 (1 - e^-15.1)) = 974532 count-samples, i.e.
//    487.27 pA ms; the sum over samples (raw on the rise, three-point means on
//    the decay) is 488.00 pA ms;
//  - slope = 99.99 x 0.8 / 0.6737 = 118.74 pA/ms.
TEST(AnalyzeWindow, MeasuresAnAnalyticDoubleExponential) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 10000});
    TraceFile file(trace, 100.0f);
    const Screen screen(*file.rec, 0, 4);
    EventTable events;
    ScriptedDialogs dialogs;
    const AnalyzeWindowResult result = AnalyzeWindow(screen, TestParams(), events, dialogs);

    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(result.eventsAdded, 1);
    const EventRecord& e = events[1];
    EXPECT_EQ(e.relativeTime, 626);
    EXPECT_EQ(e.sampleIndex, 626);
    EXPECT_FLOAT_EQ(e.time, 626 * 0.05f);
    EXPECT_EQ(e.amplitude, 9999);
    EXPECT_EQ(e.baseline, 0);
    EXPECT_EQ(e.noise, 0);
    EXPECT_EQ(e.riseTime, 26);
    EXPECT_EQ(e.decayTime, 125);
    EXPECT_NEAR(e.rise1090, 0.6737, 0.0001);
    EXPECT_NEAR(e.rise1090, 0.6734, 0.001);  // the continuous curve
    EXPECT_EQ(e.rise50, 21);
    EXPECT_NEAR(e.halfWidth, 5.018, 0.005);
    EXPECT_NEAR(e.area, 488.0, 0.5);
    EXPECT_NEAR(e.area, 487.27, 487.27 * 0.005);  // within 0.5 % of the integral
    EXPECT_NEAR(e.slope1090, 118.74, 0.01);
    EXPECT_EQ(e.peakDirection, 1);
    EXPECT_EQ(e.baseOffset, 120);
    EXPECT_EQ(e.group, 0);

    // Marks: peak, middle of the baseline window (506 + 20), start, decay.
    ASSERT_EQ(result.marks.size(), 4u);
    EXPECT_EQ(result.marks[0].index, 626);
    EXPECT_EQ(result.marks[1].index, 526);
    EXPECT_EQ(result.marks[2].index, 600);
    EXPECT_EQ(result.marks[3].index, 751);
    EXPECT_EQ(MarkColour(result.marks[0].kind), 255u);
    EXPECT_TRUE(dialogs.Transcript().empty());
}

// The first screen of the file starts its search at BaseOffset + SearchLen
// (320 here), so an event peaking at 75 is not seen there, while its last
// search range (920..1119) reaches into the next screen and finds the event
// peaking at 1024 + 75. Analysed on the next screen that event has window
// index 75, and its baseline (from 75 - 120) is read from the end of the
// previous screen: the level is 100 all along, and a screen that read zeros
// before index 0 would give a baseline of 0.
TEST(AnalyzeWindow, FirstScreenStartsLateLaterScreensReadThePreviousOne) {
    std::vector<int16_t> trace(4096, 100);
    // The sampled peak is t = 25 (999.83 and 999.91 at 25 and 26 both round
    // to 1000; the earliest wins).
    AddEvent(trace, 50, DoubleExp{10, 100, 1000});
    AddEvent(trace, 1024 + 50, DoubleExp{10, 100, 1000});
    TraceFile file(trace);
    ScriptedDialogs dialogs;

    EventTable first;
    AnalyzeWindow(Screen(*file.rec, 0, 4), TestParams(), first, dialogs);
    ASSERT_EQ(first.Count(), 1);
    EXPECT_EQ(first[1].relativeTime, 1024 + 75);

    EventTable second;
    AnalyzeWindow(Screen(*file.rec, 4, 4), TestParams(), second, dialogs);
    ASSERT_EQ(second.Count(), 1);
    EXPECT_EQ(second[1].relativeTime, 75);
    EXPECT_EQ(second[1].sampleIndex, 1024 + 75);
    EXPECT_EQ(second[1].baseline, 100);
    EXPECT_EQ(second[1].amplitude, 1000);
    // The same event found from either screen has the same time.
    EXPECT_EQ(second[1].time, first[1].time);
    EXPECT_FLOAT_EQ(second[1].time, (1024 + 75) * 0.05f);
}

// The duplicate guard compares a new event with the last stored record only.
// A screen with one event analysed again adds nothing. With two events the
// first is compared with the second (the last record) and stored, and then
// the second is compared with that copy of the first and stored too: a second
// pass over such a screen repeats all its events.
TEST(AnalyzeWindow, DuplicateGuardLooksAtTheLastRecordOnly) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 1024 + 100, DoubleExp{10, 60, 500});
    AddEvent(trace, 1024 + 650, DoubleExp{10, 60, 500});
    TraceFile file(trace);
    ScriptedDialogs dialogs;

    const Screen two(*file.rec, 4, 4);
    EventTable events;
    AnalyzeWindow(two, TestParams(), events, dialogs);
    ASSERT_EQ(events.Count(), 2);
    EXPECT_EQ(AnalyzeWindow(two, TestParams(), events, dialogs).eventsAdded, 2);
    ASSERT_EQ(events.Count(), 4);
    EXPECT_EQ(events[3], events[1]);
    EXPECT_EQ(events[4], events[2]);

    // Screen 0 (search from 320) holds no event; screen 8.. holds none either;
    // a screen with the single event at 1024 + 650 is screen 4 seen with two
    // blocks from block 6.
    const Screen one(*file.rec, 6, 2);
    EventTable single;
    AnalyzeWindow(one, TestParams(), single, dialogs);
    ASSERT_EQ(single.Count(), 1);
    EXPECT_EQ(AnalyzeWindow(one, TestParams(), single, dialogs).eventsAdded, 0);
    EXPECT_EQ(single.Count(), 1);
}

// A ramp to a plateau that never decays: the decay point is peak + DecayLen + 1
// and the area covers the whole decay window. Ramp 0,100,..,1000 from 400 to
// 410, then 1000: peak 410 (the earliest of the equal plateau values), start
// 400, rise area 100 (0+1+..+10) = 5500, decay area 400 x 1000 = 400000;
// 405500 counts x 1 pA/count x 0.05 ms = 20275 pA ms. The area threshold of
// 10000 keeps the later plateau ranges (baseline partly on the ramp) out.
TEST(AnalyzeWindow, DecayNeverReachedCoversTheWholeDecayWindow) {
    std::vector<int16_t> trace(2048, 1000);
    for (int i = 0; i < 400; ++i) trace[std::size_t(i)] = 0;
    for (int k = 0; k <= 10; ++k) trace[std::size_t(400 + k)] = int16_t(100 * k);
    TraceFile file(trace);
    AnalysisParameters params = TestParams();
    params.AreaThreshold = 10000;
    EventTable events;
    ScriptedDialogs dialogs;
    AnalyzeWindow(Screen(*file.rec, 0, 4), params, events, dialogs);
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 410);
    EXPECT_EQ(events[1].riseTime, 10);
    EXPECT_EQ(events[1].decayTime, 401);
    EXPECT_FLOAT_EQ(events[1].area, 20275.0f);
}

// A period below one sample before rounding is refused with the message, even
// when it would round to 1 (0.6 samples); exactly one sample is accepted.
TEST(AnalyzeWindow, ImproperParametersShowTheMessageAndAddNothing) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    TraceFile file(trace);
    const Screen screen(*file.rec, 0, 4);
    EventTable events;
    ScriptedDialogs dialogs;
    AnalysisParameters params = TestParams();
    params.PeriodBaselineAverage = 30;  // 0.6 samples at 50 us
    const AnalyzeWindowResult refused = AnalyzeWindow(screen, params, events, dialogs);
    EXPECT_TRUE(refused.improperParameters);
    EXPECT_EQ(events.Count(), 0);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "Improper Analysis Parameters");
    EXPECT_EQ(dialogs.Messages()[0].text,
              "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
              "Paramters' command under File menu.");

    params.PeriodBaselineAverage = 50;  // exactly one sample
    EXPECT_FALSE(AnalyzeWindow(screen, params, events, dialogs).improperParameters);
    EXPECT_GE(events.Count(), 1);
    EXPECT_EQ(dialogs.Messages().size(), 1u);
}

// Periods are rounded half to even after the test: 2.5 samples -> 2, 3.5 -> 4.
TEST(AnalyzeWindow, PeriodsRoundHalfToEven) {
    AnalysisParameters p = TestParams();
    p.PeriodToSearchMax = 125;       // 2.5
    p.PeriodStartBaseline = 175;     // 3.5
    p.PeriodBaselineAverage = 50;    // 1
    p.PeriodFindDecayTime = 74;      // 1.48
    p.NumberPointsPeak = 5;
    const auto len = ConvertPeriods(p, 50);
    ASSERT_TRUE(len.has_value());
    EXPECT_EQ(len->searchLen, 2);
    EXPECT_EQ(len->baseOffset, 4);
    EXPECT_EQ(len->baseLen, 1);
    EXPECT_EQ(len->decayLen, 1);
    EXPECT_EQ(len->halfPeak, 2);
}

// Downward events (and a stored direction of 0, read as -1): positive
// amplitude, positive rise time, negative slope.
TEST(AnalyzeWindow, DownwardEventHasNegativeSlope) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 2000}, -1);
    TraceFile file(trace);
    for (int16_t direction : {int16_t(-1), int16_t(0)}) {
        EventTable events;
        ScriptedDialogs dialogs;
        AnalyzeWindow(Screen(*file.rec, 0, 4), TestParams(direction), events, dialogs);
        ASSERT_EQ(events.Count(), 1) << "direction " << direction;
        EXPECT_EQ(events[1].peakDirection, -1);
        EXPECT_EQ(events[1].amplitude, 2000);
        EXPECT_GT(events[1].rise1090, 0.0f);
        EXPECT_LT(events[1].slope1090, 0.0f);
        EXPECT_NEAR(events[1].slope1090, -2000 * 0.8 / events[1].rise1090, 0.01);
    }
}

// The smoothed value divides by NumberPointsPeak, not by the points summed;
// FindMax keeps the earliest of equal values in either direction.
TEST(Detector, SmoothingAndEarliestExtreme) {
    std::vector<int16_t> trace(2048, 0);
    trace[699] = 10;
    trace[700] = 20;
    trace[701] = 31;
    // A plateau of equal values up and down.
    for (int i = 800; i < 806; ++i) trace[std::size_t(i)] = 50;
    for (int i = 900; i < 906; ++i) trace[std::size_t(i)] = -50;
    TraceFile file(trace);
    const Screen screen(*file.rec, 0, 4);
    AnalysisParameters p = TestParams();
    auto detector = [&](int16_t npp, int16_t dir) {
        p.NumberPointsPeak = npp;
        p.PeakDirection = dir;
        return Detector(screen, p, *ConvertPeriods(p, 50));
    };
    EXPECT_EQ(detector(1, 1).GetAverageValue(700), 20);
    EXPECT_EQ(detector(2, 1).GetAverageValue(700), 30);  // 61 / 2 = 30.5 -> 30 (even)
    EXPECT_EQ(detector(3, 1).GetAverageValue(700), 20);  // 61 / 3
    EXPECT_EQ(detector(2, 1).GetAverageValue(701), 26);  // 51 / 2 = 25.5 -> 26 (even)

    for (int16_t npp : {int16_t(1), int16_t(2), int16_t(3)}) {
        const PeakPoint up = detector(npp, 1).FindMax(760, 100);
        EXPECT_EQ(up.index, npp == 1 ? 800 : 801) << npp;  // smoothing needs a full window
        const PeakPoint down = detector(npp, -1).FindMax(860, 100);
        EXPECT_EQ(down.index, npp == 1 ? 900 : 901) << npp;
        // The fast scan and the general one agree with GetAverageValue.
        EXPECT_EQ(up.value, detector(npp, 1).GetAverageValue(up.index));
    }
    // A range reaching outside the buffered screens gives the same answer.
    const Detector d = detector(2, 1);
    const PeakPoint far = d.FindMax(-1500, 3000);
    EXPECT_EQ(far.index, 801);
}

}  // namespace
}  // namespace vess
