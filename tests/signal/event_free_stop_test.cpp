// The event-free file written as a job: its work opens its own copy of the
// recording, says what it does through the one progress callback, and when
// stopped at any step leaves the target as it was (absent, or the file it
// held) with no temporary file beside it.
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
#include "signal/event_free_file.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess {
namespace {

namespace fs = std::filesystem;

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
