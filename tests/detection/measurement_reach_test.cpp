// How far the measurements of an event reach: the half-width's decaying walk
// past the decay search, the end of the recording, and the area's conversion.
#include <gtest/gtest.h>

#include <cmath>

#include "detection/analyze_window.h"
#include "detection/measurements.h"
#include "recording/event_grid.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;
using test::TestParams;
using test::TraceFile;

EventTable Analyze(const Recording& rec, int32_t startBlock, const AnalysisParameters& params) {
    EventTable events;
    ScriptedDialogs dialogs;
    AnalyzeWindow(Screen(rec, startBlock, 4), params, events, dialogs);
    return events;
}

// A slow event: rise tau 10 samples, decay tau 1200 samples (60 ms), 1000
// counts at the continuous peak, onset at 460 on the first screen (the peak
// late in its search range, so that the next range re-centres onto it). The
// decay search (DecayLen 400 samples, 20 ms) ends long before the trace
// falls to half.
//
// Hand calculation (bisection on the continuous curve, then the sampled
// trace rounded half to even): the sampled peak is t = 46 (1000 counts, the
// earliest of the equal values); the trace rises through 500 between t = 6
// (468) and t = 7 (522): x = 6.5926; it falls through 500 between t = 891
// (500) and t = 892 (499): x = 891. Half-width (891 - 6.5926) x 0.05 =
// 44.2204 ms; the continuous curve gives 883.52 samples, 44.176 ms. The walk
// that stopped at DecayLen + 1 reported (447 - 6.5926) x 0.05 = 20.02 ms.
TEST(HalfWidth, SlowEventIsMeasuredBeyondTheDecaySearch) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 460, DoubleExp{10, 1200, 1000});
    TraceFile file(trace);
    const EventTable events = Analyze(*file.rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 460 + 46);
    EXPECT_EQ(events[1].decayTime, 401);  // the decay search itself still ends at DecayLen + 1
    EXPECT_NEAR(events[1].halfWidth, (891 - (6 + 32.0 / 54.0)) * 0.05, 1e-4);
    EXPECT_NEAR(events[1].halfWidth, 44.176, 0.05);
}

// The decaying walk reaches the end of the screen after the one holding the
// peak. A plateau that never falls back has no half-width: the value is not
// a number rather than the distance to wherever the walk gave up, and the
// grid and the text exports show an empty cell for it.
TEST(HalfWidth, NoFallWithinReachIsNotMeasured) {
    std::vector<int16_t> trace(8192, 0);
    for (std::size_t i = 400; i < trace.size(); ++i) trace[i] = 1000;
    TraceFile file(trace);
    AnalysisParameters params = TestParams();
    params.AreaThreshold = 10000;  // the plateau ranges after it take baselines on the step
    const EventTable events = Analyze(*file.rec, 0, params);
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 400);
    EXPECT_TRUE(std::isnan(events[1].halfWidth));
    EXPECT_EQ(FormatCell(EventCellValue(*file.rec, events[1], 1, int(EventField::HalfWidth) + 1)),
              "");

    // A fall inside that reach, 1500 samples after the peak (in the next
    // screen), is found: 1500 x 0.05 = 75 ms from a step up to a step down.
    for (std::size_t i = 1900; i < trace.size(); ++i) trace[i] = 0;
    TraceFile falls(trace);
    const EventTable measured = Analyze(*falls.rec, 0, params);
    ASSERT_EQ(measured.Count(), 1);
    EXPECT_NEAR(measured[1].halfWidth, 75.0, 0.1);
}

// The recording ends while an event is still high: 2048 samples, the last
// screen (blocks 4-7) holds window indices 0..1023 and nothing after.
struct CutShort {
    const char* what;
    std::vector<int16_t> trace;
    int16_t numberPointsPeak;
    int32_t peak, riseTime, decayTime;
    float area;
};

std::vector<CutShort> CutShortCases() {
    // A ramp 0, 100, .. 1000 from window index 800 to 810, then 1000 to the
    // end. The peak is 810 and the start 800, as anywhere else. The decay
    // walk on three-point means stops at 1022, the last point whose mean is
    // made of recorded samples; the trace has not fallen, so that is the
    // decay point (decay length 212), and the area covers the recorded
    // samples only: rise 1000 + 900 + .. + 0 = 5500, decay 212 x 1000 =
    // 212000, 217500 counts x 0.05 ms = 10875 pA ms (a walk over a repeated
    // last sample went on to 1211 and 20275 pA ms).
    std::vector<int16_t> plateau(2048, 0);
    for (int k = 0; k <= 10; ++k) plateau[std::size_t(1024 + 800 + k)] = int16_t(100 * k);
    for (std::size_t i = 1024 + 811; i < plateau.size(); ++i) plateau[i] = 1000;
    // A rise in the last ten samples (100, 200, .. 1000 at 1014..1023), the
    // peak averaged over three points. A peak needs its whole averaging
    // window and one sample after it on record, so the peak is 1022 ((800 +
    // 900 + 1000) / 3 = 900), not the first point past the end, where a
    // repeated last sample would average to 1000. Its decay point is the peak
    // itself (nothing recorded to walk), its area the rise alone: 900 + 800 +
    // .. + 100 = 4500 counts, 225 pA ms.
    std::vector<int16_t> lastRise(2048, 0);
    for (int k = 1; k <= 10; ++k) lastRise[std::size_t(1024 + 1013 + k)] = int16_t(100 * k);
    return {{"plateau to the end", plateau, 1, 810, 10, 212, 10875.0f},
            {"rise in the last samples", lastRise, 3, 1022, 9, 0, 225.0f}};
}

// Neither decay nor area reads past the last sample, no peak lies past it,
// and the half-width, which would need a fall after the end, is not measured.
TEST(EndOfData, MeasurementsStopAtTheLastSample) {
    for (const CutShort& c : CutShortCases()) {
        SCOPED_TRACE(c.what);
        TraceFile file(c.trace);
        AnalysisParameters params = TestParams();
        params.AreaThreshold = 100;
        params.NumberPointsPeak = c.numberPointsPeak;
        const EventTable events = Analyze(*file.rec, 4, params);
        ASSERT_EQ(events.Count(), 1);
        const EventRecord& e = events[1];
        EXPECT_EQ(e.relativeTime, c.peak);
        EXPECT_LT(e.sampleIndex, file.rec->PointsPerChannel() - 1);
        EXPECT_EQ(e.riseTime, c.riseTime);
        EXPECT_EQ(e.decayTime, c.decayTime);
        EXPECT_FLOAT_EQ(e.area, c.area);
        EXPECT_TRUE(std::isnan(e.halfWidth));
    }
}

// An event whose three-point-mean decay sums to a fraction of a count: the
// sum is rounded to a whole count and converted as the area is defined, with
// the channel's level conversion (offset included).
//
// One count per pA, offset 2.5 pA, 50 us. Samples 600..604: 100, 300, 200,
// 101, 31, 1, zeros elsewhere. Peak 601 (300), baseline 0, amplitude 300.
// Start walk: 300 + 100 + 0 (599 is within 1 %) = 400. Decay walk (level
// 0.32 x 300 = 96) on means: 602 (300+200+101)/3 = 200.33, 603
// (200+101+31)/3 = 110.67, 604 (101+31+1)/3 = 44.33 <= 96, so the decay point
// is 604 and the sum 400 + 355.33 = 755.33 counts. Rounded: 755; converted:
// 755 + 2.5 = 757.5 pA; area 757.5 x 0.05 = 37.875 pA ms (the unrounded sum
// without the offset gave 37.767).
TEST(Area, RoundedSumConvertedAsALevel) {
    std::vector<int16_t> trace(2048, 0);
    const int16_t bump[] = {100, 300, 200, 101, 31, 1};
    for (int k = 0; k < 6; ++k) trace[std::size_t(600 + k)] = bump[k];
    test::TempDir dir;
    AbfWriteSpec writeSpec = test::MakeSpec(50, 1.0f);
    writeSpec.channels[0].signalOffset = 2.5f;
    ASSERT_EQ(WriteAbf(dir / "offset.abf", writeSpec, trace), "");
    AbfError error = AbfError::None;
    const auto rec = Recording::Open(dir / "offset.abf", &error);
    ASSERT_NE(rec, nullptr);
    ASSERT_FLOAT_EQ(rec->Bit2pA(755), 757.5f);

    const EventTable events = Analyze(*rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 601);
    EXPECT_EQ(events[1].decayTime, 3);
    EXPECT_FLOAT_EQ(events[1].area, 37.875f);
}

}  // namespace
}  // namespace vess
