// The starts of the least-squares fit, taken from the trace: the peeled
// log-decay, a geometric series over the range and the best points of a grid
// of time constants over the range's time scale.
#pragma once

#include <span>
#include <vector>

#include "group_analysis/exp_projection.h"
#include "group_analysis/least_squares_fit.h"

namespace vess::group {

// The mean spacing of x (1 for fewer than two points).
double SamplingInterval(std::span<const double> x);

// Bounds of the natural logarithms of the time constants searched.
struct SearchBox {
    double lo = 0, hi = 0;
    double Clamp(double v) const;
};

// Starting log time constants, in increasing order within each start: the
// guess (when options.startFromGuess and its time constants are above 0),
// the peeled decay, the geometric series of a fifth of the range times 1, 5
// and 25, and the options.refinedGridStarts best points of the grid.
std::vector<std::vector<double>> FitStarts(const ExpModel& model, const ExpParameters& guess,
                                           std::span<const double> x, std::span<const double> y,
                                           const LeastSquaresOptions& options, const SearchBox& box,
                                           ExpProjection& projection);

}  // namespace vess::group
