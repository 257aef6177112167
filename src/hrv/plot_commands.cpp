#include "hrv/plot_commands.h"

#include <optional>
#include <string>

#include "hrv/plots.h"
#include "hrv/rr_intervals.h"
#include "hrv/texts.h"
#include "recording/workspace.h"
#include "statistics/prompts.h"
#include "statistics/texts.h"

namespace vess::hrv {

namespace {

std::string S(std::string_view v) { return std::string(v); }

// Every interval of the events, once they are in time order; nothing when
// the user keeps them out of order or there are fewer than two beats.
std::optional<BoundedRR> Intervals(Workspace& ws, Dialogs& dialogs) {
    if (!EnsureTimeOrder(ws, dialogs) || ws.events.Count() < 2) return std::nullopt;
    return AllIntervals(WorkspaceBeatTimesMs(ws));
}

std::optional<PlotData> AskAndBin(Dialogs& dialogs, const std::vector<double>& values,
                                  std::string_view series) {
    const auto bin = AskBinSize(dialogs, stats_texts::BinSizeText(S(series), S(texts::kMsecUnit)));
    if (!bin) return std::nullopt;
    auto plot = HistogramPlot(values, *bin, series);
    if (!plot) TellTooManyBins(dialogs);
    return plot;
}

}  // namespace

std::optional<PlotData> RRHistogramCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr) return std::nullopt;
    return AskAndBin(dialogs, rr->rrMs, texts::kRRSeries);
}

std::optional<PlotData> DeltaRRHistogramCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr || rr->pairs.empty()) return std::nullopt;
    return AskAndBin(dialogs, rr->DeltaMs(), texts::kDeltaRRSeries);
}

std::optional<PlotData> LorenzPlotCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr || rr->pairs.empty()) return std::nullopt;
    const LorenzMeasures m = AnalyseLorenz(rr->pairs);
    return LorenzPlot(rr->pairs, MainLorenzAxes(), &m);
}

std::optional<PlotData> TachogramPlotCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr) return std::nullopt;
    return TachogramPlot(rr->beatNumber, rr->rrMs, MainTachogramAxes());
}

}  // namespace vess::hrv
