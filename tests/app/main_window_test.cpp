// The main window's review loop from the file list and the keys: analysis,
// steps and jumps, edits and undo, non-stop, the beep, closing questions.
#include <unistd.h>

#include "app/qt_dialogs.h"
#include "detection/navigation.h"
#include "detection/ui/event_sound.h"
#include "detection/ui/texts.h"
#include "gui_fixture.h"
#include "recording/event_file.h"
#include "recording/texts.h"

namespace vess::test {
namespace {

TEST_F(GuiTest, FileListOpensTheRecordingAndKeysAnalyseAndStep) {
    OpenSample();
    EXPECT_EQ(ws.screenStartBlock, 0);
    AnalyseUntilEvents(3);
    // The grid shows exactly the table, the last row current after analysis.
    EXPECT_EQ(GridRows(), ws.events.Count());
    EXPECT_EQ(GridCurrentRow(), ws.events.Count() - 1);

    // Screen steps, then event jumps that select the event, its grid row
    // and its screen.
    const int32_t bps = ws.BlocksPerScreen(), n = ws.events.Count();
    for (auto [key, start] : {std::pair{'a', 0}, {'d', bps}, {'s', 0}, {'f', GeometryOf(ws).LastScreenStart()}}) {
        Type(key);
        EXPECT_EQ(ws.screenStartBlock, start) << key;
    }
    for (auto [key, event] : {std::pair{'z', 1}, {'c', 2}, {'v', n}, {'x', n - 1}}) {
        Type(key);
        EXPECT_EQ(ws.selectedEvent, event) << key;
        EXPECT_EQ(GridCurrentRow(), event - 1) << key;
        EXPECT_EQ(ws.screenStartBlock, GeometryOf(ws).ScreenOfSample(
                                           EventSamplePosition(ws.events[event], ws.recording->IntervalUs())))
            << key;
    }

    // A grid row chosen by the user becomes the selected event on the trace;
    // so does an event right-clicked on its peak.
    window->Grid()->setCurrentIndex(window->Grid()->model()->index(0, 3));
    EXPECT_EQ(ws.selectedEvent, 1);
    ws.selectedEvent = 0;
    ClickEvent(1, Qt::RightButton, Qt::NoModifier);
    EXPECT_EQ(ws.selectedEvent, 1);

    // T and Y jump to the time and the event number typed.
    dialogs.AnswerInput("3000").AnswerInput("2");
    Type('t');
    EXPECT_EQ(ws.screenStartBlock, GeometryOf(ws).ScreenOfSample(TimeToSample(3000, ws.recording->IntervalUs())));
    Type('y');
    EXPECT_EQ(ws.selectedEvent, 2);
    EXPECT_EQ(GridCurrentRow(), 1);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(GuiTest, DeleteRedetectRejectGroupAndUndoFromKeysAndMouse) {
    OpenSample();
    AnalyseUntilEvents(3);
    const EventTable before = ws.events;
    const int32_t n = ws.events.Count();

    // Ctrl+click on an event's peak deletes it; a left click there detects
    // it again, measured as analysis measured it.
    Type('z');
    const int64_t peak = *window->Trace()->PeakIndexOf(before[1]);
    ClickEvent(1, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_EQ(GridRows(), n - 1);
    EXPECT_EQ(ws.events[1], before[2]);
    ClickTrace(peak);
    ASSERT_EQ(GridRows(), n);
    EXPECT_EQ(ws.selectedEvent, n);  // added at the end, selected
    EXPECT_EQ(ws.events[n].time, before[1].time);
    EXPECT_EQ(ws.events[n].amplitude, before[1].amplitude);

    // J rejects the selected event.
    Type('z');
    Type('j');
    EXPECT_EQ(ws.events[ws.selectedEvent].group, kGroupRejected);

    // Shift+N groups every event with the number typed.
    dialogs.AnswerInput("7");
    Key(Qt::Key_N, Qt::ShiftModifier);
    for (int32_t k = 1; k <= ws.events.Count(); ++k) EXPECT_EQ(ws.events[k].group, 7);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Mark all events as a group");

    // Undo four times gives back the analysed table; redo moves forward.
    EXPECT_TRUE(window->Action("menu_Undo")->isEnabled());
    for (int i = 0; i < 4; ++i) Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(ws.events, before);
    EXPECT_EQ(GridRows(), n);
    Key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(ws.events.Count(), n - 1);

    // Points at peak changed over events asks to save and reset; No keeps
    // the events and puts the old value back in the box.
    auto* combo = window->PointsAtPeakBox();
    dialogs.AnswerYesNo(false);
    combo->setCurrentIndex(2);
    emit combo->activated(2);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Save and Reset");
    EXPECT_EQ(ws.params().NumberPointsPeak, 1);
    EXPECT_EQ(combo->currentIndex(), 0);
    EXPECT_EQ(ws.events.Count(), n - 1);
}

// Non-stop analysis over the whole file, right after opening or after F9
// on the first screen (whose events stay, the rest added), finds exactly the
// events of the core's whole-file detection (the one the command line uses).
TEST_F(GuiTest, NonStopFindsTheEventsOfWholeFileDetection) {
    OpenSample();
    const EventTable reference = WholeFileEvents();
    ASSERT_GT(reference.Count(), 10);
    for (bool afterF9 : {false, true}) {
        SCOPED_TRACE(afterF9);
        if (afterF9) {
            ws.events.Clear();
            Type('a');
            Key(Qt::Key_F9);
            dialogs.AnswerYesNoCancel(Answer::No);
        }
        Key(Qt::Key_F11);
        EXPECT_TRUE(window->NonStopRunning());
        EXPECT_FALSE(window->Action("menu_Analyze")->isEnabled());
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 60000));
        EXPECT_EQ(GridRows(), ws.events.Count());
        EXPECT_EQ(ws.screenStartBlock, GeometryOf(ws).LastScreenStart());
        EXPECT_EQ(ws.events, reference);
    }
}

// The beep follows ckSoundOn and sounds for events stored by any command,
// the non-stop analysis included.
TEST_F(GuiTest, StoredEventsBeepWhileTheSoundIsOnNonStopIncluded) {
    OpenSample();
    int beeps = 0;
    window->Sound().SetBeep([&] { ++beeps; });
    auto* sound = window->findChild<QCheckBox*>("ckSoundOn");
    ASSERT_FALSE(sound->isChecked());
    AnalyseUntilEvents(1);
    EXPECT_EQ(beeps, 0);

    sound->click();
    ASSERT_TRUE(ws.settings.soundOn);
    window->Trace()->setFocus();
    dialogs.AnswerYesNoCancel(Answer::No);
    Key(Qt::Key_F11);
    ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 60000));
    EXPECT_GE(beeps, 1);  // the pacing itself is the core pacer's
}

TEST_F(GuiTest, F12StopsNonStopBetweenScreens) {
    OpenSample();
    Key(Qt::Key_F11);
    ASSERT_TRUE(window->NonStopRunning());
    Key(Qt::Key_F12);
    EXPECT_FALSE(window->NonStopRunning());
    EXPECT_LT(ws.screenStartBlock, GeometryOf(ws).LastScreenStart());
    EXPECT_TRUE(window->Action("menu_Analyze")->isEnabled());
}

// Events saved at the exit question are saved even when the settings
// question then cancels the exit: the title loses its "*".
TEST_F(GuiTest, ClosingAsksAboutUnsavedEventsAndSettings) {
    OpenSample();
    AnalyseUntilEvents(1);
    ASSERT_TRUE(window->windowTitle().contains('*'));
    // Cancel at the events question keeps the window open.
    dialogs.AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(dialogs.Transcript().back().caption, "Save Previous Event Data");
    // No to the events, Cancel at the settings question: still open.
    dialogs.AnswerYesNoCancel(Answer::No).AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(window->close());
    EXPECT_EQ(dialogs.Transcript().back().caption, "Save Settings");
    const std::string evt = (dir / "saved.EVT").string();
    dialogs.AnswerYesNoCancel(Answer::Yes).AnswerSaveFile(evt).AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(std::filesystem::exists(evt));
    EXPECT_FALSE(window->windowTitle().contains('*')) << window->windowTitle().toStdString();
    // Yes to the settings: the settings file is written and the window closes.
    dialogs.AnswerYesNoCancel(Answer::Yes);
    EXPECT_TRUE(window->close());
    EXPECT_TRUE(std::filesystem::exists(ws.iniPath));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST(QtFilter, ProgramFiltersBecomeQtFiltersInEitherCase) {
    for (auto [filter, qt] : {std::pair{"Event File (*.EVT)", "Event File (*.EVT *.evt)"},
                              {"Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT",
                               "Parameter File (*.PAR *.par);;Event File (*.EVT *.evt)"}})
        EXPECT_EQ(ToQtFilter(filter), qt) << filter;
}

// The recording is cut short on disk while events are under review: the
// window says so once, keeps the events and offers to save them.
TEST_F(GuiTest, ARecordingCutShortWhileOpenKeepsTheEventsAndOffersToSave) {
    OpenSample();
    AnalyseUntilEvents(3);
    const EventTable events = ws.events;
    ASSERT_EQ(::truncate(abfPath.c_str(), 8192), 0);
    dialogs.ClearTranscript();
    dialogs.AnswerYesNo(true).AnswerSaveFile((dir / "rescued.EVT").string());
    Type('f');  // the last screen, long gone from the file
    ASSERT_TRUE(WaitFor([&] { return dialogs.AllAnswersUsed(); }));
    EXPECT_EQ(dialogs.Transcript().front().caption, texts::kReadFaultCaption);
    EXPECT_EQ(ws.events, events);
    EXPECT_TRUE(ReadEventFile(dir / "rescued.EVT").Ok());
    // Told once: further screens say nothing more.
    Type('s');
    Type('d');
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }));
    EXPECT_EQ(dialogs.Transcript().size(), 2u);
}

}  // namespace
}  // namespace vess::test
