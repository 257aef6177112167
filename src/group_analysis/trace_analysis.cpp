#include "group_analysis/trace_analysis.h"

#include <algorithm>

#include "group_analysis/decay_fit.h"
#include "group_analysis/measure_columns.h"
#include "recording/le_bytes.h"

namespace vess::group {

double SampledTrace::ValueAt(double index) const {
    if (y.empty()) return kNotMeasured;
    const double i = std::clamp(index, 0.0, double(y.size() - 1));
    const auto lo = std::size_t(i);
    if (lo + 1 >= y.size()) return y.back();
    return y[lo] + (i - double(lo)) * (y[lo + 1] - y[lo]);
}

std::vector<double> Derivative(std::span<const double> y, double intervalMs) {
    const std::size_t n = y.size();
    std::vector<double> d(n, 0.0);
    if (n < 2) return d;
    d[0] = (y[1] - y[0]) / intervalMs;
    d[n - 1] = (y[n - 1] - y[n - 2]) / intervalMs;
    for (std::size_t i = 1; i + 1 < n; ++i) d[i] = (y[i + 1] - y[i - 1]) / (2 * intervalMs);
    return d;
}

std::optional<double> Crossing(std::span<const double> y, std::size_t from, std::size_t to,
                               double level, bool rising) {
    if (y.empty()) return std::nullopt;
    from = std::min(from, y.size() - 1);
    to = std::min(to, y.size() - 1);
    auto reached = [&](double v) { return rising ? v >= level : v <= level; };
    if (reached(y[from])) return double(from);
    const int step = to >= from ? 1 : -1;
    for (std::size_t i = from; i != to;) {
        const std::size_t next = i + step;
        if (reached(y[next])) {
            const double f = (level - y[i]) / (y[next] - y[i]);
            return double(i) + step * f;
        }
        i = next;
    }
    return std::nullopt;
}

std::size_t ArgMax(std::span<const double> y, std::size_t from, std::size_t to) {
    std::size_t best = from;
    for (std::size_t i = from; i <= to && i < y.size(); ++i)
        if (y[i] > y[best]) best = i;
    return best;
}

std::size_t ArgMin(std::span<const double> y, std::size_t from, std::size_t to) {
    std::size_t best = from;
    for (std::size_t i = from; i <= to && i < y.size(); ++i)
        if (y[i] < y[best]) best = i;
    return best;
}

double Mean(std::span<const double> y, std::size_t from, std::size_t to) {
    to = std::min(to, y.size());
    if (from >= to) return kNotMeasured;
    double s = 0;
    for (std::size_t i = from; i < to; ++i) s += y[i];
    return s / double(to - from);
}

double AreaBeyond(const SampledTrace& t, double a, double b, double level, int direction) {
    if (!(b > a) || t.Size() < 2) return 0;
    // Breakpoints: a, the samples strictly inside, b; each piece is linear, so
    // the clipped area of a piece is exact when it does not cross the level,
    // and split at the crossing when it does.
    std::vector<double> at{a};
    for (double i = std::floor(a) + 1; i < b; ++i) at.push_back(i);
    at.push_back(b);
    auto beyond = [&](double i) { return direction * (t.ValueAt(i) - level); };
    double area = 0;
    for (std::size_t k = 0; k + 1 < at.size(); ++k) {
        const double u = beyond(at[k]), v = beyond(at[k + 1]), w = at[k + 1] - at[k];
        if (u >= 0 && v >= 0) area += 0.5 * (u + v) * w;
        else if (u > 0) area += 0.5 * u * w * u / (u - v);
        else if (v > 0) area += 0.5 * v * w * v / (v - u);
    }
    return area * t.intervalMs;
}

SampledTrace TraceStretch(const TraceSet& set, int32_t trace, int32_t from, int32_t to,
                          const UnitScale& scale) {
    SampledTrace out;
    out.intervalMs = set.intervalUs / 1000.0;
    if (set.Empty() || set.length < 1) return out;
    if (from > to) std::swap(from, to);
    from = std::clamp(from, 0, set.length - 1);
    to = std::clamp(to, 0, set.length - 1);
    out.startMs = set.TimeMs(from);
    const auto row = set.Row(std::clamp(trace, 0, set.count));
    for (int32_t j = from; j <= to; ++j) out.y.push_back(scale.Level(row[std::size_t(j)]));
    return out;
}

ResultBytes MeasureRow(ResultKind kind, int32_t trace, int32_t group, std::span<const double> values,
                       int32_t eventIndex) {
    ResultValues head;
    head.kind = kind;
    head.trace = trace;
    head.eventIndex = eventIndex;
    head.group = group;
    ResultBytes row = WriteResultRow(head);
    std::span<uint8_t> bytes(row);
    const std::size_t n = std::min(values.size(), columns::kSlots);
    for (std::size_t i = 0; i < n; ++i) le::Put<double>(bytes, columns::kFirstOffset + 8 * i, values[i]);
    // The slots past the values are not measurements of this kind.
    for (std::size_t i = n; i < columns::kSlots; ++i)
        le::Put<double>(bytes, columns::kFirstOffset + 8 * i, kNotMeasured);
    return row;
}

PlotSeries Markers(std::string legend, std::vector<double> x, std::vector<double> y, Colour colour) {
    PlotSeries s{.kind = SeriesKind::Scatter, .x = std::move(x), .y = std::move(y), .legend = std::move(legend)};
    s.colour = colour;
    s.pointSize = 8;
    return s;
}

PlotSeries Segment(std::string legend, double x0, double y0, double x1, double y1, Colour colour) {
    PlotSeries s{.kind = SeriesKind::Lines, .x = {x0, x1}, .y = {y0, y1}, .legend = std::move(legend)};
    s.colour = colour;
    return s;
}

}  // namespace vess::group
