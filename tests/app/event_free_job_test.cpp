// The event-free file is written as a job: the window keeps answering, shows
// the progress with Stop and holds off the commands that would change what
// the job reads; Stop leaves the target as it was, a finished run closes with
// the message the command always gave.
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <fstream>

#include "app/gui_fixture.h"
#include "app/job_runner.h"
#include "signal/tool_texts.h"

namespace vess::test {
namespace {

using EventFreeJobTest = GuiTest;

TEST_F(EventFreeJobTest, RunsWithProgressAndStopAndClosesWithTheSavedMessage) {
    // Five minutes of recording: writing the copy and detecting on the
    // recording and on it take about half a second, well past the checks
    // made right after the start (the job's end is applied by the event loop,
    // which does not turn there) and several turns of the progress display.
    ASSERT_EQ(WriteSynthetic(dir / "long.abf", Synthesise({.seconds = 300})), "");
    ASSERT_TRUE(OpenFile(dir / "long.abf"));
    AnalyseUntilEvents(3);
    JobRunner& jobs = window->Jobs();
    const char* const conflicting[] = {"menu_OpenRecording", "menu_OpenEvent", "menu_SaveEvent", "menu_EventFree",
                                       "menu_NoiseMeasures"};

    // Stop over an existing file leaves it as it was (every step and a target
    // that did not exist are the job's own tests).
    const std::filesystem::path target = dir / "free.abf";
    std::ofstream(target, std::ios::binary) << "an older file";
    dialogs.AnswerInput("2").AnswerSaveFile(target.string()).AnswerYesNo(true);  // replace it
    window->Action("menu_EventFree")->trigger();
    ASSERT_TRUE(jobs.Running());
    EXPECT_TRUE(jobs.Bar()->isVisible());
    EXPECT_TRUE(jobs.StopButton()->isEnabled());
    EXPECT_TRUE(jobs.findChild<QLabel*>("lbJobNote")->text().startsWith(tool_texts::kEventFreeMenu.data()));
    for (const char* name : conflicting) EXPECT_FALSE(window->Action(name)->isEnabled()) << name;
    Snapshot("event_free_job");
    jobs.StopButton()->click();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }, 60000));
    EXPECT_TRUE(dialogs.Messages().empty());  // a stopped run says nothing
    EXPECT_EQ(ReadText(target), "an older file");
    EXPECT_FALSE(jobs.Bar()->isVisible());
    for (const char* name : conflicting) EXPECT_TRUE(window->Action(name)->isEnabled()) << name;

    // Run to its end: the closing message names the file. (The steps' progress
    // is checked on the job itself; the bar is polled, so a fast run may end
    // before it moves.)
    double shown = 0;
    QObject::connect(&jobs, &JobRunner::Progressed, window.get(), [&](double done) { shown = std::max(shown, done); });
    dialogs.ClearTranscript();
    dialogs.AnswerInput("2").AnswerSaveFile((dir / "done.abf").string());
    window->Action("menu_EventFree")->trigger();
    // A picture of the window with the bar under way, for looking at.
    WaitFor([&] { return shown > 0.3 || !window->Busy(); }, 60000);
    if (window->Busy()) Snapshot("event_free_job_running");
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }, 60000));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, tool_texts::kEventFreeMenu);
    EXPECT_EQ(dialogs.Messages()[0].text.substr(0, dialogs.Messages()[0].text.find('\n')),
              std::string(tool_texts::kEventFreeSaved) + "done.abf");
    EXPECT_TRUE(std::filesystem::exists(dir / "done.abf"));
}

}  // namespace
}  // namespace vess::test
