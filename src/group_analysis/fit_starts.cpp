#include "group_analysis/fit_starts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace vess::group {

namespace {

// Combinations of `count` distinct, increasing grid values.
void GridStarts(const std::vector<double>& grid, int count, std::vector<double>& current,
                std::size_t from, std::vector<std::vector<double>>& out) {
    if (int(current.size()) == count) {
        out.push_back(current);
        return;
    }
    for (std::size_t i = from; i < grid.size(); ++i) {
        current.push_back(grid[i]);
        GridStarts(grid, count, current, i + 1, out);
        current.pop_back();
    }
}

// Peeling of the log-decay: the slowest component from a straight line
// through log |y - offset| over the late part of the range, subtracted, then
// the next one from the earlier part, and so on.
std::vector<double> PeeledStart(const ExpModel& model, std::span<const double> x,
                                std::span<const double> y, const SearchBox& box) {
    const std::size_t m = x.size(), n = std::size_t(model.exponentials);
    std::vector<double> z(y.begin(), y.end());
    if (model.offset) {
        const std::size_t tail = std::max<std::size_t>(1, m / 10);
        const double c = std::accumulate(y.end() - long(tail), y.end(), 0.0) / double(tail);
        for (double& v : z) v -= c;
    }
    const double span = x.back() - x.front();
    std::vector<double> edges = {0.0};
    for (std::size_t k = 1; k < n; ++k) edges.push_back(span * std::pow(0.2, double(n - k)));
    edges.push_back(span);
    std::vector<double> logTau;
    for (std::size_t seg = n; seg-- > 0;) {
        double sx = 0, sy = 0, sxx = 0, sxy = 0, count = 0;
        const double sign = z[std::size_t(std::lower_bound(x.begin(), x.end(), x.front() + edges[seg]) - x.begin())] < 0 ? -1 : 1;
        for (std::size_t i = 0; i < m; ++i) {
            const double t = x[i] - x.front();
            if (t < edges[seg] || t > edges[seg + 1] || z[i] * sign <= 0) continue;
            const double l = std::log(z[i] * sign);
            sx += t, sy += l, sxx += t * t, sxy += t * l, count += 1;
        }
        const double det = count * sxx - sx * sx;
        const double slope = count >= 2 && det > 0 ? (count * sxy - sx * sy) / det : 0;
        const double tau = slope < 0 ? -1 / slope : std::max(edges[seg + 1], SamplingInterval(x)) / 3;
        const double amplitude = slope < 0 ? sign * std::exp((sy - slope * sx) / count) : 0;
        for (std::size_t i = 0; i < m; ++i) z[i] -= amplitude * std::exp(-(x[i] - x.front()) / tau);
        logTau.push_back(box.Clamp(std::log(tau)));
    }
    std::sort(logTau.begin(), logTau.end());
    return logTau;
}

}  // namespace

double SamplingInterval(std::span<const double> x) {
    if (x.size() < 2) return 1.0;
    return std::max((x.back() - x.front()) / double(x.size() - 1), 1e-300);
}

double SearchBox::Clamp(double v) const { return std::isfinite(v) ? std::clamp(v, lo, hi) : (lo + hi) / 2; }

// The starts of the refinements: the guess, the peeled decay, the geometric
// series of a fifth of the range, and the best points of a grid over the
// range's time scale.
std::vector<std::vector<double>> FitStarts(const ExpModel& model, const ExpParameters& guess,
                                           std::span<const double> x, std::span<const double> y,
                                           const LeastSquaresOptions& o, const SearchBox& box,
                                           ExpProjection& projection) {
    const int n = model.exponentials;
    std::vector<std::vector<double>> starts;
    if (o.startFromGuess) {
        std::vector<double> g;
        for (int k = 0; k < n; ++k)
            if (guess[std::size_t(2 * k)] > 0) g.push_back(box.Clamp(std::log(guess[std::size_t(2 * k)])));
        if (int(g.size()) == n) starts.push_back(g);
    }
    starts.push_back(PeeledStart(model, x, y, box));
    const double span = std::max(x.back() - x.front(), SamplingInterval(x));
    std::vector<double> geometric;
    for (int k = 0; k < n; ++k) geometric.push_back(box.Clamp(std::log(span / 5 * std::pow(5.0, k))));
    starts.push_back(geometric);

    const int points = o.gridPoints > 0 ? o.gridPoints : std::array{16, 10, 8}[std::size_t(n - 1)];
    const double lo = std::log(SamplingInterval(x) / 2), hi = std::log(2 * span);
    std::vector<double> grid;
    for (int i = 0; i < points; ++i) grid.push_back(lo + (hi - lo) * i / std::max(points - 1, 1));
    std::vector<std::vector<double>> candidates;
    std::vector<double> current;
    GridStarts(grid, n, current, 0, candidates);
    std::vector<std::pair<double, std::size_t>> ranked;
    for (std::size_t i = 0; i < candidates.size(); ++i) ranked.push_back({projection.Rss(candidates[i]), i});
    const std::size_t keep = std::min(ranked.size(), std::size_t(std::max(o.refinedGridStarts, 0)));
    std::partial_sort(ranked.begin(), ranked.begin() + long(keep), ranked.end());
    for (std::size_t i = 0; i < keep; ++i) starts.push_back(candidates[ranked[i].second]);
    return starts;
}

}  // namespace vess::group
