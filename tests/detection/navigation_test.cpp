#include "detection/navigation.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess {
namespace {

EventRecord Event(float timeMs, int32_t sampleIndex, uint8_t group = 0) {
    return {.time = timeMs, .group = group, .sampleIndex = sampleIndex};
}

// 10 blocks at 50 us: a block is 12.8 ms, the data end at 128 ms.
struct NavigationView : ::testing::Test {
    NavigationView() {
        ws.recording = test::MakeRecording(dir / "r.abf", std::vector<int16_t>(10 * 256, 0), 50);
        ws.settings.blocksPerScreen = 4;
    }
    bool Go(NavCommand c) {
        const NavResult r = Navigate(ws, c);
        ApplyNavigation(ws, r);
        return r.moved;
    }
    // A command, whether it moves, the selected row and first block after it (-1: not checked).
    struct Step {
        NavCommand command;
        bool moved;
        int32_t selected = -1, screen = -1;
    };
    void Walk(std::initializer_list<Step> steps) {
        int n = 0;
        for (const Step& s : steps) {
            EXPECT_EQ(Go(s.command), s.moved) << "step " << ++n;
            EXPECT_TRUE(s.selected < 0 || ws.selectedEvent == s.selected) << "step " << n << ": " << ws.selectedEvent;
            EXPECT_TRUE(s.screen < 0 || ws.screenStartBlock == s.screen) << "step " << n << ": " << ws.screenStartBlock;
        }
    }
    void Fill(const std::vector<EventRecord>& records) {
        ws.events.Clear();
        for (const auto& r : records) ws.events.Append(r);
    }
    test::TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

TEST_F(NavigationView, ScreensStopAtBothEnds) {
    using enum NavCommand;
    Walk({{PrevScreen, false}, {FirstScreen, false}, {NextScreen, true, -1, 4},
          {NextScreen, true, -1, 8},  // the last, partly filled screen
          {NextScreen, false, -1, 8}, {FirstScreen, true}, {LastScreen, true, -1, 8},
          {PrevScreen, true, -1, 4}});
    // Off the tiling: whole screens, never past the data.
    ws.screenStartBlock = 6;
    Walk({{NextScreen, false}, {PrevScreen, true, -1, 2}, {PrevScreen, true, -1, 0}});
    // Next time interval moves at least one screen.
    ws.settings.blocksPerScreen = 1;
    ws.settings.jumpIntervalMs = 20;  // 20 ms: block 1; 12.8 + 20 = 32.8 ms: block 2
    Walk({{NextTimeInterval, true, -1, 1}, {NextTimeInterval, true, -1, 2}});
    ws.settings.jumpIntervalMs = 5;  // shorter than a screen
    Walk({{NextTimeInterval, true, -1, 3}});
    ws.screenStartBlock = 9;
    Walk({{NextTimeInterval, false}});  // past the data
    ws.settings.jumpIntervalMs = 0;
    ws.screenStartBlock = 0;
    Walk({{NextTimeInterval, false}});
    ws.recording.reset();
    ws.screenStartBlock = 4;
    Walk({{FirstScreen, false, -1, 4}, {NextScreen, false, -1, 4}, {LastScreen, false, -1, 4}});
}

// Time order against grid-row order: the table below is not sorted by time.
TEST_F(NavigationView, EventsInTimeOrderAndInSequence) {
    Fill({Event(110, 2200), Event(10, 200), Event(60, 1200), Event(60, 1200)});
    using enum NavCommand;
    Walk({{FirstEvent, true, 2, 0}, {NextEvent, true, 3, 4},
          {NextEvent, true, 4},  // equal times: by row
          {NextEvent, true, 1, 8}, {NextEvent, false, 1},  // the end: stay
          {PrevEvent, true, 4}, {PrevEvent, true, 3}, {LastEvent, true, 1},
          {FirstInSequence, false}});  // already on row 1 and its screen
    ws.selectedEvent = 3;
    ws.screenStartBlock = 4;
    Walk({{FirstInSequence, true, 1, 8}, {PrevInSequence, false}, {NextInSequence, true, 2, 0},
          {LastInSequence, true, 4}, {NextInSequence, false}, {PrevInSequence, true, 3}});
    ws.events.Clear();
    ws.selectedEvent = 0;
    Walk({{FirstEvent, false}, {NextEvent, false}, {LastInSequence, false}, {NextInSequence, false},
          {FirstGrouped, false}});
    // Next event in the next window skips screens without events (screens 2..3 and 4..5).
    ws.settings.blocksPerScreen = 2;
    Fill({Event(100, 2000), Event(5, 100), Event(20, 400)});
    ws.selectedEvent = 2;
    Walk({{NextEventInNextWindow, true, 1, 6}, {NextEventInNextWindow, false, -1, 6}});
    // Without a selection (or one past the table) the walk starts from the screen shown; 70 ms
    // without a sampleIndex is sample 1400.
    Fill({Event(5, 100), Event(70, 0), Event(120, 2400)});
    const std::tuple<int32_t, NavCommand, int32_t> cases[] = {
        {4, NextEvent, 2}, {4, PrevEvent, 2}, {8, PrevEvent, 3}, {0, NextInSequence, 1}};
    for (const auto& [screen, command, selected] : cases) {
        ws.selectedEvent = command == NextInSequence ? 9 : 0;
        ws.screenStartBlock = screen;
        EXPECT_EQ((std::tuple{Go(command), ws.selectedEvent}), std::tuple(true, selected)) << screen;
    }
}
TEST_F(NavigationView, GroupedEventsAllGroupsOrOne) {
    Fill({Event(10, 200, 2), Event(20, 400, 0), Event(30, 600, 1), Event(40, 800, 255),
          Event(50, 1000, 2)});
    using enum NavCommand;
    ws.settings.navigationGroup = 0;  // all groups; rejected events have a group too
    Walk({{FirstGrouped, true, 1}, {NextGrouped, true, 3}, {NextGrouped, true, 4},
          {LastGrouped, true, 5}, {NextGrouped, false}});
    ws.settings.navigationGroup = 2;
    Walk({{PrevGrouped, true, 1}, {PrevGrouped, false}});
    ws.selectedEvent = 2;  // from an ungrouped event
    Walk({{NextGrouped, true, 5}});
    ws.settings.navigationGroup = 7;
    Walk({{FirstGrouped, false}});
    ws.settings.navigationGroup = 300;
    EXPECT_EQ(GroupNavigationFilter(ws.settings), 0);
}
// Jump to a time: the screen holding it (12.79 ms is sample 255.8, rounded
// to 256, block 1; 12.77 ms rounds to 255); to an event number: its row and screen.
TEST_F(NavigationView, JumpsShowTheScreenHoldingTheTimeOrEvent) {
    const std::tuple<const char*, int32_t, int32_t> times[] = {
        {"20", 1, 1}, {"12.79", 1, 1}, {"12.77", 1, 0}, {" 20 ", 4, 0}};
    for (const auto& [entry, blocks, screen] : times) {
        ws.settings.blocksPerScreen = blocks;
        ws.screenStartBlock = 8;
        dialogs.AnswerInput(entry);
        const NavResult r = *JumpToTime(ws, dialogs);
        EXPECT_EQ(std::tuple(r.moved, r.screenStartBlock), std::tuple(true, screen)) << entry;
    }
    EXPECT_EQ(std::tuple(dialogs.Transcript()[0].caption, dialogs.Transcript()[0].text),
              std::tuple("Jump To", "Please specify the time to jump to in milli second."));
    dialogs.ClearTranscript();
    EXPECT_FALSE(ShowFailure(dialogs, JumpToEventNumber(ws, dialogs).status()));  // empty table: told, not asked
    EXPECT_TRUE(dialogs.Transcript().at(0).kind == DialogEntry::Kind::Message);
    EXPECT_EQ(dialogs.Transcript()[0].text, "There are no events to jump to.");
    Fill({Event(10, 200), Event(100, 2000), Event(50, 1000)});
    dialogs.ClearTranscript();
    dialogs.AnswerInput("2");
    const NavResult r = *JumpToEventNumber(ws, dialogs);
    EXPECT_EQ(std::tuple(dialogs.Transcript()[0].caption, dialogs.Transcript()[0].text),
              std::tuple("Jump To Event Number", "Please specify the event number to jump to."));
    EXPECT_EQ(std::pair(r.selectedEvent, r.screenStartBlock), std::pair(2, 4));  // sample 2000: block 7
}

// Entries outside the data or not numbers move nothing and say why; a
// cancelled entry says nothing.
TEST_F(NavigationView, JumpsRefuseEntriesOutsideTheData) {
    Fill({Event(10, 200), Event(100, 2000), Event(50, 1000)});
    ws.screenStartBlock = 8;
    const char* outside = "is outside the data.  Please specify a time from 0 to 128 milli second.";
    const std::tuple<bool, const char*, std::string> cases[] = {
        {true, "128", std::string("The time 128 ") + outside},
        {true, "-1", std::string("The time -1 ") + outside},
        {true, "abc", "The time must be a number.  Please specify the time in milli second."},
        {false, "4", "There is no event number 4.  Please specify a number from 1 to 3."},
        {false, "abc", "There is no event number abc.  Please specify a number from 1 to 3."},
        {false, "0", ""}, {false, "1.5", ""}};
    for (const auto& [time, entry, message] : cases) {
        SCOPED_TRACE(entry);
        dialogs.ClearTranscript();
        dialogs.AnswerInput(entry);
        const auto r = time ? JumpToTime(ws, dialogs) : JumpToEventNumber(ws, dialogs);
        EXPECT_FALSE(ShowFailure(dialogs, r.status()));
        ASSERT_EQ(dialogs.Messages().size(), 1u);
        EXPECT_EQ(dialogs.Messages()[0].caption, time ? "Jump To" : "Jump To Event Number");
        if (!message.empty()) { EXPECT_EQ(dialogs.Messages()[0].text, message); }
    }
    dialogs.ClearTranscript();
    dialogs.AnswerInput(std::nullopt);
    EXPECT_TRUE(JumpToTime(ws, dialogs).cancelled());
    EXPECT_TRUE(dialogs.Messages().empty());
}
TEST(NavigationDisplayScale, GainLadderOffsetAndSettings) {
    DisplayScale s;
    const std::vector<double> up = {1.25, 1.6, 2, 2.5, 3.2, 4, 5, 6.4, 8, 10, 12.5};
    for (double expected : up) {
        s = StepDisplay(s, DisplayStep::IncreaseGain);
        EXPECT_DOUBLE_EQ(s.gain, expected);
    }
    for (int i = 0; i < 12; ++i) s = StepDisplay(s, DisplayStep::DecreaseGain);
    EXPECT_EQ(s.gain, 0.8);  // exactly back past 1
    // A gain between rungs moves to the next rung either way.
    // Beyond the ladder the gain stays.
    using enum DisplayStep;
    EXPECT_EQ(std::tuple(StepDisplay({3, 0}, IncreaseGain).gain, StepDisplay({3, 0}, DecreaseGain).gain,
                         StepDisplay({1000, 0}, IncreaseGain).gain, StepDisplay({0.01, 0}, DecreaseGain).gain),
              std::tuple(3.2, 2.5, 1000.0, 0.01));
    // Offset: a tenth of the visible span, 65536 / 10 = 6553.6 -> 6554 counts at gain 1.
    EXPECT_EQ(std::tuple(StepDisplay({1, 0}, DisplayStep::IncreaseOffset).offsetCounts,
                         StepDisplay({2, 100}, DisplayStep::DecreaseOffset).offsetCounts),
              std::tuple(6554, 100 - 3277));
    const VisibleCounts v = VisibleRange({2, 1000}, 0);  // a larger offset moves the trace up
    EXPECT_EQ(std::tuple(v.bottomCounts, v.topCounts), std::tuple(-16384 - 1000, 16384 - 1000));
    Settings settings;
    StoreDisplayScale(settings, {0.16, -7});
    EXPECT_EQ(std::tuple(settings.displayGain, settings.displayOffsetCounts), std::tuple(0.16, -7));
    settings.displayGain = -2;  // not positive
    EXPECT_EQ(DisplayScaleFromSettings(settings).gain, 1.0);
}

}  // namespace
}  // namespace vess
