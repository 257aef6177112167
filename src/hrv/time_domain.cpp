#include "hrv/time_domain.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

std::vector<SegmentRow> Segments(const BoundedRR& rr, double recordingMs, double segmentMs,
                                 const HrvOptions& options) {
    if (!(segmentMs > 0)) return {};
    const double lastBeat = rr.endMs.empty() ? 0 : rr.endMs.back();
    const double length = std::max(recordingMs, lastBeat);
    // A beat exactly at the end of a whole segment still belongs to the last one.
    std::size_t count = std::size_t(std::max(1.0, std::ceil(length / segmentMs)));
    std::vector<std::vector<double>> members(count);
    for (std::size_t i = 0; i < rr.rrMs.size(); ++i) {
        const auto k = std::min(count - 1, std::size_t(std::max(0.0, rr.endMs[i] / segmentMs)));
        members[k].push_back(rr.rrMs[i]);
    }
    if (options.excludeLastSegment) --count;
    std::vector<SegmentRow> rows;
    for (std::size_t k = 0; k < count; ++k) {
        if (members[k].empty() && !options.includeZeroSegments) continue;
        // An empty segment taken in by the option counts as 0 ms, as the
        // option says; a lone interval has no standard deviation.
        const Summary s = members[k].empty() ? Summary{0, 0, 0} : Describe(members[k]);
        rows.push_back({int(k + 1), s.n, s.mean, s.sd});
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

    r.segments = Segments(rr, recordingMs, segmentMs, options);
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
