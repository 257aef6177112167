// vess hist SOURCE --bin SIZE: the histogram routine's bins (left edges) and
// counts or fractions. vess correlogram A [B]: auto- or cross-correlogram.
#include <iostream>
#include <map>
#include <memory>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/series_source.h"
#include "cli/stderr_dialogs.h"
#include "recording/event_record.h"
#include "statistics/binning.h"
#include "statistics/correlogram.h"
#include "statistics/finite_series.h"
#include "statistics/histogram.h"
#include "statistics/texts.h"

namespace vess::cli {

namespace {

namespace st = stats_texts;

// The series with at least two values, or the command ends with the empty
// array message.
std::vector<double> LoadNonEmpty(const std::string& command, const std::string& source, int number,
                                 int group = 0, bool intervals = false) {
    const LoadedSeries s = LoadSeries(source, group, intervals);
    if (!s.Ok()) {
        std::cerr << "vess " << command << ": " << s.error << "\n";
        throw CLI::RuntimeError(1);
    }
    if (s.values.size() < 2) {
        StderrDialogs().Message(st::EmptyOneArrayCaption(number), st::EmptyOneArrayText(number));
        throw CLI::RuntimeError(1);
    }
    return s.AsDouble();
}

void PrintPlot(const PlotData& p, bool csv) {
    if (!p.note.empty()) std::cerr << p.note << "\n";
    const char sep = csv ? ',' : '\t';
    std::cout << p.xAxis << sep << p.yAxis << "\n";
    for (const PlotSeries& s : p.series)
        for (std::size_t i = 0; i < s.x.size(); ++i) std::cout << fmt::format("{}{}{}\n", s.x[i], sep, s.y[i]);
}

void TooManyBins() {
    StderrDialogs().Message(std::string(st::kTooManyBinsCaption), std::string(st::kTooManyBinsText));
    throw CLI::RuntimeError(1);
}

const std::map<std::string, HistogramKind>& KindNames() {
    static const std::map<std::string, HistogramKind> names = {
        {"frequency", HistogramKind::Frequency}, {"cumulative", HistogramKind::CumulativeBins},
        {"cumulative-nobin", HistogramKind::CumulativeNoBins}, {"inverse", HistogramKind::Inverse}};
    return names;
}

}  // namespace

void AddHistCommand(CLI::App& app) {
    struct Options {
        std::string source;
        double bin = 0;
        std::string kind = "frequency";
        std::string unit;
        int group = 0;
        bool intervals = false;
        bool csv = false;
    };
    auto opts = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("hist", "Histogram of a series: bins (left edge) and counts or fractions");
    cmd->add_option("source", opts->source, "series (as for vess array)")->required();
    cmd->add_option("--bin", opts->bin, "bin size (frequency and cumulative)");
    cmd->add_option("--kind", opts->kind, "frequency, cumulative, cumulative-nobin or inverse")
        ->check(CLI::IsMember({"frequency", "cumulative", "cumulative-nobin", "inverse"}));
    cmd->add_option("--unit", opts->unit, "unit of the values, for the axis text");
    cmd->add_option("--group", opts->group, "events of this group only (0: all)")->check(CLI::Range(0, kLastGroup));
    cmd->add_flag("--intervals", opts->intervals, "differences of the sorted values (inter-event intervals)");
    cmd->add_flag("--csv", opts->csv, "comma-separated");
    cmd->callback([opts] {
        const HistogramKind kind = KindNames().at(opts->kind);
        if (UsesBins(kind) && !ValidBinSize(opts->bin)) {
            std::cerr << "vess hist: --bin must be a finite positive size for the " << opts->kind << " histogram\n";
            throw CLI::RuntimeError(1);
        }
        const auto values = LoadNonEmpty("hist", opts->source, 1, opts->group, opts->intervals);
        const HistogramPlot h = MakeHistogram(kind, values, opts->bin, std::string(st::kSourceNames[14]), opts->unit);
        if (h.tooManyBins) TooManyBins();
        PrintPlot(h.plot, opts->csv);
    });
}

void AddCorrelogramCommand(CLI::App& app) {
    struct Options {
        std::string a;
        std::string b;
        double bin = 0;
        int64_t maxBins = 1000;
        bool normalize = false;
        bool csv = false;
    };
    auto opts = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("correlogram", "Auto-correlogram of A, or cross-correlogram of A against B");
    cmd->add_option("a", opts->a, "series (as for vess array)")->required();
    cmd->add_option("b", opts->b, "second series: cross-correlogram of A against B");
    cmd->add_option("--bin", opts->bin, "bin size")->required();
    cmd->add_option("--max-bins", opts->maxBins, "maximum number of bins (x range)")->check(CLI::PositiveNumber);
    cmd->add_flag("--normalize", opts->normalize, "divide counts by the number of elements of A");
    cmd->add_flag("--csv", opts->csv, "comma-separated");
    cmd->callback([opts] {
        if (!ValidBinSize(opts->bin)) {
            std::cerr << "vess correlogram: --bin must be a finite positive size\n";
            throw CLI::RuntimeError(1);
        }
        if (opts->maxBins > kMaxBins) TooManyBins();
        const FiniteSeries a = FiniteOnly(LoadNonEmpty("correlogram", opts->a, 1));
        const FiniteSeries b = opts->b.empty() ? FiniteSeries{} : FiniteOnly(LoadNonEmpty("correlogram", opts->b, 2));
        const Correlogram raw = opts->b.empty() ? AutoCorrelogram(a.values, opts->bin, opts->maxBins)
                                                : CrossCorrelogram(a.values, b.values, opts->bin, opts->maxBins);
        if (raw.tooManyBins) TooManyBins();
        Correlogram c = raw;
        if (opts->normalize) Normalize(c, a.values.size());
        PlotData p = opts->b.empty() ? AutoCorrelogramPlot(c, 1, opts->bin, {}) : CrossCorrelogramPlot(c, 1, opts->bin, {});
        const std::string lost = LostPrecisionText(a.values);
        p.note = JoinNotes(LeftOutText(a.leftOut + b.leftOut), lost.empty() ? LostPrecisionText(b.values) : lost);
        PrintPlot(p, opts->csv);
    });
}

}  // namespace vess::cli
