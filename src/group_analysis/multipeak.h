// Every peak of a trace that stands out of the noise: the noise level from
// the trace's flat start, peaks by their prominence in noise SDs, each
// measured from its local baseline.
#pragma once

#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

struct MultipeakSettings {
    double thresholdSds = 5;       // peaks this many noise SDs tall and prominent
    double noiseFraction = 0.1;    // the first tenth of the stretch is the flat start
    int direction = 1;             // +1 upward peaks, -1 downward
};

struct FoundPeak {
    double time = kNotMeasured, value = kNotMeasured;
    double localBaseline = kNotMeasured;
    double amplitude = kNotMeasured;      // from the local baseline, in the peak's direction
    double rise = kNotMeasured;           // ms, 10-90 % of the amplitude
    double halfWidth = kNotMeasured;      // ms at half the amplitude
    double interval = kNotMeasured;       // ms from the previous peak
    double halfFrom = kNotMeasured, halfTo = kNotMeasured;  // times of the half-width line
};

struct Multipeak {
    double noiseMean = kNotMeasured, noiseSd = kNotMeasured;
    std::vector<FoundPeak> peaks;
    double meanAmplitude = kNotMeasured, largestAmplitude = kNotMeasured, meanInterval = kNotMeasured;
};

Multipeak FindPeaks(const SampledTrace& trace, const MultipeakSettings& settings);

// One row per peak, then the summary (peak number 0).
std::vector<std::vector<double>> MultipeakRows(const Multipeak& m);
std::vector<PlotSeries> MultipeakMarkers(const Multipeak& m);

}  // namespace vess::group
