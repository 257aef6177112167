// The work-array, histogram and statistics menus reach their commands and
// show the results; the tests and histograms themselves are checked in
// tests/statistics.
#include <QClipboard>
#include <QRadioButton>

#include <limits>
#include <numeric>

#include "gui_fixture.h"
#include "statistics/ui/data_analysis_window.h"
#include "statistics/ui/math_operation_window.h"
#include "statistics/ui/sample_frame.h"

namespace vess::test {
namespace {

class StatisticsGuiTest : public GuiTest {
protected:
    void TearDown() override {
        CloseGraphFrame();
        GuiTest::TearDown();
    }
    DataAnalysisWindow* Analysis() { return window->findChild<DataAnalysisWindow*>(); }
    QString GridCell(const QTableWidget& grid, const QString& label, int column = 1) {
        for (int r = 0; r < grid.rowCount(); ++r)
            if (grid.item(r, 0) && grid.item(r, 0)->text() == label)
                return grid.item(r, column) ? grid.item(r, column)->text() : QString();
        return "(no row " + label + ")";
    }
    void SetArrays(std::vector<float> a1, std::vector<float> a2) {
        ws.array1.Assign(a1);
        ws.array2.Assign(a2);
    }
};

TEST_F(StatisticsGuiTest, FillsArraysFromEventsAndDrawsTheirHistogramAndTheNoiseHistogram) {
    OpenSample();
    AnalyseUntilEvents(6);
    const int32_t n = ws.events.Count();

    // Amplitudes into Array #1 and half-widths into Array #2.
    for (const char* menu : {"menu_PutAllArray1_0", "menu_PutAllArray2_10"}) {
        dialogs.AnswerYesNo(true).AnswerInput("0");
        Trigger(menu);
    }
    EXPECT_EQ(ws.array1.UpperBound(), n);
    EXPECT_EQ(ws.array2.UpperBound(), n);

    // Frequency histogram of the amplitudes of all events, bin 5.
    dialogs.AnswerInput("0").AnswerInput("5");
    Trigger("menu_FreqHisto_1");
    ASSERT_TRUE(CurrentGraphFrame() && CurrentGraphFrame()->CurrentPlot());
    const std::vector<double>& counts = CurrentGraphFrame()->CurrentPlot()->Description().series.at(0).y;
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0.0), double(n));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
    CloseGraphFrame();

    // The noise histogram counts the samples between the trace's cursors.
    Trigger("menu_NoiseHistogram");
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().caption, "Noise Amplitude Histogram");

    window->Action("menu_Cursors")->setChecked(true);
    TraceView* trace = window->Trace();
    const QRect r = trace->PlotRect();
    // Second cursor near the top-left, first cursor near the bottom-right:
    // the levels span almost the whole plot height.
    QTest::mouseClick(trace, Qt::MiddleButton, {}, QPoint(r.left() + r.width() / 4, r.top() + 2));
    QTest::mouseMove(trace, QPoint(r.left() + 3 * r.width() / 4, r.bottom() - 2));
    const auto c = trace->Cursors();
    ASSERT_TRUE(c.has_value());
    ASSERT_GT(c->index1, c->index2);
    const int64_t width = std::abs(c->index1 - c->index2) + 1;

    dialogs.ClearTranscript();
    dialogs.AnswerInput("1");
    Trigger("menu_NoiseHistogram");
    PlotWidget* plot = CurrentGraphFrame() ? CurrentGraphFrame()->CurrentPlot() : nullptr;
    ASSERT_NE(plot, nullptr);
    const std::vector<double>& noise = plot->Description().series.at(0).y;
    const double counted = std::accumulate(noise.begin(), noise.end(), 0.0);
    // Every counted sample lies between the vertical cursors; a trace fitted
    // to its screen keeps nearly all of them inside the plot's height.
    EXPECT_LE(counted, double(width));
    EXPECT_GE(counted, 0.9 * double(width));
}


// Each test's grid and graph; refusals; the summary option.
TEST_F(StatisticsGuiTest, EachTestMenuShowsItsGridAndGraph) {
    struct Case {
        const char* menu;
        std::vector<float> a1, a2;
        const char* row;
        const char* value;
        const char* graphTitle;
        const char* lastRow;  // the count of values left out, or nullptr for none
    };
    // y = 2x + 1 exactly gives r = 1; samples wholly apart differ by 1 at
    // most, and a value not measured is left out and counted in the last row.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Case cases[] = {
        {"menu_LinearRegression", {1, 2, 3, 4}, {3, 5, 7, 9}, "Coeff Correl (r)", "1.000000",
         "Array #1 vs. Array #2: n=4", nullptr},
        {"menu_KStest", {1, 2, nan, 3, 4}, {6, 7, 8, 9}, "Max. Abs(Difference)", "1",
         "Cumulative Histograms of Array#1 and Array#2", "1 value that was not measured was left out"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.menu);
        SetArrays(c.a1, c.a2);
        Trigger(c.menu);
        DataAnalysisWindow* w = Analysis();
        ASSERT_NE(w, nullptr);
        ASSERT_TRUE(w->RunTest());
        const QTableWidget& grid = *w->ResultGrid();
        EXPECT_EQ(GridCell(grid, c.row).toDouble(), QString(c.value).toDouble());
        if (c.lastRow) {
            ASSERT_NE(grid.item(grid.rowCount() - 1, 0), nullptr);
            EXPECT_EQ(grid.item(grid.rowCount() - 1, 0)->text(), c.lastRow);
        }
        ASSERT_NE(w->Graph(), nullptr);
        EXPECT_EQ(w->Graph()->Description().title, c.graphTitle);
    }
    // A paired test of unequal counts is refused; the summary option is
    // offered to the t- and F-tests only.
    DataAnalysisWindow* w = Analysis();
    Trigger("menu_ttest_paired");
    EXPECT_FALSE(w->RunTest());
    EXPECT_EQ(dialogs.Messages().back().caption, "Inappropriate Values");
    EXPECT_FALSE(w->Sample(1)->MeanOption()->isEnabled());
    Trigger("menu_Ftest");
    EXPECT_TRUE(w->Sample(1)->MeanOption()->isEnabled());

    // Typed summaries stand in for the arrays. Means 10 and 12, SD 2 both,
    // n 10 both: pooled variance 4, t = -2 / sqrt(4 (1/10 + 1/10)) = -2.236068.
    SetArrays({}, {});
    Trigger("menu_ttest_EqualVar");
    for (int k = 1; k <= 2; ++k) {
        SampleFrame* s = w->Sample(k);
        QTest::mouseClick(s->MeanOption(), Qt::LeftButton);
        s->MeanField()->setText(k == 1 ? "10" : "12");
        s->StdDevField()->setText("2");
        s->CountField()->setText("10");
    }
    ASSERT_TRUE(w->RunTest());
    EXPECT_EQ(GridCell(*w->ResultGrid(), "t Stat").left(6), "-2.236");
    w->Sample(1)->CountField()->setText("many");
    EXPECT_FALSE(w->RunTest());
    EXPECT_EQ(dialogs.Messages().back().caption, "Data Input");
}

TEST_F(StatisticsGuiTest, ArrayGridShowsBothArraysAndTypedValuesGoBackByRow) {
    SetArrays({1234.5f, 2}, {7});
    Trigger("menu_ManualDataEntry");
    DataAnalysisWindow* w = Analysis();
    ASSERT_NE(w, nullptr);
    QTableView* view = w->ArrayGrid();
    ASSERT_TRUE(view->isVisible());
    QAbstractItemModel* m = view->model();
    EXPECT_EQ(m->index(0, 0).data().toString(), "1,234.500");
    EXPECT_FALSE(m->index(1, 1).data().isValid());  // Array #2 has one value
    ASSERT_EQ(m->rowCount(), 3);                      // two rows and the entry row

    // Type into the entry row of Array #2: the array grows to 3 values.
    auto type = [&](int row, int column, const char* text) {
        const QModelIndex index = m->index(row, column);
        view->setCurrentIndex(index);
        view->edit(index);
        auto* editor = qobject_cast<QLineEdit*>(view->indexWidget(index));
        if (!editor) editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        ASSERT_NE(editor, nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();  // the delegate commits on a queued call
    };
    type(2, 1, "1,000.25");
    EXPECT_EQ(ws.array2.UpperBound(), 3);
    EXPECT_EQ(ws.array2[2], 0.0f);
    EXPECT_EQ(ws.array2[3], 1000.25f);
    type(0, 0, "abc");  // not a number: the value stays
    EXPECT_EQ(ws.array1[1], 1234.5f);
    EXPECT_EQ(m->rowCount(), 4);

    // Viewing only: nothing can be typed.
    Trigger("menu_ManualDataEntry");
    w->findChild<QAction*>("menu_ViewArray")->trigger();
    EXPECT_FALSE(m->flags(m->index(0, 0)).testFlag(Qt::ItemIsEditable));
}

TEST_F(StatisticsGuiTest, MathematicalOperationWindowComputesIntoTheChosenArray) {
    SetArrays({1, 2, 3}, {});
    Trigger("menu_math");
    auto* w = window->findChild<MathOperationWindow*>();
    ASSERT_NE(w, nullptr);
    w->Operand(0)->setCurrentText("Array #1");
    w->Operand(1)->setCurrentText("Constant");
    EXPECT_FALSE(w->Constant(0)->isEnabled());
    w->Constant(1)->setText("2.5");
    w->Operation()->setCurrentText("Muliply");
    w->Destination()->setCurrentIndex(1);
    QTest::mouseClick(w->RunButton(), Qt::LeftButton);
    ASSERT_EQ(ws.array2.UpperBound(), 3);
    EXPECT_EQ(ws.array2[3], 7.5f);
    EXPECT_EQ(dialogs.Messages().back().caption, "Mathematical Operation Finished");
    // The unary operations take no second operand.
    w->Operation()->setCurrentText("Square root");
    EXPECT_FALSE(w->Operand(1)->isEnabled());
    EXPECT_FALSE(w->Constant(1)->isEnabled());
}

// The texts themselves are checked in tests/statistics; here the copy, the
// save and the import as a job.
TEST_F(StatisticsGuiTest, ClipboardAndTextFileCarryBothArrays) {
    SetArrays({1.5f, 2}, {3});
    Trigger("menu_ArrayCopy");
    EXPECT_EQ(QApplication::clipboard()->text(), "Array #1\tArray #2\r\n1.5\t3\r\n2\t\r\n");

    const std::string file = (dir / "arrays").string();
    dialogs.AnswerSaveFile(file);
    Trigger("menu_ArrayAscii");
    Trigger("menu_ClearArray1");
    EXPECT_TRUE(ws.array1.Empty());
    // The import reads the file as a job: the array commands wait for it,
    // and the arrays change only when it has ended.
    dialogs.AnswerOpenFile(file + ".txt");
    Trigger("menu_importAscii");
    EXPECT_TRUE(window->Busy());
    EXPECT_FALSE(window->Action("menu_ClearArray1")->isEnabled());
    EXPECT_TRUE(ws.array1.Empty());
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }));
    EXPECT_EQ(ws.array1.UpperBound(), 2);
    EXPECT_EQ(ws.array1[1], 1.5f);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace
}  // namespace vess::test
