// One action potential's shape: threshold where dV/dt reaches a set rate,
// peak, amplitudes, rise over a chosen range, half-width, width at a set
// height above threshold, the fastest rise and decay, a decay time between
// two fractions of the spike, and the afterhyperpolarisation (AHP).
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

struct SpikeShapeSettings {
    double thresholdRate = 20;        // mV/ms: dV/dt that marks threshold
    double riseLow = 0.1, riseHigh = 0.9;   // fractions of threshold-to-peak
    double widthAboveThreshold = 20;  // mV above threshold for "Width"
    double decayFrom = 0.9, decayTo = 0.37; // fractions of threshold-to-peak
    bool useThresholdBaseline = false;      // AHP against threshold (else baseline)
};

// "10-90%", "20-80%", "30-70%" by list index (0, 1, 2).
void SetRiseRange(SpikeShapeSettings& s, int riseIndex);
// "90-37%" and the like; false when the text is not two percentages.
bool SetDecayPercent(SpikeShapeSettings& s, std::string_view text);

// Times in ms on the trace's clock, levels in its units; every field is
// kNotMeasured when it could not be measured.
struct SpikeShape {
    double thresholdIndex = kNotMeasured;   // fractional sample index
    double threshold = kNotMeasured, thresholdTime = kNotMeasured;
    double peak = kNotMeasured, peakTime = kNotMeasured;
    double amplitude = kNotMeasured;        // peak - threshold
    double amplitudeFromBaseline = kNotMeasured;
    double baseline = kNotMeasured;         // mean of the first half before threshold
    double rise = kNotMeasured;             // ms over the rise range
    double halfWidth = kNotMeasured;        // ms at threshold + amplitude / 2
    double halfRiseTime = kNotMeasured, halfDecayTime = kNotMeasured;
    double width = kNotMeasured;            // ms at threshold + widthAboveThreshold
    double maxRise = kNotMeasured, maxDecay = kNotMeasured;  // units/ms (decay negative)
    double decay = kNotMeasured;            // ms between the two decay fractions
    double ahpPeak = kNotMeasured;          // reference - minimum (positive below it)
    double ahpTime = kNotMeasured, ahpMinimum = kNotMeasured;
    double ahpArea = kNotMeasured;          // units x ms below the reference
    double ahpReference = kNotMeasured;
};

// The spike with the highest peak in samples [from, to] of the trace (the
// whole trace by default); AHP searched up to `to`.
SpikeShape MeasureSpike(const SampledTrace& trace, const SpikeShapeSettings& settings,
                        std::size_t from = 0, std::size_t to = SIZE_MAX);
// Same, with the peak given (a spike of a train).
SpikeShape MeasureSpikeAt(const SampledTrace& trace, const std::vector<double>& dvdt,
                          const SpikeShapeSettings& settings, std::size_t from, std::size_t peak,
                          std::size_t to);

// The row values in the order of the spike-shape headings.
std::vector<double> SpikeShapeValues(const SpikeShape& s);
// What to draw on the trace: threshold, peak, half-width line, AHP.
std::vector<PlotSeries> SpikeMarkers(const SpikeShape& s);

}  // namespace vess::group
