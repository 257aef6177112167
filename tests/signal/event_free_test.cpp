// The event-free copy of a channel, the synch array of sweep starts and picture series.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "detection/whole_file.h"
#include "hrv/texts.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "signal/event_free.h"
#include "signal/event_free_file.h"
#include "signal/synch_array.h"
#include "signal/tool_texts.h"
#include "support/read_back.h"

namespace vess {
namespace {

EventRecord Event(int32_t peak, int16_t rise, int16_t decay) {
    EventRecord r;
    r.sampleIndex = peak;
    r.riseTime = rise;
    r.decayTime = decay;
    return r;
}

TEST(EventFree, StretchesAreWidenedMergedAndCutToTheRecording) {
    EventTable events;
    // Widened by 2, out of order: overlapping and touching stretches merge, ends cut to 0 .. 99.
    events.Append(Event(50, 5, 10));   // 43 .. 62
    events.Append(Event(3, 5, 4));     // -4 .. 9 -> 0 .. 9
    events.Append(Event(68, 4, 3));    // 62 .. 73, overlaps 43 .. 62
    events.Append(Event(80, 1, 1));    // 77 .. 83, clear of 62 .. 73
    events.Append(Event(87, 1, 1));    // 84 .. 90, touching 77 .. 83
    events.Append(Event(98, 1, 10));   // 95 .. 110 -> 95 .. 99
    const auto s = EventStretches(events, 2, 100);
    EXPECT_EQ(s, (std::vector<PointStretch>{{0, 9}, {43, 73}, {77, 90}, {95, 99}}));
}

// A flat trace at 100 with +-1 alternating noise (even points -1).
int16_t Clean(int64_t i) { return int16_t(100 + (i % 2 ? 1 : -1)); }

std::vector<int16_t> RunOver(int64_t points, std::span<const PointStretch> stretches,
                         const std::vector<int16_t>& source, int64_t chunk) {
    std::vector<int16_t> out;
    EventFreeOptions options;
    options.levelPoints = 10;
    options.chunkPoints = chunk;
    const SampleReader read = [&](int64_t first, std::span<int16_t> dst) {
        for (std::size_t k = 0; k < dst.size(); ++k) dst[k] = source[std::size_t(first) + k];
    };
    const SampleSink sink = [&](std::span<const int16_t> s) {
        out.insert(out.end(), s.begin(), s.end());
        return true;
    };
    EXPECT_TRUE(EliminateStretches(points, stretches, read, sink, options));
    return out;
}

TEST(EventFree, ReplacedStretchContinuesTheBaselineAndItsNoise) {
    // Events on 0..9 and 400..449 of a level 100 with +-1 noise: the stretches come back at
    // that level within the noise (the mirrored donors may meet out of phase), the rest is
    // the source exactly, and the chunk size changes nothing.
    std::vector<int16_t> clean(1000), source(1000);
    for (int64_t i = 0; i < 1000; ++i) clean[std::size_t(i)] = source[std::size_t(i)] = Clean(i);
    for (int64_t i = 0; i < 10; ++i) source[std::size_t(i)] += 300;
    for (int64_t i = 400; i < 450; ++i) source[std::size_t(i)] -= 500;
    const std::vector<PointStretch> stretches{{0, 9}, {400, 449}};
    const std::vector<int16_t> out = RunOver(1000, stretches, source, 1 << 16);
    EXPECT_EQ(RunOver(1000, stretches, source, 7), out);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const bool replaced = i < 10 || (i >= 400 && i < 450);
        if (replaced) EXPECT_LE(std::abs(out[i] - 100), 2) << i;
        else EXPECT_EQ(out[i], clean[i]) << i;
    }
    // A refusing sink stops the run.
    const SampleReader read = [&](int64_t, std::span<int16_t> dst) { std::fill(dst.begin(), dst.end(), 0); };
    EXPECT_FALSE(EliminateStretches(1000, stretches, read, [](auto) { return false; }));
}

TEST(EventFree, SyntheticRecordingMadeEventFreeDetectsAlmostNothing) {
    test::TempDir dir;
    SynthOptions synth;
    synth.seconds = 10;
    synth.seed = 5;
    ASSERT_EQ(WriteSynthetic(dir / "s.abf", Synthesise(synth)), "");

    Workspace ws;
    ws.recording = test::OpenFile(dir / "s.abf");
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    DetectWholeFile(ws, dialogs);
    ASSERT_GT(ws.events.Count(), 30);  // about 5 a second

    const Recording& src = *ws.recording;
    const int64_t level = int64_t(ws.params().PeriodBaselineAverage / src.IntervalUs());
    ASSERT_EQ(WriteEventFreeAbf(src, ws.events, 2.0, level, dir / "free.abf"), "");

    Workspace again;
    again.recording = test::OpenFile(dir / "free.abf");
    ASSERT_TRUE(again.recording);
    const Recording& out = *again.recording;
    EXPECT_EQ(out.PointsPerChannel(), src.PointsPerChannel());
    EXPECT_EQ(out.IntervalUs(), src.IntervalUs());
    EXPECT_EQ(out.Units(), src.Units());
    // Outside the stretches the samples read back as the same units.
    const auto stretches = EventStretches(ws.events, MarginPoints(src, 2.0), src.PointsPerChannel());
    ASSERT_GT(stretches.front().first, 0);
    for (int64_t i = 0; i < stretches.front().first; ++i)
        ASSERT_EQ(out.Bit2pA(out.Sample(i)), src.Bit2pA(src.Sample(i))) << i;

    DetectWholeFile(again, dialogs);
    // 0 in 10 s with the same settings when this test was written.
    EXPECT_LE(again.events.Count(), 1);
}

TEST(EventFree, CommandStopsWithoutTheTemplateHeader) {
    test::TempDir dir;
    Workspace ws;
    const std::vector<int16_t> samples(2048, 0);
    ws.recording = test::MakeRecording(dir / "r.abf", samples);
    ws.events.Append(Event(100, 5, 5));
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, EventFreeCommand(ws, dialogs, dir.Path())));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, texts::kTemplateMissingText);
}

using test::OpenShared;

TEST(SynchArray, SweepStartsOfEpisodicFilesInMs) {
    VESS_REQUIRE_SHARED_DATA();
    // Sweep layouts from the data README. 171116sh_0020: 7 sweeps of 200000 points at 50 us.
    Workspace ws;
    ws.recording = OpenShared("abf2/171116sh_0020.abf");
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    dialogs.AnswerInput("2");
    ASSERT_EQ(SynchArrayCommand(ws, dialogs).value(), 2);
    EXPECT_EQ(std::vector<float>(ws.array2.Values().begin(), ws.array2.Values().end()),
              (std::vector<float>{0, 10000, 20000, 30000, 40000, 50000, 60000}));
    EXPECT_TRUE(ws.array1.Empty());
    EXPECT_EQ(dialogs.Messages().back().text,
              std::string("7") + std::string(tool_texts::kSynchDone) + "2");

    // 05210017_vc_abf1: 6 sweeps of 60000 points at 50 us, on either channel.
    auto abf1 = OpenShared("abf1/05210017_vc_abf1.abf");
    ASSERT_TRUE(abf1);
    abf1->SetChannel(1);
    EXPECT_EQ(SweepStartTimesMs(*abf1), (std::vector<float>{0, 3000, 6000, 9000, 12000, 15000}));

    // varlen_v18: sweeps of their own lengths; synch array starts 230260, 487274, ... x 25 us.
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
    EXPECT_FALSE(ShowFailure(dialogs, SynchArrayCommand(ws, dialogs).status()));
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

// A downward event at 1000 on a baseline of 0: -1000 counts with a fast
// (tau 20 points, 70 %) and a slow (tau 300 points, 30 %) decay. Detection's
// 32 % decay point lies 48 points after the peak, where the slow part still
// holds about 255 counts; with a noise SD of 20 the slow part reaches 20
// counts 300 ln(15) = 812 points after the peak.
std::vector<int16_t> TwoExponentialEvent() {
    std::vector<int16_t> trace(6000, 0);
    for (int i = 0; i < 5000; ++i)
        trace[std::size_t(1000 + i)] = int16_t(std::lround(-700 * std::exp(-i / 20.0) - 300 * std::exp(-i / 300.0)));
    return trace;
}

TEST(EventFreeTail, DecayIsFollowedIntoTheNoiseAndNoFurtherThanTheCap) {
    const std::vector<int16_t> trace = TwoExponentialEvent();
    const SampleReader read = [&](int64_t first, std::span<int16_t> out) {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = trace[std::size_t(first) + k];
    };
    EventRecord event;
    event.sampleIndex = 1000;
    event.riseTime = 10;
    event.decayTime = 48;
    event.amplitude = 1000;
    event.peakDirection = -1;
    const DecayTail tail{read, 20, 20, int64_t(trace.size())};
    const int64_t end = DecayEndPoints(event, tail);
    EXPECT_GE(end, 790);  // 20-point windows from the decay point: the first below 20 counts
    EXPECT_LE(end, 830);

    // Upward events are followed the other way: none here, so the decay point stays.
    EventRecord up = event;
    up.peakDirection = 1;
    EXPECT_EQ(DecayEndPoints(up, tail), 48);
    // A decay point cut short (by a following event) still reaches the tail's end:
    // the walk may go kLeastReachWindows windows even when 20 decay lengths are fewer.
    EventRecord shortDecay = event;
    shortDecay.decayTime = 10;
    EXPECT_GE(DecayEndPoints(shortDecay, tail), 790);
    // Without a reader or a noise figure: the decay point.
    EXPECT_EQ(DecayEndPoints(event, DecayTail{}), 48);
    EXPECT_EQ(DecayEndPoints(event, DecayTail{read, 0, 20, int64_t(trace.size())}), 48);

    // The stretch runs from the start to the end of the decay, widened by the margin.
    EventTable events;
    events.Append(event);
    const auto stretches = EventStretches(events, 5, int64_t(trace.size()), tail);
    ASSERT_EQ(stretches.size(), 1u);
    EXPECT_EQ(stretches[0].first, 1000 - 10 - 5);
    EXPECT_EQ(stretches[0].last, 1000 + end + 5);
}

}  // namespace
}  // namespace vess
