// Time-domain heart-rate-variability measures over the whole series and over
// even segments of the recording.
#pragma once

#include <array>
#include <span>
#include <string>
#include <vector>

#include "hrv/hrv_options.h"
#include "hrv/rr_intervals.h"

namespace vess::hrv {

// Count, mean and sample standard deviation (divided by n - 1, from the
// shared descriptive statistics) of the finite values; a mean of no value
// and a deviation of fewer than two are not measured (NaN).
struct Summary {
    int n = 0;
    double mean = 0;
    double sd = 0;
};
Summary Describe(std::span<const double> values);

struct SegmentRow {
    int number = 0;       // 1-based segment number from the start of the recording
    int count = 0;        // RR intervals ending in the segment
    double meanMs = 0;
    double sdMs = 0;
};

struct TimeDomainResult {
    int nRR = 0;
    double MRR = 0, SDRR = 0, CVPercent = 0;
    int nDRR = 0;
    double MdRR = 0, SDdRR = 0, rMSSD = 0;
    int nNN = 0;
    double pNN = 0;
    int nSegment = 0;
    double MANN = 0, SDANN = 0, MSDNN = 0, SDSDNN = 0;
    std::vector<SegmentRow> segments;  // the segments that take part, in order
    std::string segmentProblem;        // why there are no segment measures, or ""

    // The fifteen measures in the result grid's column order.
    std::array<double, 15> Values() const;
};

// Segment rows listed at most; more (a tiny segment length, a beat far
// beyond the recording with empty segments listed) leaves the segment
// measures out with a reason.
inline constexpr int kMaxSegmentRows = 1'000'000;

// The recording is cut into segments of segmentMs from 0 ms; recordingMs is
// its length (the last beat's time when there is no recording). An interval
// belongs to the segment that holds the beat ending it.
TimeDomainResult AnalyseTimeDomain(const BoundedRR& rr, double recordingMs, double segmentMs,
                                   const HrvOptions& options);

// Fixed-point text of a measure as the grids show it: counts as integers,
// others with three decimals, a measure that is not measured blank. CV%,
// rMSSD and %NN are not measured when their counts cannot define them.
std::string FormatMeasure(std::size_t column, double value);

}  // namespace vess::hrv
