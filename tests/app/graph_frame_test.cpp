// The graph windows on the offscreen platform: drawing each kind of series,
// mouse zoom, pan and reset, the axis dialog, export, the frame's child
// windows and their layout.
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <cmath>
#include <qcustomplot.h>

#include "graphs/ui/axis_dialog.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess::test {
namespace {

// Bins of 0.5 from 1.0: counts 2, 5, 3.
PlotData Histogram() {
    return {" Frequency Histogram  Amplitude bin size=0.5pA", "Amplitude (pA)", "Number of Events",
            {{.kind = SeriesKind::Bars, .x = {1.0, 1.5, 2.0}, .y = {2, 5, 3}, .legend = "", .barWidth = 0.5}}};
}

PlotData Mixed() {
    return {"Steps, lines and points", "X Axis", "Y Axis",
            {{SeriesKind::Steps, {0, 1, 2, 3}, {0.25, 0.5, 0.75, 1}, "Array #1"},
             {SeriesKind::Lines, {0, 3}, {0, 1}, ""},
             {SeriesKind::Scatter, {0.5, 1.5, 2.5}, {0.2, 0.6, 0.9}, "Array #2"}}};
}

class PlotWidgetTest : public ::testing::Test {
protected:
    void Open(const PlotData& p) {
        widget = std::make_unique<PlotWidget>(p);
        widget->resize(640, 440);
        widget->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(widget.get()));
    }
    QCustomPlot* Canvas() { return widget->Canvas(); }
    QPoint Centre() { return Canvas()->axisRect()->rect().center(); }
    std::unique_ptr<PlotWidget> widget;
    TempDir dir;
};

TEST_F(PlotWidgetTest, DrawsEachKindWithItsTitlesAndFittedRanges) {
    Open(Mixed());
    ASSERT_EQ(Canvas()->graphCount(), 3);
    EXPECT_EQ(Canvas()->graph(0)->lineStyle(), QCPGraph::lsStepLeft);
    EXPECT_EQ(Canvas()->graph(1)->lineStyle(), QCPGraph::lsLine);
    EXPECT_EQ(Canvas()->graph(2)->lineStyle(), QCPGraph::lsNone);
    EXPECT_EQ(Canvas()->xAxis->label(), "X Axis");
    EXPECT_EQ(Canvas()->legend->itemCount(), 2);  // named series only
    EXPECT_EQ(widget->Ranges().x, FittedRanges(Mixed()).x);

    Open(Histogram());
    auto* bars = qobject_cast<QCPBars*>(Canvas()->plottable(0));
    ASSERT_NE(bars, nullptr);
    // Left-aligned bins: the bar of bin [1.0, 1.5) is centred on 1.25.
    EXPECT_DOUBLE_EQ(bars->data()->at(0)->key, 1.25);
    EXPECT_DOUBLE_EQ(bars->width(), 0.5);
    EXPECT_FALSE(Canvas()->legend->visible());
}

TEST_F(PlotWidgetTest, WheelZoomsDragPansCtrlDragZoomsToRectangleAndHomeResets) {
    Open(Mixed());
    const PlotRanges start = widget->Ranges();
    const QPoint c = Centre();
    QWheelEvent wheel(c, Canvas()->mapToGlobal(c), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(Canvas(), &wheel);
    const PlotRanges zoomed = widget->Ranges();
    EXPECT_LT(zoomed.x.upper - zoomed.x.lower, start.x.upper - start.x.lower);
    EXPECT_LT(zoomed.y.upper - zoomed.y.lower, start.y.upper - start.y.lower);

    // A drag to the right moves the view to smaller x by the same width.
    QTest::mousePress(Canvas(), Qt::LeftButton, {}, c);
    QTest::mouseMove(Canvas(), c + QPoint(60, 0));
    QTest::mouseRelease(Canvas(), Qt::LeftButton, {}, c + QPoint(60, 0));
    const PlotRanges panned = widget->Ranges();
    EXPECT_LT(panned.x.lower, zoomed.x.lower);
    EXPECT_NEAR(panned.x.upper - panned.x.lower, zoomed.x.upper - zoomed.x.lower, 1e-9);

    widget->ResetView();
    EXPECT_EQ(widget->Ranges().x, start.x);

    // Ctrl+drag over a quarter of the plot zooms to that rectangle.
    const QRect area = Canvas()->axisRect()->rect();
    const QPoint from = area.topLeft() + QPoint(area.width() / 4, area.height() / 4);
    const QPoint to = from + QPoint(area.width() / 4, area.height() / 4);
    const double expectLower = Canvas()->xAxis->pixelToCoord(from.x());
    QTest::mousePress(Canvas(), Qt::LeftButton, Qt::ControlModifier, from);
    QTest::mouseMove(Canvas(), to);
    QTest::mouseRelease(Canvas(), Qt::LeftButton, Qt::ControlModifier, to);
    const PlotRanges rect = widget->Ranges();
    const double width = start.x.upper - start.x.lower;
    EXPECT_NEAR(rect.x.lower, expectLower, width * 0.01);
    EXPECT_NEAR(rect.x.upper - rect.x.lower, width / 4, width * 0.02);

    // The Home key on the plot, like a double click, returns to the start.
    Canvas()->setFocus();
    QTest::keyClick(Canvas(), Qt::Key_Home);
    EXPECT_EQ(widget->Ranges().x, start.x);
    EXPECT_EQ(widget->Ranges().y, start.y);
    QTest::mouseDClick(Canvas(), Qt::LeftButton, {}, c);
    EXPECT_EQ(widget->Ranges().x, start.x);
}

TEST_F(PlotWidgetTest, AxisDialogSetsTextsAndRangesAndRefusesAnEmptyRange) {
    Open(Histogram());
    AxisDialog dialog(*widget);
    dialog.findChild<QLineEdit*>("edTitle")->setText("Amplitudes");
    dialog.findChild<QLineEdit*>("edXLabel")->setText("pA");
    dialog.findChild<QDoubleSpinBox*>("edXMin")->setValue(-5);
    dialog.findChild<QDoubleSpinBox*>("edXMax")->setValue(5);
    dialog.Apply();
    EXPECT_EQ(widget->Description().title, "Amplitudes");
    EXPECT_EQ(Canvas()->xAxis->label(), "pA");
    EXPECT_EQ(widget->Ranges().x, (AxisRange{-5, 5}));

    // From above To: OK is disabled and nothing is applied.
    dialog.findChild<QDoubleSpinBox*>("edYMin")->setValue(100);
    dialog.findChild<QDoubleSpinBox*>("edYMax")->setValue(1);
    auto* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    EXPECT_FALSE(ok->isEnabled());
    dialog.Apply();
    EXPECT_NE(widget->Ranges().y.lower, 100);
}

// Colour-coded points are split into classes in tests/graphs; here a colour
// map is drawn from its grid with its scale and band.
TEST_F(PlotWidgetTest, ColourMapIsDrawnWithItsColourScale) {
    PlotData m;
    m.title = "Contour";
    m.colourMap = ColourMap{50, 40, -2, 2, -2, 2, {}, "Density"};
    for (std::size_t iy = 0; iy < 40; ++iy)
        for (std::size_t ix = 0; ix < 50; ++ix) {
            const double x = -2 + 4.0 * ix / 49, y = -2 + 4.0 * iy / 39;
            m.colourMap->z.push_back(std::exp(-(x * x + y * y)));
        }
    m.bands.push_back({-1, 1, "band", {}});
    Open(m);
    auto* map = qobject_cast<QCPColorMap*>(Canvas()->plottable(0));
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->data()->keySize(), 50);
    EXPECT_NEAR(map->dataRange().upper, 1.0, 0.01);  // the peak exp(0) near the centre
    EXPECT_EQ(Canvas()->itemCount(), 2);              // the band and its label
    int scales = 0;
    for (QCPLayoutElement* e : Canvas()->plotLayout()->elements(false)) scales += qobject_cast<QCPColorScale*>(e) != nullptr;
    EXPECT_EQ(scales, 1);
}

// The graph frame: one frame for every plot, Plot All, export through the
// program's dialogs, new plots tiled inside the visible frame with long
// titles wrapped to the plot's width, the legend in the emptiest corner, and
// axes switched between linear and log.
class GraphFrameTest : public ::testing::Test {
protected:
    static void Save(QWidget* widget, const QString& name) {
        const QString folder = QString(VESS_BINARY_DIR) + "/graph_screens";
        QDir().mkpath(folder);
        widget->grab().save(folder + "/" + name + ".png");
    }
    ScriptedDialogs dialogs;
    TempDir dir;
    QWidget owner;  // the main window's place
    ToolWindows tools{&owner, &dialogs};
};

// A decaying spectrum-like series: points crowd the top left on linear axes.
PlotData Decay(const std::string& title) {
    PlotData p{title, "Frequency (Hz)", "Power (pA^2/Hz)", {{SeriesKind::Lines, {}, {}, "recorded"}}};
    for (int i = 1; i <= 200; ++i) {
        p.series[0].x.push_back(i);
        p.series[0].y.push_back(1000.0 / (i * i));
    }
    return p;
}

TEST_F(GraphFrameTest, ShowPlotOpensOneFrameWithChildrenPlotAllAndExport) {
    EXPECT_EQ(CurrentGraphFrame(), nullptr);
    ShowPlot(tools, Histogram());
    GraphFrame* frame = CurrentGraphFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_FALSE(frame->Action("graph_PlotAll")->isEnabled());
    ShowPlot(tools, Mixed());
    EXPECT_EQ(CurrentGraphFrame(), frame);
    ASSERT_EQ(frame->Plots().size(), 2u);
    EXPECT_EQ(frame->CurrentPlot(), frame->Plots()[1]);
    EXPECT_EQ(frame->Area()->subWindowList()[0]->windowTitle(), "Frequency Histogram  Amplitude bin size=0.5pA");
    ASSERT_TRUE(frame->Action("graph_PlotAll")->isEnabled());
    frame->Action("graph_PlotAll")->trigger();
    ASSERT_EQ(frame->Plots().size(), 3u);
    const PlotData& all = frame->Plots()[2]->Description();
    EXPECT_EQ(all.series.size(), 4u);  // the histogram's bars and Mixed's three series
    EXPECT_EQ(all.series[0].legend, Histogram().title);

    frame->Area()->setActiveSubWindow(frame->Area()->subWindowList()[0]);
    const std::string stem = (dir / "exported").string();
    dialogs.AnswerSaveFile(stem);  // no extension: PNG is the default
    frame->Action("graph_Export")->trigger();
    EXPECT_FALSE(QImage(QString::fromStdString(stem + ".png")).isNull());
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Export Plot");
    // An existing file asks before it is replaced; No keeps it.
    dialogs.AnswerSaveFile(stem + ".png").AnswerYesNo(false);
    EXPECT_FALSE(frame->ExportPlot(frame->Plots()[0]));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");
    // Vector formats keep the axis texts as text, not pixels.
    dialogs.AnswerSaveFile(stem + ".svg").AnswerSaveFile(stem + ".pdf");
    EXPECT_TRUE(frame->ExportPlot(frame->Plots()[0]));
    QFile svg(QString::fromStdString(stem + ".svg"));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    EXPECT_TRUE(svg.readAll().contains("Number of Events"));
    EXPECT_TRUE(frame->ExportPlot(frame->Plots()[0]));
    EXPECT_GT(QFileInfo(QString::fromStdString(stem + ".pdf")).size(), 500);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(GraphFrameTest, NewPlotsTileInsideTheFrameWithWrappedTitles) {
    const std::string longTitle =
        "Noise power spectral density of 171116sh_0020_saved.abf channel 0 from 0 to 70 s, "
        "Welch segments of 4096 points, filtered: Bessel low-pass 1000 Hz, order 4";
    for (int i = 0; i < 4; ++i) ShowPlot(tools, Decay(i == 0 ? longTitle : "Plot " + std::to_string(i)));
    GraphFrame* frame = CurrentGraphFrame();
    ASSERT_NE(frame, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(frame));
    const QRect visible = frame->Area()->viewport()->rect();
    for (QMdiSubWindow* sub : frame->Area()->subWindowList())
        EXPECT_TRUE(visible.contains(sub->geometry())) << sub->windowTitle().toStdString();
    // The title is broken into lines no wider than its plot (where the
    // breaks fall: tests/graphs).
    PlotWidget* first = frame->Plots()[0];
    auto* title = first->Canvas()->findChild<QCPTextElement*>("plotTitle");
    ASSERT_NE(title, nullptr);
    const QStringList lines = title->text().split('\n');
    EXPECT_GT(lines.size(), 1);
    const QFontMetricsF metrics(title->font());
    for (const QString& line : lines) EXPECT_LE(metrics.horizontalAdvance(line), first->Canvas()->width());
    Save(frame, "frame_four_plots");
}

TEST_F(GraphFrameTest, LegendLeavesTheCrowdedCornerAndAxesSwitchToLogAndBack) {
    PlotWidget* plot = ShowPlot(tools, Decay("Spectrum"));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(CurrentGraphFrame()));
    QCustomPlot* canvas = plot->Canvas();
    // 1/f^2 on linear axes fills the left edge and the bottom: top right is free.
    EXPECT_EQ(canvas->axisRect()->insetLayout()->insetAlignment(0), Qt::AlignTop | Qt::AlignRight);
    QAction* logX = plot->findChild<QAction*>("plot_LogX");
    QAction* logY = plot->findChild<QAction*>("plot_LogY");
    ASSERT_TRUE(logX && logY);
    EXPECT_FALSE(logX->isChecked());
    logX->trigger();
    logY->trigger();
    EXPECT_EQ(canvas->xAxis->scaleType(), QCPAxis::stLogarithmic);
    EXPECT_EQ(canvas->yAxis->scaleType(), QCPAxis::stLogarithmic);
    EXPECT_TRUE(logX->isChecked() && logY->isChecked());
    EXPECT_EQ(plot->Ranges().x, FittedRanges(plot->Description()).x);  // in decades
    // On log-log axes the series is a straight line from top left to bottom right.
    EXPECT_NE(canvas->axisRect()->insetLayout()->insetAlignment(0) & Qt::AlignRight, 0);
    Save(CurrentGraphFrame(), "plot_log_axes");
    logY->trigger();
    EXPECT_EQ(canvas->yAxis->scaleType(), QCPAxis::stLinear);
    EXPECT_EQ(canvas->xAxis->scaleType(), QCPAxis::stLogarithmic);
}

}  // namespace
}  // namespace vess::test
