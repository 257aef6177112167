#include "group_analysis/trace_commands.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "detection/editing.h"
#include "recording/number_entry.h"
#include "group_analysis/fluctuation.h"
#include "group_analysis/results_plots.h"
#include "group_analysis/trace_analysis.h"
#include "group_analysis/texts.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {

std::string Str(std::string_view s) { return std::string(s); }

// The event of trace k of the set, when k names an individual trace whose
// event is still in the table.
std::optional<int32_t> EventOfTrace(const Workspace& ws, const TraceSet& set, int32_t trace) {
    if (trace < 1 || trace > set.count || std::size_t(trace) >= set.eventIndex.size()) return std::nullopt;
    const int32_t e = set.eventIndex[std::size_t(trace)];
    if (e < 1 || e > ws.events.Count()) return std::nullopt;
    return e;
}

// A checked entry within [lo, hi] or nothing.
std::optional<double> EntryWithin(std::string_view entry, double lo, double hi) {
    const auto v = ParseNumberEntry(entry);
    if (!v || *v < lo || *v > hi) return std::nullopt;
    return v;
}

}  // namespace

double NumberEntryOr(std::string_view entry, double previous, double lo, double hi) {
    return EntryWithin(entry, lo, hi).value_or(previous);
}

int WholeEntryOr(std::string_view entry, int previous, int lo, int hi) {
    const auto v = EntryWithin(entry, lo, hi);
    return v && *v == std::floor(*v) ? int(*v) : previous;
}

CommandResult RemoveTraceCommand(Workspace& ws, const TraceSet& set, int32_t trace) {
    if (set.Empty()) return CommandResult::Cancelled();
    if (trace == 0) {
        return CommandResult::Failed(Str(texts::kAverageTraceCaption), Str(texts::kCannotRemoveAverage));
    }
    const auto e = EventOfTrace(ws, set, trace);
    if (!e) return CommandResult::Cancelled();
    ws.history.Checkpoint(ws.events, "Remove trace from its group");
    ws.events[*e].group = 0;
    return CommandResult::Ok();
}

CommandResult RegroupTraceCommand(Workspace& ws, const TraceSet& set, int32_t trace, int shownGroup,
                                  Dialogs& dialogs) {
    if (set.Empty()) return CommandResult::Cancelled();
    if (trace == 0) {
        return CommandResult::Failed(Str(texts::kAverageTraceCaption), Str(texts::kCannotRegroupAverage));
    }
    const auto e = EventOfTrace(ws, set, trace);
    if (!e) return CommandResult::Cancelled();
    const auto answer = dialogs.Input(Str(texts::kGroupNumberCaption), Str(texts::kRegroupPrompt),
                                      std::to_string(shownGroup + 1));
    const auto group = ParseGroupEntry(answer ? std::optional<std::string_view>(*answer) : std::nullopt);
    if (!group) return CommandResult::Cancelled();
    ws.history.Checkpoint(ws.events, "Regroup trace");
    ws.events[*e].group = uint8_t(*group);
    return CommandResult::Ok();
}

Outcome<int32_t> JumpTargetCommand(const TraceSet& set, AnalysisType shown, Dialogs& dialogs) {
    if (set.Empty()) return CommandResult::Cancelled();
    if (!IsIndividualType(shown) && !IsAverageType(shown)) {
        return CommandResult::Failed(Str(texts::kWindowCaption), Str(texts::kOnlyIndividualOrAverage));
    }
    const auto answer = dialogs.Input(Str(texts::kJumpCaption), texts::JumpPrompt(set.count));
    const auto number = answer ? ParseNumberEntry(*answer) : std::nullopt;
    if (!number) return CommandResult::Cancelled();
    return int32_t(std::clamp(std::round(*number), 0.0, double(set.count)));
}

int AutoRejectAfterFits(Workspace& ws, const TraceSet& set, AnalysisType shown,
                        const std::vector<TraceFit>& fits, const RejectChoice& choice,
                        Dialogs& dialogs) {
    if (!IsSuperimposeType(shown)) return 0;
    RejectCriterion c;
    if (choice.byRSquared) c.minRSquared = EntryWithin(choice.minRSquared, 0, 1);
    if (choice.byConfidence) c.confidencePercent = EntryWithin(choice.confidencePercent, 0, 100);
    if (!c.minRSquared && !c.confidencePercent) return 0;
    return AutoRejectCommand(ws, set, TracesToReject(fits, c), dialogs);
}

std::optional<PlotData> FluctuationCommand(ResultsTable& results, const TraceSet& set,
                                           const UnitScale& scale, AnalysisType shown, int group,
                                           const GroupAnalysisSettings& settings) {
    if (set.count < 2) return std::nullopt;
    std::vector<std::vector<double>> traces;
    traces.reserve(std::size_t(set.count));
    for (int32_t t = 1; t <= set.count; ++t) {
        std::vector<double> v;
        v.reserve(std::size_t(set.length));
        for (int16_t c : set.Row(t)) v.push_back(scale.Difference(c));
        traces.push_back(std::move(v));
    }
    const FluctuationResult r = AnalyseFluctuation(
        traces, {.peakScaled = IsScaled(shown), .amplitudeBins = settings.amplitudeBins,
                 .subtractBaseVariance = settings.subtractBaselineVariance,
                 .includeOffset = settings.nonStationaryOffset, .baselinePoints = set.prePoints / 2,
                 .averageTraces = settings.averageTraces});
    if (!r.ok) return std::nullopt;
    results.Append(WriteResultRow(FluctuationRow(r, group, set.count)));
    return VarianceMeanPlot(r, scale.units);
}

FitSettings FitSettingsFrom(const GroupAnalysisSettings& s, int32_t cursorFrom, int32_t cursorTo) {
    FitSettings f;
    f.model = {std::clamp(s.exponentials, 1, 3), s.includeOffset};
    f.range = FitRangeFromName(s.fitRange);
    f.customFrom = cursorFrom;
    f.customTo = cursorTo;
    f.rise = RiseRange(std::clamp(s.riseRange, 0, 2));
    f.useGuess = s.useGuess;
    f.guess = {s.tau1, s.A1, s.tau2, s.A2, s.tau3, s.A3, 0};
    f.simplex.tolerance = s.tolerance;
    f.simplex.maxIterations = s.maxIterations;
    f.method = FitMethodFromName(s.fitMethod);
    f.simplex.restartUntilSettled = s.restartSearch;
    f.simplex.fixAmplitudes = s.fixAmplitude;
    return f;
}

void UseLastFit(GroupAnalysisSettings& s, const ResultValues& v) {
    s.tau1 = v.tau1, s.A1 = v.a1, s.tau2 = v.tau2, s.A2 = v.a2, s.tau3 = v.tau3, s.A3 = v.a3;
    s.useGuess = true;
}

void AppendMeasureRows(ResultsTable& results, ResultKind kind, int32_t trace, int group,
                       std::span<const std::vector<double>> rows) {
    for (const auto& values : rows) results.Append(MeasureRow(kind, trace, group, values));
}

}  // namespace vess::group
