// The group analysis window driven offscreen: group the detected events,
// display their average, step through the traces, fit the average and save
// the results.
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTimer>

#include "app/gui_fixture.h"
#include "group_analysis/results_commands.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "recording/file_io.h"

namespace vess::test {
namespace {

using group::GroupAnalysisWindow;

class GroupWindowTest : public GuiTest {
protected:
    GroupAnalysisWindow* OpenGrouped() {
        OpenSample();
        AnalyseUntilEvents(6);
        // All events into group 1 through the assignment dialog (one random group).
        group::GroupAssignDialog d(ws, group::GroupAssignMode::Random);
        d.RandomGroups()->setValue(1);
        EXPECT_NE(d.Preview()->text().toStdString().find("Group 1: "), std::string::npos);
        d.Apply();
        EXPECT_TRUE(ws.history.CanUndo());
        GroupAnalysisWindow* w = window->OpenGroupAnalysis();
        EXPECT_EQ(w->windowTitle(), "Group Analysis and Curve Fitting");
        // Keys go to the active window's focus widget.
        w->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(w));
        w->Picture()->setFocus();
        w->findChild<QComboBox*>("Combo1")->setCurrentText("1");
        w->findChild<QComboBox*>("Combo3")->setCurrentText("Peak");
        return w;
    }
    void Shot(QWidget* w, const QString& name) {
        const QString folder = QString(VESS_BINARY_DIR) + "/app_screens";
        QDir().mkpath(folder);
        w->grab().save(folder + "/" + name + ".png");
    }
};

TEST_F(GroupWindowTest, DisplaysNavigatesFitsAndSavesResults) {
    GroupAnalysisWindow* w = OpenGrouped();
    int grouped = 0;
    for (const auto& e : ws.events.Records()) grouped += e.group == 1;
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    ASSERT_EQ(w->Traces().count, grouped);
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace:  0 of %1").arg(grouped));

    // The navigation buttons: next, last, previous, first; remove on the
    // average refuses.
    auto press = [w](const char* name) { QTest::mouseClick(w->findChild<QPushButton*>(name), Qt::LeftButton); };
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Individual");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    press("SpinButton5_up");
    EXPECT_EQ(w->CurrentTrace(), 1);
    press("SSCommand1_1");
    EXPECT_EQ(w->CurrentTrace(), grouped);
    press("SpinButton5_down");
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace: %1 of %2").arg(grouped - 1).arg(grouped));
    press("SSCommand1_0");
    w->Action("menu_trace_remove")->trigger();
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().caption, "Average Trace");
    EXPECT_EQ(dialogs.Messages().back().text, "Cannot remove the averaged trace.");
    // Removing trace 1 takes its event out of the group and rebuilds the set.
    press("SpinButton5_up");
    w->Action("menu_trace_remove")->trigger();
    EXPECT_EQ(w->Traces().count, grouped - 1);

    // Fit the average: one row, the report, the curve drawn.
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Average");
    w->findChild<QComboBox*>("Combo9")->setCurrentText("1");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    QTest::mouseClick(w->findChild<QPushButton*>("Command2"), Qt::LeftButton);
    EXPECT_FALSE(w->Fitting());
    ASSERT_EQ(ws.results.Count(), 1);
    EXPECT_EQ(w->Grid()->rowCount(), 1);
    EXPECT_EQ(w->Grid()->horizontalHeaderItem(7)->text(), "Tau1");
    EXPECT_TRUE(w->Report()->toPlainText().startsWith(
        QString("Number of Traces Averaged : %1").arg(grouped - 1)));
    const double tau = group::ReadResultRow(ws.results[1]).tau1;
    EXPECT_GT(tau, 0.5);   // the synthetic events decay with 5 ms
    EXPECT_LT(tau, 20.0);
    w->resize(1200, 800);
    Shot(w, "group_analysis");

    dialogs.AnswerSaveFile((dir / "fits").string());
    w->Action("menu_SaveResults")->trigger();
    const auto bytes = ReadFileBytes(dir / "fits.RSL");
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), group::kResultsHeaderBytes + 280u);

    w->Action("menu_simplex_User")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Not Available");
    EXPECT_EQ(dialogs.Messages().back().text, "This function will be available in future");
}

TEST_F(GroupWindowTest, FittingCanBeInterruptedFromTheButton) {
    GroupAnalysisWindow* w = OpenGrouped();
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Superimpose");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    auto* button = w->findChild<QPushButton*>("Command2");
    // The first progress report processes this queued click, which stops the run.
    QTimer::singleShot(0, button, [button] {
        EXPECT_EQ(button->text(), "Interrupt Fitting");
        button->click();
    });
    button->click();
    EXPECT_EQ(button->text(), "Start Fitting");
    EXPECT_LT(ws.results.Count(), w->Traces().count);
    Shot(w, "group_analysis_superimposed");
}

}  // namespace
}  // namespace vess::test
