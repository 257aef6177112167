// Evoked responses: the stimulus artefact skipped, the fibre volley, the
// slope and amplitude of the field EPSP (or of an evoked synaptic current),
// the population spike by the tangent method, their latencies, and with two
// stimuli in the trace the paired-pulse ratio.
#pragma once

#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

struct FieldSettings {
    // "Synaptic Currents": the response's sign is found from the trace and
    // there is neither volley nor population spike; otherwise a negative
    // field potential.
    bool synapticCurrents = false;
    bool chordSlope = false;          // 10-90 % chord instead of the steepest fit
    double slopeWindowMs = 1;         // length of the fitted stretch
    double baselineMs = 1;            // baseline: this long before the stimulus
    double minBlankMs = 0.2;          // the artefact lasts at least this long
    double volleyWindowMs = 2;        // the volley's trough lies this close to the stimulus
    double minGapMs = 5;              // two stimuli at least this far apart
};

struct FieldResponse {
    double stimulusTime = kNotMeasured, baseline = kNotMeasured, blankEnd = kNotMeasured;
    double volleyAmplitude = kNotMeasured, volleyLatency = kNotMeasured;
    double volleyTime = kNotMeasured, volleyValue = kNotMeasured;
    double slope = kNotMeasured;      // units/ms, signed
    double slopeFrom = kNotMeasured, slopeTo = kNotMeasured;   // ms, the stretch the slope is over
    double slopeFromValue = kNotMeasured, slopeToValue = kNotMeasured;
    double amplitude = kNotMeasured;  // from baseline, positive in the response's direction
    double onsetLatency = kNotMeasured, peakLatency = kNotMeasured;
    double peakTime = kNotMeasured, peakValue = kNotMeasured;
    double spikeAmplitude = kNotMeasured, spikeLatency = kNotMeasured;
    double spikeTime = kNotMeasured, spikeValue = kNotMeasured;
    double pairedSlopeRatio = kNotMeasured, pairedAmplitudeRatio = kNotMeasured;
};

// Stimulus times in ms: the given ones, or the largest fast deflection of
// the trace (and a second one at least minGapMs away that is at least half
// as fast).
std::vector<double> FindStimuli(const SampledTrace& trace, const FieldSettings& settings);
std::vector<FieldResponse> MeasureFieldResponses(const SampledTrace& trace, const FieldSettings& settings,
                                                 std::vector<double> stimulusTimes = {});

std::vector<double> FieldResponseValues(const FieldResponse& r, int number);
std::vector<PlotSeries> FieldMarkers(const std::vector<FieldResponse>& responses);

}  // namespace vess::group
