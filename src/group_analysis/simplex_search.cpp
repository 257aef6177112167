#include "group_analysis/simplex_search.h"

#include <algorithm>
#include <cmath>

namespace vess::group {

namespace {

constexpr double kTiny = 1e-12, kStep = 0.1, kZeroStep = 0.00025;

double RelativeSpread(double a, double b) { return 2 * std::fabs(a - b) / (std::fabs(a) + std::fabs(b) + kTiny); }

// One search from `start`; returns its best vertex and counts iterations.
SimplexMinimum Run(const Objective& f, const std::vector<double>& start, const SimplexLimits& limits,
                   int& iterations) {
    const std::size_t n = start.size();
    std::vector<std::vector<double>> p(n + 1, start);
    for (std::size_t j = 0; j < n; ++j) p[j + 1][j] += start[j] != 0 ? kStep * start[j] : kZeroStep;
    std::vector<double> y(n + 1);
    for (std::size_t i = 0; i <= n; ++i) y[i] = f(p[i]);
    std::vector<double> centroid(n), trial(n);
    // The point at `factor` along the line from the centroid of the others
    // through the worst vertex (-1 reflects, -2 expands, 0.5 contracts).
    auto along = [&](std::size_t worst, double factor) {
        for (std::size_t j = 0; j < n; ++j) trial[j] = centroid[j] + factor * (p[worst][j] - centroid[j]);
        return f(trial);
    };
    for (;;) {
        std::vector<std::size_t> order(n + 1);
        for (std::size_t i = 0; i <= n; ++i) order[i] = i;
        std::sort(order.begin(), order.end(), [&](auto a, auto b) { return y[a] < y[b]; });
        const std::size_t best = order[0], worst = order[n], second = order[n - 1];
        if (RelativeSpread(y[worst], y[best]) < limits.tolerance || iterations >= limits.maxIterations)
            return {p[best], y[best], iterations};
        ++iterations;
        std::fill(centroid.begin(), centroid.end(), 0.0);
        for (std::size_t i = 0; i <= n; ++i)
            if (i != worst)
                for (std::size_t j = 0; j < n; ++j) centroid[j] += p[i][j] / double(n);
        auto keep = [&](double value) { p[worst] = trial, y[worst] = value; };
        const double reflected = along(worst, -1);
        if (reflected < y[best]) {
            const std::vector<double> reflection = trial;
            const double expanded = along(worst, -2);
            if (expanded < reflected) keep(expanded);
            else trial = reflection, keep(reflected);
        } else if (reflected < y[second]) {
            keep(reflected);
        } else {
            if (reflected < y[worst]) keep(reflected);
            const double contracted = along(worst, 0.5);
            if (contracted < y[worst]) {
                keep(contracted);
            } else {
                for (std::size_t i = 0; i <= n; ++i) {
                    if (i == best) continue;
                    for (std::size_t j = 0; j < n; ++j) p[i][j] = 0.5 * (p[i][j] + p[best][j]);
                    y[i] = f(p[i]);
                }
            }
        }
    }
}

}  // namespace

SimplexMinimum MinimiseBySimplex(const Objective& f, std::vector<double> start, const SimplexLimits& limits) {
    int iterations = 0;
    SimplexMinimum best = Run(f, start, limits, iterations);
    while (iterations < limits.maxIterations) {
        SimplexMinimum again = Run(f, best.point, limits, iterations);
        const bool settled = !(again.value < best.value) || RelativeSpread(again.value, best.value) < limits.tolerance;
        if (again.value < best.value) best = std::move(again);
        if (settled) break;
    }
    best.iterations = iterations;
    return best;
}

}  // namespace vess::group
