#include "detection/complex_peak.h"

#include <algorithm>

#include "recording/rounding.h"

namespace vess {

double Mean3(const Screen& s, int64_t i) {
    return (double(s.GetSampleValue(i - 1)) + s.GetSampleValue(i) + s.GetSampleValue(i + 1)) / 3.0;
}

Bump MostDistinctBump(const Screen& s, int16_t dir, int64_t near, int64_t far, int step,
                      const std::function<bool(double)>& deepEnough) {
    Bump best;
    if ((far - near) * step < 1) return best;
    const double startValue = dir * Mean3(s, near - step);
    int64_t trough = near;
    double troughValue = dir * Mean3(s, near);
    // The running trough only deepens, so once deep enough it stays so.
    bool deep = !deepEnough || deepEnough(startValue - troughValue);
    for (int64_t i = near + step; (far - i) * step >= 0; i += step) {
        const double v = dir * Mean3(s, i);
        if (deep && v - troughValue > best.riseCounts) best = {i, trough, v - troughValue};
        if (v < troughValue) {
            trough = i;
            troughValue = v;
            deep = deep || deepEnough(startValue - troughValue);
        }
    }
    return best;
}

// The search:
//  1. over the search range that follows the stored peak (lastPeak+1 ..
//     lastPeak+SearchLen), the point that rises most above the least extreme
//     point between it and the stored peak (three-point means, so that single
//     noisy samples do not make a rise). That trough must lie at least the
//     amplitude threshold below the stored peak, and the rise from it must
//     reach the threshold too: a trace that goes on rising after the stored
//     peak, or wavers on its top, is the same event, and a bump on its decay
//     is not an event unless it rises as much as the smallest event the user
//     accepts;
//  2. the further peak is the extreme smoothed point (the values FindMax
//     compares) from the trough to the end of that range, and it goes through
//     the same measuring loop as any candidate (baseline BaseOffset before it,
//     amplitude, direction and area tests, earlier-peak move, re-centring),
//     except that neither the earlier-peak move nor the re-centring may go
//     back to the stored peak or before it; where it ends up must still lie
//     after the trough.
// The baseline of a further peak is therefore the level before it as for any
// other event, usually on the decay of the previous one; its amplitude is
// measured from there. A search that took the least extreme point of the
// whole range as the trough would miss an event riding on the decay early in
// the range, since the decay usually ends lower than the trough before it.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak) {
    const int32_t searchLen = det.Lengths().searchLen;
    // Three-point means need the sample after the last one walked.
    const int64_t far = std::min<int64_t>(lastPeak + searchLen, det.Span().last - 1);
    const auto deepEnough = [&det](double fall) { return det.ReachesThreshold(fall); };
    const Bump bump =
        MostDistinctBump(det.Scr(), det.Direction(), lastPeak + 1, far, +1, deepEnough);
    if (bump.riseCounts <= 0 || !det.ReachesThreshold(bump.riseCounts)) return std::nullopt;
    const PeakPoint further =
        det.FindMax(bump.trough + 1, int32_t(lastPeak + searchLen - bump.trough));
    if (further.index <= bump.trough) return std::nullopt;
    std::optional<MeasuredEvent> e = det.Measure(further, /*boundRecentring=*/true);
    if (!e || e->peak <= bump.trough) return std::nullopt;
    return e;
}

}  // namespace vess
