// Events that only their removed neighbours hid: found on the event-free copy,
// not on the recording, and removed with the table's events.
#include <gtest/gtest.h>

#include <vector>

#include "detection/detection_start.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "signal/event_free_file.h"
#include "signal/event_free_hidden.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<EventRecord> Peaks(const std::vector<int32_t>& samples) {
    std::vector<EventRecord> out;
    for (const int32_t s : samples) out.push_back(EventRecord{.sampleIndex = s});
    return out;
}

TEST(EventFreeHidden, EventsNotInKeepsThoseWithoutAKnownPeakNear) {
    struct Case {
        std::vector<int32_t> found, known, expected;
    };
    const Case cases[] = {
        {{100, 200, 300}, {}, {100, 200, 300}},
        {{100, 200, 300}, {300, 120, 80}, {200}},        // known unsorted; 20 away is near
        {{100, 200}, {79, 221}, {100, 200}},             // 21 away is not
        {{100, 100, 400}, {400}, {100, 100}},            // the order of found is kept
    };
    for (const Case& c : cases) {
        std::vector<int32_t> got;
        for (const EventRecord& r : EventsNotIn(Peaks(c.found), Peaks(c.known), 20)) got.push_back(r.sampleIndex);
        EXPECT_EQ(got, c.expected) << "found " << testing::PrintToString(c.found) << " known "
                                   << testing::PrintToString(c.known);
    }
}

TEST(EventFreeHidden, EventsDeletedFromTheTableAreNotRemovedAsHidden) {
    // 05210017_vc_abf1.abf with a new installation's settings, every tenth
    // event deleted by the user: those are found on the recording too, so
    // none is among the hidden events removed (how many hidden events are
    // removed and what is found again: VessEventFree.*).
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    Workspace ws;
    ws.settings = NewInstallationSettings();
    ASSERT_TRUE(OpenRecordingOnChannel(test::SharedData() / "abf1/05210017_vc_abf1.abf", 0, ws));
    SuggestOnFirstAnalysis(ws);
    DetectWholeFile(ws);
    std::vector<EventRecord> deleted;
    for (int32_t i = ws.events.Count() / 10 * 10; i >= 10; i -= 10) {
        deleted.push_back(ws.events[i]);
        ws.events.Delete(i);
    }
    const int64_t level = int64_t(ws.params().PeriodBaselineAverage / ws.recording->IntervalUs());
    const Outcome<EventFreeWritten> written =
        WriteEventFreeCopy(ws, kDefaultEventFreeMarginMs, level, dir / "free.abf", true);
    ASSERT_TRUE(written) << written.message();
    EXPECT_GT(written->HiddenRemoved(), 0);
    EXPECT_EQ(EventsNotIn(written->hidden, deleted, 20).size(), written->hidden.size());
}

}  // namespace
}  // namespace vess
