#include "group_analysis/trace_plot.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "group_analysis/texts.h"

namespace vess::group {

namespace {

constexpr Colour kAverageColour{0, 0, 0}, kTraceColour{30, 100, 200}, kOthersColour{110, 160, 220},
    kCurveColour{220, 30, 30}, kCursorColour{0, 160, 0}, kBarColour{0, 0, 0};

std::pair<int32_t, int32_t> DrawnRows(const TraceSet& set, const TraceView& view) {
    return view.all ? std::pair{1, set.count} : std::pair{view.trace, view.trace};
}

PlotSeries Row(const TraceSet& set, const UnitScale& scale, int32_t t, int every, Colour colour) {
    PlotSeries s{.kind = SeriesKind::Lines, .x = {}, .y = {}, .legend = {}};
    const auto row = set.Row(t);
    for (int32_t j = 0; j < set.length; j += std::max(every, 1)) {
        s.x.push_back(set.TimeMs(j));
        s.y.push_back(scale.Level(row[std::size_t(j)]));
    }
    s.colour = colour;
    s.lineWidth = 1;
    return s;
}

PlotSeries Line(double x0, double y0, double x1, double y1, Colour colour, std::string legend = {}) {
    PlotSeries s{.kind = SeriesKind::Lines, .x = {x0, x1}, .y = {y0, y1}, .legend = std::move(legend)};
    s.colour = colour;
    return s;
}

}  // namespace

AxisRange TraceYRange(const TraceSet& set, const UnitScale& scale, const TraceView& view) {
    double lo = INFINITY, hi = -INFINITY;
    const auto [first, last] = DrawnRows(set, view);
    for (int32_t t = first; t <= last && !set.Empty(); ++t)
        for (int16_t v : set.Row(t)) {
            lo = std::min(lo, scale.Level(v));
            hi = std::max(hi, scale.Level(v));
        }
    if (!(lo <= hi)) lo = 0, hi = 1;
    if (hi <= lo) hi = lo + 1;
    const double gain = view.gain > 0 ? view.gain : 1;
    const double mid = (lo + hi) / 2 + view.offset, half = (hi - lo) / 2 * 1.1 / gain;
    return {mid - half, mid + half};
}

double ScaleBarLength(double span) {
    const double target = span / 4;
    if (!(target > 0) || !std::isfinite(target)) return 0;
    const double decade = std::pow(10.0, std::floor(std::log10(target)));
    for (double m : {5.0, 2.0, 1.0})
        if (m * decade <= target * (1 + 1e-12)) return m * decade;
    return decade;
}

std::string PictureTitle(bool byGroup, int group, AnalysisType type) {
    const std::string source = byGroup ? std::string(texts::kPrintGroup) + std::to_string(group)
                                       : std::string(texts::kSourceEpisodes);
    return source + "    " + std::string(texts::kPrintType) + std::string(AnalysisTypeName(type));
}

PlotData TracePlot(const TraceSet& set, const UnitScale& scale, const TraceView& view, std::string title) {
    PlotData plot{.title = std::move(title), .xAxis = "Time (ms)",
                  .yAxis = scale.units.empty() ? "Amplitude" : "Amplitude (" + scale.units + ")", .series = {}};
    if (set.Empty() || set.length < 1) return plot;
    const AxisRange y = TraceYRange(set, scale, view);
    const double end = set.TimeMs(std::max(set.length - 1, 1));
    plot.xRange = AxisRange{0, end};
    plot.yRange = y;
    if (view.all) {
        for (int32_t t = 1; t <= set.count; ++t)
            if (t != view.highlighted) plot.series.push_back(Row(set, scale, t, view.every, kOthersColour));
        // The highlighted trace over the others.
        if (view.highlighted >= 1 && view.highlighted <= set.count) {
            plot.series.push_back(Row(set, scale, view.highlighted, view.every, kHighlightColour));
            plot.series.back().lineWidth = 2;
        }
    } else {
        const int32_t t = std::clamp(view.trace, 0, set.count);
        plot.series.push_back(Row(set, scale, t, view.every,
                                  t == view.highlighted ? kHighlightColour
                                  : t == 0              ? kAverageColour
                                                        : kTraceColour));
        if (t == view.highlighted) plot.series.back().lineWidth = 2;
    }
    if (!view.curve.empty()) {
        PlotSeries fit{.kind = SeriesKind::Lines, .x = {}, .y = view.curve, .legend = "Fit"};
        for (std::size_t k = 0; k < view.curve.size(); ++k) fit.x.push_back(set.TimeMs(view.curveFrom + int32_t(k)));
        fit.colour = kCurveColour;
        fit.lineWidth = 2;
        plot.series.push_back(std::move(fit));
    }
    plot.series.insert(plot.series.end(), view.marks.begin(), view.marks.end());
    for (int32_t c : {view.cursors.first, view.cursors.second}) {
        PlotSeries cursor = Line(set.TimeMs(c), y.lower, set.TimeMs(c), y.upper, kCursorColour);
        cursor.lineWidth = 1;
        plot.series.push_back(std::move(cursor));
    }
    if (view.scaleBars) {
        // In the lower right corner: the time bar along the bottom, the
        // amplitude bar up from its right end.
        const double ms = ScaleBarLength(end), units = ScaleBarLength(y.upper - y.lower);
        const double right = end * 0.97, bottom = y.lower + (y.upper - y.lower) * 0.05;
        if (ms > 0 && units > 0) {
            plot.series.push_back(Line(right - ms, bottom, right, bottom, kBarColour, fmt::format("{:g} ms", ms)));
            plot.series.push_back(
                Line(right, bottom, right, bottom + units, kBarColour, fmt::format("{:g} {}", units, scale.units)));
            plot.series[plot.series.size() - 2].lineWidth = plot.series.back().lineWidth = 3;
        }
    }
    return plot;
}

int32_t PickedTrace(const TraceSet& set, const UnitScale& scale, const TraceView& view, int32_t from,
                    int32_t to, double value, double tolerance) {
    if (set.Empty() || set.length < 1) return -1;
    from = std::clamp(from, 0, set.length - 1);
    to = std::clamp(to, 0, set.length - 1);
    const auto [first, last] = DrawnRows(set, view);
    int32_t chosen = -1;
    double best = INFINITY;
    for (int32_t t = first; t <= last; ++t) {
        const auto row = set.Row(t);
        for (int32_t j = from; j <= to; ++j) {
            const double d = std::fabs(scale.Level(row[std::size_t(j)]) - value);
            if (d < best) best = d, chosen = t;
        }
    }
    return view.all || best <= tolerance ? chosen : -1;
}

}  // namespace vess::group
