// The analysis buttons over a workspace: reset with its question, the
// non-stop analysis driven screen by screen against the whole-file run (the
// command line's path), one undo step per command.
#include <gtest/gtest.h>
#include <cmath>
#include <map>

#include "detection/event_sound.h"
#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"
#include "support/test_recording.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

TEST(Reset, AsksOnlyWhenThereAreEventsAndHonoursTheAnswer) {
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_TRUE(ResetEvents(ws, dialogs));  // empty: no question (an unexpected one throws)

    for (int i = 0; i < 3; ++i) ws.events.Append(EventRecord{});
    dialogs.AnswerOkCancel(false).AnswerOkCancel(true);
    EXPECT_FALSE(ResetEvents(ws, dialogs));
    EXPECT_EQ(ws.events.Count(), 3);
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Confrim Reset");
    EXPECT_EQ(dialogs.Transcript()[0].text,
              "There are 3 events analysed.  Are you sure you want to erase the event data?");

    EXPECT_TRUE(ResetEvents(ws, dialogs));
    EXPECT_EQ(ws.events.Count(), 0);
    ASSERT_TRUE(ws.history.Undo(ws.events));  // the erase can be undone
    EXPECT_EQ(ws.events.Count(), 3);

    EXPECT_TRUE(ResetEvents(ws, dialogs, /*noConfirmation=*/true));
    EXPECT_EQ(ws.events.Count(), 0);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

// Events every 1000 samples over 40 blocks: the non-stop run is one undo
// step, finds every event at its sampled peak (onset + 21) and stops at the
// last screen; on screen 8 a range re-centres onto a decay (8542), hence 11.
TEST(NonStop, OneUndoStepNothingPastTheDataAndStops) {
    std::vector<int16_t> trace(40 * 256, 0);
    for (int onset = 500; onset + 400 < int(trace.size()); onset += 1000)
        AddEvent(trace, onset, DoubleExp{10, 60, 400});
    test::TraceWorkspace t(trace);
    Workspace& ws = t.ws;
    ScriptedDialogs dialogs;

    AnalyzeCurrentScreen(ws, dialogs);
    const int32_t afterFirst = ws.events.Count();
    NonStopAnalysis run(ws, dialogs);
    EXPECT_EQ(run.GetProgress().screensTotal, 9);  // 10 screens of 4 blocks
    run.RunToEnd();
    EXPECT_EQ(ws.screenStartBlock, 36);
    std::vector<int32_t> peaks;
    for (const auto& e : ws.events.Records()) peaks.push_back(e.sampleIndex);
    for (int32_t k = 0; k < 10; ++k)
        EXPECT_NE(std::find(peaks.begin(), peaks.end(), 521 + 1000 * k), peaks.end()) << k;
    EXPECT_EQ(ws.events.Count(), 11);
    EXPECT_FALSE(AnalyzeNextWindow(ws, dialogs).moved);

    ASSERT_TRUE(ws.history.Undo(ws.events));
    EXPECT_EQ(ws.events.Count(), afterFirst);
    ASSERT_TRUE(ws.history.Undo(ws.events));
    EXPECT_EQ(ws.events.Count(), 0);
    EXPECT_FALSE(ws.history.CanUndo());

    // Stop ends a run; improper parameters stop it with one message.
    ws.screenStartBlock = 0;
    NonStopAnalysis stopped(ws, dialogs);
    EXPECT_TRUE(stopped.Step());
    stopped.Stop();
    EXPECT_FALSE(stopped.Step());
    EXPECT_EQ(ws.screenStartBlock, 4);
    ws.params().PeriodToSearchMax = 10;  // 0.2 samples
    NonStopAnalysis bad(ws, dialogs);
    EXPECT_FALSE(bad.Step());
    EXPECT_FALSE(bad.Step());
    EXPECT_EQ(dialogs.Messages().size(), 1u);
}

// The first screen and the Step loop give the whole-file records, on a
// synthetic recording and a real one with many spontaneous currents.
TEST(Equivalence, StepLoopAndWholeFileGiveTheSameEvents) {
    test::TempDir dir;
    SynthOptions options;
    options.seconds = 10;
    options.seed = 11;
    const std::filesystem::path synthetic = dir / "synthetic.abf";
    ASSERT_EQ(WriteSynthetic(synthetic, Synthesise(options)), "");
    std::vector<std::filesystem::path> files{synthetic};
    if (!test::SharedData().empty())
        files.push_back(test::SharedData() / "abf1" / "171116sh_0020_saved.abf");
    for (const auto& path : files) {
        Workspace a, b;
        a.recording = test::OpenOrThrow(path);
        b.recording = test::OpenOrThrow(path);
        ScriptedDialogs dialogs;
        AnalyzeCurrentScreen(a, dialogs);
        NonStopAnalysis run(a, dialogs);
        while (run.Step()) {
        }
        EXPECT_EQ(run.GetProgress().screensDone, run.GetProgress().screensTotal);
        DetectWholeFile(b, dialogs);
        EXPECT_GT(a.events.Count(), 10) << path;
        EXPECT_EQ(a.events.Records(), b.events.Records()) << path;
    }
}

// At most one sound for stored events in any 150 ms, none for none.
TEST(EventSound, OneSoundPer150MsAtMost) {
    using namespace std::chrono_literals;
    EventSoundPacer pacer;
    const EventSoundPacer::Clock::time_point t0{};
    EXPECT_FALSE(pacer.ShouldSound(0, t0));
    EXPECT_TRUE(pacer.ShouldSound(3, t0));
    EXPECT_FALSE(pacer.ShouldSound(1, t0 + 149ms));
    EXPECT_TRUE(pacer.ShouldSound(1, t0 + 150ms));
    int sounds = 0;
    for (auto t = 1000ms; t < 2000ms; t += 5ms) sounds += pacer.ShouldSound(2, t0 + t) ? 1 : 0;
    EXPECT_EQ(sounds, 7);  // 1000, 1150, .. 1900
}

// A recording in both file versions (0.122 and 0.0305 pA a count): the
// suggested parameters find the same events (761 and 764, 757 at the same
// sample when written; the rest sit at a threshold) of the same sizes.
std::unique_ptr<Workspace> DetectedOn(const std::string& file) {
    auto ws = test::Suggested(test::SharedData() / file);
    ScriptedDialogs dialogs;
    DetectWholeFile(*ws, dialogs);
    return ws;
}

TEST(Abf2Detection, EventsAgreeWithTheAbfOneTwin) {
    VESS_REQUIRE_SHARED_DATA();
    const auto two = DetectedOn("abf2/171116sh_0020.abf");
    const auto one = DetectedOn("abf1/171116sh_0020_saved.abf");
    ASSERT_GT(two->events.Count(), 100);  // spontaneous currents throughout the 70 s
    const Recording& r2 = *two->recording;
    const Recording& r1 = *one->recording;
    std::map<int32_t, const EventRecord*> twin;
    for (const EventRecord& b : one->events.Records()) twin[b.sampleIndex] = &b;
    // Levels within one count of the coarser file, amplitudes within two.
    const double count = std::fabs(r2.Bit2pA2(1));
    int matched = 0;
    for (const EventRecord& a : two->events.Records()) {
        const auto it = twin.find(a.sampleIndex);
        if (it == twin.end()) continue;
        ++matched;
        const EventRecord& b = *it->second;
        EXPECT_FLOAT_EQ(a.time, b.time);
        EXPECT_NEAR(r2.Bit2pA2(a.amplitude), r1.Bit2pA2(b.amplitude), 2 * count) << a.sampleIndex;
        EXPECT_NEAR(r2.Bit2pA(a.baseline), r1.Bit2pA(b.baseline), count) << a.sampleIndex;
    }
    EXPECT_GE(matched, two->events.Count() * 99 / 100);
    EXPECT_GE(matched, one->events.Count() * 99 / 100);
}

}  // namespace
}  // namespace vess
