#include "recording/abf_parse.h"

#include <algorithm>

namespace vess {

std::vector<int64_t> FindSweepStarts(const SweepLayout& layout, int channels, int64_t points) {
    constexpr int16_t kGapFree = 3, kVariableLength = 1;
    std::vector<int64_t> starts{0};
    if (layout.operationMode == kGapFree || channels < 1 || points < 1) return starts;
    if (layout.operationMode == kVariableLength) {
        // Sweeps of their own lengths, one after the other.
        int64_t at = 0;
        for (std::size_t k = 0; k + 1 < layout.sweepSamples.size(); ++k) {
            const int64_t length = layout.sweepSamples[k] / channels;
            if (length < 1) return {0};
            at += length;
            if (at >= points) break;
            starts.push_back(at);
        }
        return starts;
    }
    // Sweeps of one length: only when that length divides the points it
    // tells where each sweep starts; otherwise the trace is one sweep.
    const int64_t length = layout.samplesPerSweep / channels;
    if (length < 1 || layout.sweeps < 2 || length * layout.sweeps != points) return starts;
    for (int64_t k = 1; k < layout.sweeps; ++k) starts.push_back(k * length);
    return starts;
}

std::vector<double> SweepTimesMs(const SweepLayout& layout) {
    const double unitUs = layout.synchTimeUnitUs > 0 ? layout.synchTimeUnitUs : layout.sampleIntervalUs;
    std::vector<double> ms;
    for (int64_t t : layout.sweepTimes) ms.push_back(double(t) * unitUs / 1000.0);
    return ms;
}

}  // namespace vess
