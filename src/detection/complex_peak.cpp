#include "detection/complex_peak.h"

#include "recording/rounding.h"

namespace vess {

double Mean3(const Screen& s, int64_t i) {
    return (double(s.GetSampleValue(i - 1)) + s.GetSampleValue(i) + s.GetSampleValue(i + 1)) / 3.0;
}

Bump MostDistinctBump(const Screen& s, int16_t dir, int64_t near, int64_t far, int step) {
    Bump best;
    if ((far - near) * step < 1) return best;
    int64_t trough = near;
    double troughValue = dir * Mean3(s, near);
    for (int64_t i = near + step; (far - i) * step >= 0; i += step) {
        const double v = dir * Mean3(s, i);
        if (v - troughValue > best.riseCounts) best = {i, trough, v - troughValue};
        if (v < troughValue) {
            trough = i;
            troughValue = v;
        }
    }
    return best;
}

// The search:
//  1. over the search range that follows the stored peak (lastPeak+1 ..
//     lastPeak+SearchLen), the point that rises most above the least extreme
//     point between it and the stored peak (three-point means, so that single
//     noisy samples do not make a rise). That rise must reach the amplitude
//     threshold: a bump on the decay of the stored event is not an event
//     unless it rises as much as the smallest event the user accepts;
//  2. the further peak is the extreme smoothed point (the values FindMax
//     compares) from the trough to the end of that range, and it goes through
//     the same measuring loop as any candidate (baseline BaseOffset before it,
//     amplitude, direction and area tests, earlier-peak move, re-centring),
//     except that neither the earlier-peak move nor the re-centring may go
//     back to the stored peak or before it.
// The baseline of a further peak is therefore the level before it as for any
// other event, usually on the decay of the previous one; its amplitude is
// measured from there. A search that took the least extreme point of the
// whole range as the trough would miss an event riding on the decay early in
// the range, since the decay usually ends lower than the trough before it.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak) {
    const int32_t searchLen = det.Lengths().searchLen;
    const Bump bump =
        MostDistinctBump(det.Scr(), det.Direction(), lastPeak + 1, lastPeak + searchLen, +1);
    if (bump.riseCounts <= 0 ||
        det.AmplitudeUnits(RoundClamp32(bump.riseCounts)) < det.Params().ThresholdAmplitude)
        return std::nullopt;
    const PeakPoint further =
        det.FindMax(bump.trough + 1, int32_t(lastPeak + searchLen - bump.trough));
    if (further.index <= lastPeak + 1) return std::nullopt;
    std::optional<MeasuredEvent> e = det.Measure(further, /*boundRecentring=*/true);
    if (!e || e->peak <= lastPeak) return std::nullopt;
    return e;
}

}  // namespace vess
