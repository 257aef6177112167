// Sweep start times of real episodic recordings into the work arrays, and
// the screens of a picture series.
#include <gtest/gtest.h>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "signal/synch_array.h"
#include "signal/tool_texts.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::unique_ptr<Recording> OpenShared(const std::string& name) {
    AbfError error{};
    return Recording::Open(test::SharedData() / name, &error);
}

TEST(SynchArray, SweepStartsOfEpisodicFilesInMs) {
    VESS_REQUIRE_SHARED_DATA();
    // abf2/171116sh_0020.abf: 7 sweeps of 1400000 / 7 = 200000 points at
    // 50 us (data README), so a sweep every 10000 ms.
    Workspace ws;
    ws.recording = OpenShared("abf2/171116sh_0020.abf");
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("2");
    ASSERT_EQ(SynchArrayCommand(ws, dialogs), 2);
    EXPECT_EQ(std::vector<float>(ws.array2.Values().begin(), ws.array2.Values().end()),
              (std::vector<float>{0, 10000, 20000, 30000, 40000, 50000, 60000}));
    EXPECT_TRUE(ws.array1.Empty());
    EXPECT_EQ(dialogs.Messages().back().text,
              std::string("7") + std::string(tool_texts::kSynchDone) + "2");

    // abf1/05210017_vc_abf1.abf: 6 sweeps of 360000 / 6 = 60000 points at
    // 50 us per channel: 3000 ms apart on either channel.
    auto abf1 = OpenShared("abf1/05210017_vc_abf1.abf");
    ASSERT_TRUE(abf1);
    abf1->SetChannel(1);
    EXPECT_EQ(SweepStartTimesMs(*abf1), (std::vector<float>{0, 3000, 6000, 9000, 12000, 15000}));

    // abf1/2009_01_19_0002_varlen_v18.abf: sweeps of their own lengths with
    // gaps between them. The synch array starts them at 230260, 487274, ...
    // samples of 25 us (its time unit is 0, so one sample interval).
    auto varlen = OpenShared("abf1/2009_01_19_0002_varlen_v18.abf");
    ASSERT_TRUE(varlen);
    EXPECT_EQ(varlen->SweepStarts(), (std::vector<int64_t>{0, 4158, 8388, 12601, 16830, 20943, 25132}));
    const std::vector<float> times = SweepStartTimesMs(*varlen);
    const std::vector<double> expected{5756.5, 12181.85, 19654.05, 29194.1, 36601.8, 43263.55, 49483.1};
    ASSERT_EQ(times.size(), expected.size());
    for (std::size_t k = 0; k < times.size(); ++k) EXPECT_FLOAT_EQ(times[k], float(expected[k])) << k;
}

TEST(SynchArray, GapFreeRecordingIsRefused) {
    test::TempDir dir;
    Workspace ws;
    const std::vector<int16_t> samples(1024, 0);
    ws.recording = test::MakeRecording(dir / "g.abf", samples);
    ScriptedDialogs dialogs;
    EXPECT_FALSE(SynchArrayCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Messages().back().text, tool_texts::kNotEpisodicText);
}

TEST(PictureSeries, ScreensFromToStepAndTheirNames) {
    EXPECT_EQ(ScreenSeries(2, 9, 3, 10), (std::vector<int32_t>{2, 5, 8}));
    EXPECT_EQ(ScreenSeries(4, 4, 1, 4), (std::vector<int32_t>{4}));
    EXPECT_FALSE(ScreenSeries(0, 3, 1, 10));
    EXPECT_FALSE(ScreenSeries(5, 3, 1, 10));
    EXPECT_FALSE(ScreenSeries(1, 11, 1, 10));
    EXPECT_FALSE(ScreenSeries(1, 3, 0, 10));
    // Names sort in screen order: as wide as the last screen's number.
    EXPECT_EQ(PictureName(7, 300), "screen_0007.png");
    EXPECT_EQ(PictureName(7, 123456), "screen_000007.png");
}

}  // namespace
}  // namespace vess
