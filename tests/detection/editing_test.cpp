#include "detection/editing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using Rows = std::vector<int32_t>;

// The amplitude tells records of equal times apart.
EventRecord Event(float timeMs, uint8_t group = 0, int32_t sampleIndex = 0) {
    return {.time = timeMs, .amplitude = int32_t(timeMs * 10), .group = group, .sampleIndex = sampleIndex};
}

// A recording of 10 blocks at 50 us (12.8 ms a block), 4 blocks a screen.
struct Editing : ::testing::Test {
    Editing() {
        ws.recording = test::MakeRecording(dir / "r.abf", std::vector<int16_t>(10 * 256, 0), 50);
        ws.settings.blocksPerScreen = 4;
    }
    void Fill(const std::vector<EventRecord>& records) {
        ws.events.Clear();
        for (const auto& r : records) ws.events.Append(r);
    }
    // A field of every row, in table order.
    std::vector<double> Column(auto EventRecord::*field) const {
        std::vector<double> v;
        for (const auto& r : ws.events.Records()) v.push_back(double(r.*field));
        return v;
    }
    std::vector<double> Groups() const { return Column(&EventRecord::group); }
    std::vector<double> Times() const { return Column(&EventRecord::time); }
    test::TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

TEST(EditingGroupEntry, ReadsNumbersAndRefusesEverythingElse) {
    const std::pair<const char*, int> good[] = {{"0", 0}, {" 7 ", 7}, {"255", 255}, {"2.5", 2}, {"3.5", 4}};
    for (const auto& [text, group] : good) EXPECT_EQ(ParseGroupEntry(text), group) << text;  // ties to even
    for (const char* bad : {"256", "-1", "255.5", "-0.5", "abc", "12abc", "", "   ", "nan", "inf"})
        EXPECT_EQ(ParseGroupEntry(bad), std::nullopt) << bad;
    EXPECT_EQ(ParseGroupEntry(std::nullopt), std::nullopt);
}

// Each prompt with its exact caption and text; an entry out of range, not a
// number, empty or cancelled changes nothing and records no undo step.
TEST_F(Editing, GroupPromptsAndEntriesThatChangeNothing) {
    const std::tuple<const char*, const char*, std::function<EditResult()>> prompts[] = {
        {"Group Number", "Please enter the group number.  (Entering 0 will remove from current group.)",
         [&] { return GroupSelectedEvents(ws, dialogs, Rows{1, 3}); }},
        {"Mark all events as a group",
         "Please enter the group number(range: 0-255) you would like to mark all events.",
         [&] { return GroupAllEvents(ws, dialogs); }},
        {"Mark events in this widnow as a group",
         "Please enter the group number(range: 0-255) you would like to mark events in this window.",
         [&] { return GroupWindowEvents(ws, dialogs); }},
        {"Unmark Grouped Events",
         "Please enter the group number you would like to unmark.  (Entering 0 will unmark all the events.)",
         [&] { return UnmarkGroup(ws, dialogs); }},
    };
    Fill({Event(1, 0, 20), Event(2, 3, 40), Event(3, 255, 60)});
    const EventTable before = ws.events;
    for (const auto& [caption, text, run] : prompts)
        for (const std::optional<std::string>& entry :
             std::vector<std::optional<std::string>>{"256", "-1", "abc", "", std::nullopt}) {
            SCOPED_TRACE(std::string(caption) + " with " + entry.value_or("<cancel>"));
            dialogs.ClearTranscript();
            dialogs.AnswerInput(entry);
            EXPECT_FALSE(run().changed);
            ASSERT_EQ(dialogs.Transcript().size(), 1u);
            const DialogEntry& asked = dialogs.Transcript()[0];
            EXPECT_TRUE(asked.kind == DialogEntry::Kind::Input && asked.caption == caption) << asked.caption;
            EXPECT_EQ(asked.text, text);
            EXPECT_TRUE(ws.events == before && !ws.history.CanUndo());
        }
}

// The grid selection wins (rows outside the table and repeats ignored), else
// the current event; 0 removes from the group; the same group again is no
// change; nothing selected asks nothing.
TEST_F(Editing, GroupSelectedRowsOrTheCurrentEvent) {
    Fill({Event(1), Event(2), Event(3), Event(4)});
    ws.selectedEvent = 4;
    dialogs.AnswerInput("5");
    const EditResult r = GroupSelectedEvents(ws, dialogs, Rows{3, 1, 3, 0, 9});
    EXPECT_EQ(Groups(), (std::vector<double>{5, 0, 5, 0}));
    EXPECT_EQ(std::tuple(r.regrouped, r.group), std::tuple(2, 5));
    dialogs.AnswerInput("255");
    GroupSelectedEvents(ws, dialogs, {});
    dialogs.AnswerInput("0");
    GroupSelectedEvents(ws, dialogs, Rows{1});
    EXPECT_EQ(Groups(), (std::vector<double>{0, 0, 5, 255}));
    const EventTable before = ws.events;
    ws.history.Clear();
    dialogs.AnswerInput("5");
    EXPECT_EQ((std::tuple{GroupSelectedEvents(ws, dialogs, Rows{3}).changed, ws.history.CanUndo()}),
              std::tuple(false, false));
    ws.selectedEvent = 0;
    dialogs.ClearTranscript();
    GroupSelectedEvents(ws, dialogs, {});
    EXPECT_TRUE(dialogs.Transcript().empty() && ws.events == before);
}

// Unmark one group or (0) all, rejected ones too; group all; reject and
// unmark the current event; rejecting a selection needs a recording.
TEST_F(Editing, AllEventsUnmarkAndReject) {
    Fill({Event(1, 2), Event(2, 3), Event(3, 2), Event(4, 255)});
    dialogs.AnswerInput("2");
    UnmarkGroup(ws, dialogs);
    EXPECT_EQ(Groups(), (std::vector<double>{0, 3, 0, 255}));
    dialogs.AnswerInput("0");
    UnmarkGroup(ws, dialogs);
    EXPECT_EQ(Groups(), (std::vector<double>{0, 0, 0, 0}));
    dialogs.AnswerInput("9");
    EXPECT_EQ(GroupAllEvents(ws, dialogs).regrouped, 4);
    ws.selectedEvent = 2;
    RejectEvent(ws);
    ws.selectedEvent = 3;
    UnmarkEvent(ws);
    EXPECT_EQ(Groups(), (std::vector<double>{9, 255, 0, 9}));
    EXPECT_EQ(RejectSelectedEvents(ws, Rows{1, 4}).regrouped, 2);
    EXPECT_EQ(Groups(), (std::vector<double>{255, 255, 0, 255}));
    ws.recording.reset();
    EXPECT_FALSE(RejectSelectedEvents(ws, Rows{3}).changed);
}

// The screen of blocks 4..7 holds samples 1024..2047 (51.2 to 102.4 ms);
// events without a sampleIndex are placed by their time.
TEST_F(Editing, WindowEventsBySampleIndexOrTime) {
    ws.screenStartBlock = 4;
    Fill({Event(10, 0, 1023), Event(60, 0, 1024), Event(90, 0, 2047), Event(110, 0, 2048),
          Event(80, 0, 0) /* sample 1600 */, Event(102.4f, 0, 0) /* sample 2048 */});
    dialogs.AnswerInput("7");
    EXPECT_EQ(GroupWindowEvents(ws, dialogs).regrouped, 3);
    EXPECT_EQ(Groups(), (std::vector<double>{0, 7, 7, 0, 7, 0}));
}

// Only a time equal to the row just before is a duplicate; the message is
// shown for none too.
TEST_F(Editing, DuplicatesAreEqualTimesInConsecutiveRows) {
    Fill({Event(3), Event(1), Event(2)});
    EXPECT_EQ(RemoveDuplicateEvents(ws, dialogs).deleted, 0);
    EXPECT_EQ(dialogs.Messages().at(0).text, "Found 0 duplicate events and they are safely removed.");
    EXPECT_EQ(std::tuple(ws.history.CanUndo(), Times()), std::tuple(false, std::vector<double>{3, 1, 2}));
    Fill({Event(1), Event(1, 4), Event(1, 5), Event(2), Event(1), Event(3), Event(3)});
    EXPECT_EQ(RemoveDuplicateEvents(ws, dialogs).deleted, 3);
    EXPECT_EQ(std::tuple(Times(), Groups()), std::tuple(std::vector<double>{1, 2, 1, 3}, std::vector<double>(4, 0)));
    EXPECT_EQ(dialogs.Messages().at(1).text, "Found 3 duplicate events and they are safely removed.");
}

// Deleting rejected events sorts by group and follows the selection; with
// none rejected the table stays unsorted and no undo step is made.
TEST_F(Editing, DeleteRejectedSelectedAndCurrentEvents) {
    Fill({Event(1, 3), Event(2, 1), Event(3, 2)});
    const EventTable unsorted = ws.events;
    EXPECT_FALSE(DeleteRejectedEvents(ws).changed);
    EXPECT_TRUE(ws.events == unsorted && !ws.history.CanUndo());
    Fill({Event(1, 255), Event(2, 1), Event(3, 255), Event(4, 0), Event(5, 255)});
    ws.selectedEvent = 4;  // the event at 4 ms
    EXPECT_EQ(DeleteRejectedEvents(ws).deleted, 3);
    EXPECT_EQ(std::tuple(Times(), ws.selectedEvent), std::tuple(std::vector<double>{4, 2}, 1));
    Fill({Event(1, 255), Event(2, 255)});
    ws.selectedEvent = 2;
    EXPECT_EQ((std::tuple{DeleteRejectedEvents(ws).deleted, ws.selectedEvent}), std::tuple(2, 0));  // braces: in order
    // Deleting one event makes the next row current.
    Fill({Event(1), Event(2), Event(3)});
    ws.selectedEvent = 2;
    EXPECT_EQ(DeleteEvent(ws).deleted, 1);
    EXPECT_EQ(Times(), (std::vector<double>{1, 3}));
    // The next row, then from the last row the new last row, then none.
    std::vector<int32_t> selected{ws.selectedEvent};
    for (int i = 0; i < 5 && DeleteEvent(ws).changed; ++i) selected.push_back(ws.selectedEvent);
    EXPECT_EQ(selected, (std::vector<int32_t>{2, 1, 0}));
    // Deleting a selection takes earlier rejections along in one undo step; one event or no recording: nothing.
    Fill({Event(1), Event(2, 255), Event(3, 4), Event(4), Event(5)});
    const EditResult r = DeleteSelectedEvents(ws, Rows{4, 1});
    EXPECT_EQ(std::tuple(r.regrouped, r.deleted), std::tuple(2, 3));
    std::vector<double> left = Times();
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<double>{3, 5}));  // one undo step: UndoAndRedoOfEveryCommand
    Fill({Event(1, 255)});
    ws.selectedEvent = 1;
    EXPECT_FALSE(DeleteSelectedEvents(ws, Rows{1}).changed);
    Fill({Event(1), Event(2)});
    ws.recording.reset();
    EXPECT_EQ((std::tuple{DeleteSelectedEvents(ws, Rows{1}).changed, ws.events.Count()}), std::tuple(false, 2));
}

// Undo brings back the exact table before each command, redo the one after.
TEST_F(Editing, UndoAndRedoOfEveryCommand) {
    const std::tuple<const char*, std::optional<std::string>, std::function<EditResult()>> commands[] = {
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
    for (const auto& [label, answer, run] : commands) {
        SCOPED_TRACE(label);
        Fill({Event(5, 1, 100), Event(5, 2, 100), Event(3, 255, 60), Event(9, 3, 180), Event(2, 0, 40),
              Event(7, 1, 140)});
        ws.selectedEvent = 4;
        ws.history.Clear();
        if (answer) dialogs.AnswerInput(answer);
        const EventTable before = ws.events;
        ASSERT_TRUE(run().changed);
        const EventTable after = ws.events;
        ASSERT_NE(after, before);
        EXPECT_EQ(ws.history.UndoLabel(), label);
        ASSERT_TRUE(ws.history.Undo(ws.events));
        EXPECT_TRUE(ws.events == before && !ws.history.CanUndo());
        ASSERT_TRUE(ws.history.Redo(ws.events));
        EXPECT_EQ(ws.events, after);
    }
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace
}  // namespace vess
