// Overlapping events (the earlier-peak search and the further peaks of a
// complex event) and the edge cases of the crossing search.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "detection/analyze_window.h"
#include "detection/detector.h"
#include "detection/measurements.h"
#include "recording/event_grid.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::DoubleExp;

constexpr int64_t kPeakDelay = 26;  // sampled peak of DoubleExp{10, 100}

// The first screen's events, complex peaks on or off.
EventTable FirstScreen(const std::vector<int16_t>& trace, bool complexPeak, int16_t direction = 1) {
    const test::TraceFile file(trace);
    AnalysisParameters p = test::TestParams(direction);
    p.ComplexPeak = complexPeak;
    return test::AnalyzeScreen(*file.rec, 0, p);
}

std::vector<int32_t> Peaks(const EventTable& events) {
    std::vector<int32_t> out;
    for (const EventRecord& r : events.Records()) out.push_back(r.relativeTime);
    return out;
}

// Two events gapPoints apart, both inside the search range 520..719.
std::vector<int16_t> Pair(int64_t gapPoints, double second, int direction = 1) {
    return test::EventTrace(2048, {{560, DoubleExp{10, 100, 1000}}, {560 + gapPoints, DoubleExp{10, 100, second}}},
                            direction);
}

// Complex peaks on: a pair 4 or 5 ms apart is two events, the second on its
// own baseline; 3 ms apart the first falls back only 22 % (under the 30 %
// needed) and the two are one peak. Without complex peaks the range yields
// the first event only, once. Upward and downward.
TEST(Overlap, ComplexPeakFindsBothEventsOfAPair) {
    for (const int direction : {1, -1}) {
        for (const int64_t gap : {80, 100}) {
            SCOPED_TRACE(testing::Message() << "gap " << gap << " direction " << direction);
            const EventTable events = FirstScreen(Pair(gap, 600, direction), /*complexPeak=*/true, int16_t(direction));
            const auto peaks = Peaks(events);
            ASSERT_EQ(peaks.size(), 2u);
            EXPECT_NEAR(peaks[0], 560 + kPeakDelay, 1);
            EXPECT_TRUE(peaks[1] > 560 + gap + kPeakDelay - 10 && peaks[1] <= 560 + gap + kPeakDelay) << peaks[1];
            EXPECT_NE(events[2].baseline, 0);
            const auto single = Peaks(FirstScreen(Pair(gap, 600, direction), /*complexPeak=*/false, int16_t(direction)));
            ASSERT_EQ(single.size(), 1u);
            EXPECT_NEAR(single[0], 560 + kPeakDelay, 1);
        }
        const auto merged = Peaks(FirstScreen(Pair(60, 600, direction), /*complexPeak=*/true, int16_t(direction)));
        ASSERT_EQ(merged.size(), 1u);
        EXPECT_GT(merged[0], 560 + 60);
    }
    // A further peak needs a real trough after the stored one: a 40-count notch just after a single
    // event's peak (a rise of 13 on three-point means, over the threshold of 5) is none.
    for (const int direction : {1, -1}) {
        // 999.83 and 999.91 at 25 and 26 round to 1000: the peak is the earlier, 585.
        std::vector<int16_t> trace = test::EventTrace(2048, {{560, DoubleExp{10, 100, 1000}}}, direction);
        trace[586] = int16_t(trace[586] - 40 * direction);
        EXPECT_EQ(Peaks(FirstScreen(trace, /*complexPeak=*/true, int16_t(direction))), std::vector<int32_t>{585});
    }
}
// Events stored from the last range of a screen (peaks 950 and about 1052,
// BaseOffset 160) are not stored again from the next screen, whose
// earlier-peak search reaches back over the first.
TEST(Overlap, EventsOfTheLastRangeAreNotStoredAgainOnTheNextScreen) {
    // 599.9 at 25 and 26: peak 950.
    test::TraceFile file(test::EventTrace(4096, {{925, DoubleExp{10, 100, 600}}, {1028, DoubleExp{10, 100, 1000}}}));
    for (const bool complexPeak : {false, true}) {
        AnalysisParameters p = test::TestParams();
        p.PeriodStartBaseline = 8000;
        p.ComplexPeak = complexPeak;
        EventTable events;
        for (int32_t block = 0; block < 16; block += 4)
            AnalyzeWindow(Screen(*file.rec, block, 4), p, events);
        std::vector<int32_t> peaks;
        for (const EventRecord& r : events.Records()) peaks.push_back(r.sampleIndex);
        ASSERT_EQ(peaks.size(), 2u) << "complex " << complexPeak;
        EXPECT_EQ(peaks[0], 950) << complexPeak;
        EXPECT_NEAR(peaks[1], 1028 + kPeakDelay, 3) << complexPeak;
    }
}

// The earlier-peak search does not step onto the flank of a stored peak.
TEST(DetectPrepeak, FlankOfAStoredPeakIsNoEarlierPeak) {
    test::TraceFile file(Pair(80, 600));
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
// Equal neighbours at the crossing give the stopping index (rising and
// falling); unequal ones interpolate (10 % between 11 and 12). With no
// sample under 10 % the rise walk ends at the start (12), and the 10-90 %
// rise runs from there to the 90 % crossing between 13 and 14; likewise 50 %.
TEST(Crossings, RiseWithoutATenPercentSampleEndsAtTheStart) {
    std::vector<int16_t> t(2048, 0);
    std::ranges::copy(std::array<int16_t, 6>{5, 40, 80, 90, 90, 90}, t.begin() + 11);
    const test::TraceFile file(t);
    const Screen screen(*file.rec, 0, 4);
    const auto shape = [](int64_t start) {
        return EventShape{.peak = 15, .value = 100, .baseline = 0, .start = start, .amplitudeCounts = 100,
                          .direction = 1, .decayLimit = 40, .under = {}};
    };
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, shape(5), 0.95), 15.0);
    EXPECT_EQ(FallingCrossing(screen, shape(5), 0.95), 15.0);
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, shape(5), 0.1), 11 + 5.0 / 35.0);
    EXPECT_DOUBLE_EQ(RisingCrossing(screen, shape(12), 0.1), 12.0);
    const double x90 = RisingCrossing(screen, shape(12), 0.9);
    EXPECT_DOUBLE_EQ(x90, 13 + 10.0 / 10.0);
    EXPECT_FLOAT_EQ(Detect1090Rise(screen, shape(12)), float((x90 - 12.0) * 50 / 1000.0));
    EXPECT_EQ(Detect50RiseTime(screen, shape(13)), 15 - 13);
}

// How far the measurements of an event reach: the half-width's decaying walk
// past the decay search, the end of the recording, and the area's conversion.
using test::TestParams;
using test::TraceFile;

// Decay tau 1200 samples, 1000 counts, onset 460: the decay search (400
// samples) ends long before half. By hand from the sampled trace: peak t = 46,
// 500 crossed rising at 6 + 32/54, falling at 891: half-width 44.2204 ms
// (continuous curve 44.176 ms; a walk stopped at DecayLen + 1 gave 20.02).
TEST(HalfWidth, SlowEventIsMeasuredBeyondTheDecaySearch) {
    TraceFile file(test::EventTrace(4096, {{460, DoubleExp{10, 1200, 1000}}}));
    const EventTable events = test::AnalyzeScreen(*file.rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    // The decay search itself ends at DecayLen + 1.
    EXPECT_EQ(std::tuple(events[1].relativeTime, events[1].decayTime), std::tuple(460 + 46, 401));
    EXPECT_NEAR(events[1].halfWidth, (891 - (6 + 32.0 / 54.0)) * 0.05, 1e-4);
}

// A ramp 0, 100, .. 1000 (400..410) to a plateau never decays: decay point
// peak + DecayLen + 1, area by hand (5500 + 400 x 1000) x 0.05 = 20275 pA ms.
// The half-width walk reaches to the end of the next screen: the plateau has
// none (not a number, an empty cell); a fall to 0 at 1900 is crossed at
// 1899.5, 1494.5 samples after the rise's 405: 74.725 ms.
TEST(HalfWidth, NoFallWithinReachIsNotMeasured) {
    std::vector<int16_t> trace(8192, 1000);
    for (int i = 0; i <= 410; ++i) trace[std::size_t(i)] = int16_t(std::max(0, 100 * (i - 400)));
    TraceFile file(trace);
    AnalysisParameters params = TestParams();
    params.AreaThreshold = 10000;  // keeps out plateau ranges with baselines on the step
    const EventTable events = test::AnalyzeScreen(*file.rec, 0, params);
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(std::tuple(events[1].relativeTime, events[1].riseTime, events[1].decayTime, events[1].area),
              std::tuple(410, 10, 401, 20275.0f));
    EXPECT_TRUE(std::isnan(events[1].halfWidth));
    EXPECT_EQ(FormatCell(EventCellValue(*file.rec, events[1], 1, int(EventField::HalfWidth) + 1)), "");
    std::fill(trace.begin() + 1900, trace.end(), 0);
    TraceFile falls(trace);
    const EventTable measured = test::AnalyzeScreen(*falls.rec, 0, params);
    ASSERT_EQ(measured.Count(), 1);
    EXPECT_NEAR(measured[1].halfWidth, 74.725, 1e-4);
}

// The recording (2048 samples) ends while an event is still high; the last
// screen is blocks 4-7. Neither peak, decay nor area reads past the last
// sample; no half-width.
TEST(EndOfData, MeasurementsStopAtTheLastSample) {
    // Ramp 0..1000 at 800..810, then 1000: the decay walk on three-point means
    // stops at 1022, the last mean of recorded samples (decay 212); area by
    // hand (5500 + 212 x 1000) x 0.05 = 10875 pA ms.
    std::vector<int16_t> plateau(2048, 0);
    for (int k = 0; k <= 10; ++k) plateau[std::size_t(1024 + 800 + k)] = int16_t(100 * k);
    std::fill(plateau.begin() + 1024 + 811, plateau.end(), 1000);
    // A rise 100..1000 at 1014..1023 averaged over three: the peak needs its
    // window and one more sample on record, so it is 1022 (mean 900); no
    // decay, area the rise (900 + .. + 100) x 0.05 = 225 pA ms.
    std::vector<int16_t> lastRise(2048, 0);
    for (int k = 1; k <= 10; ++k) lastRise[std::size_t(1024 + 1013 + k)] = int16_t(100 * k);
    // Trace, NumberPointsPeak, peak, rise and decay points, area.
    const std::tuple<std::vector<int16_t>, int16_t, int32_t, int32_t, int32_t, float> cases[] = {
        {plateau, 1, 810, 10, 212, 10875.0f}, {lastRise, 3, 1022, 9, 0, 225.0f}};
    for (const auto& [trace, numberPointsPeak, peak, rise, decay, area] : cases) {
        SCOPED_TRACE(peak);
        TraceFile file(trace);
        AnalysisParameters params = TestParams();
        params.AreaThreshold = 100;
        params.NumberPointsPeak = numberPointsPeak;
        const EventTable events = test::AnalyzeScreen(*file.rec, 4, params);
        ASSERT_EQ(events.Count(), 1);
        const EventRecord& e = events[1];
        EXPECT_LT(e.sampleIndex, file.rec->PointsPerChannel() - 1);
        EXPECT_EQ(std::tuple(e.relativeTime, int32_t(e.riseTime), int32_t(e.decayTime)), std::tuple(peak, rise, decay));
        EXPECT_FLOAT_EQ(e.area, area);
        EXPECT_TRUE(std::isnan(e.halfWidth));
    }
}

// The area sum is rounded to a count and converted as a level (offset
// included). By hand, 1 count/pA, offset 2.5 pA: samples 100, 300, 200, 101,
// 31, 1 at 600..605; start walk 400, decay means 200.33 and 110.67 to 604
// (44.33 <= 96): 755.33 counts, rounded 755, 757.5 pA x 0.05 = 37.875 pA ms.
TEST(Area, RoundedSumConvertedAsALevel) {
    std::vector<int16_t> trace(2048, 0);
    const int16_t bump[] = {100, 300, 200, 101, 31, 1};
    for (int k = 0; k < 6; ++k) trace[std::size_t(600 + k)] = bump[k];
    test::TempDir dir;
    AbfWriteLayout abfLayout = test::MakeAbfLayout(50, 1.0f);
    abfLayout.channels[0].signalOffset = 2.5f;
    ASSERT_EQ(WriteAbf(dir / "offset.abf", abfLayout, trace), "");
    AbfError error = AbfError::None;
    const auto rec = Recording::Open(dir / "offset.abf", &error);
    ASSERT_NE(rec, nullptr);
    ASSERT_FLOAT_EQ(rec->Bit2pA(755), 757.5f);
    const EventTable events = test::AnalyzeScreen(*rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(std::tuple(events[1].relativeTime, events[1].decayTime, events[1].area), std::tuple(601, 3, 37.875f));
}

}  // namespace
}  // namespace vess
