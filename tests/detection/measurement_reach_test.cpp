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

// Decay tau 1200 samples, 1000 counts, onset 460: the decay search (400
// samples) ends long before half. By hand from the sampled trace: peak t = 46,
// 500 crossed rising at 6 + 32/54, falling at 891: half-width 44.2204 ms
// (continuous curve 44.176 ms; a walk stopped at DecayLen + 1 gave 20.02).
TEST(HalfWidth, SlowEventIsMeasuredBeyondTheDecaySearch) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 460, DoubleExp{10, 1200, 1000});
    TraceFile file(trace);
    const EventTable events = Analyze(*file.rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 460 + 46);
    EXPECT_EQ(events[1].decayTime, 401);  // the decay search itself ends at DecayLen + 1
    EXPECT_NEAR(events[1].halfWidth, (891 - (6 + 32.0 / 54.0)) * 0.05, 1e-4);
}

// The half-width walk reaches to the end of the next screen: a plateau has
// none (not a number, an empty cell); a fall 1500 samples on is 75 ms.
TEST(HalfWidth, NoFallWithinReachIsNotMeasured) {
    std::vector<int16_t> trace(8192, 0);
    for (std::size_t i = 400; i < trace.size(); ++i) trace[i] = 1000;
    TraceFile file(trace);
    AnalysisParameters params = TestParams();
    params.AreaThreshold = 10000;  // keeps out plateau ranges with baselines on the step
    const EventTable events = Analyze(*file.rec, 0, params);
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 400);
    EXPECT_TRUE(std::isnan(events[1].halfWidth));
    EXPECT_EQ(FormatCell(EventCellValue(*file.rec, events[1], 1, int(EventField::HalfWidth) + 1)),
              "");

    for (std::size_t i = 1900; i < trace.size(); ++i) trace[i] = 0;
    TraceFile falls(trace);
    const EventTable measured = Analyze(*falls.rec, 0, params);
    ASSERT_EQ(measured.Count(), 1);
    EXPECT_NEAR(measured[1].halfWidth, 75.0, 0.1);
}

// The recording (2048 samples) ends while an event is still high; the last
// screen is blocks 4-7.
struct CutShort {
    const char* what;
    std::vector<int16_t> trace;
    int16_t numberPointsPeak;
    int32_t peak, riseTime, decayTime;
    float area;
};

std::vector<CutShort> CutShortCases() {
    // Ramp 0..1000 at 800..810, then 1000: the decay walk on three-point means
    // stops at 1022, the last mean of recorded samples (decay 212); area by
    // hand (5500 + 212 x 1000) x 0.05 = 10875 pA ms.
    std::vector<int16_t> plateau(2048, 0);
    for (int k = 0; k <= 10; ++k) plateau[std::size_t(1024 + 800 + k)] = int16_t(100 * k);
    for (std::size_t i = 1024 + 811; i < plateau.size(); ++i) plateau[i] = 1000;
    // A rise 100..1000 at 1014..1023 averaged over three: the peak needs its
    // window and one more sample on record, so it is 1022 (mean 900); no
    // decay, area the rise (900 + .. + 100) x 0.05 = 225 pA ms.
    std::vector<int16_t> lastRise(2048, 0);
    for (int k = 1; k <= 10; ++k) lastRise[std::size_t(1024 + 1013 + k)] = int16_t(100 * k);
    return {{"plateau to the end", plateau, 1, 810, 10, 212, 10875.0f},
            {"rise in the last samples", lastRise, 3, 1022, 9, 0, 225.0f}};
}

// Neither peak, decay nor area reads past the last sample; no half-width.
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

    const EventTable events = Analyze(*rec, 0, TestParams());
    ASSERT_EQ(events.Count(), 1);
    EXPECT_EQ(events[1].relativeTime, 601);
    EXPECT_EQ(events[1].decayTime, 3);
    EXPECT_FLOAT_EQ(events[1].area, 37.875f);
}

}  // namespace
}  // namespace vess
