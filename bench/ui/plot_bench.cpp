// Drawing time of a plot against its number of points: a replot after a pan
// (what a mouse drag costs) for lines and points, offscreen. Read the ratio
// of a million points to a thousand: with lines reduced to the pixel width
// it stays far below the thousandfold growth of the data.
#include <QApplication>

#include <benchmark/benchmark.h>

#include <cmath>
#include <qcustomplot.h>

#include "graphs/ui/plot_widget.h"

namespace {

vess::PlotData Wave(std::size_t n, vess::SeriesKind kind) {
    vess::PlotSeries s{kind};
    s.x.resize(n);
    s.y.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        s.x[i] = double(i);
        s.y[i] = std::sin(double(i) * 6000.0 / double(n)) + (i % 2 ? 0.1 : -0.1);
    }
    vess::PlotData p;
    p.series.push_back(std::move(s));
    return p;
}

void Replot(benchmark::State& state, vess::SeriesKind kind) {
    vess::PlotWidget widget(Wave(std::size_t(state.range(0)), kind));
    widget.resize(800, 500);
    QCustomPlot* canvas = widget.Canvas();
    const QCPRange start = canvas->xAxis->range();
    double shift = 0;
    for (auto _ : state) {
        shift = shift > 0 ? 0 : start.size() * 0.01;  // a small pan each time
        canvas->xAxis->setRange(start.lower + shift, start.upper + shift);
        canvas->replot(QCustomPlot::rpImmediateRefresh);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ReplotLines(benchmark::State& state) { Replot(state, vess::SeriesKind::Lines); }
void BM_ReplotPoints(benchmark::State& state) { Replot(state, vess::SeriesKind::Scatter); }
BENCHMARK(BM_ReplotLines)->Arg(1000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReplotPoints)->Arg(1000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
