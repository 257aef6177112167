#include "group_analysis/results_plots.h"

#include <cmath>
#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "group_analysis/texts.h"
#include "recording/data_array.h"
#include "statistics/finite_series.h"
#include "recording/number_text.h"
#include "statistics/histogram.h"
#include "statistics/texts.h"

namespace vess::group {

namespace {

std::string Str(std::string_view s) { return std::string(s); }
namespace st = vess::stats_texts;

std::optional<double> AskNumber(Dialogs& dialogs, std::string_view caption, const std::string& prompt,
                                const std::string& initial) {
    const auto answer = dialogs.Input(Str(caption), prompt, initial);
    if (!answer || answer->empty()) return std::nullopt;
    double v = 0;
    const auto [end, ec] = std::from_chars(answer->data(), answer->data() + answer->size(), v);
    if (ec != std::errc() || end != answer->data() + answer->size()) return std::nullopt;
    return v;
}

ResultKind LastKind(const ResultsTable& table) {
    return table.Empty() ? ResultKind::None : ReadResultRow(table[table.Count()]).kind;
}

}  // namespace

std::vector<double> ColumnValues(const ResultsTable& table, const ResultColumn& column) {
    std::vector<double> v;
    // Cells that were not measured are left out.
    for (const ResultBytes& row : table.Rows())
        if (const double x = ResultCell(row, column); std::isfinite(x)) v.push_back(x);
    return v;
}

Outcome<PlotData> ValuesHistogramCommand(const std::vector<double>& values, const std::string& name,
                                         bool cumulative, Dialogs& dialogs) {
    if (values.empty()) return CommandResult::Cancelled();
    const auto bin = AskNumber(dialogs, texts::kBinSizeCaption, texts::BinSizePrompt(name), "1");
    if (!bin || *bin <= 0) return CommandResult::Cancelled();
    const HistogramPlot h = MakeHistogram(
        cumulative ? HistogramKind::CumulativeBins : HistogramKind::Frequency, values, *bin, name, "");
    if (h.tooManyBins) {
        const auto [lo, hi] = std::minmax_element(values.begin(), values.end());
        return CommandResult::Failed(Str(stats_texts::kTooManyBinsCaption), texts::TooManyBinsText(*lo, *hi, *bin));
    }
    PlotData plot = h.plot;
    plot.title = Str(cumulative ? texts::kCumulativeFraction : texts::kFrequencyHistogram);
    plot.yAxis = plot.title;
    plot.xAxis = name;
    for (PlotSeries& s : plot.series) s.legend = name;
    return plot;
}

Outcome<PlotData> ResultHistogramCommand(const ResultsTable& table, const ResultColumn& column,
                                         bool cumulative, Dialogs& dialogs) {
    return ValuesHistogramCommand(ColumnValues(table, column), Str(column.title), cumulative, dialogs);
}

Outcome<PlotData> DataArrayHistogramCommand(const DataArray& array, int arrayNumber, Dialogs& dialogs) {
    if (array.Empty()) {
        return CommandResult::Failed(st::EmptyOneArrayCaption(arrayNumber), st::EmptyOneArrayText(arrayNumber));
    }
    return ValuesHistogramCommand(array.ValuesAsDouble(), texts::DataArrayName(arrayNumber), false, dialogs);
}

Outcome<PlotData> TimeCourseCommand(const ResultsTable& table, const ResultColumn& column,
                                    Dialogs& dialogs) {
    const auto values = ColumnValues(table, column);
    if (values.empty()) return CommandResult::Cancelled();
    const auto first = AskNumber(dialogs, texts::kNormalizeFirstCaption,
                                 Str(texts::kNormalizeFirstPrompt), "0");
    if (!first) return CommandResult::Cancelled();
    const auto n = std::size_t(std::clamp<double>(*first, 0, double(values.size())));
    double mean = 0;
    for (std::size_t i = 0; i < n; ++i) mean += values[i] / double(n);
    PlotSeries s{.kind = SeriesKind::LinesAndPoints};
    for (std::size_t i = 0; i < values.size(); ++i) {
        s.x.push_back(double(i + 1));
        s.y.push_back(n > 0 && mean != 0 ? values[i] / mean : values[i]);
    }
    const std::string y = Str(column.title) + (n > 0 ? Str(texts::kNormalizedSuffix) : "");
    return PlotData{.title = y, .xAxis = Str(texts::kEventNumber), .yAxis = y, .series = {s}};
}

PlotData ScatterPlot(const ResultsTable& table, const ResultColumn& x, const ResultColumn& y,
                     const std::optional<ResultColumn>& z) {
    PlotSeries s{.kind = SeriesKind::Scatter, .x = ColumnValues(table, x), .y = ColumnValues(table, y)};
    if (z) {
        s.z = ColumnValues(table, *z);
        s.zAxis = Str(z->title);
    }
    return PlotData{.title = Str(z ? texts::kScatter3dTitle : texts::kScatterTitle),
                    .xAxis = Str(x.title), .yAxis = Str(y.title), .series = {s}};
}

PlotData VarianceMeanPlot(const FluctuationResult& r, const std::string& units) {
    PlotSeries points{.kind = SeriesKind::Scatter, .x = r.binMean, .y = r.binVariance,
                      .legend = "Bins"};
    PlotSeries fit{.kind = SeriesKind::Lines, .x = r.curveX, .y = r.curveY,
                   .legend = fmt::format("i = {:.3f} {}, N = {:.1f}", r.unitCurrent, units, r.channels)};
    return PlotData{.title = Str(texts::kVarianceMeanTitle),
                    .xAxis = fmt::format("Mean current ({})", units),
                    .yAxis = fmt::format("Variance ({}^2)", units), .series = {points, fit}};
}

std::vector<ColumnStatistics> ResultColumnStatistics(const ResultsTable& table) {
    std::vector<ColumnStatistics> out;
    for (const ResultColumn& c : ResultColumns(LastKind(table))) {
        const auto v = ColumnValues(table, c);
        out.push_back({Str(c.title), Describe(v)});
    }
    return out;
}

std::string ColumnStatisticsText(const std::vector<ColumnStatistics>& columns) {
    auto f = [](double v) { return std::isfinite(v) ? FixedOrSignificant(v, 3) : std::string(); };
    std::string out = Str(texts::kColumnStatCaption) + "\r\n\t";
    for (const char* name : {"Average", "Stdev", "Std Error", "Variance", "Coeff of Var", "1/CV^2",
                             "Median", "Minimum", "Maximum", "Skewness", "Kurtosis"})
        out += std::string(name) + "\t";
    out.back() = '\r';
    out += "\n";
    for (const auto& c : columns) {
        const Descriptive& d = c.stats;
        out += c.title;
        for (double v : {d.average, d.stdev, d.stdError, d.variance, d.coeffOfVar, d.invCv2, d.median,
                         d.minimum, d.maximum, d.skewness, d.kurtosis})
            out += "\t" + f(v);
        out += "\r\n";
    }
    for (const auto& c : columns)
        if (c.stats.leftOut > 0) out += c.title + ": " + LeftOutText(std::size_t(c.stats.leftOut)) + "\r\n";
    return out;
}

}  // namespace vess::group
