#include "statistics/correlogram.h"

#include <algorithm>
#include <cmath>

#include "recording/workspace.h"
#include "statistics/binning.h"
#include "statistics/finite_series.h"
#include "statistics/prompts.h"
#include "statistics/texts.h"

namespace vess {

namespace st = stats_texts;

namespace {

std::vector<double> Sorted(std::span<const double> v) {
    std::vector<double> s;
    s.reserve(v.size());
    for (double x : v)
        if (std::isfinite(x)) s.push_back(x);
    std::sort(s.begin(), s.end());
    return s;
}

struct Start {
    Correlogram c;   // zero counts; tooManyBins when the request is refused
    double range;    // the largest difference counted
};

// Bins 0..maxBins, or -maxBins..maxBins when symmetric.
Start Begin(double binSize, int64_t maxBins, bool symmetric) {
    if (!(binSize > 0) || maxBins < 0 || maxBins > kMaxBins) return {Correlogram{true, 0, {}}, 0};
    Correlogram c;
    c.firstBin = symmetric ? -maxBins : 0;
    c.counts.assign(std::size_t(maxBins - c.firstBin + 1), 0.0);
    return {std::move(c), double(maxBins) * binSize};
}

// Counts d into its bin; d lies within the range, so the bin does too, but a
// rounding at the edge (d = range exactly) is clamped rather than lost.
void Count(Correlogram& c, double d, double binSize) {
    const int64_t k = std::clamp<int64_t>(BinIndex(d, binSize) - c.firstBin, 0, int64_t(c.counts.size()) - 1);
    c.counts[std::size_t(k)] += 1;
}

PlotData Plot(const Correlogram& c, std::string title, std::string_view yAxis, double binSize,
              const std::string& unit) {
    PlotData p;
    p.title = std::move(title) + std::string(st::kBinSizeTag) + BinSizeText(binSize);
    p.xAxis = std::string(st::kIntervalSeries) + (unit.empty() ? "" : " (" + unit + ")");
    p.yAxis = std::string(yAxis);
    PlotSeries s{SeriesKind::Bars, {}, c.counts, {}, binSize};
    for (std::size_t i = 0; i < c.counts.size(); ++i) s.x.push_back(double(c.firstBin + int64_t(i)) * binSize);
    p.series.push_back(std::move(s));
    return p;
}

}  // namespace

Correlogram AutoCorrelogram(std::span<const double> x, double binSize, int64_t maxBins) {
    auto [c, range] = Begin(binSize, maxBins, false);
    if (c.tooManyBins) return c;
    const std::vector<double> s = Sorted(x);
    for (std::size_t i = 0; i < s.size(); ++i)
        for (std::size_t j = i + 1; j < s.size() && s[j] - s[i] <= range; ++j) Count(c, s[j] - s[i], binSize);
    return c;
}

Correlogram CrossCorrelogram(std::span<const double> a, std::span<const double> b, double binSize,
                             int64_t maxBins) {
    auto [c, range] = Begin(binSize, maxBins, true);
    if (c.tooManyBins) return c;
    const std::vector<double> sa = Sorted(a), sb = Sorted(b);
    // For ascending a the window of b with -range <= b - a <= range only moves up.
    std::size_t lo = 0, hi = 0;
    for (double x : sa) {
        while (lo < sb.size() && sb[lo] - x < -range) ++lo;
        if (hi < lo) hi = lo;
        while (hi < sb.size() && sb[hi] - x <= range) ++hi;
        for (std::size_t j = lo; j < hi; ++j) Count(c, sb[j] - x, binSize);
    }
    return c;
}

Correlogram AutoCorrelogramPairwise(std::span<const double> x, double binSize, int64_t maxBins) {
    auto [c, range] = Begin(binSize, maxBins, false);
    if (c.tooManyBins) return c;
    for (std::size_t i = 0; i < x.size(); ++i)
        for (std::size_t j = i + 1; j < x.size(); ++j) {
            // The pair's distance, whichever of the two came first.
            const double d = x[j] >= x[i] ? x[j] - x[i] : x[i] - x[j];
            if (d >= 0 && d <= range) Count(c, d, binSize);
        }
    return c;
}

Correlogram CrossCorrelogramPairwise(std::span<const double> a, std::span<const double> b, double binSize,
                                     int64_t maxBins) {
    auto [c, range] = Begin(binSize, maxBins, true);
    if (c.tooManyBins) return c;
    for (double x : a)
        for (double y : b) {
            const double d = y - x;
            if (d >= -range && d <= range) Count(c, d, binSize);
        }
    return c;
}

void Normalize(Correlogram& c, std::size_t n) {
    if (n == 0) return;
    for (double& v : c.counts) v /= double(n);
}

PlotData AutoCorrelogramPlot(const Correlogram& c, int arrayNumber, double binSize, const std::string& unit) {
    return Plot(c, st::AutoCorrelogramTitle(arrayNumber), st::kAutoCorrelation, binSize, unit);
}

PlotData CrossCorrelogramPlot(const Correlogram& c, int firstArray, double binSize, const std::string& unit) {
    return Plot(c, st::CrossCorrelogramTitle(firstArray), st::kCrossCorrelation, binSize, unit);
}

namespace {

struct CorrelogramAnswers {
    std::string unit;
    double binSize = 0;
    int64_t maxBins = 0;
};

// Unit, bin size and maximum number of bins; cancelled when cancelled or
// unreadable, failed for too many bins.
Outcome<CorrelogramAnswers> AskCorrelogram(Dialogs& dialogs, std::string_view maxBinsText) {
    CorrelogramAnswers a;
    const auto unit = AskAxisUnit(dialogs);
    if (!unit) return CommandResult::Cancelled();
    a.unit = *unit;
    const auto size = AskBinSize(dialogs, st::BinSizeText(std::string(st::kIntervalSeries), a.unit));
    if (!size) return CommandResult::Cancelled();
    a.binSize = *size;
    const auto maxBins = AskNumber(dialogs, std::string(st::kMaxBinsCaption), std::string(maxBinsText),
                                   std::string(st::kMaxBinsDefault));
    if (!maxBins || *maxBins < 1 || std::floor(*maxBins) != *maxBins) return CommandResult::Cancelled();
    if (*maxBins > double(kMaxBins)) return TooManyBins();
    a.maxBins = int64_t(*maxBins);
    return a;
}

void AskNormalize(Dialogs& dialogs, Correlogram& c, std::size_t n) {
    if (dialogs.AskYesNo(std::string(st::kNormalizeCaption), std::string(st::kNormalizeText))) Normalize(c, n);
}

}  // namespace

Outcome<CorrelogramRequest> PrepareAutoCorrelogram(Workspace& ws, Dialogs& dialogs, int arrayNumber) {
    const DataArray& array = ws.Array(arrayNumber);
    if (array.Empty()) return CommandResult::Cancelled();
    const auto a = AskCorrelogram(dialogs, st::kAutoMaxBinsText);
    if (!a) return a.status();
    const FiniteSeries x = FiniteOnly(array.ValuesAsDouble());
    CorrelogramRequest r{x.values, {}, false, arrayNumber == 1 ? 1 : 2, a->unit, a->binSize, a->maxBins, {}};
    r.note = JoinNotes(LeftOutText(x.leftOut), LostPrecisionText(x.values));
    return r;
}

Outcome<CorrelogramRequest> PrepareCrossCorrelogram(Workspace& ws, Dialogs& dialogs, int firstArray) {
    const int first = firstArray == 1 ? 1 : 2;
    const DataArray& from = ws.Array(first);
    const DataArray& to = ws.Array(3 - first);
    if (from.Empty() || to.Empty()) return CommandResult::Cancelled();
    const auto a = AskCorrelogram(dialogs, st::kCrossMaxBinsText);
    if (!a) return a.status();
    const FiniteSeries x = FiniteOnly(from.ValuesAsDouble());
    const FiniteSeries y = FiniteOnly(to.ValuesAsDouble());
    CorrelogramRequest r{x.values, y.values, true, first, a->unit, a->binSize, a->maxBins, {}};
    const std::string lost = LostPrecisionText(x.values);
    r.note = JoinNotes(LeftOutText(x.leftOut + y.leftOut), lost.empty() ? LostPrecisionText(y.values) : lost);
    return r;
}

Correlogram CountCorrelogram(const CorrelogramRequest& r) {
    return r.cross ? CrossCorrelogram(r.from, r.to, r.binSize, r.maxBins) : AutoCorrelogram(r.from, r.binSize, r.maxBins);
}

PlotData FinishCorrelogram(Dialogs& dialogs, Correlogram c, const CorrelogramRequest& r) {
    AskNormalize(dialogs, c, r.from.size());
    PlotData p = r.cross ? CrossCorrelogramPlot(c, r.arrayNumber, r.binSize, r.unit)
                         : AutoCorrelogramPlot(c, r.arrayNumber, r.binSize, r.unit);
    p.note = r.note;
    return p;
}

Outcome<PlotData> AutoCorrelogramCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber) {
    const auto r = PrepareAutoCorrelogram(ws, dialogs, arrayNumber);
    if (!r) return r.status();
    return FinishCorrelogram(dialogs, CountCorrelogram(*r), *r);
}

Outcome<PlotData> CrossCorrelogramCommand(Workspace& ws, Dialogs& dialogs, int firstArray) {
    const auto r = PrepareCrossCorrelogram(ws, dialogs, firstArray);
    if (!r) return r.status();
    return FinishCorrelogram(dialogs, CountCorrelogram(*r), *r);
}

}  // namespace vess
