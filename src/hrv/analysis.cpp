#include "hrv/analysis.h"

#include <fmt/format.h>

#include "hrv/texts.h"
#include "recording/workspace.h"

namespace vess::hrv {

HrvAnalysis AnalyseBeats(std::span<const double> beatTimesMs, double recordingMs, double segmentMs,
                         const HrvOptions& options) {
    HrvAnalysis a;
    a.rr = SelectIntervals(beatTimesMs, options.lowerBoundMs, options.upperBoundMs);
    a.timeDomain = AnalyseTimeDomain(a.rr, recordingMs, segmentMs, options);
    a.rrHistogram = BinValues(a.rr.rrMs, options.rrBinMs);
    a.deltaHistogram = BinValues(a.rr.DeltaMs(), options.deltaRRBinMs);
    if (a.rrHistogram) a.triangle = FitTriangle(*a.rrHistogram);
    a.lorenz = AnalyseLorenz(a.rr.pairs);
    return a;
}

RecordingSpan SpanOf(const Workspace& ws) {
    RecordingSpan s;
    if (ws.recording) {
        s.intervalUs = ws.recording->IntervalUs();
        s.lengthMs = double(ws.recording->PointsPerChannel()) * s.intervalUs / 1000;
    } else if (!ws.events.Empty()) {
        s.lengthMs = ws.events.Last().time;
    }
    return s;
}

std::string GridText(std::span<const std::string> titles,
                     std::span<const std::vector<std::string>> rows) {
    const auto line = [](std::span<const std::string> cells) {
        std::string out;
        for (std::size_t i = 0; i < cells.size(); ++i) out += (i ? "\t" : "") + cells[i];
        return out + "\r\n";
    };
    std::string out = line(titles);
    for (const auto& row : rows) out += line(row);
    return out;
}

std::vector<std::string> ResultTitles() {
    std::vector<std::string> t{std::string(texts::kColFileName)};
    for (auto c : texts::kMeasureColumns) t.emplace_back(c);
    return t;
}

std::vector<std::string> ResultRow(const std::string& fileName, const TimeDomainResult& r) {
    std::vector<std::string> row{fileName};
    const auto values = r.Values();
    for (std::size_t i = 0; i < values.size(); ++i) row.push_back(FormatMeasure(i, values[i]));
    return row;
}

std::vector<std::string> SegmentTitles() { return {texts::kSegmentColumns.begin(), texts::kSegmentColumns.end()}; }

std::vector<std::vector<std::string>> SegmentRows(const TimeDomainResult& r) {
    std::vector<std::vector<std::string>> rows;
    for (const SegmentRow& s : r.segments)
        rows.push_back({fmt::format("{}", s.number), fmt::format("{}", s.count), FormatMeasure(1, s.meanMs),
                        FormatMeasure(1, s.sdMs)});
    return rows;
}

}  // namespace vess::hrv
