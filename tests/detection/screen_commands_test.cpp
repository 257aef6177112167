// The analysis buttons over a workspace: reset with its question, the
// non-stop analysis with one undo step per command, where a non-stop run
// starts, and the noise commands.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "detection/event_sound.h"
#include "detection/noise_commands.h"
#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/abf_writer.h"
#include "recording/data_file.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/synth.h"
#include "support/test_recording.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

// 40 blocks with an event every step samples from 500, its sampled peak 21 samples on.
std::vector<int16_t> EventsEvery(int step) {
    std::vector<int16_t> trace(40 * 256, 0);
    for (int onset = 500; onset + 400 < int(trace.size()); onset += step) AddEvent(trace, onset, DoubleExp{10, 60, 400});
    return trace;
}

TEST(Reset, AsksOnlyWhenThereAreEventsAndHonoursTheAnswer) {
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_TRUE(ResetEvents(ws, dialogs));  // empty: no question (an unexpected one throws)
    for (int i = 0; i < 3; ++i) ws.events.Append(EventRecord{});
    dialogs.AnswerOkCancel(false).AnswerOkCancel(true);
    EXPECT_FALSE(ResetEvents(ws, dialogs));
    EXPECT_EQ(ws.events.Count(), 3);
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_EQ(std::tuple(dialogs.Transcript()[0].caption, dialogs.Transcript()[0].text),
              std::tuple("Confrim Reset", "There are 3 events analysed.  Are you sure you want to erase the event data?"));
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
    test::TraceWorkspace t(EventsEvery(1000));
    Workspace& ws = t.ws;
    AnalyzeCurrentScreen(ws);
    const int32_t afterFirst = ws.events.Count();
    NonStopAnalysis run(ws);
    EXPECT_EQ(run.GetProgress().screensTotal, 9);  // 10 screens of 4 blocks
    run.RunToEnd();
    EXPECT_EQ(std::tuple(ws.screenStartBlock, ws.events.Count()), std::tuple(36, 11));
    for (int32_t k = 0; k < 10; ++k)
        EXPECT_EQ(std::ranges::count(ws.events.Records(), 521 + 1000 * k, &EventRecord::sampleIndex), 1) << k;
    EXPECT_FALSE(AnalyzeNextWindow(ws).moved);
    ASSERT_TRUE(ws.history.Undo(ws.events));
    EXPECT_EQ(ws.events.Count(), afterFirst);
    ASSERT_TRUE(ws.history.Undo(ws.events));
    EXPECT_EQ(std::tuple(ws.events.Count(), ws.history.CanUndo()), std::tuple(0, false));
    // Stop ends a run; improper parameters stop it, failed with their message.
    ws.screenStartBlock = 0;
    NonStopAnalysis stopped(ws);
    EXPECT_TRUE(stopped.Step());
    stopped.Stop();
    EXPECT_FALSE(stopped.Step());
    EXPECT_EQ(ws.screenStartBlock, 4);
    ws.params().PeriodToSearchMax = 10;  // 0.2 samples
    NonStopAnalysis bad(ws);
    EXPECT_EQ((std::array{bad.Step(), bad.Step()}), (std::array{false, false}));
    EXPECT_EQ(bad.LastAnalysis().status.caption(), "Improper Analysis Parameters");
}

// Analyze next window reads its screens many at a time. What it analyses and
// shows is what the screen's own read gives after each change of what the
// recording reads: another channel, a filtered copy attached, read, not read
// and replaced, another screen length, another recording (perhaps where the
// last one lay in memory).
TEST(AnalyzeNextWindow, ScreensReadAheadAreWhatTheRecordingReadsNow) {
    const auto file = [](std::size_t seed) {  // two channels of 40 screens, each sample its own
        std::vector<int16_t> frames(2 * 40 * 1024);
        for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = int16_t((i * 7919 + seed) % 60000) - 30000;
        AbfWriteLayout layout = test::MakeAbfLayout(50);
        layout.channels.push_back(layout.channels.front());
        std::vector<uint8_t> bytes;
        EXPECT_EQ(BuildAbfFile(layout, frames, bytes), "");
        return bytes;
    };
    const auto filtered = [](uint8_t seed) {  // a filtered copy's counts
        std::vector<uint8_t> counts(2 * 40 * 1024);
        for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = uint8_t(i * 31 + seed);
        return DataFile::FromBytes(std::move(counts));
    };
    Workspace ws;
    ws.recording = Recording::FromBytes(file(0), "two.abf", nullptr);
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"nothing", [] {}},
        {"channel", [&] { ws.recording->SetChannel(1); }},
        {"filtered copy attached and read",
         [&] {
             ws.recording->AttachFiltered(filtered(1));
             ws.recording->ReadFiltered(true);
         }},
        {"filtered copy not read", [&] { ws.recording->ReadFiltered(false); }},
        {"filtered copy read", [&] { ws.recording->ReadFiltered(true); }},
        {"filtered copy replaced", [&] { ws.recording->AttachFiltered(filtered(2)); }},
        {"screen length", [&] { ws.settings.blocksPerScreen = 2; }},
        {"another recording",
         [&] {
             ws.recording.reset();
             ws.recording = Recording::FromBytes(file(5), "other.abf", nullptr);
         }},
    };
    for (const auto& [change, make] : changes) {
        make();
        const NextWindowResult next = AnalyzeNextWindow(ws);
        ASSERT_TRUE(next.moved) << change;
        const Screen own = ShownScreen(ws);
        const int64_t w = own.WindowLen();
        ASSERT_EQ(next.screen.WindowLen(), w) << change;
        EXPECT_EQ(next.screen.Filtered(), own.Filtered()) << change;
        for (int64_t i = -w; i < 2 * w; ++i)
            ASSERT_EQ(next.screen.GetSampleValue(i), own.GetSampleValue(i)) << change << ", index " << i;
    }
}

// At most one sound for stored events in any 150 ms, none for none.
TEST(EventSound, OneSoundPer150MsAtMost) {
    using namespace std::chrono_literals;
    EventSoundPacer pacer;
    const EventSoundPacer::Clock::time_point t0{};
    // Braces: called in order.
    EXPECT_EQ((std::array{pacer.ShouldSound(0, t0), pacer.ShouldSound(3, t0), pacer.ShouldSound(1, t0 + 149ms),
                          pacer.ShouldSound(1, t0 + 150ms)}),
              (std::array{false, true, false, true}));
    int sounds = 0;
    for (auto t = 1000ms; t < 2000ms; t += 5ms) sounds += pacer.ShouldSound(2, t0 + t) ? 1 : 0;
    EXPECT_EQ(sounds, 7);  // 1000, 1150, .. 1900
}

void OpenFresh(Workspace& ws, const std::filesystem::path& path) {
    ScriptedDialogs dialogs;
    ASSERT_TRUE(OpenDataFile(ws, path, dialogs)) << path;
}

// Non-stop analysis started on a screen that nothing has analysed covers that
// screen too: from block 0 of a freshly opened file it equals the whole-file
// run, for the threshold detection and for the deconvolution of a new
// installation.
TEST(NonStopFromFreshRecording, EqualsWholeFileDetection) {
    test::TempDir dir;
    const std::filesystem::path synthetic = dir / "synthetic.abf";
    ASSERT_EQ(WriteSynthetic(synthetic, Synthesise({.seconds = 10, .seed = 5})), "");
    std::vector<std::filesystem::path> files{synthetic};
    if (!test::SharedData().empty())
        files.push_back(test::SharedData() / "abf1" / "171116sh_0020_saved.abf");
    for (const Settings& settings : {Settings{}, NewInstallationSettings()})
        for (const auto& path : files) {
            Workspace stepped, whole;
            stepped.settings = whole.settings = settings;
            OpenFresh(stepped, path);
            OpenFresh(whole, path);
            ScriptedDialogs dialogs;
            NonStopAnalysis run(stepped);
            run.RunToEnd();
            EXPECT_EQ(run.GetProgress().screensDone, run.GetProgress().screensTotal);
            DetectWholeFile(whole);
            EXPECT_GT(stepped.events.Count(), 10) << path;
            EXPECT_EQ(stepped.events.Records(), whole.events.Records()) << path << " method " << int(settings.method.method);
        }
}

// One event on each screen of 4 blocks (peaks at 521 + 1024 k); where the
// run starts decides whether the shown screen is analysed first.
TEST(NonStopFromFreshRecording, AnalysesTheShownScreenOnlyWhenNothingRanThere) {
    test::TraceFile file(EventsEvery(1024));
    // The run starts on screen 3 (block 12); screen 4 starts at block 16.
    enum Before { Nothing, AnalysedByF9, EventInTheTable, AnalysedAtAnotherScreenLength };
    const std::tuple<Before, int64_t, int32_t> cases[] = {{Nothing, 7, 3 * 1024 + 521},
                                                          {AnalysedByF9, 6, 4 * 1024 + 521},
                                                          {EventInTheTable, 6, 4 * 1024 + 521},
                                                          {AnalysedAtAnotherScreenLength, 6, 4 * 1024 + 521}};
    for (const auto& [before, screensTotal, firstPeak] : cases) {
        SCOPED_TRACE(int(before));
        Workspace ws;
        OpenFresh(ws, file.rec->Path());
        ws.params() = test::TestParams();
        ws.screenStartBlock = 12;
        ScriptedDialogs dialogs;
        if (before == AnalysedByF9) {
            AnalyzeCurrentScreen(ws);
            ws.events.Clear();  // the run's own events only
        }
        if (before == EventInTheTable) ws.events.Append({.sampleIndex = 12 * 256 + 100});
        if (before == AnalysedAtAnotherScreenLength) ws.analysedBlocks.Add(8, 5);  // blocks 8..12
        const int32_t count = ws.events.Count();
        NonStopAnalysis run(ws);
        EXPECT_EQ(run.GetProgress().screensTotal, screensTotal);
        run.RunToEnd();
        ASSERT_GT(ws.events.Count(), count);
        EXPECT_EQ(ws.events[count + 1].sampleIndex, firstPeak);
    }
}

TEST(AnalysedBlocks, MergesTouchingRangesAndFindsOverlaps) {
    AnalysedBlocks a;
    a.Add(4, 4);
    a.Add(12, 4);
    a.Add(8, 4);  // joins both neighbours
    EXPECT_EQ(a.RangeCount(), 1u);
    a.Add(30, 2);
    EXPECT_EQ(a.RangeCount(), 2u);
    const struct { int32_t first, count; bool any; } probes[] = {
        {0, 4, false}, {0, 5, true}, {15, 1, true}, {16, 14, false}, {29, 2, true}, {31, 1, true}, {32, 8, false},
        {10, 0, false}};
    for (const auto& p : probes) EXPECT_EQ(a.AnyIn(p.first, p.count), p.any) << p.first << "+" << p.count;
}

// -500 counts with a square wave of +-10 (RMS 10), an event on the first
// screen, two counts a unit: levels and RMS in halves. The event's stretch is
// left out; the commands show the RMS and set the threshold in the units.
TEST(ScreenNoise, StoredEventsAreLeftOutAndTheCommandsWorkInTheChannelsUnits) {
    std::vector<int16_t> t(4096);
    for (std::size_t i = 0; i < t.size(); ++i) t[i] = int16_t(i % 2 == 0 ? -490 : -510);
    AddEvent(t, 600, DoubleExp{10, 100, 1000});
    test::TraceWorkspace f(t, 2.0f);
    ScriptedDialogs& dialogs = f.dialogs;
    const Screen screen(*f.ws.recording, 0, f.ws.BlocksPerScreen());
    const NoiseMeasure withEvent = MeasureScreenNoise(screen, f.ws.events);
    ASSERT_TRUE(withEvent.valid);
    EXPECT_EQ(withEvent.points, screen.WindowLen());
    EXPECT_GT(withEvent.rmsUnits, 20.0);  // the event dominates
    f.ws.params().DecayPercent = 0.01f;  // the decay point near the end of the tail
    AnalyzeCurrentScreen(f.ws);
    ASSERT_EQ(f.ws.events.Count(), 1);
    const NoiseMeasure quiet = MeasureScreenNoise(screen, f.ws.events);
    ASSERT_TRUE(quiet.valid);
    // Left out from the event start to the screen's end (the decay point lies beyond).
    EXPECT_EQ(quiet.pointsExcluded, 1024 - (f.ws.events[1].sampleIndex - f.ws.events[1].riseTime));
    EXPECT_NEAR(quiet.rmsUnits, 5.0, 1.5);
    EXPECT_NEAR(quiet.baselineUnits, -250.0, 5.0);
    // A screen without events: exactly the square wave.
    f.ws.screenStartBlock = 12;
    f.ws.history.Clear();
    EXPECT_DOUBLE_EQ(ShowRmsNoise(f.ws, dialogs)->rmsUnits, 5.0);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "RMS Noise");
    EXPECT_NE(dialogs.Messages()[0].text.find("RMS noise: 5.000"), std::string::npos) << dialogs.Messages()[0].text;
    // Baseline and Threshold sets the threshold only on yes (the test threshold is 5).
    dialogs.AnswerYesNo(false).AnswerYesNo(true);
    const BaselineThresholdResult no = *BaselineThreshold(f.ws, dialogs);
    EXPECT_FLOAT_EQ(no.suggestedThreshold, float(kThresholdNoiseMultiple * 5.0));
    EXPECT_EQ(std::tuple(no.applied, f.ws.params().ThresholdAmplitude), std::tuple(false, 5.0f));
    const BaselineThresholdResult yes = *BaselineThreshold(f.ws, dialogs);
    EXPECT_EQ(std::tuple(yes.applied, f.ws.params().ThresholdAmplitude), std::tuple(true, yes.suggestedThreshold));
    const auto& question = dialogs.Transcript().back();
    EXPECT_EQ(question.caption, "Baseline and Threshold");
    EXPECT_NE(question.text.find("Baseline: -250.000"), std::string::npos) << question.text;
    EXPECT_EQ(std::tuple(f.ws.events.Count(), f.ws.history.CanUndo()), std::tuple(1, false));
}

// 1948 samples: the last screen holds 924, the square wave and then 300; by
// hand the RMS about their mean 310/924 is sqrt((923 x 100 + 90000) / 924 -
// mean^2) = 14.04 (padded to 1024 points with the last sample it read 89.9).
TEST(ScreenNoise, OnlyRecordedSamplesAreMeasured) {
    std::vector<int16_t> t(1948);
    for (std::size_t i = 0; i < t.size(); ++i) t[i] = int16_t(i % 2 == 0 ? 10 : -10);
    t.back() = 300;
    test::TraceFile file(t);
    ASSERT_EQ(file.rec->BlockCount(), 8);
    const NoiseMeasure m = MeasureScreenNoise(Screen(*file.rec, 4, 4), EventTable{});
    ASSERT_TRUE(m.valid);
    EXPECT_EQ(m.points, 924);
    const double mean = 310.0 / 924.0;
    EXPECT_NEAR(m.rmsUnits, std::sqrt((923 * 100.0 + 90000.0) / 924.0 - mean * mean), 1e-9);
}

}  // namespace
}  // namespace vess
