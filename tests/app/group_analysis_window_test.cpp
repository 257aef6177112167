// The group analysis window driven offscreen: group the detected events,
// display their average, step through the traces, fit the average and save
// the results.
#include <QCheckBox>
#include <QClipboard>
#include <QMimeData>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QRegularExpression>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTimer>

#include "app/gui_fixture.h"
#include "group_analysis/ui/group_commands.h"
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
        GroupAnalysisWindow* w = group::OpenGroupAnalysis(*window);
        EXPECT_EQ(w->windowTitle(), "Group Analysis and Curve Fitting");
        // Keys go to the active window's focus widget.
        w->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(w));
        // The offscreen platform leaves the widget side's active window on
        // the main window; a user's click on the window would move it.
        QApplication::setActiveWindow(w);
        EXPECT_EQ(QApplication::activeWindow(), w);
        w->Picture()->setFocus();
        w->findChild<QComboBox*>("Combo1")->setCurrentText("1");
        w->findChild<QComboBox*>("Combo3")->setCurrentText("Peak");
        return w;
    }
    // A key as the user presses it: to whichever widget has the focus.
    static void Press(GroupAnalysisWindow* w, Qt::Key key) {
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus ? focus : w, key);
    }
    static int PdfPages(const QString& path) {
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly)) return -1;
        return int(QString::fromLatin1(f.readAll()).count(QRegularExpression("/Type\\s*/Page[^s]")));
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
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    ASSERT_EQ(ws.results.Count(), 1);
    EXPECT_EQ(w->Grid()->model()->rowCount(), 1);
    EXPECT_EQ(w->Grid()->model()->headerData(7, Qt::Horizontal).toString(), "Tau1");
    EXPECT_TRUE(w->Report()->toPlainText().startsWith(
        QString("Number of Traces Averaged : %1").arg(grouped - 1)));
    const double tau = group::ReadResultRow(ws.results[1]).tau1;
    EXPECT_GT(tau, 0.5);   // the synthetic events decay with 5 ms
    EXPECT_LT(tau, 20.0);
    // The least-squares fit by default, with its standard errors; the
    // restarts belong to the simplex search alone.
    auto* method = w->findChild<QComboBox*>("FitMethod");
    auto* restart = w->findChild<QCheckBox*>("RestartSearch");
    EXPECT_EQ(method->currentText(), "Least Squares");
    EXPECT_FALSE(restart->isEnabled());
    EXPECT_TRUE(w->Report()->toPlainText().contains("Standard errors: tau1 "));
    EXPECT_EQ(w->Grid()->model()->headerData(16, Qt::Horizontal).toString(), "SE Tau1");
    EXPECT_GT(w->Grid()->model()->index(0, 16).data().toString().toDouble(), 0);
    method->setCurrentText("Simplex");
    EXPECT_TRUE(restart->isEnabled());
    method->setCurrentText("Least Squares");
    w->resize(1200, 800);
    Shot(w, "group_analysis");

    dialogs.AnswerSaveFile((dir / "fits").string());
    w->Action("menu_SaveResults")->trigger();
    const auto bytes = ReadFileBytes(dir / "fits.RSL");
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), group::kResultsHeaderBytes + 280u);
    // Loading it back is a job: Start Display waits for it, and its row
    // joins the table (kept on "no" to the clear question) when it ends.
    dialogs.AnswerOpenFile((dir / "fits").string()).AnswerYesNo(false);
    w->Action("menu_LoadResults")->trigger();
    EXPECT_TRUE(window->Busy());
    EXPECT_FALSE(w->findChild<QPushButton*>("Command1")->isEnabled());
    EXPECT_EQ(ws.results.Count(), 1);
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }));
    EXPECT_TRUE(w->findChild<QPushButton*>("Command1")->isEnabled());
    EXPECT_EQ(ws.results.Count(), 2);
    EXPECT_EQ(w->Grid()->model()->rowCount(), 2);

    w->Action("menu_simplex_User")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Not Available");
    EXPECT_EQ(dialogs.Messages().back().text, "This function will be available in future");
}

TEST_F(GroupWindowTest, KeysNavigateJumpRemoveAndRegroupAsPressed) {
    GroupAnalysisWindow* w = OpenGrouped();
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Individual");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    const int n = w->Traces().count;
    ASSERT_GE(n, 4);
    Press(w, Qt::Key_D);
    EXPECT_EQ(w->CurrentTrace(), 1);
    Press(w, Qt::Key_F);
    EXPECT_EQ(w->CurrentTrace(), n);
    Press(w, Qt::Key_S);
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace: %1 of %2").arg(n - 1).arg(n));
    Press(w, Qt::Key_A);
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace:  0 of %1").arg(n));

    // K and U refuse the average.
    Press(w, Qt::Key_K);
    Press(w, Qt::Key_U);
    auto messages = dialogs.Messages();
    ASSERT_GE(messages.size(), 2u);
    EXPECT_EQ(messages[messages.size() - 2].text, "Cannot remove the averaged trace.");
    EXPECT_EQ(messages.back().caption, "Average Trace");
    EXPECT_EQ(messages.back().text, "Cannot regroup the averaged trace.");
    EXPECT_EQ(w->Traces().count, n);

    // Y asks for the trace; K then takes its event out of the group.
    dialogs.AnswerInput("3");
    Press(w, Qt::Key_Y);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Jump to Trace");
    EXPECT_EQ(dialogs.Transcript().back().text,
              QString("Please specify the trace number to jump to (Trace 0 is the average trace).  "
                      "Range: 0 to %1.").arg(n).toStdString());
    ASSERT_EQ(w->CurrentTrace(), 3);
    const int32_t third = w->Traces().eventIndex[3];
    Press(w, Qt::Key_K);
    EXPECT_EQ(ws.events[third].group, 0);
    EXPECT_EQ(w->Traces().count, n - 1);
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace:  0 of %1").arg(n - 1));

    // U regroups the current trace to the group typed (offered: shown + 1).
    Press(w, Qt::Key_D);
    const int32_t first = w->Traces().eventIndex[1];
    dialogs.AnswerInput("7");
    Press(w, Qt::Key_U);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Group Number");
    EXPECT_EQ(dialogs.Transcript().back().text, "Please enter the group number to regroup this trace.");
    EXPECT_EQ(ws.events[first].group, 7);
    EXPECT_EQ(w->Traces().count, n - 2);

    // A text field keeps its letters: typing there does not navigate.
    Press(w, Qt::Key_D);
    QLineEdit* offset = w->findChild<QComboBox*>("Combo6")->lineEdit();
    offset->setFocus();
    QTest::keyClick(offset, Qt::Key_F);
    EXPECT_EQ(w->CurrentTrace(), 1);
    EXPECT_TRUE(offset->text().contains('f'));
    offset->setText("0");

    // Y needs an individual or average display.
    w->Picture()->setFocus();
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Superimpose");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    Press(w, Qt::Key_Y);
    EXPECT_EQ(dialogs.Messages().back().text,
              "This function will only work when trace is shown as individual or average.");
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(GroupWindowTest, PrintsResultsAndPictureAndPreviewsEveryRow) {
    GroupAnalysisWindow* w = OpenGrouped();
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    QString pdf;
    w->SetPrintHooks({.choosePrinter = [&pdf](QPrinter& printer) {
                          printer.setOutputFormat(QPrinter::PdfFormat);
                          printer.setOutputFileName(pdf);
                          return true;
                      },
                      .showPreview = {}});
    // The picture: one page.
    pdf = QString::fromStdString((dir / "picture.pdf").string());
    w->Action("menu_print")->trigger();
    EXPECT_EQ(PdfPages(pdf), 1);

    // A vector picture asks for scale bars: their labels join the axis label.
    auto svgMs = [&](const char* name, bool bars) {
        dialogs.AnswerSaveFile((dir / name).string()).AnswerYesNo(bars);
        w->Action("menu_saveBMP")->trigger();
        EXPECT_EQ(dialogs.Transcript().back().caption, "Scale Bars");
        EXPECT_EQ(dialogs.Transcript().back().text, "Would you like to add scale bars to the metafile?");
        QFile f(QString::fromStdString((dir / name).string()));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()).count(" ms") : -1;
    };
    const int plain = svgMs("plain.svg", false);
    EXPECT_GE(plain, 1);
    EXPECT_EQ(svgMs("bars.svg", true), plain + 1);
    // The same picture copied as SVG.
    dialogs.AnswerYesNo(true);
    w->Action("menu_CopyMeta")->trigger();
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(copied && copied->hasFormat("image/svg+xml"));
    EXPECT_EQ(QString::fromUtf8(copied->data("image/svg+xml")).count(" ms"), plain + 1);
    w->Picture()->SetScaleBars(true);
    Shot(w->Picture(), "group_analysis_scale_bars");
    w->Picture()->SetScaleBars(false);

    // One result prints on one page; 90 rows need more.
    w->findChild<QComboBox*>("Combo9")->setCurrentText("1");
    QTest::mouseClick(w->findChild<QPushButton*>("Command2"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    ASSERT_EQ(ws.results.Count(), 1);
    pdf = QString::fromStdString((dir / "one.pdf").string());
    w->Action("menu_PrintResults")->trigger();
    EXPECT_EQ(PdfPages(pdf), 1);
    const auto row = ws.results[1];
    for (int k = 1; k < 90; ++k) ws.results.Append(row);
    w->RefreshGrid();
    pdf = QString::fromStdString((dir / "many.pdf").string());
    w->Action("menu_PrintResults")->trigger();
    const int pages = PdfPages(pdf);
    EXPECT_GT(pages, 1);

    // The preview paints the same pages, under its caption.
    int previewPages = 0;
    QString caption;
    w->SetPrintHooks({.choosePrinter = {}, .showPreview = [&](QPrintPreviewDialog& d) {
                          caption = d.windowTitle();
                          auto* view = d.findChild<QPrintPreviewWidget*>();
                          ASSERT_NE(view, nullptr);
                          view->updatePreview();
                          previewPages = view->pageCount();
                      }});
    w->Action("menu_preview")->trigger();
    EXPECT_EQ(caption, "Fitting Results Print Preview");
    EXPECT_EQ(previewPages, pages);

    // A results file of 200,000 rows is shown through the model, with no
    // item per cell: the last row reads as the first.
    ws.results.Assign(std::vector<ResultBytes>(200000, row));
    w->RefreshGrid();
    const QAbstractItemModel* model = w->Grid()->model();
    EXPECT_EQ(model->rowCount(), 200000);
    EXPECT_EQ(model->data(model->index(199999, 7)).toString(), model->data(model->index(0, 7)).toString());
    EXPECT_NE(model->data(model->index(0, 7)).toString(), "");
    w->Grid()->scrollToBottom();
    w->Grid()->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/group_results_grid.png");
}

TEST_F(GroupWindowTest, AssignDialogGroupsBurstsAndTimeWindows) {
    OpenSample();
    AnalyseUntilEvents(12);
    std::vector<float> times;
    for (const auto& e : ws.events.Records()) times.push_back(e.time);

    // Bursts: intervals under 400 ms, at least 3 events, into group 5.
    group::GroupAssignDialog d(ws, group::GroupAssignMode::Bursts);
    d.findChild<QDoubleSpinBox*>("BurstMaxInterval")->setValue(400);
    d.findChild<QSpinBox*>("BurstMinEvents")->setValue(3);
    d.findChild<QSpinBox*>("BurstGroup")->setValue(5);
    // The runs, counted here from the times.
    int bursts = 0, inBursts = 0;
    for (std::size_t i = 0, start = 0; i <= times.size(); ++i) {
        if (i > 0 && i < times.size() && times[i] - times[i - 1] < 400) continue;
        if (i > start && i - start >= 3) ++bursts, inBursts += int(i - start);
        start = i;
    }
    ASSERT_GT(bursts, 0);
    EXPECT_EQ(d.Preview()->text(),
              QString("Bursts: %1\nGroup 5: %2 events\n").arg(bursts).arg(inBursts));
    d.Apply();
    int grouped = 0;
    for (const auto& e : ws.events.Records()) {
        grouped += e.group == 5;
        EXPECT_EQ(e.group == 5, e.burstNumber > 0);
        EXPECT_EQ(e.burstEventNumber > 0, e.burstNumber > 0);
    }
    EXPECT_EQ(grouped, inBursts);
    ws.history.Undo(ws.events);
    for (const auto& e : ws.events.Records()) EXPECT_NE(e.group, 5);

    // Time windows of 2 s from group 2: each event by the window it falls in.
    d.SetMode(group::GroupAssignMode::Episodic);
    d.findChild<QCheckBox*>("EpisodeBySweep")->setChecked(false);
    d.findChild<QDoubleSpinBox*>("EpisodeWindow")->setValue(2000);
    d.findChild<QSpinBox*>("EpisodeFirstGroup")->setValue(2);
    d.Apply();
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_EQ(ws.events[int32_t(i) + 1].group, 2 + int(times[i] / 2000)) << times[i];
}

TEST_F(GroupWindowTest, FittingCanBeInterruptedFromTheButton) {
    GroupAnalysisWindow* w = OpenGrouped();
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Superimpose");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    // A search that never settles (tolerance 0) and may run for ten million
    // iterations: only the second click ends it.
    w->Settings().Tolerance = 0;
    w->findChild<QComboBox*>("Combo11")->setCurrentText("10000000");
    auto* button = w->findChild<QPushButton*>("Command2");
    button->click();
    EXPECT_EQ(button->text(), "Interrupt Fitting");
    button->click();
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    EXPECT_EQ(button->text(), "Start Fitting");
    EXPECT_LT(ws.results.Count(), w->Traces().count);
    Shot(w, "group_analysis_superimposed");
}

// Start Display while a fit runs used to rebuild the set under the fit,
// which then read traces of the new length as if they were the old ones.
TEST_F(GroupWindowTest, StartDisplayWaitsForARunningFit) {
    GroupAnalysisWindow* w = OpenGrouped();
    w->findChild<QComboBox*>("Combo2")->setCurrentText("Superimpose");
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    const int32_t length = w->Traces().length;
    auto* fit = w->findChild<QPushButton*>("Command2");
    fit->click();
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    std::vector<ResultBytes> undisturbed;
    for (int32_t r = 1; r <= ws.results.Count(); ++r) undisturbed.push_back(ws.results[r]);
    ASSERT_EQ(undisturbed.size(), std::size_t(w->Traces().count));
    ws.results.Clear();

    // The same fit, with the trace length changed and Start Display pressed
    // (menu and button) as soon as the window answers.
    QTimer::singleShot(0, w, [w] {
        w->findChild<QComboBox*>("Combo4")->setCurrentText("0.25");
        w->Action("menu_DisplayTrace")->trigger();
        QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    });
    fit->click();
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    EXPECT_EQ(w->Traces().length, length);
    ASSERT_EQ(ws.results.Count(), int32_t(undisturbed.size()));
    for (int32_t r = 1; r <= ws.results.Count(); ++r) EXPECT_EQ(ws.results[r], undisturbed[std::size_t(r - 1)]) << r;
    // Once the fit has ended, Start Display works again.
    QTest::mouseClick(w->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_NE(w->Traces().length, length);
}

}  // namespace
}  // namespace vess::test
