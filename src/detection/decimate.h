// Reduction of a run of samples to the pixel columns of a trace display.
//
// Each column keeps its first, minimum, maximum and last sample, so that a
// polyline through first -> min/max -> last per column, joined to the next
// column, shows every excursion of the trace at any zoom. Below about two
// samples per column nothing is gained and the samples are kept as they are.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vess {

struct DecimatedColumn {
    int16_t first = 0;
    int16_t min = 0;
    int16_t max = 0;
    int16_t last = 0;
    int64_t firstIndex = 0;  // index of the column's first sample in the input
    int64_t count = 0;       // samples in the column (at least 1)
};

struct DecimatedTrace {
    // True when the samples are kept one by one (too few to decimate); then
    // columns is empty and the caller draws samples directly.
    bool plain = true;
    std::vector<DecimatedColumn> columns;
};

// Below this many samples per column the trace is drawn sample by sample.
inline constexpr double kMinSamplesPerColumn = 2.0;

// Splits samples into columnCount consecutive runs as even as possible
// (column c covers [c*n/columnCount, (c+1)*n/columnCount)) and reduces each.
DecimatedTrace Decimate(std::span<const int16_t> samples, int columnCount);

// Minimum and maximum of each run of blockPoints samples (the last run may be
// shorter): a coarse summary for views far wider than a screen.
struct BlockExtremes {
    std::vector<int16_t> min;
    std::vector<int16_t> max;
};
BlockExtremes SummariseBlocks(std::span<const int16_t> samples, int blockPoints);

}  // namespace vess

namespace vess {

// The levels below which and above which a small fraction of the samples lie
// (e.g. 0.0005 each side): the span a display needs for the trace without
// letting a rare artefact flatten it.
struct LevelRange {
    int16_t low = 0;
    int16_t high = 0;
};
LevelRange RobustRange(std::span<const int16_t> samples, double tailFraction);

// The middle level of a run of samples (the lower median), used to centre
// the display on the baseline rather than on the events.
int16_t MedianLevel(std::span<const int16_t> samples);

// Both of the above from one count of the run's levels.
struct LevelSummary {
    LevelRange range;
    int16_t median = 0;
};
LevelSummary RobustRangeAndMedian(std::span<const int16_t> samples, double tailFraction);

}  // namespace vess
