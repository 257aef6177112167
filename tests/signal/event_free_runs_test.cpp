// The event-free file over whole recordings: what detection finds again on
// the copy of a real recording, the events only their removed neighbours hid,
// and the work as a job (its steps, its own copy of the recording, and Stop
// at any step leaving the target as it was with no temporary file beside it).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "detection/detection_start.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/synth.h"
#include "signal/event_free.h"
#include "signal/event_free_file.h"
#include "signal/event_free_hidden.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess {
namespace {

namespace fs = std::filesystem;

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
    const int64_t level = EventFreeLevelPoints(ws);
    ASSERT_EQ(WriteEventFreeAbf(*ws.recording, ws.events, kDefaultEventFreeMarginMs, level, dir / "free.abf"), "");
    const std::optional<int32_t> again = RedetectedEventCount(ws, dir / "free.abf", NoiseLevels::OfSource);
    ASSERT_TRUE(again);
    EXPECT_LE(*again, 3);  // 0.4 %
}

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
    const int64_t level = EventFreeLevelPoints(ws);
    const Outcome<EventFreeWritten> written =
        WriteEventFreeCopy(ws, kDefaultEventFreeMarginMs, level, dir / "free.abf", true);
    ASSERT_TRUE(written) << written.message();
    EXPECT_GT(written->HiddenRemoved(), 0);
    EXPECT_EQ(EventsNotIn(written->hidden, deleted, 20).size(), written->hidden.size());
}

std::vector<std::string> FolderNames(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<int16_t> Samples(const fs::path& p) {
    const auto rec = test::OpenFile(p);
    if (!rec) return {};
    std::vector<int16_t> out(std::size_t(rec->PointsPerChannel()));
    rec->ReadSamples(0, out);
    return out;
}

class EventFreeStop : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(WriteSynthetic(dir / "s.abf", Synthesise({.seconds = 20})), "");
        ws.settings = NewInstallationSettings();
        ASSERT_TRUE(OpenRecordingOnChannel(dir / "s.abf", 0, ws));
        SuggestOnFirstAnalysis(ws);
        DetectWholeFile(ws);
        ASSERT_GT(ws.events.Count(), 20);
        request = {ws.recording->Path(), 0, ws.settings, ws.events, ws.measuredOnce, false, 2.0, 40, dir / "free.abf"};
    }

    test::TempDir dir;
    Workspace ws;
    EventFreeRequest request;
};

TEST_F(EventFreeStop, TheWorkReportsEachStepAndWritesWhatTheWindowsWorkspaceWould) {
    std::vector<double> done;
    std::vector<std::string> notes;
    const Outcome<EventFreeWritten> written = WriteEventFree(request, [&](double d, const std::string& note) {
        done.push_back(d);
        if (notes.empty() || notes.back() != note) notes.push_back(note);
        return true;
    });
    ASSERT_TRUE(written) << written.message();
    ASSERT_FALSE(done.empty());
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    EXPECT_EQ(done.back(), 1.0);
    for (const char* step : {"writing the copy", "detecting on the recording", "detecting on the copy"})
        EXPECT_NE(std::find(notes.begin(), notes.end(), step), notes.end()) << step;

    // The copy of the recording the work opens makes the file the
    // workspace's own recording makes, from the trace detection reads.
    for (const bool filtered : {false, true}) {
        SCOPED_TRACE(filtered ? "filtered" : "recorded");
        if (filtered) {
            ASSERT_TRUE(ApplyFilter(*ws.recording, FilterChoiceFromSettings(ws.settings)));
            SetDetectOnFiltered(ws, true);
            request.readsFiltered = true;
        }
        const Outcome<EventFreeWritten> job = WriteEventFree(request, {});
        const Outcome<EventFreeWritten> direct =
            WriteEventFreeCopy(ws, request.marginMs, request.levelPoints, dir / "direct.abf", true);
        ASSERT_TRUE(job && direct) << job.message() << direct.message();
        EXPECT_EQ(job->HiddenRemoved(), direct->HiddenRemoved());
        EXPECT_EQ(Samples(dir / "free.abf"), Samples(dir / "direct.abf"));
    }
}

TEST_F(EventFreeStop, StoppedAtAnyStepTheTargetIsAsItWas) {
    // The note of the report that answers stop; "" is the last report, after
    // the last copy was written and detected on.
    for (const std::string stopAt : {"writing the copy", "detecting on the recording", "detecting on the copy", ""}) {
        for (const bool existed : {false, true}) {
            SCOPED_TRACE(stopAt + (existed ? ", over an existing file" : ", no file before"));
            const std::string before = "an older file";
            if (existed) std::ofstream(request.target, std::ios::binary) << before;
            const std::vector<std::string> namesBefore = FolderNames(dir.Path());
            bool asked = false;
            const Outcome<EventFreeWritten> written = WriteEventFree(request, [&](double, const std::string& note) {
                asked = asked || note == stopAt;
                return !asked;
            });
            EXPECT_TRUE(asked);
            EXPECT_TRUE(written.cancelled()) << written.message();
            EXPECT_EQ(FolderNames(dir.Path()), namesBefore);  // no temporary copy left
            if (existed) { EXPECT_EQ(test::ReadText(request.target), before); }
            fs::remove(request.target);
        }
    }
}

}  // namespace
}  // namespace vess
