// Detection at a clicked point and recalculation of one event.
#include <gtest/gtest.h>

#include "detection/point_commands.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

struct ClickFixture {
    test::TraceFile file;
    Workspace ws;
    explicit ClickFixture(const std::vector<int16_t>& trace) : file(trace) {
        AbfError error = AbfError::None;
        ws.recording = Recording::Open(file.rec->Path(), &error);
        ws.params() = test::TestParams();
    }
};

// A small event (amplitude 4 counts, threshold 5) is found by a click only at
// a tenth of the thresholds; nothing found says so.
TEST(DetectAtPoint, TenthOfTheThresholdsFindsASmallEvent) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 4});
    ClickFixture f(trace);
    ScriptedDialogs dialogs;
    EXPECT_EQ(DetectAtPoint(f.ws, dialogs, 630).eventIndex, 0);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "No Event Found");

    const PointCommandResult r = DetectAtPoint(f.ws, dialogs, 630, /*tenthThresholds=*/true);
    ASSERT_EQ(r.eventIndex, 1);
    EXPECT_EQ(f.ws.events[1].amplitude, 4);
    EXPECT_EQ(r.marks.size(), 4u);
    EXPECT_TRUE(f.ws.history.CanUndo());
}

// Recalculation keeps the group and replaces the measurements made with the
// parameters of the time.
TEST(RecalculateEvent, ReplacesMeasurementsKeepsGroup) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    ClickFixture f(trace);
    ScriptedDialogs dialogs;
    ASSERT_EQ(DetectAtPoint(f.ws, dialogs, 626).eventIndex, 1);
    f.ws.events[1].group = 7;
    const int16_t decayBefore = f.ws.events[1].decayTime;
    f.ws.params().DecayPercent = 0.5f;  // the decay point comes earlier
    ASSERT_EQ(RecalculateEvent(f.ws, dialogs, 1).eventIndex, 1);
    EXPECT_EQ(f.ws.events[1].group, 7);
    EXPECT_LT(f.ws.events[1].decayTime, decayBefore);
    EXPECT_EQ(f.ws.events.Count(), 1);

    EXPECT_EQ(RecalculateEvent(f.ws, dialogs, 2).eventIndex, 0);
    EXPECT_EQ(dialogs.Messages().back().caption, "No Event Selected");
}

}  // namespace
}  // namespace vess
