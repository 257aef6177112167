// The clear events a suggestion learns the typical event from: detections of
// a first deconvolution pass that stand well above the noise, stand alone,
// and have the shape of an event (a rise and a decay back to the baseline),
// leaving out what only looks like one: the noise's own largest excursions,
// stimulus artefacts and test pulses far larger than the rest, and level
// shifts (voltage steps) that never decay back.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/method_settings.h"

namespace vess {

struct ClearEvent {
    int64_t onset;     // where the deconvolved pulse peaks
    double amplitude;  // counts, in the event direction, over the millisecond before
};

struct ClearEventRules {
    double threshold = 6;  // of the deconvolved trace, in its noise SDs
    // The upside-down trace holds no event of the detected direction, so its
    // detections show how large the noise alone gets: clear events are those
    // from the amplitude at which it gives at most this many detections per
    // detection of the trace itself.
    double noiseShare = 0.1;
    // Stimulus artefacts and test pulses are far larger than the recording's
    // events: beyond this multiple of the 95th percentile of the amplitudes,
    // or of their median, a detection is left out.
    double outsizedOverP95 = 3;
    double outsizedOverMedian = 10;
    // An event decays to half its amplitude within this many decay constants
    // of the kernel; a level shift does not.
    double decayBackTaus = 10;
    int maxEvents = 40;
};

// Clear events of samples (one channel) for a first pass with the kernel of
// params, largest first; the events of the given direction (+1 or -1).
std::vector<ClearEvent> FindClearEvents(const MethodParameters& params, const std::vector<int16_t>& samples,
                                        double intervalUs, int direction, const ClearEventRules& rules = {});

// Keeps the amplitudes (sorted by decreasing size) at which the noise's own
// detections (noiseAmplitudes, any order) number at most share times as many:
// the count of leading entries of sorted kept.
std::size_t ClearAboveNoise(const std::vector<double>& sorted, std::vector<double> noiseAmplitudes,
                            double share);

// The time over which the noise stays correlated, in ms: the lag at which the
// autocorrelation of the samples less their running mean over 2 ms (so that
// hum and drift do not count) falls to 1/e, interpolated between samples, at
// least one sampling interval. Events are left in: they are rare beside the
// noise and clipped at four robust SDs.
double NoiseCorrelationMs(const std::vector<int16_t>& samples, double intervalUs);

}  // namespace vess
