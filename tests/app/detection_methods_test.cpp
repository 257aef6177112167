// The detection method chosen on the main window reaches the keys, non-stop,
// the suggestion, the learned kernel and the accuracy check's job; the
// methods themselves are checked in tests/detection.
#include <QStatusBar>

#include "app/gui_fixture.h"
#include "detection/detection_start.h"
#include "detection/method_texts.h"
#include "detection/ui/accuracy_window.h"
#include "recording/event_file.h"
#include "recording/settings_file.h"
#include "support/run_vess.h"

namespace vess::test {
namespace {

class MethodGuiTest : public GuiTest {
protected:
    // Picks the method in the "Detection method" box with the keyboard.
    void ChooseDeconvolution() {
        auto* box = window->findChild<QComboBox*>("cbDetectionMethod");
        ASSERT_NE(box, nullptr);
        box->setFocus();
        ASSERT_EQ(box->currentText(), "threshold");
        QTest::keyClick(box, Qt::Key_Down);
        ASSERT_EQ(box->currentText(), "deconvolution");
    }
    // Deconvolution with its suggested settings on the sample, then the
    // accuracy check started from the menu; its window, or null.
    AccuracyWindow* StartAccuracyCheck() {
        OpenSample();
        ChooseDeconvolution();
        Trigger("menu_SuggestFromRecording");
        Trigger("menu_CheckAccuracy");
        return window->findChild<AccuracyWindow*>("frmAccuracy");
    }
    bool LastMessageIs(const char* caption) const {
        const auto messages = dialogs.Messages();
        return !messages.empty() && messages.back().caption == caption;
    }
};

// The accuracy check's table and plot; stopped, closed or left behind by the
// main window mid-run, a check ends without a table of its own: the window
// keeps the last finished check and can run the next one.
TEST_F(MethodGuiTest, AccuracyCheckShowsItsTableAndStopsCleanly) {
    auto* check = StartAccuracyCheck();
    ASSERT_NE(check, nullptr);
    // The check runs on its own thread: the window shows at once with the
    // progress bar and the Stop button, the table when the check ends.
    EXPECT_TRUE(check->Running());
    EXPECT_TRUE(check->StopButton()->isVisible());
    EXPECT_EQ(check->Table()->rowCount(), 0);
    ASSERT_TRUE(WaitFor([&] { return !check->Running(); }, 60000));
    EXPECT_FALSE(check->StopButton()->isVisible());
    const QTableWidget* table = check->Table();
    const int rows = table->rowCount();
    ASSERT_EQ(rows, AccuracyOptions{}.bins);
    // The plot in the graph frame shows the table's recall per bin.
    const double topRecallValue = table->item(rows - 1, 4)->text().toDouble();
    ASSERT_NE(CurrentGraphFrame(), nullptr);
    const PlotData& plot = CurrentGraphFrame()->Plots().back()->Description();
    ASSERT_EQ(int(plot.series.at(0).y.size()), rows);
    EXPECT_DOUBLE_EQ(plot.series[0].y.back(), topRecallValue);
    const QString finished = check->Summary();

    // Stop: asked while it runs, the check ends as stopped.
    Trigger("menu_CheckAccuracy");
    ASSERT_TRUE(check->Running());
    QTest::mouseClick(check->StopButton(), Qt::LeftButton);
    EXPECT_EQ(check->Status(), method_texts::kCheckStopping);
    EXPECT_FALSE(check->StopButton()->isEnabled());
    ASSERT_TRUE(WaitFor([&] { return !check->Running(); }, 60000));
    EXPECT_EQ(check->Status(), method_texts::kCheckStopped);
    EXPECT_EQ(check->Summary(), finished);
    EXPECT_EQ(check->Table()->rowCount(), rows);

    // Closing the window (Escape) stops the check too; the main window goes on.
    Trigger("menu_CheckAccuracy");
    ASSERT_TRUE(check->Running());
    QTest::keyClick(check, Qt::Key_Escape);
    EXPECT_FALSE(check->isVisible());
    ASSERT_TRUE(WaitFor([&] { return !check->Running(); }, 60000));
    EXPECT_EQ(check->Status(), method_texts::kCheckStopped);
    // The graph frame, a window of the main window, took the activation.
    window->activateWindow();
    ASSERT_TRUE(WaitFor([&] { return QApplication::activeWindow() == window.get(); }));
    window->Trace()->setFocus();
    AnalyseUntilEvents(3);

    // The next check runs to its end: the same seed gives the same table.
    Trigger("menu_CheckAccuracy");
    ASSERT_TRUE(WaitFor([&] { return !check->Running(); }, 60000));
    EXPECT_EQ(check->Summary(), finished);
    EXPECT_EQ(check->Status(), "");

    // The main window closed mid-run takes the window with it; the check's
    // thread is stopped and awaited.
    Trigger("menu_CheckAccuracy");
    ASSERT_TRUE(check->Running());
    window->hide();
    window.reset();
    CloseGraphFrame();
}

// A new installation: F9 suggests the settings from the recording once and
// says so; the panel shows the method's boxes and disables the unused ones;
// the suggestion ignores the kernel typed before it; non-stop over events
// asks whether to replace them and finds what `vess detect` with no settings
// file finds; a kernel is learned from the events.
TEST_F(MethodGuiTest, NewInstallationSuggestsOnceAndAsksBeforeReplacingEvents) {
    ws.settings = NewInstallationSettings();
    OpenSample();
    auto* amplitude = window->findChild<QLineEdit*>("txtThresholdAmplitude");
    auto* decay = window->findChild<QLineEdit*>("txtKernelDecayMs");
    ASSERT_TRUE(amplitude && decay);
    EXPECT_FALSE(amplitude->isEnabled());
    EXPECT_TRUE(amplitude->toolTip().contains("Not used by the deconvolution method"));
    EXPECT_TRUE(decay->isVisibleTo(window.get()));

    window->Trace()->setFocus();
    Key(Qt::Key_F9);
    const QString said = window->statusBar()->currentMessage();
    EXPECT_TRUE(said.startsWith("Settings suggested from this recording")) << said.toStdString();
    const MethodParameters suggested = ws.settings.method;
    EXPECT_NEAR(suggested.decayTauMs, 5, 1.5);  // the synthesiser's decay
    EXPECT_EQ(decay->text(), QString::number(suggested.decayTauMs, 'g', 3));

    // A kernel typed in is used, and not replaced on the next F9...
    decay->setText("20");
    QTest::keyClick(decay, Qt::Key_Return);
    EXPECT_EQ(ws.settings.method.decayTauMs, 20);
    window->Trace()->setFocus();
    Key(Qt::Key_F9);
    EXPECT_EQ(ws.settings.method.decayTauMs, 20);
    // ... and the suggestion asked for again starts from the recording alone;
    // a kernel typed after it stays for the next F9.
    Trigger("menu_SuggestFromRecording");
    EXPECT_EQ(ws.settings.method, suggested);
    ws.suggestedFor.clear();
    Trigger("menu_SuggestFromRecording");
    decay->setText("9");
    QTest::keyClick(decay, Qt::Key_Return);
    window->Trace()->setFocus();
    Key(Qt::Key_F9);
    EXPECT_EQ(ws.settings.method.decayTauMs, 9);
    Trigger("menu_SuggestFromRecording");

    AnalyseUntilEvents(3);
    const int32_t before = ws.events.Count();
    window->Trace()->setFocus();
    dialogs.AnswerYesNoCancel(Answer::Cancel);
    Key(Qt::Key_F11);
    EXPECT_FALSE(window->NonStopRunning());
    EXPECT_EQ(ws.events.Count(), before);
    ws.screenStartBlock = 0;
    window->RefreshAll();
    dialogs.AnswerYesNoCancel(Answer::Yes);
    Key(Qt::Key_F11);
    ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 20000));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
    // Replaced, not added: the events `vess detect` finds with no settings
    // file, whose suggestion is the window's.
    const auto evt = dir / "cli.EVT";
    const VessRun run = RunVessCli("detect " + abfPath.string() + " --quiet --out " + evt.string(), dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::string cliSaid = run.err.substr(0, run.err.find('\n'));
    EXPECT_TRUE(cliSaid.starts_with("Settings suggested from this recording")) << cliSaid;
    EXPECT_TRUE(cliSaid.ends_with(DetectionSettingsText(ws))) << cliSaid << "\n" << DetectionSettingsText(ws);
    EXPECT_EQ(ReadEventFile(evt).records, ws.events.Records());

    // The kernel learned from these events replaces the one typed (9 ms) and
    // stays near the synthesiser's.
    Trigger("menu_LearnKernel");
    ASSERT_TRUE(LastMessageIs(method_texts::kLearnKernelCaption));
    EXPECT_NEAR(ws.settings.method.decayTauMs, 5, 1.5);
    const QString status = window->findChild<QLabel*>("lbEvents")->text();
    EXPECT_TRUE(status.contains("by deconvolution, kernel rise")) << status.toStdString();
}

TEST_F(MethodGuiTest, ThresholdsOutOfReachAreReportedBeforeDetecting) {
    OpenSample();
    ws.settings.analysis.ThresholdAmplitude = 1e7;  // beyond the channel's whole range
    window->RefreshAll();
    // Declined: nothing is detected.
    dialogs.AnswerYesNo(false);
    Key(Qt::Key_F9);
    ASSERT_FALSE(dialogs.Transcript().empty());
    EXPECT_EQ(dialogs.Transcript().back().caption, method_texts::kThresholdsCaption);
    EXPECT_EQ(ws.events.Count(), 0);
    // Accepted: the thresholds come from the recording and detection runs.
    dialogs.AnswerYesNo(true);
    AnalyseUntilEvents(3);
    EXPECT_LT(ws.settings.analysis.ThresholdAmplitude, 100);
    EXPECT_TRUE(dialogs.AllAnswersUsed());

    // Near duplicates: the separation prompt, one undoable step.
    const int32_t before = ws.events.Count();
    dialogs.AnswerInput("1000");
    Trigger("menu_RemoveNearDuplicates");
    EXPECT_LT(ws.events.Count(), before);
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(ws.events.Count(), before);
}

}  // namespace
}  // namespace vess::test
