// Re-detection on the event-free copy of a real recording.
#include <gtest/gtest.h>

#include "detection/detection_start.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "signal/event_free.h"
#include "signal/event_free_file.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(EventFreeJoins, RecordingWithManyEventsIsDetectedAlmostEmpty) {
    // 171116sh_0020_saved.abf (70 s, voltage clamp, 719 events with a new installation's
    // settings): detection with the same settings and noise levels finds 3 events on the
    // event-free copy of the table's events (measured; 6 while the deconvolved trace's
    // baseline counted the blocks of dense events; 33 when the copy followed only the
    // decay, without the onset walk, the joins on lines and the clipped donors of both
    // sides; 8 with the slow swings left in the donors).
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    Workspace ws;
    ws.settings = NewInstallationSettings();
    const CommandResult opened = OpenRecordingOnChannel(test::SharedData() / "abf1/171116sh_0020_saved.abf", 0, ws);
    ASSERT_TRUE(opened) << opened.message();
    SuggestOnFirstAnalysis(ws);
    DetectWholeFile(ws);
    ASSERT_GT(ws.events.Count(), 600);
    const int64_t level = int64_t(ws.params().PeriodBaselineAverage / ws.recording->IntervalUs());
    ASSERT_EQ(WriteEventFreeAbf(*ws.recording, ws.events, kDefaultEventFreeMarginMs, level, dir / "free.abf"), "");
    const std::optional<int32_t> again = RedetectedEventCount(ws, dir / "free.abf", NoiseLevels::OfSource);
    ASSERT_TRUE(again);
    EXPECT_LE(*again, 3);  // 0.4 %
}

}  // namespace
}  // namespace vess
