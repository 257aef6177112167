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

// Every interval of the events, once they are in time order; cancelled when
// the user keeps them out of order or there are fewer than two beats.
Outcome<BoundedRR> Intervals(Workspace& ws, Dialogs& dialogs) {
    if (!EnsureTimeOrder(ws, dialogs) || ws.events.Count() < 2) return CommandResult::Cancelled();
    return AllIntervals(WorkspaceBeatTimesMs(ws));
}

Outcome<PlotData> AskAndBin(Dialogs& dialogs, const std::vector<double>& values, std::string_view series) {
    const auto bin = AskBinSize(dialogs, stats_texts::BinSizeText(S(series), S(texts::kMsecUnit)));
    if (!bin) return CommandResult::Cancelled();
    auto plot = HistogramPlot(values, *bin, series);
    if (!plot) return TooManyBins();
    return std::move(*plot);
}

}  // namespace

Outcome<PlotData> RRHistogramCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr) return rr.status();
    return AskAndBin(dialogs, rr->rrMs, texts::kRRSeries);
}

Outcome<PlotData> DeltaRRHistogramCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr || rr->pairs.empty()) return CommandResult::Cancelled();
    return AskAndBin(dialogs, rr->DeltaMs(), texts::kDeltaRRSeries);
}

Outcome<PlotData> LorenzPlotCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr || rr->pairs.empty()) return CommandResult::Cancelled();
    const LorenzMeasures m = AnalyseLorenz(rr->pairs);
    return LorenzPlot(rr->pairs, MainLorenzAxes(), &m);
}

Outcome<PlotData> TachogramPlotCommand(Workspace& ws, Dialogs& dialogs) {
    const auto rr = Intervals(ws, dialogs);
    if (!rr) return rr.status();
    return TachogramPlot(rr->beatNumber, rr->rrMs, MainTachogramAxes());
}

}  // namespace vess::hrv
