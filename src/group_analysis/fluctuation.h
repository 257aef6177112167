// Non-stationary fluctuation analysis of the traces of a group aligned on
// their peaks: the variance of the traces about the mean waveform against
// the mean current along the decay, fitted by the parabola
// variance = i I - I^2 / N (+ offset), which gives the single-channel
// current i, the number of channels N and the open probability at the peak.
#pragma once

#include <cstdint>
#include <vector>

#include "group_analysis/result_row.h"

namespace vess::group {

struct FluctuationOptions {
    bool peakScaled = true;          // scale the mean to each trace's peak
    int amplitudeBins = 100;         // bins of equal current along the decay
    bool subtractBaseVariance = false;
    bool includeOffset = false;
    int32_t baselinePoints = 0;      // points before the rise, for the baseline variance
    // Each trace is compared with the mean of its averageTraces nearest
    // neighbours in the set (itself left out), which follows a slow rundown
    // of the responses; 0, or as many as the other traces, compares every
    // trace with the mean of all of them.
    int averageTraces = 0;
};

struct FluctuationResult {
    bool ok = false;
    std::vector<double> binMean;      // mean current of each bin that holds points
    std::vector<double> binVariance;  // its variance
    double unitCurrent = 0;           // i, units
    double channels = 0;              // N
    double offset = 0;
    double openProbability = 0;       // peak / (i N)
    double peak = 0;                  // peak of the mean, units
    double baselineVariance = 0;
    double rSquared = 0;
    std::vector<double> curveX, curveY;  // the fitted parabola for the plot
};

// traces: baseline-subtracted traces in units, all of one length, aligned on
// the peak. Needs at least two traces.
FluctuationResult AnalyseFluctuation(const std::vector<std::vector<double>>& traces,
                                     const FluctuationOptions& options);

ResultValues FluctuationRow(const FluctuationResult& result, int group, int traces);

}  // namespace vess::group
