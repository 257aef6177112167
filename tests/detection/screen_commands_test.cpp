// The analysis buttons over a workspace: reset with its question, the
// non-stop analysis driven screen by screen against the whole-file run (the
// command line's path), one undo step per command.
#include <gtest/gtest.h>

#include "detection/event_sound.h"
#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

std::unique_ptr<Recording> Open(const std::filesystem::path& path) {
    AbfError error = AbfError::None;
    auto rec = Recording::Open(path, &error);
    if (!rec) throw std::runtime_error("cannot open " + path.string());
    return rec;
}

// Screen by screen as the desktop program does it: Command1 on the first
// screen, then Step until it says the data are done.
std::vector<EventRecord> StepByStep(Workspace& ws) {
    ScriptedDialogs dialogs;
    ws.screenStartBlock = 0;
    AnalyzeCurrentScreen(ws, dialogs);
    NonStopAnalysis run(ws, dialogs);
    int64_t steps = 0;
    while (run.Step()) ++steps;
    EXPECT_EQ(run.GetProgress().screensDone, run.GetProgress().screensTotal);
    return ws.events.Records();
}

std::vector<EventRecord> WholeFile(Workspace& ws) {
    ScriptedDialogs dialogs;
    DetectWholeFile(ws, dialogs);
    return ws.events.Records();
}

TEST(Reset, AsksOnlyWhenThereAreEventsAndHonoursTheAnswer) {
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_TRUE(ResetEvents(ws, dialogs));  // empty: no question (an unexpected one throws)
    EXPECT_TRUE(dialogs.Transcript().empty());

    for (int i = 0; i < 3; ++i) ws.events.Append(EventRecord{});
    dialogs.AnswerOkCancel(false).AnswerOkCancel(true);
    EXPECT_FALSE(ResetEvents(ws, dialogs));
    EXPECT_EQ(ws.events.Count(), 3);
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_EQ(dialogs.Transcript()[0].kind, DialogEntry::Kind::OkCancel);
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

// Events every 1000 samples over 40 blocks; the non-stop run is one undo step
// and stops at the last screen.
TEST(NonStop, OneUndoStepForTheRunAndNothingPastTheData) {
    std::vector<int16_t> trace(40 * 256, 0);
    for (int onset = 500; onset + 400 < int(trace.size()); onset += 1000)
        AddEvent(trace, onset, DoubleExp{10, 60, 400});
    test::TraceFile file(trace);
    Workspace ws;
    ws.recording = Open(file.rec->Path());
    ws.params() = test::TestParams();
    ScriptedDialogs dialogs;

    const AnalyzeWindowResult first = AnalyzeCurrentScreen(ws, dialogs);
    const int32_t afterFirst = ws.events.Count();
    EXPECT_EQ(first.eventsAdded, afterFirst);
    NonStopAnalysis run(ws, dialogs);
    EXPECT_EQ(run.GetProgress().screensTotal, 9);  // 10 screens of 4 blocks
    run.RunToEnd();
    EXPECT_FALSE(run.Running());
    EXPECT_EQ(ws.screenStartBlock, 36);
    // Every event is found at its sampled peak (onset + 21). On screen 8 the
    // range after the peak (window 400..599) takes its baseline on the rise
    // and re-centres onto the decay at 8542: the fixed tiling does that
    // wherever a peak falls early in the range before its decay's range.
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
}

TEST(NonStop, StopEndsTheRunAndImproperParametersStopItWithOneMessage) {
    std::vector<int16_t> trace(40 * 256, 0);
    test::TraceFile file(trace);
    Workspace ws;
    ws.recording = Open(file.rec->Path());
    ScriptedDialogs dialogs;
    NonStopAnalysis run(ws, dialogs);
    EXPECT_TRUE(run.Step());  // the fresh first screen, analysed where it is
    EXPECT_TRUE(run.Step());
    run.Stop();
    EXPECT_FALSE(run.Step());
    EXPECT_EQ(ws.screenStartBlock, 4);

    ws.params().PeriodToSearchMax = 10;  // 0.2 samples
    NonStopAnalysis bad(ws, dialogs);
    EXPECT_FALSE(bad.Step());
    EXPECT_FALSE(bad.Step());
    EXPECT_EQ(dialogs.Messages().size(), 1u);
}

// The command line runs DetectWholeFile; the desktop program runs Command1
// and then the Step loop. Both must give the same records, on a real
// recording with many spontaneous currents and on a synthetic one.
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
        a.recording = Open(path);
        b.recording = Open(path);
        const auto stepped = StepByStep(a);
        const auto whole = WholeFile(b);
        EXPECT_GT(stepped.size(), 10u) << path;
        EXPECT_EQ(stepped, whole) << path;
    }
}

// The sound for stored events: nothing for none; otherwise at most one in
// any 150 ms, so that screens analysed a few milliseconds apart during a
// non-stop run give one sound per 150 ms rather than a buzz.
TEST(EventSound, OneSoundPer150MsAtMost) {
    using namespace std::chrono_literals;
    EventSoundPacer pacer;
    const EventSoundPacer::Clock::time_point t0{};
    EXPECT_FALSE(pacer.ShouldSound(0, t0));
    EXPECT_TRUE(pacer.ShouldSound(3, t0));
    EXPECT_FALSE(pacer.ShouldSound(1, t0 + 149ms));
    EXPECT_TRUE(pacer.ShouldSound(1, t0 + 150ms));
    // A non-stop run storing events every 5 ms for a second.
    int sounds = 0;
    for (auto t = 1000ms; t < 2000ms; t += 5ms) sounds += pacer.ShouldSound(2, t0 + t) ? 1 : 0;
    EXPECT_EQ(sounds, 7);  // 1000, 1150, .. 1900
}

}  // namespace
}  // namespace vess
