#include "detection/display_fit.h"

#include <algorithm>

#include "detection/decimate.h"
#include "recording/rounding.h"

namespace vess {

DisplayFrame FitFrame(std::span<const int16_t> samples, int peakDirection,
                      std::span<const int16_t> mustShow) {
    if (samples.empty()) return {0, kMinFrameSpanCounts};
    const LevelSummary levels = RobustRangeAndMedian(samples, kFrameTailFraction);
    LevelRange r = levels.range;
    if (!mustShow.empty()) {
        const auto [lo, hi] = std::minmax_element(mustShow.begin(), mustShow.end());
        r.low = std::min(r.low, *lo);
        r.high = std::max(r.high, *hi);
    }
    const double median = levels.median;
    const double margin = kFrameMargin * (double(r.high) - double(r.low));
    const double above = double(r.high) - median + margin;  // room needed above the baseline
    const double below = median - double(r.low) + margin;
    // Downward events: the baseline kBaselineFromEdge below the top.
    const double topShare = peakDirection < 0 ? kBaselineFromEdge : 1 - kBaselineFromEdge;
    const double span = std::max({above / topShare, below / (1 - topShare), kMinFrameSpanCounts});
    const double top = median + topShare * span;
    return {top - span / 2, span};
}

DisplayScale FitAllSamples(std::span<const int16_t> samples, const DisplayFrame& frame) {
    DisplayScale out;
    if (samples.empty() || !(frame.spanCounts > 0)) return out;
    const auto [lo, hi] = std::minmax_element(samples.begin(), samples.end());
    const double range = std::max(double(*hi) - double(*lo), kMinFrameSpanCounts);
    out.gain = std::clamp(frame.spanCounts / (range * (1 + 2 * kFrameMargin)), kMinDisplayGain,
                          kMaxDisplayGain);
    // VisibleRange centres on frame.centreCounts - offset.
    out.offsetCounts = RoundClamp32(frame.centreCounts - (double(*lo) + double(*hi)) / 2);
    return out;
}

}  // namespace vess
