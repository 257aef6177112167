// The graph frame with several plots: new plots tiled inside the visible
// frame, long titles wrapped to the plot's width, the legend in the emptiest
// corner, captions in words, and axes switched between linear and log.
#include <QAction>
#include <QDir>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <qcustomplot.h>

#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"

namespace vess {
namespace {

QString ScreenPath(const QString& name) {
    const QString folder = QString(VESS_BINARY_DIR) + "/graph_screens";
    QDir().mkpath(folder);
    return folder + "/" + name + ".png";
}

// A decaying spectrum-like series: points crowd the top left on linear axes.
PlotData Decay(const std::string& title) {
    PlotData p;
    p.title = title;
    p.xAxis = "Frequency (Hz)";
    p.yAxis = "Power (pA^2/Hz)";
    PlotSeries s{SeriesKind::Lines, {}, {}, "recorded"};
    for (int i = 1; i <= 200; ++i) {
        s.x.push_back(i);
        s.y.push_back(1000.0 / (i * i));
    }
    PlotSeries t = s;
    t.legend = "filtered";
    for (double& y : t.y) y *= 0.5;
    p.series = {s, t};
    return p;
}

class GraphLayoutTest : public ::testing::Test {
protected:
    QWidget owner;  // the main window's place
    ToolWindows tools{&owner};
};

TEST_F(GraphLayoutTest, NewPlotsTileInsideTheFrameWithWrappedTitlesAndWordCaptions) {
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

    // The title is broken into lines no wider than its plot; its words stay whole.
    PlotWidget* first = frame->Plots()[0];
    auto* title = first->Canvas()->findChild<QCPTextElement*>("plotTitle");
    ASSERT_NE(title, nullptr);
    const QStringList lines = title->text().split('\n');
    EXPECT_GT(lines.size(), 1);
    const QFontMetricsF metrics(title->font());
    for (const QString& line : lines) EXPECT_LE(metrics.horizontalAdvance(line), first->Canvas()->width());
    EXPECT_EQ(lines.join(' ').toStdString(), longTitle);

    QStringList captions;
    for (QAction* a : frame->menuBar()->findChildren<QAction*>()) captions << a->text().remove('&');
    for (const char* caption : {"Export Plot...", "Print Plot...", "Close Plot", "All Plots in One"})
        EXPECT_TRUE(captions.contains(caption)) << caption;
    EXPECT_FALSE(captions.join('|').contains("PlotData"));
    frame->grab().save(ScreenPath("frame_four_plots"));
}

TEST_F(GraphLayoutTest, LegendLeavesTheCrowdedCornerAndAxesSwitchToLogAndBack) {
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
    EXPECT_TRUE(plot->Description().xLog && plot->Description().yLog);
    EXPECT_TRUE(logX->isChecked() && logY->isChecked());
    // Fitted in decades: 1..200 Hz and 0.0125..1000 with 5 % of the decades on each side.
    EXPECT_GT(canvas->xAxis->range().lower, 0.5);
    EXPECT_LT(canvas->xAxis->range().lower, 1.0);
    EXPECT_GT(canvas->yAxis->range().lower, 0.005);
    // On log-log axes the series is a straight line from top left to bottom right.
    EXPECT_NE(canvas->axisRect()->insetLayout()->insetAlignment(0) & Qt::AlignRight, 0);
    CurrentGraphFrame()->grab().save(ScreenPath("plot_log_axes"));

    logY->trigger();
    EXPECT_EQ(canvas->yAxis->scaleType(), QCPAxis::stLinear);
    EXPECT_EQ(canvas->xAxis->scaleType(), QCPAxis::stLogarithmic);
}

}  // namespace
}  // namespace vess
