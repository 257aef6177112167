// An event detected on the decay of an earlier one: the decay is fitted up to
// the new onset and extrapolated under the new event, which is measured on
// the trace less it, so that its amplitude and kinetics are its own.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "detection/detector.h"
#include "detection/exponential_grid.h"

namespace vess {

struct EarlierDecay {
    DecayUnder under;      // the extrapolated decay, above the earlier baseline
    int16_t baseline = 0;  // the earlier event's own baseline
};

// Looks back from window index onset (at most lookback points) for the most
// extreme point of an earlier event; fits baseline + a exp(-t / tau) to its
// decay from a little after that peak up to the onset, the baseline measured
// before the earlier event and tau searched from a quarter to four times
// kernelDecayMs. nullopt when there is no earlier peak with a recorded
// baseline, too few points to fit, or when the fitted decay at the onset is
// not beyond twice the SD of the fit's residuals: the onset is then on a
// level trace and is measured as any other.
std::optional<EarlierDecay> FitEarlierDecay(const Detector& det, int64_t onset, int64_t lookback,
                                            double kernelRiseMs, double kernelDecayMs);

// Whether no decay a exp(m / tau) fitted to y (as FitExponentialOnGrid
// fits it) with tau from tauLow to tauHigh can be significant as
// FitEarlierDecay requires, a direction > 2 sqrt(sse / (n - 2)), judged
// from the fit at one tau between them (coarse): then FitEarlierDecay need
// not fit the fine grid across them, its outcome being known.
bool NoDecayFitCanPass(std::span<const double> y, const ExponentialFit& coarse, double tauLow, double tauHigh,
                       int direction);

// Measures the event detected at onset on the trace less the earlier decay:
// its peak is the most extreme point of that trace from onset to before
// limit (at most peakWindow points), its baseline the earlier one, and the
// start and decay walks and the area are made on the same trace. nullopt
// when the peak does not lie beyond the baseline.
std::optional<MeasuredEvent> MeasureOnDecay(const Detector& det, const EarlierDecay& below,
                                            int64_t onset, int64_t limit, int64_t peakWindow);

}  // namespace vess
