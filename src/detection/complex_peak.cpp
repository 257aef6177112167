#include "detection/complex_peak.h"

namespace vess {

// The search, in smoothed values (those FindMax compares):
//  1. the trough: the least extreme point in the search range that follows
//     the stored peak (lastPeak+1 .. lastPeak+SearchLen);
//  2. the further peak: the extreme point of a whole search range that begins
//     just after the trough;
//  3. the real trough between the stored and the further peak, and the rise
//     from it to the further peak, which must reach the amplitude threshold on
//     its own: a bump on the decay of the stored event is not an event unless
//     it rises as much as the smallest event the user accepts;
//  4. the further peak then goes through the same measuring loop as any
//     candidate (baseline BaseOffset before it, amplitude, direction and area
//     tests, earlier-peak move, re-centring), except that neither the
//     earlier-peak move nor the re-centring may go back to the stored peak or
//     before it.
// The baseline of a further peak is therefore the level before it as for any
// other event, usually on the decay of the previous one; its amplitude is
// measured from there.
std::optional<MeasuredEvent> FindComplexPeak(const Detector& det, int64_t lastPeak) {
    const int32_t searchLen = det.Lengths().searchLen;
    const int16_t dir = det.Direction();
    auto leastExtreme = [&](int64_t first, int64_t last) {
        PeakPoint t{first, det.GetAverageValue(first)};
        for (int64_t i = first + 1; i <= last; ++i) {
            const int16_t v = det.GetAverageValue(i);
            if (dir * v < dir * t.value) t = {i, v};
        }
        return t;
    };
    const PeakPoint trough = leastExtreme(lastPeak + 1, lastPeak + searchLen);
    const PeakPoint further = det.FindMax(trough.index + 1, searchLen);
    if (further.index <= lastPeak + 1) return std::nullopt;
    const PeakPoint between = leastExtreme(lastPeak + 1, further.index - 1);
    const int32_t riseCounts = dir * (int32_t(further.value) - int32_t(between.value));
    if (riseCounts <= 0 || det.AmplitudeUnits(riseCounts) < det.Params().ThresholdAmplitude)
        return std::nullopt;
    std::optional<MeasuredEvent> e = det.Measure(further, /*boundRecentring=*/true);
    if (!e || e->peak <= lastPeak) return std::nullopt;
    return e;
}

}  // namespace vess
