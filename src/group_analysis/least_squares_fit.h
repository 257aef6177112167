// The least-squares fit of a sum of exponentials: variable projection over
// the logarithms of the time constants from several starts taken from the
// trace, each refined by GSL's Levenberg-Marquardt, with the standard errors
// of the parameters from the Jacobian at the optimum.
#pragma once

#include <climits>
#include <optional>
#include <span>

#include "group_analysis/simplex.h"

namespace vess::group {

struct LeastSquaresOptions {
    bool fixAmplitudes = false;     // amplitudes stay at the values of `start`
    int trace = 0;                  // reported through the callback
    int maxIterations = 200;        // of each refinement
    // Starts from the trace: points per time-constant axis of the grid (0 for
    // the default of the model) and how many of its best points are refined.
    int gridPoints = 0;
    int refinedGridStarts = 8;
    // Every start is probed with this many iterations; the best `finalists`
    // probes are refined to convergence.
    int probeIterations = 8;
    int finalists = 2;
    // The starting values count as one more start.
    bool startFromGuess = true;
};

// Fits the model to (x, y); x starts at the first point of the fit range.
// The result holds the best of the refined starts, its time constants in
// increasing order, the standard errors and the status of the fit.
ExpFitResult FitExponentialsLeastSquares(const ExpModel& model, const ExpParameters& start,
                                         std::span<const double> x, std::span<const double> y,
                                         const LeastSquaresOptions& options,
                                         const SimplexCallback& progress = {});

// The status of fitted parameters on a range of the given sampling interval
// and span: failed for non-finite values or time constants not above 0, too
// many exponentials for a collapsed component.
FitStatus AssessFit(const ExpModel& model, const ExpParameters& p, std::span<const double> x,
                    std::span<const double> y);

// Standard errors from the Jacobian of the model at p over the free
// parameters (amplitudes left out when fixed): sqrt of the diagonal of
// s^2 (J'J)^-1 with s^2 = RSS / (points - free parameters).
ExpParameters StandardErrors(const ExpModel& model, const ExpParameters& p, bool fixAmplitudes,
                             std::span<const double> x, std::span<const double> y);

// Components sorted by increasing time constant.
ExpParameters OrderedByTimeConstant(const ExpModel& model, ExpParameters p);

}  // namespace vess::group
