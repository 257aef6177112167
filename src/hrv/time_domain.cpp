#include "hrv/time_domain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include <fmt/format.h>

#include "statistics/descriptive.h"
#include "statistics/finite_series.h"

namespace vess::hrv {

namespace {
constexpr double kNotMeasured = std::numeric_limits<double>::quiet_NaN();
}

Summary Describe(std::span<const double> values) {
    const FiniteSeries finite = FiniteOnly(values);
    const MeanVariance mv = MeanAndVariance(finite.values);
    Summary s;
    s.n = int(finite.values.size());
    s.mean = s.n ? mv.mean : kNotMeasured;
    s.sd = s.n >= 2 ? std::sqrt(mv.variance) : kNotMeasured;
    return s;
}

std::array<double, 15> TimeDomainResult::Values() const {
    return {double(nRR), MRR,   SDRR,  CVPercent,       double(nDRR), MdRR,  SDdRR, rMSSD,
            double(nNN), pNN,   double(nSegment), MANN, SDANN,        MSDNN, SDSDNN};
}

std::string FormatMeasure(std::size_t column, double value) {
    if (!std::isfinite(value)) return {};  // not measured: blank
    // n RR, n dRR, nNN and nSegment are counts.
    if (column == 0 || column == 4 || column == 8 || column == 10) return fmt::format("{}", value);
    return fmt::format("{:.3f}", value);
}

namespace {

// Segment k (0-based) of the one holding a beat at endMs, as a whole number
// in a double: far beats give indexes beyond any integer type.
double SegmentOf(double endMs, double segmentMs, double lastSegment) {
    return std::min(lastSegment, std::max(0.0, std::floor(endMs / segmentMs)));
}

std::vector<SegmentRow> Segments(const BoundedRR& rr, double recordingMs, double segmentMs,
                                 const HrvOptions& options, std::string& problem) {
    if (!(segmentMs > 0)) return {};
    const double lastBeat = rr.endMs.empty() ? 0 : rr.endMs.back();
    const double length = std::max(recordingMs, lastBeat);
    // A beat exactly at the end of a whole segment still belongs to the last one.
    const double count = std::max(1.0, std::ceil(length / segmentMs));
    const auto tooMany = [&] {
        problem = fmt::format("{:.4g} segments of {:.4g} ms: too many to list (at most {}); no segment measures.",
                              count, segmentMs, kMaxSegmentRows);
        return std::vector<SegmentRow>{};
    };
    // Beyond 2^53 segment numbers are no longer whole in a double.
    if (!(count <= 0x1p53)) return tooMany();
    // Only segments that hold an interval are kept, so an empty stretch of
    // any length costs nothing.
    std::map<double, std::vector<double>> members;
    for (std::size_t i = 0; i < rr.rrMs.size(); ++i)
        members[SegmentOf(rr.endMs[i], segmentMs, count - 1)].push_back(rr.rrMs[i]);
    const double taken = options.excludeLastSegment ? count - 1 : count;
    std::erase_if(members, [taken](const auto& m) { return m.first >= taken; });
    const double rowsWanted = options.includeZeroSegments ? taken : double(members.size());
    const double lastNumber = options.includeZeroSegments ? taken : members.empty() ? 0 : members.rbegin()->first + 1;
    if (lastNumber > double(std::numeric_limits<int>::max()) || rowsWanted > double(kMaxSegmentRows))
        return tooMany();
    std::vector<SegmentRow> rows;
    const auto add = [&rows](int k, std::span<const double> values) {
        // An empty segment taken in by the option counts as 0 ms, as the
        // option says; a lone interval has no standard deviation.
        const Summary s = values.empty() ? Summary{0, 0, 0} : Describe(values);
        rows.push_back({k + 1, s.n, s.mean, s.sd});
    };
    if (!options.includeZeroSegments) {
        for (const auto& [k, values] : members) add(int(k), values);
        return rows;
    }
    for (int k = 0; k < int(taken); ++k) {
        const auto held = members.find(double(k));
        add(k, held == members.end() ? std::span<const double>() : std::span<const double>(held->second));
    }
    return rows;
}

}  // namespace

TimeDomainResult AnalyseTimeDomain(const BoundedRR& rr, double recordingMs, double segmentMs,
                                   const HrvOptions& options) {
    TimeDomainResult r;
    const Summary all = Describe(rr.rrMs);
    r.nRR = all.n;
    r.MRR = all.mean;
    r.SDRR = all.sd;
    r.CVPercent = all.mean != 0 ? all.sd / all.mean * 100 : kNotMeasured;

    const std::vector<double> delta = rr.DeltaMs();
    const Summary d = Describe(delta);
    r.nDRR = d.n;
    r.MdRR = d.mean;
    r.SDdRR = d.sd;
    double squares = 0;
    for (double v : delta) {
        squares += v * v;
        if (std::abs(v) > options.thresholdMs) ++r.nNN;
    }
    r.rMSSD = d.n ? std::sqrt(squares / d.n) : kNotMeasured;
    r.pNN = d.n ? double(r.nNN) / d.n * 100 : kNotMeasured;

    r.segments = Segments(rr, recordingMs, segmentMs, options, r.segmentProblem);
    std::vector<double> means, sds;
    for (const SegmentRow& s : r.segments) {
        means.push_back(s.meanMs);
        sds.push_back(s.sdMs);
    }
    const Summary m = Describe(means), sd = Describe(sds);
    r.nSegment = m.n;
    r.MANN = m.mean;
    r.SDANN = m.sd;
    r.MSDNN = sd.mean;
    r.SDSDNN = sd.sd;
    return r;
}

}  // namespace vess::hrv
