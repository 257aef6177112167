// Traces derived from a stretch of trace: the first difference in units per
// ms, which shows fast rises, and the running variance against the running
// mean over a window of points.
#pragma once

#include <span>
#include <vector>

#include "graphs/plot_data.h"
#include "signal/noise_measures.h"

namespace vess {

struct XYTrace {
    std::vector<double> x, y;
};

// (x[i+1] - x[i]) / interval at the middle of each step, in ms from the
// stretch's startMs: n - 1 points.
XYTrace DifferenceTrace(const TraceStretch& stretch);

// For every window of windowPoints consecutive samples (n - w + 1 of them):
// x the mean, y the variance with w - 1 in the denominator. Empty when the
// window holds fewer than 2 points or more than the stretch.
XYTrace VarianceMeanTrace(std::span<const double> values, int windowPoints);

PlotData DifferencePlot(const TraceStretch& stretch);
PlotData VarianceMeanPlot(const TraceStretch& stretch, int windowPoints);

}  // namespace vess
