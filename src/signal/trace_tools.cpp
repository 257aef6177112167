#include "signal/trace_tools.h"

#include <fmt/format.h>

#include <algorithm>

#include "signal/tool_texts.h"

namespace vess {

XYTrace DifferenceTrace(const TraceStretch& stretch) {
    XYTrace t;
    const auto& v = stretch.values;
    if (v.size() < 2 || !(stretch.intervalMs > 0)) return t;
    t.x.reserve(v.size() - 1);
    t.y.reserve(v.size() - 1);
    for (std::size_t i = 0; i + 1 < v.size(); ++i) {
        t.x.push_back(stretch.startMs + (double(i) + 0.5) * stretch.intervalMs);
        t.y.push_back((v[i + 1] - v[i]) / stretch.intervalMs);
    }
    return t;
}

XYTrace VarianceMeanTrace(std::span<const double> values, int windowPoints) {
    XYTrace t;
    const std::size_t w = std::size_t(windowPoints);
    if (windowPoints < 2 || w > values.size()) return t;
    // Running sums of deviations from the first sample keep the variance
    // exact for a trace far from zero.
    const double ref = values[0];
    double sum = 0, squares = 0;
    for (std::size_t i = 0; i < w; ++i) {
        sum += values[i] - ref;
        squares += (values[i] - ref) * (values[i] - ref);
    }
    const double n = double(w);
    for (std::size_t start = 0;; ++start) {
        const double mean = sum / n;
        t.x.push_back(ref + mean);
        t.y.push_back(std::max(0.0, (squares - n * mean * mean) / (n - 1)));
        if (start + w >= values.size()) break;
        const double out = values[start] - ref, in = values[start + w] - ref;
        sum += in - out;
        squares += in * in - out * out;
    }
    return t;
}

PlotData DifferencePlot(const TraceStretch& stretch) {
    XYTrace t = DifferenceTrace(stretch);
    PlotData plot;
    plot.title = std::string(tool_texts::kDifferenceMenu);
    plot.xAxis = std::string(tool_texts::kTimeAxis);
    plot.yAxis = stretch.units + std::string(tool_texts::kPerMsSuffix);
    PlotSeries s;
    s.kind = SeriesKind::Lines;
    s.x = std::move(t.x);
    s.y = std::move(t.y);
    plot.series.push_back(std::move(s));
    return plot;
}

PlotData VarianceMeanPlot(const TraceStretch& stretch, int windowPoints) {
    XYTrace t = VarianceMeanTrace(stretch.values, windowPoints);
    PlotData plot;
    plot.title = fmt::format("{}  window={} points", tool_texts::kVarianceMeanMenu, windowPoints);
    plot.xAxis = fmt::format("{} ({})", tool_texts::kMeanAxis, stretch.units);
    plot.yAxis = fmt::format("{} ({}^2)", tool_texts::kVarianceAxis, stretch.units);
    PlotSeries s;
    s.kind = SeriesKind::Scatter;
    s.x = std::move(t.x);
    s.y = std::move(t.y);
    s.pointSize = 3;
    plot.series.push_back(std::move(s));
    return plot;
}

}  // namespace vess
