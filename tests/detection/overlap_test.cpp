// Overlapping events (the earlier-peak search and the further peaks of a
// complex event) and the edge cases of the crossing search.
#include <gtest/gtest.h>

#include "detection/analyze_window.h"
#include "detection/detector.h"
#include "detection/measurements.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

constexpr int64_t kPeakDelay = 26;  // sampled peak of DoubleExp{10, 100}

struct ScreenRun {
    test::TraceFile file;
    EventTable events;
    explicit ScreenRun(const std::vector<int16_t>& trace, bool complexPeak, int16_t direction = 1)
        : file(trace) {
        AnalysisParameters p = test::TestParams(direction);
        p.ComplexPeak = complexPeak;
        const Screen screen(*file.rec, 0, 4);
        ScriptedDialogs dialogs;
        AnalyzeWindow(screen, p, events, dialogs);
    }
    std::vector<int64_t> Peaks() const {
        std::vector<int64_t> out;
        for (const EventRecord& r : events.Records()) out.push_back(r.relativeTime);
        return out;
    }
};

// Two events gapMs apart (the second riding on the decay of the first), both
// inside the search range 520..719 of the first screen.
std::vector<int16_t> Pair(int64_t gapPoints, double second, int direction = 1) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 560, DoubleExp{10, 100, 1000}, direction);
    AddEvent(trace, 560 + gapPoints, DoubleExp{10, 100, second}, direction);
    return trace;
}

// With complex peaks on, both events of a pair 4 and 5 ms apart are found,
// each once, the second measured from its own baseline on the first one's
// decay; the summed trace peaks a few samples before the second event alone
// would. 3 ms apart the first event falls back only 22 % before the second
// rises: the two merge into one peak at their sum, stored once (the
// earlier-peak search needs a fall of 30 % of the earlier event). Upward and
// downward.
TEST(Overlap, ComplexPeakFindsBothEventsOfAPair) {
    for (const int direction : {1, -1}) {
        for (const int64_t gap : {80, 100}) {
            const ScreenRun run(Pair(gap, 600, direction), /*complexPeak=*/true, int16_t(direction));
            const auto peaks = run.Peaks();
            ASSERT_EQ(peaks.size(), 2u) << "gap " << gap << " direction " << direction;
            EXPECT_NEAR(peaks[0], 560 + kPeakDelay, 1) << gap;
            EXPECT_GT(peaks[1], 560 + gap + kPeakDelay - 10) << gap;
            EXPECT_LE(peaks[1], 560 + gap + kPeakDelay) << gap;
            EXPECT_NE(run.events[2].baseline, 0) << gap;
        }
        const ScreenRun merged(Pair(60, 600, direction), /*complexPeak=*/true, int16_t(direction));
        ASSERT_EQ(merged.Peaks().size(), 1u);
        EXPECT_GT(merged.Peaks()[0], 560 + 60);
    }
}

// A further peak is a separate event only when the trace falls into a real
// trough after the stored peak and rises from it again. A notch of 40 counts
// on the top of a single event (the sample after its peak) makes a rise of
// about 13 counts on three-point means, above the threshold of 5, but the
// trace has not fallen from the peak into it: no further peak is stored,
// where the search used to store the sample two after the peak as one.
TEST(Overlap, ComplexPeakNeedsARealTroughBetweenPeaks) {
    for (const int direction : {1, -1}) {
        // 999.83 and 999.91 at 25 and 26 samples both round to 1000: the
        // sampled peak is the earlier, 585.
        std::vector<int16_t> trace(2048, 0);
        AddEvent(trace, 560, DoubleExp{10, 100, 1000}, direction);
        trace[586] = int16_t(trace[586] - 40 * direction);
        const ScreenRun run(trace, /*complexPeak=*/true, int16_t(direction));
        EXPECT_EQ(run.Peaks(), std::vector<int64_t>{585}) << direction;
    }
}

// An event stored from the end of one screen lies again at the start of the
// next, and is not taken again from there. The pair: a 600-count event
// peaking at 950 (found in the range 760..959 of the first screen) and a
// 1000-count one peaking near 1052 (range 960..1159, reaching into the next
// screen); BaseOffset 160 samples. On the next screen the second event is at
// window index 28 and its earlier-peak search reaches back over the first
// one, a separate event that it would move to and store a second time. With
// complex peaks the second is found as a further peak of the first, and the
// next screen's search begins one range after it, as on the first screen.
TEST(Overlap, EventsOfTheLastRangeAreNotStoredAgainOnTheNextScreen) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 925, DoubleExp{10, 100, 600});  // 599.9 at 25 and 26: peak 950
    AddEvent(trace, 1028, DoubleExp{10, 100, 1000});
    test::TraceFile file(trace);
    for (const bool complexPeak : {false, true}) {
        AnalysisParameters p = test::TestParams();
        p.PeriodStartBaseline = 8000;
        p.ComplexPeak = complexPeak;
        EventTable events;
        ScriptedDialogs dialogs;
        for (int32_t block = 0; block < 16; block += 4)
            AnalyzeWindow(Screen(*file.rec, block, 4), p, events, dialogs);
        std::vector<int32_t> peaks;
        for (const EventRecord& r : events.Records()) peaks.push_back(r.sampleIndex);
        ASSERT_EQ(peaks.size(), 2u) << "complex " << complexPeak;
        EXPECT_EQ(peaks[0], 950) << complexPeak;
        EXPECT_NEAR(peaks[1], 1028 + kPeakDelay, 3) << complexPeak;
    }
}

// Without complex peaks, the search range yields one event: the candidate is
// the taller summed second peak, and the earlier-peak search moves it to the
// first event, which falls back far enough before the second rises. The
// second event is lost (the next range starts after it) and nothing is
// stored twice.
TEST(Overlap, WithoutComplexPeakTheEarlierPeakIsKeptOnce) {
    for (const int64_t gap : {80, 100}) {
        const ScreenRun run(Pair(gap, 600), /*complexPeak=*/false);
        const auto peaks = run.Peaks();
        ASSERT_EQ(peaks.size(), 1u) << "gap " << gap;
        EXPECT_NEAR(peaks[0], 560 + kPeakDelay, 1) << gap;
    }
}

// The earlier-peak search does not step onto the flank of a peak already
// stored: with the floor just after it, the highest point left is that
// flank, which is no peak.
TEST(DetectPrepeak, FlankOfAStoredPeakIsNoEarlierPeak) {
    const std::vector<int16_t> trace = Pair(80, 600);
    test::TraceFile file(trace);
    const Screen screen(*file.rec, 0, 4);
    const AnalysisParameters p = test::TestParams();
    Detector det(screen, p, *ConvertPeriods(p, 50));
    const int64_t second = 560 + 80 + kPeakDelay;
    const int64_t first = 560 + kPeakDelay;
    EXPECT_NEAR(det.DetectPrepeak(second, det.GetAverageValue(second)), first, 1);
    det.SetFloor(first);
    EXPECT_GE(det.DetectPrepeak(second, det.GetAverageValue(second)), second);
}

// Crossing edge cases on a rise built by hand: 0 up to index 10, then 5, 40,
// 80, 90, 90, 90 (11..16), back to 0 from 20. The peak value is 100, as a
// smoothed value over-scaled by an even NumberPointsPeak can be: the raw
// samples at the peak stay below 95 % of the amplitude.
struct Crossings : ::testing::Test {
    static std::vector<int16_t> Trace() {
        std::vector<int16_t> t(2048, 0);
        const int16_t rise[] = {5, 40, 80, 90, 90, 90};
        for (int k = 0; k < 6; ++k) t[std::size_t(11 + k)] = rise[k];
        return t;
    }
    test::TraceFile file{Trace()};
    Screen screen{*file.rec, 0, 4};
    EventShape Shape(int64_t start) const {
        EventShape e;
        e.peak = 15;
        e.value = 100;
        e.baseline = 0;
        e.start = start;
        e.amplitudeCounts = 100;
        e.direction = 1;
        e.decayLimit = 40;
        return e;
    }
};

// Two equal neighbouring samples at the crossing: the walk stops at the peak
// itself (90 < 95) and the kept neighbour (16, also 90) equals it, so the
// crossing is the integer index of the stopping sample. The same on the
// falling side, walking forwards.
TEST_F(Crossings, EqualNeighboursGiveTheStoppingIndex) {
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, Shape(5), 0.95), 15.0);
    EventShape fall = Shape(5);
    fall.peak = 15;
    EXPECT_EQ(FallingCrossing(screen, fall, 0.95), 15.0);
    // Unequal neighbours interpolate: 10 % lies between 11 (5) and 12 (40).
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, Shape(5), 0.1), 11 + 5.0 / 35.0);
}

// No sample below the 10 % level between the peak and the event start (the
// start at 12 holds 40): the walk ends at the start, and the rise time runs
// from there to the 90 % crossing.
TEST_F(Crossings, RiseWithoutATenPercentSampleEndsAtTheStart) {
    const EventShape e = Shape(12);
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, e, 0.1), 12.0);
    const double x90 = RisingCrossing(screen, e, 0.9);  // between 13 (80) and 14 (90)
    EXPECT_DOUBLE_EQ(x90, 13 + 10.0 / 10.0);
    EXPECT_FLOAT_EQ(Detect1090Rise(screen, e), float((x90 - 12.0) * 50 / 1000.0));
    // The rise to 50 % also stops at the start when nothing is below 50 %.
    EXPECT_EQ(Detect50RiseTime(screen, Shape(13)), 15 - 13);
}

}  // namespace
}  // namespace vess
