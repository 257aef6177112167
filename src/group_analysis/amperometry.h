// One quantal release event on an amperometric current trace (oxidation
// current upwards): baseline, peak current, rise over a chosen range and its
// slope, half-width, decay between two fractions of the peak, the charge of
// the spike above baseline and the molecules it stands for, and the foot
// that may precede the main upstroke.
#pragma once

#include <string_view>
#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

// Elementary charge (C), exact since the 2019 SI.
inline constexpr double kElementaryCharge = 1.602176634e-19;

struct AmperoSettings {
    double riseLow = 0.5, riseHigh = 0.9;    // fractions of Imax
    double decayFrom = 0.9, decayTo = 0.37;  // fractions of Imax on the way down
    double electrons = 2;                    // n per oxidised molecule
    double baselineFraction = 0.1;           // share of the stretch before the spike
};

// "50-90% Rise", "25-75% Rise", "10-90% Rise"; false for any other text.
bool SetAmperoRise(AmperoSettings& s, std::string_view text);
// "90-37%" and the like; false when the text is not two percentages.
bool SetAmperoDecay(AmperoSettings& s, std::string_view text);

// Times in ms on the trace's clock; currents in the trace's units (pA for
// charge in pC); kNotMeasured when not measurable.
struct AmperoSpike {
    double baseline = kNotMeasured;
    double imax = kNotMeasured;           // peak - baseline
    double peakTime = kNotMeasured;
    double startTime = kNotMeasured, endTime = kNotMeasured;  // where it leaves / regains baseline
    double timeToPeak = kNotMeasured;     // from the start
    double rise = kNotMeasured;           // ms over the rise range
    double riseSlope = kNotMeasured;      // units/ms over the rise range
    double riseLowTime = kNotMeasured, riseHighTime = kNotMeasured;
    double riseLowLevel = kNotMeasured, riseHighLevel = kNotMeasured;
    double halfWidth = kNotMeasured;
    double halfUpTime = kNotMeasured, halfDownTime = kNotMeasured;
    double decay = kNotMeasured;          // ms between the two decay fractions
    double charge = kNotMeasured;         // pC when the trace is in pA
    double molecules = kNotMeasured;
    double footDuration = kNotMeasured, footAmplitude = kNotMeasured, footCharge = kNotMeasured;
    double footEndTime = kNotMeasured;
};

// Molecules oxidised for a charge in pC.
double MoleculesFromCharge(double chargePc, double electrons);

// The largest spike of the trace.
AmperoSpike MeasureAmperoSpike(const SampledTrace& trace, const AmperoSettings& settings);

std::vector<double> AmperoValues(const AmperoSpike& s);
std::vector<PlotSeries> AmperoMarkers(const AmperoSpike& s);

}  // namespace vess::group
