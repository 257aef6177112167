#include "detection/editing.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using Rows = std::vector<int32_t>;

EventRecord Event(float timeMs, uint8_t group = 0, int32_t sampleIndex = 0) {
    EventRecord r;
    r.time = timeMs;
    r.group = group;
    r.sampleIndex = sampleIndex;
    r.amplitude = static_cast<int32_t>(timeMs * 10);  // tells records apart
    return r;
}

void Fill(Workspace& ws, const std::vector<EventRecord>& records) {
    ws.events.Clear();
    for (const auto& r : records) ws.events.Append(r);
}

std::vector<int> Groups(const EventTable& table) {
    std::vector<int> g;
    for (const auto& r : table.Records()) g.push_back(r.group);
    return g;
}

std::vector<float> Times(const EventTable& table) {
    std::vector<float> t;
    for (const auto& r : table.Records()) t.push_back(r.time);
    return t;
}

// A workspace with an open recording of 10 blocks at 50 us (12.8 ms a block)
// and 4 blocks a screen.
struct EditingWithRecording : ::testing::Test {
    void SetUp() override {
        const std::vector<int16_t> samples(10 * 256, 0);
        ws.recording = test::MakeRecording(dir / "r.abf", samples, 50);
        ws.settings.DisplayTotalNumberBlockPerScreen = 4;
    }
    test::TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

TEST(EditingGroupEntry, ReadsNumbersAndRefusesEverythingElse) {
    EXPECT_EQ(ParseGroupEntry("0"), 0);
    EXPECT_EQ(ParseGroupEntry(" 7 "), 7);
    EXPECT_EQ(ParseGroupEntry("255"), 255);  // accepted: rejects
    EXPECT_EQ(ParseGroupEntry("2.5"), 2);    // ties to even
    EXPECT_EQ(ParseGroupEntry("3.5"), 4);
    for (const char* bad : {"256", "-1", "255.5", "-0.5", "abc", "12abc", "", "   ", "nan", "inf"})
        EXPECT_EQ(ParseGroupEntry(bad), std::nullopt) << bad;
    EXPECT_EQ(ParseGroupEntry(std::nullopt), std::nullopt);
}

// Each prompt is shown with its exact caption and text, and any entry that is
// out of range, not a number, empty or cancelled leaves every group alone and
// records no undo step.
TEST_F(EditingWithRecording, GroupPromptsAndEntriesThatChangeNothing) {
    struct Prompt {
        const char* caption;
        const char* text;
        std::function<EditResult()> run;
    };
    const std::vector<Prompt> prompts = {
        {"Group Number",
         "Please enter the group number.  (Entering 0 will remove from current group.)",
         [&] { return GroupSelectedEvents(ws, dialogs, Rows{1, 3}); }},
        {"Mark all events as a group",
         "Please enter the group number(range: 0-255) you would like to mark all events.",
         [&] { return GroupAllEvents(ws, dialogs); }},
        {"Mark events in this widnow as a group",
         "Please enter the group number(range: 0-255) you would like to mark events in this "
         "window.",
         [&] { return GroupWindowEvents(ws, dialogs); }},
        {"Unmark Grouped Events",
         "Please enter the group number you would like to unmark.  (Entering 0 will unmark all "
         "the events.)",
         [&] { return UnmarkGroup(ws, dialogs); }},
    };
    Fill(ws, {Event(1, 0, 20), Event(2, 3, 40), Event(3, 255, 60)});
    const EventTable before = ws.events;
    for (const auto& p : prompts) {
        for (std::optional<std::string> entry :
             {std::optional<std::string>("256"), std::optional<std::string>("-1"),
              std::optional<std::string>("abc"), std::optional<std::string>(""),
              std::optional<std::string>()}) {
            dialogs.ClearTranscript();
            dialogs.AnswerInput(entry);
            const EditResult r = p.run();
            ASSERT_EQ(dialogs.Transcript().size(), 1u) << p.caption;
            EXPECT_EQ(dialogs.Transcript()[0].kind, DialogEntry::Kind::Input);
            EXPECT_EQ(dialogs.Transcript()[0].caption, p.caption);
            EXPECT_EQ(dialogs.Transcript()[0].text, p.text);
            EXPECT_FALSE(r.changed);
            EXPECT_EQ(ws.events, before) << p.caption << " with " << entry.value_or("<cancel>");
            EXPECT_FALSE(ws.history.CanUndo());
        }
    }
}

TEST(EditingGroups, SelectedRowsOrTheCurrentEvent) {
    Workspace ws;
    ScriptedDialogs dialogs;
    Fill(ws, {Event(1), Event(2), Event(3), Event(4)});
    ws.selectedEvent = 4;
    // The grid selection wins; rows outside the table and repeats are ignored.
    dialogs.AnswerInput("5");
    EditResult r = GroupSelectedEvents(ws, dialogs, Rows{3, 1, 3, 0, 9});
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{5, 0, 5, 0}));
    EXPECT_EQ(r.regrouped, 2);
    EXPECT_EQ(r.group, 5);
    // No grid selection: the current event.
    dialogs.AnswerInput("255");
    GroupSelectedEvents(ws, dialogs, {});
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{5, 0, 5, 255}));
    // 0 removes from the group.
    dialogs.AnswerInput("0");
    GroupSelectedEvents(ws, dialogs, Rows{1});
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{0, 0, 5, 255}));
    // Giving events the group they already have is no change and no undo step.
    const EventTable before = ws.events;
    ws.history.Clear();
    dialogs.AnswerInput("5");
    r = GroupSelectedEvents(ws, dialogs, Rows{3});
    EXPECT_FALSE(r.changed);
    EXPECT_FALSE(ws.history.CanUndo());
    // Nothing selected: nothing asked.
    ws.selectedEvent = 0;
    dialogs.ClearTranscript();
    r = GroupSelectedEvents(ws, dialogs, {});
    EXPECT_TRUE(dialogs.Transcript().empty());
    EXPECT_EQ(ws.events, before);
}

TEST(EditingGroups, AllEventsUnmarkAndReject) {
    Workspace ws;
    ScriptedDialogs dialogs;
    Fill(ws, {Event(1, 2), Event(2, 3), Event(3, 2), Event(4, 255)});
    dialogs.AnswerInput("2");
    UnmarkGroup(ws, dialogs);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{0, 3, 0, 255}));
    dialogs.AnswerInput("0");  // 0 unmarks every event, rejected ones too
    UnmarkGroup(ws, dialogs);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{0, 0, 0, 0}));
    dialogs.AnswerInput("9");
    EXPECT_EQ(GroupAllEvents(ws, dialogs).regrouped, 4);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{9, 9, 9, 9}));

    ws.selectedEvent = 2;
    RejectEvent(ws);
    ws.selectedEvent = 3;
    UnmarkEvent(ws);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{9, 255, 0, 9}));
    // Rejecting a selection needs an open recording.
    EXPECT_FALSE(RejectSelectedEvents(ws, Rows{1, 4}).changed);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{9, 255, 0, 9}));
}

TEST_F(EditingWithRecording, WindowEventsBySampleIndexOrTime) {
    // The screen of blocks 4..7 holds samples 1024..2047, 51.2 ms up to 102.4 ms at 50 us.
    ws.screenStartBlock = 4;
    Fill(ws, {Event(10, 0, 1023),   // just before the screen
              Event(60, 0, 1024),   // its first sample
              Event(90, 0, 2047),   // its last sample
              Event(110, 0, 2048),  // the next screen
              Event(80, 0, 0),      // no sampleIndex: 80 ms is sample 1600, on screen
              Event(102.4f, 0, 0)});  // sample 2048, off screen
    dialogs.AnswerInput("7");
    const EditResult r = GroupWindowEvents(ws, dialogs);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{0, 7, 7, 0, 7, 0}));
    EXPECT_EQ(r.regrouped, 3);
}

TEST_F(EditingWithRecording, RejectSelectedWithRecording) {
    Fill(ws, {Event(1), Event(2), Event(3)});
    EXPECT_EQ(RejectSelectedEvents(ws, Rows{1, 3}).regrouped, 2);
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{255, 0, 255}));
}

TEST(EditingDuplicates, MessageAlsoForNone) {
    Workspace ws;
    ScriptedDialogs dialogs;
    Fill(ws, {Event(3), Event(1), Event(2)});
    const EditResult none = RemoveDuplicateEvents(ws, dialogs);
    EXPECT_EQ(none.deleted, 0);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, "Found 0 duplicate events and they are safely removed.");
    EXPECT_FALSE(ws.history.CanUndo());
    EXPECT_EQ(Times(ws.events), (std::vector<float>{3, 1, 2}));

    // Only a time equal to the row just before counts; the first of a run stays.
    Fill(ws, {Event(1), Event(1, 4), Event(1, 5), Event(2), Event(1), Event(3), Event(3)});
    dialogs.ClearTranscript();
    const EditResult some = RemoveDuplicateEvents(ws, dialogs);
    EXPECT_EQ(some.deleted, 3);
    EXPECT_EQ(Times(ws.events), (std::vector<float>{1, 2, 1, 3}));
    EXPECT_EQ(Groups(ws.events), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(dialogs.Messages().at(0).text, "Found 3 duplicate events and they are safely removed.");
}

TEST(EditingDeleteRejected, NoneRejectedLeavesTableUnsortedAndNoUndoStep) {
    Workspace ws;
    Fill(ws, {Event(1, 3), Event(2, 1), Event(3, 2)});
    const EventTable before = ws.events;
    EXPECT_FALSE(DeleteRejectedEvents(ws).changed);
    EXPECT_EQ(ws.events, before);
    EXPECT_FALSE(ws.history.CanUndo());
}

TEST(EditingDeleteRejected, CutsEveryRejectedEventAndFollowsTheSelection) {
    Workspace ws;
    Fill(ws, {Event(1, 255), Event(2, 1), Event(3, 255), Event(4, 0), Event(5, 255)});
    ws.selectedEvent = 4;  // the event at 4 ms
    const EditResult r = DeleteRejectedEvents(ws);
    EXPECT_EQ(r.deleted, 3);
    // Sorted by group, the rejected ones gone.
    EXPECT_EQ(Times(ws.events), (std::vector<float>{4, 2}));
    EXPECT_EQ(ws.selectedEvent, 1);
    EXPECT_EQ(ws.events[ws.selectedEvent].time, 4.0f);

    Fill(ws, {Event(1, 255), Event(2, 255)});
    ws.selectedEvent = 2;
    EXPECT_EQ(DeleteRejectedEvents(ws).deleted, 2);
    EXPECT_TRUE(ws.events.Empty());
    EXPECT_EQ(ws.selectedEvent, 0);
}

TEST_F(EditingWithRecording, DeleteSelectedTakesEarlierRejectionsAlong) {
    Fill(ws, {Event(1), Event(2, 255), Event(3, 4), Event(4), Event(5)});
    const EditResult r = DeleteSelectedEvents(ws, Rows{4, 1});
    EXPECT_EQ(r.regrouped, 2);
    EXPECT_EQ(r.deleted, 3);
    std::vector<float> left = Times(ws.events);
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<float>{3, 5}));
    EXPECT_EQ(ws.history.UndoLabel(), "Delete selected events");
    ws.history.Undo(ws.events);
    EXPECT_FALSE(ws.history.CanUndo()) << "one undo step for reject + delete";
}

TEST_F(EditingWithRecording, DeleteSelectedDoesNothingForOneEventOrWithoutRecording) {
    Fill(ws, {Event(1, 255)});
    ws.selectedEvent = 1;
    EXPECT_FALSE(DeleteSelectedEvents(ws, Rows{1}).changed);
    EXPECT_EQ(ws.events.Count(), 1);

    Fill(ws, {Event(1), Event(2)});
    ws.recording.reset();
    EXPECT_FALSE(DeleteSelectedEvents(ws, Rows{1}).changed);
    EXPECT_EQ(ws.events.Count(), 2);
    EXPECT_FALSE(ws.history.CanUndo());
}

TEST(EditingDeleteEvent, TheNextRowBecomesCurrent) {
    Workspace ws;
    Fill(ws, {Event(1), Event(2), Event(3)});
    ws.selectedEvent = 2;
    EXPECT_EQ(DeleteEvent(ws).deleted, 1);
    EXPECT_EQ(Times(ws.events), (std::vector<float>{1, 3}));
    EXPECT_EQ(ws.selectedEvent, 2);
    DeleteEvent(ws);  // the last row: the new last row is current
    EXPECT_EQ(ws.selectedEvent, 1);
    DeleteEvent(ws);
    EXPECT_TRUE(ws.events.Empty());
    EXPECT_EQ(ws.selectedEvent, 0);
    EXPECT_FALSE(DeleteEvent(ws).changed);
}

// Undo brings back the exact table before each command, redo the one after.
TEST_F(EditingWithRecording, UndoAndRedoOfEveryCommand) {
    struct Command {
        const char* label;
        std::optional<std::string> answer;
        std::function<EditResult()> run;
    };
    const std::vector<Command> commands = {
        {"Group selected events", "6", [&] { return GroupSelectedEvents(ws, dialogs, Rows{2, 5}); }},
        {"Group all events", "8", [&] { return GroupAllEvents(ws, dialogs); }},
        {"Group events in window", "9", [&] { return GroupWindowEvents(ws, dialogs); }},
        {"Unmark event", {}, [&] { return UnmarkEvent(ws); }},
        {"Unmark group", "0", [&] { return UnmarkGroup(ws, dialogs); }},
        {"Reject event", {}, [&] { return RejectEvent(ws); }},
        {"Reject selected events", {}, [&] { return RejectSelectedEvents(ws, Rows{1, 6}); }},
        {"Delete event", {}, [&] { return DeleteEvent(ws); }},
        {"Delete selected events", {}, [&] { return DeleteSelectedEvents(ws, Rows{6}); }},
        {"Delete rejected events", {}, [&] { return DeleteRejectedEvents(ws); }},
        {"Remove duplicate events", {}, [&] { return RemoveDuplicateEvents(ws, dialogs); }},
    };
    for (const auto& c : commands) {
        Fill(ws, {Event(5, 1, 100), Event(5, 2, 100), Event(3, 255, 60), Event(9, 3, 180),
                  Event(2, 0, 40), Event(7, 1, 140)});
        ws.selectedEvent = 4;
        ws.history.Clear();
        if (c.answer) dialogs.AnswerInput(c.answer);
        const EventTable before = ws.events;
        ASSERT_TRUE(c.run().changed) << c.label;
        const EventTable after = ws.events;
        ASSERT_NE(after, before) << c.label;
        EXPECT_EQ(ws.history.UndoLabel(), c.label);
        ASSERT_TRUE(ws.history.Undo(ws.events));
        EXPECT_EQ(ws.events, before) << c.label;
        EXPECT_FALSE(ws.history.CanUndo()) << c.label;
        ASSERT_TRUE(ws.history.Redo(ws.events));
        EXPECT_EQ(ws.events, after) << c.label;
    }
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace
}  // namespace vess
