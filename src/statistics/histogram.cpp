#include "statistics/histogram.h"

#include <algorithm>
#include <cmath>

#include "recording/event_grid.h"
#include "recording/workspace.h"
#include "statistics/array_fill.h"
#include "statistics/binning.h"
#include "statistics/finite_series.h"
#include "statistics/prompts.h"
#include "statistics/texts.h"
#include "statistics/total_order.h"

namespace vess {

namespace st = stats_texts;

namespace {

std::string AxisText(const std::string& series, const std::string& unit) {
    return unit.empty() ? series : series + " (" + unit + ")";
}

HistogramPlot BinnedHistogram(HistogramKind kind, std::span<const double> values, double binSize,
                              const std::string& series, const std::string& unit) {
    HistogramPlot h;
    const BinnedCounts bins = CountIntoBins(values, binSize);
    if (bins.tooManyBins) {
        h.tooManyBins = true;
        return h;
    }
    PlotSeries s{SeriesKind::Bars, {}, {}, {}, binSize};
    double running = 0;
    for (std::size_t i = 0; i < bins.counts.size(); ++i) {
        s.x.push_back(bins.LeftEdge(i, binSize));
        running += bins.counts[i];
        s.y.push_back(kind == HistogramKind::Frequency ? double(bins.counts[i])
                                                       : running / double(values.size()));
    }
    const std::string size = st::kBinSizeTag.data() + BinSizeText(binSize) + unit;
    if (kind == HistogramKind::Frequency) {
        h.plot.title = (std::string(st::kFrequencyTitlePrefix) + series + size).substr(0, st::kFrequencyTitleMax);
        h.plot.yAxis = std::string(st::kNumberOfEvents);
    } else {
        h.plot.title = std::string(st::kCumulativePrefix) + series + std::string(st::kHistogramSuffix) + "  " + size;
        h.plot.yAxis = std::string(st::kCumulativeFraction);
    }
    h.plot.xAxis = AxisText(series, unit);
    h.plot.series.push_back(std::move(s));
    return h;
}

HistogramPlot UnbinnedCurve(HistogramKind kind, std::span<const double> values,
                            const std::string& series, const std::string& unit) {
    std::vector<double> sorted(values.begin(), values.end());
    SortTotalOrder(sorted);
    PlotSeries s{SeriesKind::Steps, sorted, {}, {}, 0};
    const double n = double(sorted.size());
    for (std::size_t i = 1; i <= sorted.size(); ++i)
        s.y.push_back(kind == HistogramKind::Inverse ? 1 - double(i) / n : double(i) / n);
    HistogramPlot h;
    const std::string prefix(kind == HistogramKind::Inverse ? st::kInversePrefix : st::kCumulativePrefix);
    h.plot.title = prefix + series + std::string(st::kHistogramSuffix);
    h.plot.xAxis = AxisText(series, unit);
    h.plot.yAxis = std::string(kind == HistogramKind::Inverse ? st::kFraction : st::kCumulativeFraction);
    h.plot.series.push_back(std::move(s));
    return h;
}

// The grid column that holds an event source, and the factor to its unit.
struct SourceColumn {
    EventField field;
    double scale;
};

SourceColumn ColumnOf(HistogramSource source) {
    switch (source) {
        case HistogramSource::Amplitude: return {EventField::Amplitude, 1};
        case HistogramSource::Time: return {EventField::Time, 1e-3};
        case HistogramSource::RiseTime: return {EventField::RiseTime, 1};
        case HistogramSource::DecayTime: return {EventField::DecayTime, 1};
        case HistogramSource::Area: return {EventField::Area, 1};
        case HistogramSource::Noise: return {EventField::Noise, 1};
        case HistogramSource::Baseline: return {EventField::Baseline, 1};
        case HistogramSource::Rise1090: return {EventField::Rise1090, 1};
        case HistogramSource::HalfWidth: return {EventField::HalfWidth, 1};
        case HistogramSource::Rise50: return {EventField::Rise50, 1};
        case HistogramSource::Slope1090: return {EventField::Slope1090, 1};
        case HistogramSource::RelativeTime: return {EventField::RelativeTime, 1e-3};
        default: break;
    }
    return {EventField::Time, 1};
}

double AsDouble(const CellValue& v) {
    return std::visit([](auto x) { return double(x); }, v);
}

bool IsArraySource(HistogramSource s) {
    return s == HistogramSource::DataArray1 || s == HistogramSource::DataArray2;
}

}  // namespace

std::optional<HistogramCode> DecodeHistogramCode(int code) {
    const int source = code % 20;
    const int kind = code - source;
    if (source < 1 || source > 15 || kind < 0 || kind > 60) return std::nullopt;
    return HistogramCode{HistogramSource(source), HistogramKind(kind)};
}

std::string_view HistogramSourceName(HistogramSource source) { return st::kSourceNames[int(source)]; }

bool UsesBins(HistogramKind kind) {
    return kind == HistogramKind::Frequency || kind == HistogramKind::CumulativeBins;
}

HistogramPlot MakeHistogram(HistogramKind kind, std::span<const double> values, double binSize,
                            const std::string& series, const std::string& unit) {
    const FiniteSeries finite = FiniteOnly(values);
    HistogramPlot h = UsesBins(kind) ? BinnedHistogram(kind, finite.values, binSize, series, unit)
                                     : UnbinnedCurve(kind, finite.values, series, unit);
    h.plot.note = JoinNotes(LeftOutText(finite.leftOut), LostPrecisionText(finite.values));
    return h;
}

std::vector<double> EventSourceValues(const Workspace& ws, HistogramSource source, int group) {
    std::vector<double> out;
    if (source == HistogramSource::InterEventInterval) {
        const double intervalUs = ws.recording ? ws.recording->IntervalUs() : 0.0;
        for (float v : InterEventIntervals(ws.events, group, intervalUs)) out.push_back(v);
        return out;
    }
    const SourceColumn column = ColumnOf(source);
    const int gridColumn = int(column.field) + 1;
    for (int32_t i = 1; i <= ws.events.Count(); ++i) {
        const EventRecord& r = ws.events[i];
        if (!InSourceGroup(r, group)) continue;
        out.push_back(AsDouble(EventCellValue(ws.recording.get(), r, i, gridColumn)) * column.scale);
    }
    return out;
}

std::string EventSourceUnit(const Workspace& ws, HistogramSource source) {
    const std::string units = ws.recording ? ws.recording->Units() : std::string("counts");
    switch (source) {
        case HistogramSource::Amplitude:
        case HistogramSource::Noise:
        case HistogramSource::Baseline: return units;
        case HistogramSource::Area: return units == "pA" ? "fC" : units + "*msec";
        case HistogramSource::Slope1090: return units + std::string(st::kPerMsec);
        case HistogramSource::Time:
        case HistogramSource::RelativeTime: return std::string(st::kUnitSec);
        default: break;
    }
    return std::string(st::kUnitMsec);
}

Outcome<PlotData> HistogramCommand(Workspace& ws, Dialogs& dialogs, int code) {
    const auto decoded = DecodeHistogramCode(code);
    if (!decoded) return CommandResult::Cancelled();
    const std::string series(HistogramSourceName(decoded->source));
    std::vector<double> values;
    std::string unit;
    if (IsArraySource(decoded->source)) {
        const DataArray& array = ws.Array(decoded->source == HistogramSource::DataArray1 ? 1 : 2);
        if (array.Empty()) return CommandResult::Cancelled();
        const auto typed = AskAxisUnit(dialogs);
        if (!typed) return CommandResult::Cancelled();
        unit = *typed;
        values = array.ValuesAsDouble();
    } else {
        if (!ws.recording || ws.events.Empty()) return CommandResult::Cancelled();
        const auto group = AskGroup(dialogs, std::string(st::kGroupNumberCaption), std::string(st::kGroupNumberText));
        if (!group) return CommandResult::Cancelled();
        values = EventSourceValues(ws, decoded->source, *group);
        if (values.empty()) {
            return CommandResult::Failed(st::kNoGroupEventsCaption, st::NoGroupEventsText(*group));
        }
        unit = EventSourceUnit(ws, decoded->source);
    }
    double binSize = 0;
    if (UsesBins(decoded->kind)) {
        const auto size = AskBinSize(dialogs, st::BinSizeText(series, unit));
        if (!size) return CommandResult::Cancelled();
        binSize = *size;
    }
    HistogramPlot h = MakeHistogram(decoded->kind, values, binSize, series, unit);
    if (h.tooManyBins) return TooManyBins();
    return std::move(h.plot);
}

HistogramPlot MakeRunningAverage(std::span<const double> timesSec, std::span<const double> values,
                                 double binSizeSec) {
    HistogramPlot h;
    const FinitePairs pairs = FinitePairsOnly(timesSec, values);
    const BinnedCounts bins = CountIntoBins(pairs.x, binSizeSec);
    if (bins.tooManyBins) {
        h.tooManyBins = true;
        return h;
    }
    std::vector<double> sums(bins.counts.size(), 0.0);
    for (std::size_t i = 0; i < pairs.x.size(); ++i)
        sums[std::size_t(BinIndex(pairs.x[i], binSizeSec) - bins.lowestBin)] += pairs.y[i];
    h.plot.note = LeftOutText(pairs.leftOut);
    PlotSeries s{SeriesKind::Lines, {}, {}, {}, binSizeSec};
    for (std::size_t k = 0; k < sums.size(); ++k) {
        if (bins.counts[k] == 0) continue;  // an empty bin has no average: skipped
        s.x.push_back(bins.LeftEdge(k, binSizeSec));
        s.y.push_back(sums[k] / bins.counts[k]);
    }
    const std::string series(st::kSourceNames[int(HistogramSource::DataArray2)]);
    h.plot.title = std::string(st::kRunningTitlePrefix) + series + std::string(st::kBinSizeTag) +
                   BinSizeText(binSizeSec) + std::string(st::kUnitSec);
    h.plot.xAxis = std::string(st::kTimeSecAxis);
    h.plot.yAxis = series;
    h.plot.series.push_back(std::move(s));
    return h;
}

Outcome<PlotData> RunningAverageCommand(Workspace& ws, Dialogs& dialogs) {
    if (ws.array1.Empty() || ws.array2.Empty()) return CommandResult::Cancelled();
    if (ws.array1.UpperBound() != ws.array2.UpperBound()) {
        return CommandResult::Failed(st::kEqualCountsCaption, st::kEqualCountsText);
    }
    const auto size = AskNumber(dialogs, std::string(st::kRunningBinCaption), std::string(st::kRunningBinText));
    if (!size || *size <= 0) return CommandResult::Cancelled();
    HistogramPlot h = MakeRunningAverage(ws.array1.ValuesAsDouble(), ws.array2.ValuesAsDouble(), *size);
    if (h.tooManyBins) return TooManyBins();
    return std::move(h.plot);
}

}  // namespace vess
