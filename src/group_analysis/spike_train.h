// A train of action potentials: each spike found and measured as one spike,
// with its threshold also from the phase plane (the point of largest
// d2V/dt2, Sekerli et al. 2004), and the train's count, frequency,
// first-spike latency, intervals and adaptation index.
#pragma once

#include <string>
#include <vector>

#include "group_analysis/spike_shape.h"

namespace vess::group {

struct SpikeTrainSettings {
    SpikeShapeSettings shape;
    // Ym: a spike must rise this far above its threshold to count.
    double minHeight = 5;
    // Yt: after a spike the trace must fall back below threshold + Yt before
    // the next upstroke counts as a new spike.
    double hysteresis = 2;
};

struct TrainSpike {
    SpikeShape shape;
    double phaseThreshold = kNotMeasured, phaseThresholdTime = kNotMeasured;
    double interval = kNotMeasured;   // ms from the previous spike's threshold
};

struct SpikeTrain {
    std::vector<TrainSpike> spikes;
    double latency = kNotMeasured;     // ms, first threshold from the stretch start
    double frequency = kNotMeasured;   // Hz, (count - 1) over first-to-last threshold
    double meanInterval = kNotMeasured;
    // Mean over consecutive intervals of (ISI[k+1] - ISI[k]) / (ISI[k+1] + ISI[k]).
    double adaptation = kNotMeasured;
};

SpikeTrain MeasureSpikeTrain(const SampledTrace& trace, const SpikeTrainSettings& settings);

// Rows: one per spike, then the summary (spike number 0).
std::vector<std::vector<double>> SpikeTrainRows(const SpikeTrain& train);
// dV/dt against V over the whole stretch, with both thresholds of each spike.
PlotData PhasePlanePlot(const SampledTrace& trace, const SpikeTrain& train, const std::string& units);
std::vector<PlotSeries> SpikeTrainMarkers(const SpikeTrain& train);

}  // namespace vess::group
