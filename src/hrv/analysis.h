// One analysis of a series of beats with the window's options: the bounded
// intervals, the time-domain measures with their segments, the geometric and
// Lorenz measures. The windows and `vess hrv` share it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hrv/geometric.h"
#include "hrv/hrv_options.h"
#include "hrv/rr_intervals.h"
#include "hrv/time_domain.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

struct HrvAnalysis {
    BoundedRR rr;
    TimeDomainResult timeDomain;
    std::optional<Histogram> rrHistogram;      // nothing when the bins are too many
    std::optional<Histogram> deltaHistogram;
    TriangleFit triangle;                      // from the RR histogram
    LorenzMeasures lorenz;
};

// recordingMs: the recording's length (or the last beat's time); segmentMs:
// NPointsSeg times the sample interval.
HrvAnalysis AnalyseBeats(std::span<const double> beatTimesMs, double recordingMs, double segmentMs,
                         const HrvOptions& options);

// The open recording's length and sample interval (the last beat and 1000 us
// without a recording), for the segments.
struct RecordingSpan {
    double lengthMs = 0;
    double intervalUs = 1000;
};
RecordingSpan SpanOf(const Workspace& ws);

// Grid text: the titles, then one tab-separated row per line, CR LF ends.
std::string GridText(std::span<const std::string> titles,
                     std::span<const std::vector<std::string>> rows);
// The result grid's titles ("File Name" and the measures) and one row of it.
std::vector<std::string> ResultTitles();
std::vector<std::string> ResultRow(const std::string& fileName, const TimeDomainResult& r);
std::vector<std::string> SegmentTitles();
std::vector<std::vector<std::string>> SegmentRows(const TimeDomainResult& r);

}  // namespace vess::hrv
