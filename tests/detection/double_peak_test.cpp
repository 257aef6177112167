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

using test::AddEvent;
using test::DoubleExp;

using Fixture = test::TraceWorkspace;

// 1000 counts at 600 and 600 counts on its decay 4 ms later, in one search range.
std::vector<int16_t> DoubleTrace() {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    AddEvent(trace, 680, DoubleExp{10, 100, 600});
    return trace;
}

constexpr int64_t kSecondPeak = 680 + 26;  // onset + peak time of the shape

TEST(DoublePeak, SecondPeakOfTheSelectedEventOrAtAPointOnceAsOneUndoStep) {
    Fixture f(DoubleTrace());
    ScriptedDialogs dialogs;
    ASSERT_EQ(DetectAtPoint(f.ws, 626)->eventIndex, 1);
    ASSERT_NEAR(f.ws.events[1].sampleIndex, 626, 1);
    const EventRecord first = f.ws.events[1];
    f.ws.history.Clear();

    const auto r = AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(r->eventIndex, 2);
    EXPECT_EQ(r->firstIndex, 1);
    ASSERT_EQ(f.ws.events.Count(), 2);
    const EventRecord& second = f.ws.events[2];
    EXPECT_GT(second.sampleIndex, kSecondPeak - 10);
    EXPECT_LE(second.sampleIndex, kSecondPeak);
    // On the first event's baseline, its start the trough between the peaks.
    EXPECT_EQ(second.baseline, first.baseline);
    EXPECT_GT(second.amplitude, 600);
    EXPECT_LT(second.amplitude, 1300);
    EXPECT_GT(second.sampleIndex - second.riseTime, first.sampleIndex);
    EXPECT_EQ(r->marks.size(), 4u);
    EXPECT_TRUE(dialogs.Messages().empty());

    const auto again = AnalyzeDoublePeak(f.ws, 1);
    EXPECT_TRUE(again->alreadyStored);
    EXPECT_EQ(again->eventIndex, 2);
    EXPECT_EQ(f.ws.events.Count(), 2);

    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(f.ws.events.Count(), 1);
    EXPECT_FALSE(f.ws.history.CanUndo());

    // At a clicked point both peaks are stored, as one undo step.
    f.ws.events.Clear();
    const auto both = DetectDoublePeakAtPoint(f.ws, 630);
    ASSERT_EQ(f.ws.events.Count(), 2);
    EXPECT_EQ(std::pair(both->firstIndex, both->eventIndex), std::pair(1, 2));
    EXPECT_LT(f.ws.events[1].sampleIndex, f.ws.events[2].sampleIndex);
    EXPECT_EQ(both->marks.size(), 8u);
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_TRUE(f.ws.events.Empty());
    EXPECT_FALSE(ShowFailure(dialogs, DetectDoublePeakAtPoint(f.ws, 3000).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "No Event Found");
}

TEST(DoublePeak, SingleEventNoSelectionAndOffScreenSaySo) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    AddEvent(trace, 2600, DoubleExp{10, 100, 1000});
    Fixture f(trace);
    ScriptedDialogs dialogs;
    f.ws.settings.blocksPerScreen = 4;  // 1024 points a screen
    AnalyzeCurrentScreen(f.ws, dialogs);
    AnalyzeNextWindow(f.ws, dialogs);
    AnalyzeNextWindow(f.ws, dialogs);
    ASSERT_EQ(f.ws.events.Count(), 2);
    const EventTable before = f.ws.events;

    EXPECT_FALSE(ShowFailure(dialogs, AnalyzeDoublePeak(f.ws, 2).status()));  // on this screen, single
    EXPECT_FALSE(ShowFailure(dialogs, AnalyzeDoublePeak(f.ws, 1).status()));  // on the first screen
    EXPECT_FALSE(ShowFailure(dialogs, AnalyzeDoublePeak(f.ws, 3).status()));  // no such row
    const auto m = dialogs.Messages();
    ASSERT_EQ(m.size(), 3u);
    EXPECT_EQ(m[0].caption, "Double Peak");
    EXPECT_EQ(m[0].text, "No second peak was found after this event.");
    EXPECT_EQ(m[1].caption, "Event Not Shown");
    EXPECT_EQ(m[2].caption, "No Event Selected");
    EXPECT_EQ(f.ws.events, before);
}

// Bumps on the decay (about 75 counts) are second peaks only above the amplitude threshold.
TEST(DoublePeak, BumpsBelowTheThresholdAreNotSecondPeaks) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    for (int i = 660; i <= 740; i += 40)
        for (int k = 0; k < 6; ++k) trace[std::size_t(i + k)] = Clamp16(trace[std::size_t(i + k)] + 80);
    Fixture f(trace);
    ScriptedDialogs dialogs;
    AnalyzeCurrentScreen(f.ws, dialogs);
    ASSERT_EQ(f.ws.events.Count(), 1);
    f.ws.params().ThresholdAmplitude = 100;
    EXPECT_FALSE(ShowFailure(dialogs, AnalyzeDoublePeak(f.ws, 1).status()));
    f.ws.params().ThresholdAmplitude = 5;
    const auto r = AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(r->eventIndex, 2);
    EXPECT_GE(f.ws.events[2].sampleIndex, 660);
}

// A smaller event 60 samples before a large one, which alone is stored: the
// command stores the earlier one before it, its decay ending at the trough.
TEST(DoublePeak, EarlierPeakOnTheRiseIsStoredBeforeItsEvent) {
    std::vector<int16_t> trace(4096, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 300});
    AddEvent(trace, 660, DoubleExp{10, 100, 1000});
    Fixture f(trace);
    ScriptedDialogs dialogs;
    const Screen screen(*f.ws.recording, 0, f.ws.BlocksPerScreen());
    const auto len = ConvertPeriods(f.ws.params(), 50);
    ASSERT_TRUE(len);
    const Detector det(screen, f.ws.params(), *len);
    const auto first = det.Measure({660 + 26, det.GetAverageValue(660 + 26)});
    ASSERT_TRUE(first);
    ASSERT_NEAR(first->peak, 660 + 26, 3);
    f.ws.events.Append(det.MakeRecord(*first));

    const auto r = AnalyzeDoublePeak(f.ws, 1);
    ASSERT_EQ(r->eventIndex, 1);
    EXPECT_EQ(r->firstIndex, 2);
    EXPECT_NEAR(f.ws.events[1].sampleIndex, 600 + 26, 2);
    EXPECT_LE(f.ws.events[1].sampleIndex + f.ws.events[1].decayTime, 660 + 26);
}

TEST(ScanDoublePeaks, InsertsAfterEachEventOnceAndSummarises) {
    std::vector<int16_t> trace(8192, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 1000});
    AddEvent(trace, 680, DoubleExp{10, 100, 600});
    AddEvent(trace, 2600, DoubleExp{10, 100, 800});
    AddEvent(trace, 5100, DoubleExp{10, 100, 900});
    AddEvent(trace, 5170, DoubleExp{10, 100, 700});
    Fixture f(trace);
    ScriptedDialogs dialogs;
    for (const int64_t peak : {626, 2626, 5126}) {
        f.ws.screenStartBlock = int32_t(peak / 1024 * 4);
        ASSERT_GT(DetectAtPoint(f.ws, peak % 1024)->eventIndex, 0) << peak;
    }
    ASSERT_EQ(f.ws.events.Count(), 3);
    f.ws.events[2].group = 255;  // rejected events are not scanned
    f.ws.history.Clear();

    const auto r = ScanDoublePeaks(f.ws, dialogs);
    EXPECT_EQ(r->eventsScanned, 2);
    EXPECT_EQ(r->peaksAdded, 2);
    ASSERT_EQ(f.ws.events.Count(), 5);
    for (int32_t i = 2; i <= 5; ++i)
        EXPECT_LT(f.ws.events[i - 1].sampleIndex, f.ws.events[i].sampleIndex) << i;
    EXPECT_EQ(dialogs.Messages().back().caption, "Scan for Double Peaks");
    EXPECT_EQ(dialogs.Messages().back().text, "2 events scanned; double peaks added: 2.");

    const EventTable after = f.ws.events;
    EXPECT_EQ(ScanDoublePeaks(f.ws, dialogs)->peaksAdded, 0);
    EXPECT_EQ(f.ws.events, after);
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(f.ws.events.Count(), 3);
    EXPECT_FALSE(f.ws.history.CanUndo());
}

// A 4-count event (threshold 5) is found by a click only at a tenth of the
// thresholds; recalculation keeps the group and measures with today's parameters.
TEST(PointCommands, TenthOfTheThresholdsFindsASmallEventAndRecalculationKeepsItsGroup) {
    std::vector<int16_t> trace(2048, 0);
    AddEvent(trace, 600, DoubleExp{10, 100, 4});
    Fixture f(trace);
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, DetectAtPoint(f.ws, 630).status()));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "No Event Found");

    const auto r = DetectAtPoint(f.ws, 630, /*tenthThresholds=*/true);
    ASSERT_EQ(r->eventIndex, 1);
    EXPECT_EQ(f.ws.events[1].amplitude, 4);
    EXPECT_EQ(r->marks.size(), 4u);
    EXPECT_TRUE(f.ws.history.CanUndo());

    f.ws.events[1].group = 7;
    const int16_t decayBefore = f.ws.events[1].decayTime;
    f.ws.params().ThresholdAmplitude = 0.4f;
    f.ws.params().AreaThreshold = 0.1f;
    f.ws.params().DecayPercent = 0.5f;  // the decay point comes earlier
    ASSERT_EQ(RecalculateEvent(f.ws, 1)->eventIndex, 1);
    EXPECT_EQ(f.ws.events[1].group, 7);
    EXPECT_LT(f.ws.events[1].decayTime, decayBefore);
    EXPECT_EQ(f.ws.events.Count(), 1);
    EXPECT_FALSE(ShowFailure(dialogs, RecalculateEvent(f.ws, 2).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "No Event Selected");
}

}  // namespace
}  // namespace vess
