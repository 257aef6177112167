// Sums of one to three exponentials, y = sum A_k exp(-x / tau_k) [+ C],
// fitted by a downhill simplex search. Parameters are kept in the order
// tau1, A1, tau2, A2, tau3, A3, C (the offset follows the exponentials).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "group_analysis/not_measured.h"

namespace vess::group {

inline constexpr int kMaxParameters = 7;
inline constexpr double kToleranceGuard = 1e-10;

struct ExpModel {
    int exponentials = 2;  // 1..3
    bool offset = false;

    int ParameterCount() const { return 2 * exponentials + (offset ? 1 : 0); }
};

// Full parameter vector: tau1, A1, tau2, A2, tau3, A3 and C at [6].
using ExpParameters = std::array<double, kMaxParameters>;

// A vector in search order (the first ParameterCount() entries), C of a
// model with offset at [2n]; Full/Packed convert between the two.
ExpParameters FullParameters(const ExpModel& model, std::span<const double> packed);
std::vector<double> PackedParameters(const ExpModel& model, const ExpParameters& full);

double EvaluateModel(const ExpModel& model, const ExpParameters& p, double x);

// What the search shows while it runs; the callback returns false to stop.
struct SimplexProgress {
    int trace = 0;
    int iteration = 0;
    double stdev = 0;      // residual standard deviation of the best vertex
    double rtol = 0;       // spread of the simplex, compared with the tolerance
};
using SimplexCallback = std::function<bool(const SimplexProgress&)>;

struct SimplexOptions {
    double tolerance = 0.001;
    int maxIterations = 1000;
    bool restartUntilSettled = true;
    bool fixAmplitudes = false;   // amplitudes stay at their starting values
    int trace = 0;                // reported through the callback
    int maxRestarts = 100;
};

struct FitQuality {
    double rss = 0;       // residual sum of squares
    double rSquared = 0;  // 1 - rss / sum (y - mean y)^2
    double stdev = 0;     // residual standard deviation, sqrt(rss / points)
};

// What a fit's parameters are worth. A collapsed component (a time constant
// below one sampling interval or beyond ten times the fit range, two equal
// time constants, or an amplitude of zero) means the model has more
// exponentials than the data hold.
enum class FitStatus : int32_t { NotAssessed = 0, Optimum = 1, TooManyExponentials = 2, Failed = 3 };

inline constexpr ExpParameters kNoStandardErrors = {kNotMeasured, kNotMeasured, kNotMeasured,
                                                    kNotMeasured, kNotMeasured, kNotMeasured,
                                                    kNotMeasured};

// The result of either fit: the simplex search or the least-squares fit.
struct SimplexResult {
    ExpParameters parameters{};
    FitQuality quality;
    int iterations = 0;        // over the first search and every restart
    int restarts = 0;          // simplex restarts, or refined starts of the least-squares fit
    bool interrupted = false;
    // Standard errors of the parameters, in the order of `parameters`; not
    // measured (NaN) for fixed or absent parameters and after a simplex search.
    ExpParameters standardErrors = kNoStandardErrors;
    FitStatus status = FitStatus::NotAssessed;
};
using ExpFitResult = SimplexResult;

FitQuality MeasureFit(const ExpModel& model, const ExpParameters& p, std::span<const double> x,
                      std::span<const double> y);

// The vertices of the first search, derived from the starting vertex by the
// fixed table of the program (a parameter may be lowered by a third of
// another one). Each vertex holds ParameterCount() values.
std::vector<std::vector<float>> InitialSimplex(const ExpModel& model, std::span<const float> start);

// Fits the model to (x, y) from the starting values. The first search starts
// from the fixed table; with restartUntilSettled the search then restarts
// from its best vertex on a simplex that moves each parameter by a fraction
// of its value, until a restart no longer lowers the residual sum of squares
// by more than the tolerance.
SimplexResult FitExponentials(const ExpModel& model, const ExpParameters& start,
                              std::span<const double> x, std::span<const double> y,
                              const SimplexOptions& options, const SimplexCallback& progress = {});

}  // namespace vess::group
