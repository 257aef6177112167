// The group analysis window's buttons, keys, menus, data menus and
// right-click highlight reach their commands; the rules and texts behind
// them are checked in tests/group_analysis.
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QRegularExpression>
#include <QTimer>

#include "app/group_window_fixture.h"
#include "group_analysis/results_commands.h"

namespace vess::test {
namespace {

using group::GroupAnalysisWindow;

class GroupWindowTest : public GroupWindowFixture {
protected:
    GroupAnalysisWindow* OpenGrouped() {
        GroupSampleEvents();
        Window()->GroupBox()->setCurrentText("1");
        w->AlignmentBox()->setCurrentText("Peak");
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
};

// The average fitted, its row headed in the recording's units, saved as text
// and results file, loaded back as a job; the picture and the results
// printed, previewed and copied; a table of 200,000 rows shown.
TEST_F(GroupWindowTest, FitsSavesPrintsAndShowsResults) {
    GroupAnalysisWindow* w = OpenGrouped();
    int grouped = 0;
    for (const auto& e : ws.events.Records()) grouped += e.group == 1;
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    ASSERT_EQ(w->Traces().count, grouped);
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace:  0 of %1").arg(grouped));

    QString pdf;
    w->SetPrintHooks({.choosePrinter = [&pdf](QPrinter& printer) {
                          printer.setOutputFormat(QPrinter::PdfFormat);
                          printer.setOutputFileName(pdf);
                          return true;
                      },
                      .showPreview = {}});
    pdf = QString::fromStdString((dir / "picture.pdf").string());
    w->Action("menu_print")->trigger();
    EXPECT_EQ(PdfPages(pdf), 1);
    // Copied as SVG with scale bars: their "… ms" label joins it.
    dialogs.AnswerYesNo(true);
    w->Action("menu_CopyMeta")->trigger();
    const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(copied && copied->hasFormat("image/svg+xml"));
    EXPECT_EQ(QString::fromUtf8(copied->data("image/svg+xml")).count(" ms"), 1);

    // The least-squares fit by default, with its standard errors; restarts
    // for the simplex only.
    w->ExponentialsBox()->setCurrentText("1");
    Fit();
    ASSERT_EQ(ws.results.Count(), 1);
    EXPECT_EQ(w->Grid()->model()->rowCount(), 1);
    EXPECT_TRUE(w->Report()->toPlainText().startsWith(QString("Number of Traces Averaged : %1").arg(grouped)));
    const double tau = group::ReadResultRow(ws.results[1]).tau1;
    EXPECT_GT(tau, 0.5);  // the synthetic events decay with 5 ms
    EXPECT_LT(tau, 20.0);
    EXPECT_GT(w->Grid()->model()->index(0, 16).data().toString().toDouble(), 0);  // SE Tau1
    auto* restart = w->findChild<QCheckBox*>("RestartSearch");
    EXPECT_FALSE(restart->isEnabled());
    w->findChild<QComboBox*>("FitMethod")->setCurrentText("Simplex");
    EXPECT_TRUE(restart->isEnabled());
    w->findChild<QComboBox*>("FitMethod")->setCurrentText("Least Squares");

    // The grid heads its columns with the recording's units (pA); the text
    // file keeps the bare titles of the results text.
    QStringList headings;
    for (int c = 0; c < w->Grid()->model()->columnCount(); ++c)
        headings << w->Grid()->model()->headerData(c, Qt::Horizontal).toString();
    for (const char* expected : {"Amplitude (pA)", "Area (pA·ms)", "Tau1 (ms)", "R-Sqr", "SE A1 (pA)"})
        EXPECT_TRUE(headings.contains(expected)) << expected;
    Snapshot("results_grid_units", w->Grid());
    dialogs.AnswerSaveFile((dir / "fits.txt").string());
    w->Action("menu_copyasciifile")->trigger();
    EXPECT_EQ(ReadText(dir / "fits.txt"), group::ResultsText(ws.results));

    dialogs.AnswerSaveFile((dir / "fits").string());
    w->Action("menu_SaveResults")->trigger();
    const auto bytes = ReadFileBytes(dir / "fits.RSL");
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), group::kResultsHeaderBytes + 280u);
    // Loading is a job: Start Display waits for it, and the row joins the
    // table (kept on "no" to the clear question) when it ends.
    dialogs.AnswerOpenFile((dir / "fits").string()).AnswerYesNo(false);
    w->Action("menu_LoadResults")->trigger();
    EXPECT_FALSE(w->StartButton()->isEnabled());
    EXPECT_EQ(ws.results.Count(), 1);
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }));
    EXPECT_TRUE(w->StartButton()->isEnabled());
    EXPECT_EQ(w->Grid()->model()->rowCount(), 2);

    // Two results print on one page; 90 rows need more, and the preview
    // paints the same pages under its caption.
    pdf = QString::fromStdString((dir / "two.pdf").string());
    w->Action("menu_PrintResults")->trigger();
    EXPECT_EQ(PdfPages(pdf), 1);
    const auto row = ws.results[1];
    for (int k = 2; k < 90; ++k) ws.results.Append(row);
    w->RefreshGrid();
    pdf = QString::fromStdString((dir / "many.pdf").string());
    w->Action("menu_PrintResults")->trigger();
    const int pages = PdfPages(pdf);
    EXPECT_GT(pages, 1);
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

    // 200,000 rows are shown through the model, with no item per cell.
    ws.results.Assign(std::vector<ResultBytes>(200000, row));
    w->RefreshGrid();
    const QAbstractItemModel* model = w->Grid()->model();
    EXPECT_EQ(model->rowCount(), 200000);
    EXPECT_EQ(model->data(model->index(199999, 7)).toString(), model->data(model->index(0, 7)).toString());
    EXPECT_NE(model->data(model->index(0, 7)).toString(), "");
}

TEST_F(GroupWindowTest, KeysNavigateJumpRemoveAndRegroupAsPressed) {
    GroupAnalysisWindow* w = OpenGrouped();
    w->AnalysisTypeBox()->setCurrentText("Individual");
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    const int n = w->Traces().count;
    ASSERT_GE(n, 4);
    // Each step by key, then by its button: next, last, previous, first.
    const struct {
        Qt::Key key;
        const char* button;
        int expected;
    } steps[] = {{Qt::Key_D, "SpinButton5_up", 1},
                 {Qt::Key_F, "SSCommand1_1", n},
                 {Qt::Key_S, "SpinButton5_down", n - 1},
                 {Qt::Key_A, "SSCommand1_0", 0}};
    for (bool byKey : {true, false})
        for (const auto& step : steps) {
            SCOPED_TRACE(step.button);
            if (byKey) Press(w, step.key);
            else QTest::mouseClick(w->findChild<QPushButton*>(step.button), Qt::LeftButton);
            EXPECT_EQ(w->CurrentTrace(), step.expected);
        }
    EXPECT_EQ(w->TraceLabel()->text(), QString("Trace:  0 of %1").arg(n));

    // Y asks for the trace; K then takes its event out of the group, as
    // does the menu's remove.
    dialogs.AnswerInput("3");
    Press(w, Qt::Key_Y);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Jump to Trace");
    ASSERT_EQ(w->CurrentTrace(), 3);
    const int32_t third = w->Traces().eventIndex[3];
    Press(w, Qt::Key_K);
    EXPECT_EQ(ws.events[third].group, 0);
    EXPECT_EQ(w->Traces().count, n - 1);
    Press(w, Qt::Key_D);
    w->Action("menu_trace_remove")->trigger();
    EXPECT_EQ(w->Traces().count, n - 2);

    // U regroups the current trace to the group typed.
    Press(w, Qt::Key_D);
    const int32_t first = w->Traces().eventIndex[1];
    dialogs.AnswerInput("7");
    Press(w, Qt::Key_U);
    EXPECT_EQ(dialogs.Transcript().back().caption, "Group Number");
    EXPECT_EQ(ws.events[first].group, 7);
    EXPECT_EQ(w->Traces().count, n - 3);

    // A text field keeps its letters: typing there does not navigate.
    Press(w, Qt::Key_D);
    QLineEdit* offset = w->OffsetBox()->lineEdit();
    offset->setFocus();
    QTest::keyClick(offset, Qt::Key_F);
    EXPECT_EQ(w->CurrentTrace(), 1);
    offset->setText("0");
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

// "Blocks to Analyse" of a million (every trace at full length aborted the
// window with bad_alloc) is refused with the memory needed. Start Display
// while a fit runs used to rebuild the set under the fit, which then read
// traces of the new length as if they were the old ones. A fit that never
// settles ends from its button.
TEST_F(GroupWindowTest, StartDisplayGuardsTheSetAndTheFitIsInterrupted) {
    GroupAnalysisWindow* w = OpenGrouped();
    const int32_t events = ws.events.Count();
    dialogs.ClearTranscript();
    Display("Individual", "1000000");
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_NE(dialogs.Messages()[0].text.find("GB of memory, more than the 1 GB allowed"), std::string::npos)
        << dialogs.Messages()[0].text;
    EXPECT_TRUE(w->Traces().Empty());
    EXPECT_EQ(ws.events.Count(), events);

    // The simplex with tolerance 0 and ten million iterations: only the
    // second click ends it (least squares settles in milliseconds, so a busy
    // machine could see every fit end before the click).
    Display("Superimpose", "1");
    const double tolerance = w->Settings().tolerance;
    const QString iterations = w->MaxIterationsBox()->currentText();
    auto* method = w->findChild<QComboBox*>("FitMethod");
    method->setCurrentText("Simplex");
    w->Settings().tolerance = 0;
    w->MaxIterationsBox()->setCurrentText("10000000");
    auto* button = w->FitButton();
    button->click();
    EXPECT_EQ(button->text(), "Interrupt Fitting");
    button->click();
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    EXPECT_EQ(button->text(), "Start Fitting");
    EXPECT_LT(ws.results.Count(), w->Traces().count);
    ws.results.Clear();
    w->Settings().tolerance = tolerance;
    w->MaxIterationsBox()->setCurrentText(iterations);
    method->setCurrentText("Least Squares");

    const int32_t length = w->Traces().length;
    Fit();
    std::vector<ResultBytes> undisturbed;
    for (int32_t r = 1; r <= ws.results.Count(); ++r) undisturbed.push_back(ws.results[r]);
    ASSERT_EQ(undisturbed.size(), std::size_t(w->Traces().count));
    ws.results.Clear();
    // The same fit, with the trace length changed and Start Display pressed
    // (menu and button) as soon as the window answers.
    QTimer::singleShot(0, w, [w] {
        w->BlocksBox()->setCurrentText("0.25");
        w->Action("menu_DisplayTrace")->trigger();
        QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    });
    Fit();
    EXPECT_EQ(w->Traces().length, length);
    ASSERT_EQ(ws.results.Count(), int32_t(undisturbed.size()));
    for (int32_t r = 1; r <= ws.results.Count(); ++r) EXPECT_EQ(ws.results[r], undisturbed[std::size_t(r - 1)]) << r;
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);  // works again once the fit has ended
    EXPECT_NE(w->Traces().length, length);

}

// The data menus, work-array plots and right-click highlight (the texts,
// bins and nearest trace are checked in tests/group_analysis).
class GroupDataTest : public GroupWindowFixture {
protected:
    GroupAnalysisWindow* OpenAndDisplay(const char* type) {
        GroupSampleEvents();
        return Display(type);
    }
    static std::string Clipboard() { return QGuiApplication::clipboard()->text().toStdString(); }
    // The text after its first line.
    static std::string Body(const std::string& text) { return text.substr(text.find("\r\n") + 2); }
    static int Lines(const std::string& text) { return int(std::count(text.begin(), text.end(), '\n')); }
};

TEST_F(GroupDataTest, TraceAndCurveDataGoToTheClipboardOrAFile) {
    GroupAnalysisWindow* w = OpenAndDisplay("Average");
    const int32_t length = w->Traces().length;
    ASSERT_GT(length, 0);

    // Copy: trace 0 through the temporary file to the clipboard, no file asked.
    QGuiApplication::clipboard()->clear();
    dialogs.AnswerInput("0").AnswerInput("1");
    w->Action("menu_copydata")->trigger();
    const std::string average = Clipboard();
    EXPECT_EQ(average.rfind("Group Analysis: syn.abf Group # 1 Trace # 0\r\n", 0), 0u) << average.substr(0, 80);
    EXPECT_EQ(Lines(average), length + 2);
    EXPECT_EQ(ReadText(std::filesystem::temp_directory_path() / "TempTrace.txt"), average);

    // No curve yet: the curve commands say so.
    w->Action("menu_extractcurvedata")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Curve Data");

    // Extract makes the shown trace (the average) the curve, under its own
    // header. It follows the display, not the type box changed since.
    w->findChild<QAction*>("key_next")->trigger();  // trace 1 is current, the average still shown
    ASSERT_EQ(w->TraceLabel()->text().toStdString().rfind("Trace: 1 of ", 0), 0u);
    w->AnalysisTypeBox()->setCurrentText("Individual");
    w->Action("menu_trace_extract")->trigger();
    dialogs.AnswerInput("1");
    w->Action("menu_extractcurvedata")->trigger();
    const std::string extracted = Clipboard();
    EXPECT_EQ(extracted.rfind("Group Analysis: syn.abf Group # 1\r\n", 0), 0u) << extracted.substr(0, 80);
    EXPECT_EQ(Body(extracted), Body(average));

    // A fit replaces it by the fitted curve (its points: tests/group_analysis).
    w->ExponentialsBox()->setCurrentText("1");
    Fit();
    dialogs.AnswerInput("1").AnswerSaveFile((dir / "curve.txt").string());
    w->Action("menu_savecurvedata")->trigger();
    const std::string curve = ReadText(dir / "curve.txt");
    EXPECT_EQ(curve.rfind("Curve Fit Group # 1 Trace # 0\r\n", 0), 0u) << curve.substr(0, 80);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(GroupDataTest, PlotMenuDrawsTheWorkArraysAndARightClickHighlights) {
    GroupAnalysisWindow* w = OpenAndDisplay("Individual");
    w->Action("menu_Plot_2")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Empty Data Array #2");
    ws.Array(1).Assign(std::vector<float>{2, 2, 2, 3, 4.5f});
    dialogs.AnswerInput("1");
    w->Action("menu_Plot_1")->trigger();
    ASSERT_TRUE(CurrentGraphFrame() && CurrentGraphFrame()->CurrentPlot());
    const PlotData& shown = CurrentGraphFrame()->CurrentPlot()->Description();
    EXPECT_EQ(shown.xAxis, "Data Array #1");
    EXPECT_EQ(shown.series.at(0).y, (std::vector<double>{3, 1, 1}));  // bins 2, 3, 4
    CloseGraphFrame();

    group::TracePicture* picture = w->Picture();
    w->resize(1000, 700);
    QApplication::processEvents();
    w->MoveTo(1);
    const auto rightClick = [picture](QPointF at) { QTest::mouseClick(picture, Qt::RightButton, {}, at.toPoint()); };
    const int32_t mid = w->Traces().length / 2;
    rightClick(picture->PixelOf(1, mid));
    EXPECT_EQ(picture->Highlighted(), 1);
    // A click far from the trace clears it; so does moving to another trace.
    rightClick(QPointF(picture->PixelOf(1, mid).x(), 3));
    EXPECT_EQ(picture->Highlighted(), -1);
    rightClick(picture->PixelOf(1, mid));
    ASSERT_EQ(picture->Highlighted(), 1);
    w->MoveTo(2);
    EXPECT_EQ(picture->Highlighted(), -1);
    // The average type: the average is the shown trace.
    w->AnalysisTypeBox()->setCurrentText("Average");
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    rightClick(picture->PixelOf(0, mid / 2));
    EXPECT_EQ(picture->Highlighted(), 0);
}

}  // namespace
}  // namespace vess::test
