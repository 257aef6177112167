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

// Two events gapPoints apart, both inside the search range 520..719.
std::vector<int16_t> Pair(int64_t gapPoints, double second, int direction = 1) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 560, DoubleExp{10, 100, 1000}, direction);
    AddEvent(trace, 560 + gapPoints, DoubleExp{10, 100, second}, direction);
    return trace;
}

// Complex peaks on: a pair 4 or 5 ms apart is two events, the second on its
// own baseline; 3 ms apart the first falls back only 22 % (under the 30 %
// needed) and the two are one peak. Without complex peaks the range yields
// the first event only, once. Upward and downward.
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
    for (const int64_t gap : {80, 100}) {
        const ScreenRun run(Pair(gap, 600), /*complexPeak=*/false);
        ASSERT_EQ(run.Peaks().size(), 1u) << "gap " << gap;
        EXPECT_NEAR(run.Peaks()[0], 560 + kPeakDelay, 1) << gap;
    }
}

// A further peak needs a real trough after the stored one: a 40-count notch
// just after a single event's peak (a rise of 13 on three-point means, over
// the threshold of 5) is none.
TEST(Overlap, ComplexPeakNeedsARealTroughBetweenPeaks) {
    for (const int direction : {1, -1}) {
        // 999.83 and 999.91 at 25 and 26 round to 1000: the peak is the earlier, 585.
        std::vector<int16_t> trace(2048, 0);
        AddEvent(trace, 560, DoubleExp{10, 100, 1000}, direction);
        trace[586] = int16_t(trace[586] - 40 * direction);
        const ScreenRun run(trace, /*complexPeak=*/true, int16_t(direction));
        EXPECT_EQ(run.Peaks(), std::vector<int64_t>{585}) << direction;
    }
}

// Events stored from the last range of a screen (peaks 950 and about 1052,
// BaseOffset 160) are not stored again from the next screen, whose
// earlier-peak search reaches back over the first.
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

// The earlier-peak search does not step onto the flank of a stored peak.
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

// A rise by hand: 5, 40, 80, 90, 90, 90 at 11..16, zeros elsewhere; peak
// value 100 (as an over-scaled smoothed value can be), above every sample.
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

// Equal neighbours at the crossing give the stopping index (rising and
// falling); unequal ones interpolate (10 % between 11 and 12). With no
// sample under 10 % the rise walk ends at the start (12), and the 10-90 %
// rise runs from there to the 90 % crossing between 13 and 14; likewise 50 %.
TEST_F(Crossings, EqualNeighboursGiveTheStoppingIndex) {
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, Shape(5), 0.95), 15.0);
    EXPECT_EQ(FallingCrossing(screen, Shape(5), 0.95), 15.0);
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, Shape(5), 0.1), 11 + 5.0 / 35.0);
}

TEST_F(Crossings, RiseWithoutATenPercentSampleEndsAtTheStart) {
    const EventShape e = Shape(12);
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, e, 0.1), 12.0);
    const double x90 = RisingCrossing(screen, e, 0.9);
    EXPECT_DOUBLE_EQ(x90, 13 + 10.0 / 10.0);
    EXPECT_FLOAT_EQ(Detect1090Rise(screen, e), float((x90 - 12.0) * 50 / 1000.0));
    EXPECT_EQ(Detect50RiseTime(screen, Shape(13)), 15 - 13);
}

}  // namespace
}  // namespace vess
