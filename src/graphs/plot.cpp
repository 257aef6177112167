#include "graphs/plot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace vess {

namespace {

// Grows lo..hi to include v (finite values only).
void Include(double v, double& lo, double& hi) {
    if (!std::isfinite(v)) return;
    lo = std::min(lo, v);
    hi = std::max(hi, v);
}

}  // namespace

double BarWidth(const PlotSeries& s) {
    if (s.barWidth > 0) return s.barWidth;
    std::vector<double> xs(s.x.begin(), s.x.begin() + std::ptrdiff_t(s.Size()));
    std::sort(xs.begin(), xs.end());
    double w = std::numeric_limits<double>::infinity();
    for (std::size_t i = 1; i < xs.size(); ++i)
        if (xs[i] > xs[i - 1]) w = std::min(w, xs[i] - xs[i - 1]);
    return std::isfinite(w) ? w : 1.0;
}

namespace {

// lo..hi with a margin of 5 % of the decades, or a decade either side of a
// single value; 1..10 without data.
AxisRange FinishLog(double lo, double hi) {
    if (lo > hi) return {1, 10};
    if (lo == hi) return {lo / 10, hi * 10};
    const double margin = std::pow(hi / lo, 0.05);
    return {lo / margin, hi * margin};
}

// lo..hi with a 5 % margin, or the fallbacks for a single value and no data.
AxisRange Finish(double lo, double hi) {
    if (lo > hi) return {0, 1};
    if (lo == hi) {
        const double half = std::max(1.0, std::abs(lo) * 0.1);
        return {lo - half, hi + half};
    }
    const double margin = (hi - lo) * 0.05;
    return {lo - margin, hi + margin};
}

}  // namespace

PlotRanges FittedRanges(const PlotData& plot) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    double xlo = inf, xhi = -inf, ylo = inf, yhi = -inf;
    // A logarithmic axis has no place for values at or below 0.
    const auto includeX = [&](double v) {
        if (!plot.xLog || v > 0) Include(v, xlo, xhi);
    };
    const auto includeY = [&](double v) {
        if (!plot.yLog || v > 0) Include(v, ylo, yhi);
    };
    for (const PlotSeries& s : plot.series) {
        const std::size_t n = s.Size();
        double left = 0, right = 0;
        if (s.kind == SeriesKind::Bars && n > 0) {
            const double w = BarWidth(s);
            left = s.barAlign == BarAlign::Left ? 0 : -w / 2;
            right = left + w;
            includeY(0);
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (!std::isfinite(s.x[i]) || !std::isfinite(s.y[i])) continue;
            if ((plot.xLog && s.x[i] <= 0) || (plot.yLog && s.y[i] <= 0)) continue;
            includeX(s.x[i] + left);
            includeX(s.x[i] + right);
            includeY(s.y[i]);
        }
    }
    if (plot.colourMap && plot.colourMap->Valid()) {
        const ColourMap& m = *plot.colourMap;
        includeX(m.xMin);
        includeX(m.xMax);
        includeY(m.yMin);
        includeY(m.yMax);
    }
    for (const XBand& b : plot.bands) {
        includeX(b.from);
        includeX(b.to);
    }
    PlotRanges r{plot.xLog ? FinishLog(xlo, xhi) : Finish(xlo, xhi),
                 plot.yLog ? FinishLog(ylo, yhi) : Finish(ylo, yhi)};
    if (plot.xRange) r.x = *plot.xRange;
    if (plot.yRange) r.y = *plot.yRange;
    return r;
}

bool HasLegend(const PlotData& plot) {
    return std::any_of(plot.series.begin(), plot.series.end(),
                       [](const PlotSeries& s) { return !s.legend.empty(); });
}

void SortByX(PlotSeries& s) {
    const std::size_t n = s.Size();
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return s.x[a] < s.x[b]; });
    auto permute = [&](std::vector<double>& v) {
        if (v.size() < n) return;
        std::vector<double> out(v.size());
        for (std::size_t i = 0; i < n; ++i) out[i] = v[order[i]];
        std::copy(v.begin() + std::ptrdiff_t(n), v.end(), out.begin() + std::ptrdiff_t(n));
        v = std::move(out);
    };
    permute(s.x);
    permute(s.y);
    permute(s.z);
}

PlotData CombinePlots(const std::vector<PlotData>& plots, const std::string& title) {
    PlotData all;
    all.title = title;
    auto join = [&](std::string PlotData::*label) {
        std::vector<std::string> seen;
        std::string out;
        for (const PlotData& p : plots) {
            const std::string& l = p.*label;
            if (l.empty() || std::find(seen.begin(), seen.end(), l) != seen.end()) continue;
            seen.push_back(l);
            out += (out.empty() ? "" : " / ") + l;
        }
        return out;
    };
    all.xAxis = join(&PlotData::xAxis);
    all.yAxis = join(&PlotData::yAxis);
    for (const PlotData& p : plots) {
        for (PlotSeries s : p.series) {
            if (s.legend.empty()) s.legend = p.title;
            s.colour.reset();
            all.series.push_back(std::move(s));
        }
        all.bands.insert(all.bands.end(), p.bands.begin(), p.bands.end());
    }
    return all;
}

std::vector<std::vector<std::size_t>> ColourClasses(const std::vector<double>& z, int classes,
                                                    double zMin, double zMax) {
    classes = std::max(classes, 1);
    std::vector<std::vector<std::size_t>> out(static_cast<std::size_t>(classes));
    const double span = zMax - zMin;
    for (std::size_t i = 0; i < z.size(); ++i) {
        if (std::isnan(z[i])) continue;
        const double f = span > 0 ? (z[i] - zMin) / span : 0.0;
        const int c = std::clamp(int(std::floor(f * classes)), 0, classes - 1);
        out[std::size_t(c)].push_back(i);
    }
    return out;
}

AxisRange ZRange(const std::vector<double>& z) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    double lo = inf, hi = -inf;
    for (double v : z) Include(v, lo, hi);
    if (lo > hi) return {0, 1};
    return {lo, hi};
}

}  // namespace vess
