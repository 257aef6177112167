// Measuring a trace of the trace set (peak, rise, half-width, decay, area)
// and fitting its decay with exponentials, one results row per fitted trace.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "group_analysis/least_squares_fit.h"
#include "group_analysis/result_row.h"
#include "group_analysis/simplex.h"
#include "group_analysis/trace_set.h"

namespace vess::group {

// Counts to units as the recording converts them (Bit2pA, Bit2pA2).
struct UnitScale {
    double gain = 1, range = 1, resolution = 1, offset = 0;
    double intervalUs = 1;
    std::string units;

    static UnitScale Of(const Recording& rec);
    double Level(double counts) const;       // absolute level, with offset
    double Difference(double counts) const;  // no offset
    double Ms(double points) const { return points * intervalUs / 1000.0; }
};

// Decay level fractions, in the order of TraceMeasurements::decayPoints.
inline constexpr std::array<double, 6> kDecayFractions = {0.9, 0.8, 0.5, 0.368, 0.2, 0.1};
enum DecayLevel { kDecay90, kDecay80, kDecay50, kDecay368, kDecay20, kDecay10 };
enum class RiseRange { R1090, R2080, R3070 };
enum class FitRange { PeakToEnd, Decay1090, Decay2080, Custom };
// The least-squares fit, or the simplex search that earlier results were
// made with.
enum class FitMethod { LeastSquares, Simplex };
FitMethod FitMethodFromName(std::string_view name);
std::string_view FitMethodName(FitMethod method);
FitRange FitRangeFromName(std::string_view name);
std::string_view FitRangeName(FitRange range);
std::string_view RiseRangeName(RiseRange range);

struct TraceMeasurements {
    int32_t baseline = 0;        // counts, mean of the points before the rise (its 10 % crossing)
    int32_t peak = 0;            // point of the peak
    int32_t amplitude = 0;       // counts, peak value minus baseline
    // First point after the peak within each fraction of the amplitude of
    // the baseline; -1 when the trace never gets there.
    std::array<int32_t, 6> decayPoints{};
    // Half-width and decay 90-37 % are NaN (not measured) when the trace
    // never falls back to the 50 % or 36.8 % level.
    double riseMs = 0, halfWidthMs = 0, decay9037Ms = 0, areaUnitsMs = 0;
};

// For each decay fraction, the first point from the peak on within that
// fraction of the amplitude of the baseline; -1 when never reached.
std::array<int32_t, 6> FindDecayPoints(std::span<const double> y, int32_t peak, double baseline,
                                       double amplitude);
struct PointRange {
    int32_t from = 0, to = 0;
};
// The points a fit range covers; a decay level never reached stands for the
// last point, custom ends are put in order and clipped to the trace.
PointRange FitRangePoints(FitRange range, int32_t peak, const std::array<int32_t, 6>& decayPoints,
                          int32_t last, int32_t customFrom, int32_t customTo);

TraceMeasurements MeasureTrace(std::span<const int16_t> trace, int32_t prePoints,
                               int peakDirection, RiseRange rise, const UnitScale& scale);

struct FitSettings {
    ExpModel model;
    FitRange range = FitRange::PeakToEnd;
    int32_t customFrom = 0, customTo = 0;   // points, for FitRange::Custom
    RiseRange rise = RiseRange::R1090;
    bool useGuess = false;
    ExpParameters guess{5, 100, 100, 50, 1000, 25, 0};
    FitMethod method = FitMethod::LeastSquares;
    SimplexOptions simplex;       // the simplex search; fixAmplitudes serves both methods
};

struct TraceFit {
    int32_t trace = 0;
    TraceMeasurements measured;
    int32_t from = 0, to = 0;            // fit range, points
    SimplexResult fit;
    std::vector<double> curve;           // the fitted model at points from..to
    std::string report;
    ResultValues values;
};

// Fits trace t of the set. Without guesses the starting values come from the
// trace: the offset from the last point of the range, one time constant of
// a fifth of the range and then five and twenty-five times longer ones,
// and the amplitudes sharing the size of the decay. The least-squares fit
// adds its own starts from the trace; the guesses are one more start.
TraceFit FitTrace(const TraceSet& set, int32_t t, int peakDirection, int group,
                  const UnitScale& scale, const FitSettings& settings,
                  const SimplexCallback& progress = {});

// The traces a fit runs on: trace 0 for the average types, the current trace
// for the individual types, every trace 1..N for the superimposed types.
std::vector<int32_t> TracesToFit(const TraceSet& set, AnalysisType type, int32_t current);

// The report text for a fit, lines separated by CR LF.
std::string FitReport(const TraceFit& fit, const TraceSet& set, const UnitScale& scale,
                      const FitSettings& settings);
// "y=(A1)*exp(-x/tau1)+...[+(C)]".
std::string FitEquation(const ExpModel& model, const ExpParameters& p);
// "Standard errors: tau1 0.12 ms, A1 0.53, ..." over the measured ones; empty
// when none was measured.
std::string StandardErrorLine(const ExpModel& model, const ExpParameters& se);
// Whether a fit's parameters are a result (not a failed or collapsed fit).
bool IsFitResult(FitStatus status);
// Number formats of the reports.
std::string FormatThousands(double value);   // "#,##0.00"

}  // namespace vess::group
