// What the special analyses of the group window share: one evenly sampled
// trace in the recording's units, its derivatives, interpolated level
// crossings, the stretch of the shown trace between the cursors, and the
// results rows they append.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "group_analysis/not_measured.h"
#include "group_analysis/result_row.h"
#include "group_analysis/trace_set.h"
#include "graphs/plot_data.h"

namespace vess::group {

struct UnitScale;

// Samples y[i] at startMs + i * intervalMs (values in the trace's units).
struct SampledTrace {
    double startMs = 0;
    double intervalMs = 1;
    std::vector<double> y;

    std::size_t Size() const { return y.size(); }
    // Time of a (fractional) sample index.
    double TimeAt(double index) const { return startMs + index * intervalMs; }
    // Linear interpolation between samples; index clamped to the trace.
    double ValueAt(double index) const;
};

// dy/dt per ms: central differences inside, one-sided at the two ends.
std::vector<double> Derivative(std::span<const double> y, double intervalMs);

// The fractional index where y first reaches level going from index `from`
// towards `to` (either direction), interpolated between the two samples that
// straddle it; nullopt when it never gets there. `rising` says whether the
// level is reached from below (true) or from above.
std::optional<double> Crossing(std::span<const double> y, std::size_t from, std::size_t to,
                               double level, bool rising);

// Index of the largest (or smallest) value in [from, to]; the earliest wins ties.
std::size_t ArgMax(std::span<const double> y, std::size_t from, std::size_t to);
std::size_t ArgMin(std::span<const double> y, std::size_t from, std::size_t to);
double Mean(std::span<const double> y, std::size_t from, std::size_t to);  // [from, to)

// Area between y and a level over [a, b] (fractional indices), counting only
// where y lies beyond it in the given direction (-1: below the level), by the
// trapezoid rule on the linearly interpolated trace. Units x ms.
double AreaBeyond(const SampledTrace& t, double a, double b, double level, int direction);

// The shown trace of the set in the recording's units from point `from` to
// `to` (either order, clamped to the trace), timed from the trace's start.
SampledTrace TraceStretch(const TraceSet& set, int32_t trace, int32_t from, int32_t to,
                          const UnitScale& scale);

// One results row of a measuring analysis: which trace (and its event,
// 0 for none), then the values in the order of ResultColumns(kind); NaN
// stays NaN (not measured).
ResultBytes MeasureRow(ResultKind kind, int32_t trace, int32_t group, std::span<const double> values,
                       int32_t eventIndex = 0);

// Markers on the trace: scatter points at the given times and values under
// one legend, and a line between two points.
PlotSeries Markers(std::string legend, std::vector<double> x, std::vector<double> y, Colour colour);
PlotSeries Segment(std::string legend, double x0, double y0, double x1, double y1, Colour colour);

}  // namespace vess::group
