// Noise measures of a stretch of trace: standard deviation, RMS about the
// baseline, peak-to-peak and coastline length, and the stretch they are taken
// from (the displayed screen, or the samples between the two cursors).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vess {

class Recording;

// Samples of the chosen channel in its units (with the offset), sample i at
// startMs + i * intervalMs.
struct TraceStretch {
    std::vector<double> values;
    double intervalMs = 0;
    double startMs = 0;
    std::string units;
    // What the values are, when not the recorded trace ("filtered: ...").
    std::string source{};
};

// Points [first, first + count) of the chosen channel, cut to the recorded
// points (empty when none lies inside).
TraceStretch ReadStretch(const Recording& rec, int64_t first, int64_t count);
// The same from the filtered copy (when one is attached) or the recorded
// samples, whichever the recording reads now.
TraceStretch ReadTraceStretch(const Recording& rec, bool filtered, int64_t first, int64_t count);

// The displayed screen, or with cursors (window indices of the screen, in any
// order) the samples between them, both ends included.
struct CursorSpan {
    int64_t index1 = 0, index2 = 0;
};
TraceStretch ScreenStretch(const Recording& rec, bool filtered, int32_t startBlock, int32_t blocksPerScreen,
                           std::optional<CursorSpan> cursors);

struct NoiseMeasures {
    int64_t points = 0;
    double mean = 0;
    double median = 0;          // the baseline the RMS is taken about
    double sd = 0;              // about the mean, n - 1 in the denominator
    double rmsAboutBaseline = 0;  // sqrt(mean((x - median)^2))
    double peakToPeak = 0;
    double coastline = 0;       // sum of |x[i+1] - x[i]|, units
    double coastlinePerMs = 0;  // coastline / ((n - 1) * interval)
};

// Nothing for fewer than two samples. The RMS is taken about the median
// rather than the mean: a few events or a step in the stretch shift the
// median far less, so the RMS then says how far the trace strays from its
// resting level. On a stationary trace it equals the SD within sampling error.
std::optional<NoiseMeasures> MeasureNoise(std::span<const double> values, double intervalMs);

// The same measures of points [first, first + count) of the chosen channel,
// read twice in pieces of piecePoints: the median comes from how often each
// 16-bit sample occurs, so a whole long recording is never held.
std::optional<NoiseMeasures> MeasureRecordingNoise(const Recording& rec, int64_t first, int64_t count,
                                                   int64_t piecePoints = int64_t(1) << 20);

// The report shown to the user, one measure a line, values with the unit.
std::string NoiseReportText(const NoiseMeasures& m, const std::string& units);

}  // namespace vess
