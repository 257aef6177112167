// Least squares of an exponential decay y = a exp(-(i - onset) / tau) over
// samples that end just before the onset, with tau searched on a grid spaced
// evenly in log. The exponentials of a grid depend only on the grid and the
// distance from the onset, so they are computed once a thread and reused by
// every later fit on the same grid: a whole recording fits thousands of
// decays on the same few grids. The sums are taken in vectors as wide as the
// processor has, with the same bits at any width.
#pragma once

#include <cmath>
#include <span>
#include <vector>

namespace vess {

inline constexpr int kDecayGridSteps = 48;

struct ExponentialFit {
    double amplitude = 0;    // a: the decay's value at the onset
    double tauPoints = 1;
    double sse = INFINITY;   // residual sum of squares
};

// y[k] is the excess at onset - y.size() + k; the time constants tried are
// lowest x range^(g / (kDecayGridSteps - 1)), g = 0 .. kDecayGridSteps - 1.
// The result has the smallest residual, the first of equal ones.
ExponentialFit FitExponentialOnGrid(std::span<const double> y, double lowest, double range);

// The vector widths, in doubles, this processor can sum in: widest first,
// 2 on every one. FitExponentialOnGrid uses the first.
std::vector<int> GridSumWidths();
// FitExponentialOnGrid with its sums taken width doubles at a time, one of
// GridSumWidths().
ExponentialFit FitExponentialOnGridAtWidth(std::span<const double> y, double lowest, double range, int width);

}  // namespace vess
