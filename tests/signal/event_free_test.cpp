// The event-free copy of a channel: its stretches, their levels and the file; the synch
// array of sweep starts and picture series.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

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

EventRecord Event(int32_t peak, int16_t rise, int16_t decay, int16_t direction = 0) {
    return {.riseTime = rise, .decayTime = decay, .peakDirection = direction, .sampleIndex = peak};
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

SampleReader ReaderOf(const std::vector<int16_t>& trace) {
    return [&trace](int64_t first, std::span<int16_t> out) {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = trace[std::size_t(first) + k];
    };
}

// The source with the stretches replaced.
std::vector<int16_t> Eliminated(const std::vector<int16_t>& source, const std::vector<PointStretch>& stretches,
                                const EventFreeOptions& options) {
    std::vector<int16_t> out;
    const SampleSink sink = [&](std::span<const int16_t> s) {
        out.insert(out.end(), s.begin(), s.end());
        return true;
    };
    EXPECT_TRUE(EliminateStretches(int64_t(source.size()), stretches, ReaderOf(source), sink, options));
    return out;
}

// A flat trace at 100 with +-1 alternating noise (even points -1).
int16_t Clean(int64_t i) { return int16_t(100 + (i % 2 ? 1 : -1)); }

TEST(EventFree, ReplacedStretchContinuesTheBaselineAndItsNoiseAndTheCommandNeedsTheTemplateHeader) {
    // Events on 0..9 and 400..449 of a level 100 with +-1 noise: the stretches come back at
    // that level within the noise (the mirrored donors may meet out of phase), the rest is
    // the source exactly, and the chunk size changes nothing.
    std::vector<int16_t> clean(1000), source(1000);
    for (int64_t i = 0; i < 1000; ++i) clean[std::size_t(i)] = source[std::size_t(i)] = Clean(i);
    for (int64_t i = 0; i < 10; ++i) source[std::size_t(i)] += 300;
    for (int64_t i = 400; i < 450; ++i) source[std::size_t(i)] -= 500;
    const std::vector<PointStretch> stretches{{0, 9}, {400, 449}};
    const std::vector<int16_t> out = Eliminated(source, stretches, {.levelPoints = 10});
    EXPECT_EQ(Eliminated(source, stretches, {.levelPoints = 10, .chunkPoints = 7}), out);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const bool replaced = i < 10 || (i >= 400 && i < 450);
        if (replaced) EXPECT_LE(std::abs(out[i] - 100), 2) << i;
        else EXPECT_EQ(out[i], clean[i]) << i;
    }
    // A refusing sink stops the run.
    const SampleReader read = [&](int64_t, std::span<int16_t> dst) { std::fill(dst.begin(), dst.end(), 0); };
    EXPECT_FALSE(EliminateStretches(1000, stretches, read, [](auto) { return false; }));

    test::TempDir dir;
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "r.abf", std::vector<int16_t>(2048, 0));
    ws.events.Append(Event(100, 5, 5));
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, EventFreeCommand(ws, dialogs, dir.Path())));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, texts::kTemplateMissingText);
}

// The level an event's stretch is measured against, stretches too close to
// join apart, and swings kept out of the noise a donor lends.
TEST(EventFreeLevel, SmallerEventJustBeforeIsTakenInAndTheDecayFollowedToTheLevelBeforeBoth) {
    // Level 0; a small downward event (200, decay 200 points) from 940 that detection
    // passed over, then a detected one (1000, rise 10 to its peak at 1010, decay 50)
    // whose own baseline lies on the small one's decay.
    std::vector<int16_t> trace(3000, 0);
    for (int64_t i = 940; i < 3000; ++i) {
        double v = -200 * std::exp(-double(i - 940) / 200);
        if (i >= 1000) v -= 1000 * (i < 1010 ? double(i - 1000) / 10 : std::exp(-double(i - 1010) / 50));
        trace[std::size_t(i)] = int16_t(std::lround(v));
    }
    EventRecord event = Event(1010, 10, 50, -1);
    event.baseline = -150;
    const DecayTail tail{ReaderOf(trace), 10, 20, 3000};
    EXPECT_NEAR(LevelBefore(event, tail), 0, 1);
    // Back to 940 in windows of 20 from the start at 1000.
    EXPECT_EQ(OnsetPoints(event, tail), 70);
    // The small event's tail is within 10 of 0 from 940 + 200 ln 20 = 1539 on: the
    // first window from the decay point (1060, in steps of 20) whose mean is there.
    EXPECT_EQ(DecayEndPoints(event, tail), 1540 - 1010);
}

TEST(EventFreeLevel, StretchesCloserThanTheGapAreOne) {
    // Flat trace: each stretch is the rise and decay. Windows of 20, so stretches
    // fewer than 4 x 20 points apart are merged when the tail is followed.
    const std::vector<int16_t> trace(2000, 0);
    EventTable events;
    for (int32_t peak : {500, 610, 760}) events.Append(Event(peak, 10, 30, -1));  // 490-530, 600-640, 750-790
    const std::vector<PointStretch> apart{{490, 530}, {600, 640}, {750, 790}};
    const std::vector<PointStretch> joined{{490, 640}, {750, 790}};
    EXPECT_EQ(EventStretches(events, 0, 2000), apart);
    EXPECT_EQ(EventStretches(events, 0, 2000, DecayTail{ReaderOf(trace), 10, 20, 2000}), joined);
}

TEST(EventFreeLevel, ASlowSwingBeforeTheStretchIsNotCopiedIntoIt) {
    // +-3 noise on 0 with a swing of 30 (three noise SDs, below the outlier clip of
    // four) over 70 points that end 30 before the stretch: mirrored at the join it
    // would come back 30 to 100 points into the stretch.
    std::vector<int16_t> source(3000);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = int16_t(i % 2 ? 3 : -3);
    for (std::size_t i = 1400; i < 1470; ++i) source[i] = int16_t(source[i] + 30);
    const std::vector<int16_t> out = Eliminated(source, {{1500, 1999}}, {.levelPoints = 20, .noiseCounts = 10});
    for (std::size_t at = 1500; at + 20 <= 2000; at += 10) {
        double sum = 0;
        for (std::size_t i = at; i < at + 20; ++i) sum += out[i];
        EXPECT_LT(std::abs(sum / 20), 10) << at;
    }
}

// How the replacement meets the trace at its joins, what the donors lend, and
// where an event's stretch begins.
const EventFreeOptions kJoinOptions{.trendHalfPoints = 100};

TEST(EventFreeJoins, ReplacementGoesOnFromTheTraceWithoutAStep) {
    // A trace rising 2 counts a sample with an event on it: the replacement lies on the
    // line. Levels taken as means of the samples beside a join would sit 40 counts off it.
    std::vector<int16_t> line(2000), source(2000);
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = source[i] = int16_t(1000 + 2 * int(i));
    for (std::size_t i = 900; i < 1100; ++i) source[i] = int16_t(source[i] - 500);
    const std::vector<int16_t> out = Eliminated(source, {{880, 1119}}, kJoinOptions);
    ASSERT_EQ(out.size(), line.size());
    for (std::size_t i = 0; i < out.size(); ++i) ASSERT_LE(std::abs(out[i] - line[i]), 1) << i;

    // With a slow swing on the line (period 400, 40 counts), the swing is lent mirrored at
    // each join: the trace steps across neither join by more than it moves between samples.
    std::vector<int16_t> swinging(source);
    for (std::size_t i = 0; i < swinging.size(); ++i)
        swinging[i] = int16_t(swinging[i] + std::lround(40 * std::sin(2 * 3.14159265 * double(i) / 400)));
    const std::vector<int16_t> swung = Eliminated(swinging, {{880, 1119}}, kJoinOptions);
    EXPECT_LE(std::abs(swung[880] - swung[879]), 4);
    EXPECT_LE(std::abs(swung[1120] - swung[1119]), 4);
}

TEST(EventFreeJoins, AnArtefactInADonorIsNotCopied) {
    // +-3 noise on 0 with a 10-point spike of 5000 a hundred points before the stretch and
    // another after it: neither comes back inside the stretch.
    std::vector<int16_t> source(3000);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = int16_t(i % 2 ? 3 : -3);
    for (std::size_t i = 1400; i < 1410; ++i) source[i] = 5000;
    for (std::size_t i = 2100; i < 2110; ++i) source[i] = 5000;
    const std::vector<int16_t> out = Eliminated(source, {{1500, 1999}}, {.trendHalfPoints = 100, .noiseCounts = 3});
    for (std::size_t i = 1500; i < 2000; ++i) ASSERT_LE(std::abs(out[i]), 6) << i;
}

TEST(EventFreeJoins, OnsetReachesBackOverASwing) {
    // A downward event (peak 1000, rise 20) on the fall of an upward artefact that begins
    // at 900: the event's stretch begins with the artefact, where the trace is back at the
    // level before it. On a level trace it begins at the event's own start.
    std::vector<int16_t> artefact(2000, 0), level(2000, 0);
    for (std::size_t i = 900; i < 2000; ++i) artefact[i] = int16_t(std::lround(3000 * std::exp(-(double(i) - 900) / 30)));
    EventRecord event = Event(1000, 20, 30, -1);
    event.baseline = 100;
    EXPECT_EQ(OnsetPoints(event, DecayTail{ReaderOf(artefact), 10, 20, 2000}), 100);
    EXPECT_EQ(OnsetPoints(event, DecayTail{ReaderOf(level), 10, 20, 2000}), 20);
    // An upward event on the same fall: the artefact is no baseline for it either.
    EventRecord up = event;
    up.peakDirection = 1;
    EXPECT_EQ(OnsetPoints(up, DecayTail{ReaderOf(artefact), 10, 20, 2000}), 100);
}

// The event-free file replaces its target as every save does: a private or
// read-only target keeps its mode and a link stays a link (the writer once
// made every target 0644 and replaced a link by a plain file).
namespace fs = std::filesystem;

mode_t Mode(const fs::path& p) {
    struct stat st {};
    return ::lstat(p.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

TEST(EventFreeTarget, ModeAndLinksOfTheReplacedFileAreKept) {
    test::TempDir dir;
    ASSERT_EQ(WriteSynthetic(dir / "s.abf", Synthesise({.seconds = 1})), "");
    AbfError error{};
    const auto rec = Recording::Open(dir / "s.abf", &error);
    ASSERT_TRUE(rec);
    const EventTable none;
    const auto write = [&](const fs::path& target) { return WriteEventFreeAbf(*rec, none, 2.0, 40, target); };
    // Once written, the target holds the source's samples (no event to replace) in its units.
    const auto written = [&](const fs::path& target) {
        const auto out = Recording::Open(target, &error);
        if (!out || out->PointsPerChannel() != rec->PointsPerChannel() || out->IntervalUs() != rec->IntervalUs() ||
            out->Units() != rec->Units())
            return false;
        for (int64_t i = 0; i < rec->PointsPerChannel(); i += 97)
            if (out->Bit2pA(out->Sample(i)) != rec->Bit2pA(rec->Sample(i))) return false;
        return true;
    };

    // The margin in points: 2 ms at 50 us, and no more than the recording.
    EXPECT_EQ(MarginPoints(*rec, 2.0), 40);
    EXPECT_EQ(MarginPoints(*rec, 1e20), rec->PointsPerChannel());
    fs::create_directory(dir / "real");
    for (const mode_t mode : {mode_t(0600), mode_t(0444)}) {
        const fs::path target = dir / "real" / "free.abf";
        fs::remove(target);
        std::ofstream(target) << "old";
        ASSERT_EQ(::chmod(target.c_str(), mode), 0);
        EXPECT_EQ(write(target), "") << mode;
        EXPECT_EQ(Mode(target), mode);
        EXPECT_TRUE(written(target)) << mode;
    }
    fs::remove(dir / "real" / "free.abf");
    std::ofstream(dir / "real" / "free.abf") << "old";
    fs::create_symlink("real/free.abf", dir / "link.abf");
    EXPECT_EQ(write(dir / "link.abf"), "");
    EXPECT_TRUE(fs::is_symlink(dir / "link.abf"));
    EXPECT_TRUE(written(dir / "real" / "free.abf"));
}

using test::OpenShared;

TEST(SynchArray, GapFreeRecordingsAreRefusedAndEpisodicFilesGiveTheirSweepStartsInMs) {
    test::TempDir dir;
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "g.abf", std::vector<int16_t>(1024, 0));
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, SynchArrayCommand(ws, dialogs).status()));
    EXPECT_EQ(dialogs.Messages().back().text, tool_texts::kNotEpisodicText);

    VESS_REQUIRE_SHARED_DATA();
    // Sweep layouts from the data README. 171116sh_0020: 7 sweeps of 200000 points at 50 us.
    ws.recording = OpenShared("abf2/171116sh_0020.abf");
    ASSERT_TRUE(ws.recording);
    dialogs.AnswerInput("2");
    ASSERT_EQ(SynchArrayCommand(ws, dialogs).value(), 2);
    EXPECT_EQ(std::vector<float>(ws.array2.Values().begin(), ws.array2.Values().end()),
              (std::vector<float>{0, 10000, 20000, 30000, 40000, 50000, 60000}));
    EXPECT_TRUE(ws.array1.Empty());
    EXPECT_EQ(dialogs.Messages().back().text, std::string("7") + std::string(tool_texts::kSynchDone) + "2");

    // varlen_v18: sweeps of their own lengths; synch array starts 230260, 487274, ... x 25 us.
    auto varlen = OpenShared("abf1/2009_01_19_0002_varlen_v18.abf");
    ASSERT_TRUE(varlen);
    std::vector<float> expected;
    for (double ms : {5756.5, 12181.85, 19654.05, 29194.1, 36601.8, 43263.55, 49483.1}) expected.push_back(float(ms));
    EXPECT_EQ(SweepStartTimesMs(*varlen), expected);
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
    const SampleReader read = ReaderOf(trace);
    EventRecord event = Event(1000, 10, 48, -1);
    event.amplitude = 1000;
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
    // A tail that never comes back is followed up to the cap: the larger of 20 decay
    // lengths and 50 windows past the decay point.
    std::vector<int16_t> stepped(6000, 0);
    std::fill(stepped.begin() + 990, stepped.end(), int16_t(-300));
    const DecayTail never{ReaderOf(stepped), 20, 20, 6000};
    EXPECT_EQ(DecayEndPoints(Event(1000, 10, 10, -1), never), 10 + 50 * 20);
    EXPECT_EQ(DecayEndPoints(Event(1000, 10, 100, -1), never), 100 + 20 * 100);
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
