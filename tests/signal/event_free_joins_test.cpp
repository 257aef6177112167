// Where an event's stretch begins, how the replacement meets the trace at its
// joins and what the donors lend, and the re-detection on a real recording.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

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

SampleReader ReaderOf(const std::vector<int16_t>& trace) {
    return [&trace](int64_t first, std::span<int16_t> out) {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = trace[std::size_t(first) + k];
    };
}

std::vector<int16_t> Eliminate(const std::vector<int16_t>& source, std::vector<PointStretch> stretches,
                               double noiseCounts) {
    std::vector<int16_t> out;
    EventFreeOptions options;
    options.levelPoints = 40;
    options.trendHalfPoints = 100;
    options.noiseCounts = noiseCounts;
    const SampleSink sink = [&](std::span<const int16_t> s) {
        out.insert(out.end(), s.begin(), s.end());
        return true;
    };
    EXPECT_TRUE(EliminateStretches(int64_t(source.size()), stretches, ReaderOf(source), sink, options));
    return out;
}

TEST(EventFreeJoins, ReplacementGoesOnFromTheTraceWithoutAStep) {
    // A trace rising 2 counts a sample with an event on it: the replacement lies on the
    // line. Levels taken as means of the samples beside a join would sit 40 counts off it.
    std::vector<int16_t> line(2000), source(2000);
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = source[i] = int16_t(1000 + 2 * int(i));
    for (std::size_t i = 900; i < 1100; ++i) source[i] = int16_t(source[i] - 500);
    const std::vector<int16_t> out = Eliminate(source, {{880, 1119}}, 0);
    ASSERT_EQ(out.size(), line.size());
    for (std::size_t i = 0; i < out.size(); ++i) ASSERT_LE(std::abs(out[i] - line[i]), 1) << i;

    // With a slow swing on the line (period 400, 40 counts), the swing is lent mirrored at
    // each join: the trace steps across neither join by more than it moves between samples.
    std::vector<int16_t> swinging(source);
    for (std::size_t i = 0; i < swinging.size(); ++i)
        swinging[i] = int16_t(swinging[i] + std::lround(40 * std::sin(2 * 3.14159265 * double(i) / 400)));
    const std::vector<int16_t> swung = Eliminate(swinging, {{880, 1119}}, 0);
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
    const std::vector<int16_t> out = Eliminate(source, {{1500, 1999}}, 3);
    for (std::size_t i = 1500; i < 2000; ++i) ASSERT_LE(std::abs(out[i]), 6) << i;
}

TEST(EventFreeJoins, OnsetReachesBackOverASwing) {
    // A downward event (peak 1000, rise 20) on the fall of an upward artefact that begins
    // at 900: the event's stretch begins with the artefact, where the trace is back at the
    // level before it. On a level trace it begins at the event's own start.
    std::vector<int16_t> artefact(2000, 0), level(2000, 0);
    for (std::size_t i = 900; i < 2000; ++i) artefact[i] = int16_t(std::lround(3000 * std::exp(-(double(i) - 900) / 30)));
    EventRecord event;
    event.sampleIndex = 1000;
    event.riseTime = 20;
    event.decayTime = 30;
    event.baseline = 100;
    event.peakDirection = -1;
    EXPECT_EQ(OnsetPoints(event, DecayTail{ReaderOf(artefact), 10, 20, 2000}), 100);
    EXPECT_EQ(OnsetPoints(event, DecayTail{ReaderOf(level), 10, 20, 2000}), 20);
    // An upward event on the same fall: the artefact is no baseline for it either.
    EventRecord up = event;
    up.peakDirection = 1;
    EXPECT_EQ(OnsetPoints(up, DecayTail{ReaderOf(artefact), 10, 20, 2000}), 100);
}

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
    ScriptedDialogs dialogs;
    DetectWholeFile(ws, dialogs);
    ASSERT_GT(ws.events.Count(), 600);
    const int64_t level = int64_t(ws.params().PeriodBaselineAverage / ws.recording->IntervalUs());
    ASSERT_EQ(WriteEventFreeAbf(*ws.recording, ws.events, kDefaultEventFreeMarginMs, level, dir / "free.abf"), "");
    const std::optional<int32_t> again = RedetectedEventCount(ws, dir / "free.abf", NoiseLevels::OfSource);
    ASSERT_TRUE(again);
    EXPECT_LE(*again, 3);  // 0.4 %
}

}  // namespace
}  // namespace vess
