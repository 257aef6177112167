// Double peaks: of a selected event, at a clicked point, and the scan of the
// whole table.
#include <gtest/gtest.h>

#include "detection/double_peak.h"
#include "detection/point_commands.h"
#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::DoubleExp;

// What a window does with a point or double-peak command: its failure shown
// through the dialogs; the event index it stored, 0 when it failed.
template <class T>
int32_t Shown(ScriptedDialogs& dialogs, const Outcome<T>& outcome) {
    ShowFailure(dialogs, outcome.status());
    return outcome ? outcome->eventIndex : 0;
}

constexpr int64_t kSecondPeak = 680 + 26;  // onset + peak time of the shape

// 1000 counts at 600 and 600 counts on its decay 4 ms later, in one search range.
TEST(DoublePeak, SecondPeakOfTheSelectedEventOrAtAPointOnceAsOneUndoStep) {
    test::TraceWorkspace f(test::EventTrace(4096, {{600, DoubleExp{10, 100, 1000}}, {680, DoubleExp{10, 100, 600}}}));
    ASSERT_EQ(Shown(f.dialogs, DetectAtPoint(f.ws, 626)), 1);
    ASSERT_NEAR(f.ws.events[1].sampleIndex, 626, 1);
    const EventRecord first = f.ws.events[1];
    f.ws.history.Clear();
    const DoublePeakResult r = *AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(std::tuple(r.eventIndex, r.firstIndex, f.ws.events.Count()), std::tuple(2, 1, 2));
    const EventRecord& second = f.ws.events[2];
    EXPECT_TRUE(second.sampleIndex > kSecondPeak - 10 && second.sampleIndex <= kSecondPeak) << second.sampleIndex;
    // On the first event's baseline, its start the trough between the peaks.
    EXPECT_EQ(second.baseline, first.baseline);
    EXPECT_TRUE(second.amplitude > 600 && second.amplitude < 1300) << second.amplitude;
    EXPECT_GT(second.sampleIndex - second.riseTime, first.sampleIndex);
    EXPECT_EQ(std::tuple(r.marks.size(), f.dialogs.Messages().size()), std::tuple(4u, 0u));
    const DoublePeakResult again = *AnalyzeDoublePeak(f.ws, 1);
    EXPECT_EQ(std::tuple(again.alreadyStored, again.eventIndex, f.ws.events.Count()), std::tuple(true, 2, 2));
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(std::tuple(f.ws.events.Count(), f.ws.history.CanUndo()), std::tuple(1, false));
    // At a clicked point both peaks are stored, as one undo step.
    f.ws.events.Clear();
    const DoublePeakResult both = *DetectDoublePeakAtPoint(f.ws, 630);
    ASSERT_EQ(f.ws.events.Count(), 2);
    EXPECT_EQ(std::tuple(both.firstIndex, both.eventIndex, both.marks.size()), std::tuple(1, 2, 8u));
    EXPECT_LT(f.ws.events[1].sampleIndex, f.ws.events[2].sampleIndex);
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_TRUE(f.ws.events.Empty());
    EXPECT_EQ(Shown(f.dialogs, DetectDoublePeakAtPoint(f.ws, 3000)), 0);
    EXPECT_EQ(f.dialogs.Messages().back().caption, "No Event Found");
}

TEST(DoublePeak, SingleEventNoSelectionAndOffScreenSaySo) {
    test::TraceWorkspace f(test::EventTrace(4096, {{600, DoubleExp{10, 100, 1000}}, {2600, DoubleExp{10, 100, 1000}}}));
    f.ws.settings.blocksPerScreen = 4;  // 1024 points a screen
    AnalyzeCurrentScreen(f.ws);
    AnalyzeNextWindow(f.ws);
    AnalyzeNextWindow(f.ws);
    ASSERT_EQ(f.ws.events.Count(), 2);
    const EventTable before = f.ws.events;
    EXPECT_EQ(Shown(f.dialogs, AnalyzeDoublePeak(f.ws, 2)), 0);  // on this screen, single
    EXPECT_EQ(Shown(f.dialogs, AnalyzeDoublePeak(f.ws, 1)), 0);  // on the first screen
    EXPECT_EQ(Shown(f.dialogs, AnalyzeDoublePeak(f.ws, 3)), 0);  // no such row
    const auto m = f.dialogs.Messages();
    ASSERT_EQ(m.size(), 3u);
    EXPECT_EQ(m[0].text, "No second peak was found after this event.");
    EXPECT_EQ(std::tuple(m[0].caption, m[1].caption, m[2].caption),
              std::tuple("Double Peak", "Event Not Shown", "No Event Selected"));
    EXPECT_EQ(f.ws.events, before);
}

// Bumps on the decay (about 75 counts) are second peaks only above the amplitude threshold.
TEST(DoublePeak, BumpsBelowTheThresholdAreNotSecondPeaks) {
    std::vector<int16_t> trace = test::EventTrace(4096, {{600, DoubleExp{10, 100, 1000}}});
    for (int i = 660; i <= 740; i += 40)
        for (int k = 0; k < 6; ++k) trace[std::size_t(i + k)] = Clamp16(trace[std::size_t(i + k)] + 80);
    test::TraceWorkspace f(trace);
    AnalyzeCurrentScreen(f.ws);
    ASSERT_EQ(f.ws.events.Count(), 1);
    f.ws.params().ThresholdAmplitude = 100;
    EXPECT_EQ(Shown(f.dialogs, AnalyzeDoublePeak(f.ws, 1)), 0);
    f.ws.params().ThresholdAmplitude = 5;
    const DoublePeakResult r = *AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(r.eventIndex, 2);
    EXPECT_GE(f.ws.events[2].sampleIndex, 660);
}

// A smaller event 60 samples before a large one, which alone is stored: the
// command stores the earlier one before it, its decay ending at the trough.
TEST(DoublePeak, EarlierPeakOnTheRiseIsStoredBeforeItsEvent) {
    test::TraceWorkspace f(test::EventTrace(4096, {{600, DoubleExp{10, 100, 300}}, {660, DoubleExp{10, 100, 1000}}}));
    const Screen screen(*f.ws.recording, 0, f.ws.BlocksPerScreen());
    const auto len = ConvertPeriods(f.ws.params(), 50);
    ASSERT_TRUE(len);
    const Detector det(screen, f.ws.params(), *len);
    const auto first = det.Measure({660 + 26, det.GetAverageValue(660 + 26)});
    ASSERT_TRUE(first);
    ASSERT_NEAR(first->peak, 660 + 26, 3);
    f.ws.events.Append(det.MakeRecord(*first));
    const DoublePeakResult r = *AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(std::tuple(r.eventIndex, r.firstIndex), std::tuple(1, 2));
    EXPECT_NEAR(f.ws.events[1].sampleIndex, 600 + 26, 2);
    EXPECT_LE(f.ws.events[1].sampleIndex + f.ws.events[1].decayTime, 660 + 26);
}

TEST(ScanDoublePeaks, InsertsAfterEachEventOnceAndSummarises) {
    test::TraceWorkspace f(test::EventTrace(8192, {{600, DoubleExp{10, 100, 1000}},
                                      {680, DoubleExp{10, 100, 600}},
                                      {2600, DoubleExp{10, 100, 800}},
                                      {5100, DoubleExp{10, 100, 900}},
                                      {5170, DoubleExp{10, 100, 700}}}));
    for (const int64_t peak : {626, 2626, 5126}) {
        f.ws.screenStartBlock = int32_t(peak / 1024 * 4);
        ASSERT_GT(Shown(f.dialogs, DetectAtPoint(f.ws, peak % 1024)), 0) << peak;
    }
    ASSERT_EQ(f.ws.events.Count(), 3);
    f.ws.events[2].group = 255;  // rejected events are not scanned
    f.ws.history.Clear();
    const DoublePeakScanResult r = *ScanDoublePeaks(f.ws, f.dialogs);
    EXPECT_EQ(std::tuple(r.eventsScanned, r.peaksAdded), std::tuple(2, 2));
    ASSERT_EQ(f.ws.events.Count(), 5);
    for (int32_t i = 2; i <= 5; ++i)
        EXPECT_LT(f.ws.events[i - 1].sampleIndex, f.ws.events[i].sampleIndex) << i;
    EXPECT_EQ(std::tuple(f.dialogs.Messages().back().caption, f.dialogs.Messages().back().text),
              std::tuple("Scan for Double Peaks", "2 events scanned; double peaks added: 2."));
    const EventTable after = f.ws.events;
    EXPECT_EQ(ScanDoublePeaks(f.ws, f.dialogs)->peaksAdded, 0);
    EXPECT_EQ(f.ws.events, after);
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(std::tuple(f.ws.events.Count(), f.ws.history.CanUndo()), std::tuple(3, false));
}

// A 4-count event (threshold 5) is found by a click only at a tenth of the
// thresholds; recalculation keeps the group and measures with today's parameters.
TEST(PointCommands, TenthOfTheThresholdsFindsASmallEventAndRecalculationKeepsItsGroup) {
    test::TraceWorkspace f(test::EventTrace(2048, {{600, DoubleExp{10, 100, 4}}}));
    EXPECT_EQ(Shown(f.dialogs, DetectAtPoint(f.ws, 630)), 0);
    ASSERT_EQ(f.dialogs.Messages().size(), 1u);
    EXPECT_EQ(f.dialogs.Messages()[0].caption, "No Event Found");
    const PointCommandResult r = *DetectAtPoint(f.ws, 630, /*tenthThresholds=*/true);
    ASSERT_EQ(r.eventIndex, 1);
    EXPECT_EQ(std::tuple(f.ws.events[1].amplitude, r.marks.size()), std::tuple(4, 4u));
    EXPECT_TRUE(f.ws.history.CanUndo());
    f.ws.events[1].group = 7;
    const int16_t decayBefore = f.ws.events[1].decayTime;
    f.ws.params().ThresholdAmplitude = 0.4f;
    f.ws.params().AreaThreshold = 0.1f;
    f.ws.params().DecayPercent = 0.5f;  // the decay point comes earlier
    ASSERT_EQ(Shown(f.dialogs, RecalculateEvent(f.ws, 1)), 1);
    EXPECT_EQ(std::tuple(f.ws.events[1].group, f.ws.events.Count()), std::tuple(7, 1));
    EXPECT_LT(f.ws.events[1].decayTime, decayBefore);
    EXPECT_EQ(Shown(f.dialogs, RecalculateEvent(f.ws, 2)), 0);
    EXPECT_EQ(f.dialogs.Messages().back().caption, "No Event Selected");
}

}  // namespace
}  // namespace vess
