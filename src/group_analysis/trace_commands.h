// The commands of the group analysis window over its trace set: remove and
// regroup the event of a trace, jump to a trace, reject poorly fitted
// traces, the fluctuation analysis of the set, and the numbers typed into
// the window's boxes. Each works on the workspace and asks through Dialogs;
// the window calls them and redraws.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/group_settings.h"
#include "group_analysis/result_row.h"
#include "group_analysis/trace_set.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {
struct Workspace;
class ResultsTable;
}  // namespace vess

namespace vess::group {

// A number typed into a box of the window: the entry when it reads as a
// number within [lo, hi] (and is whole, for the whole-number form), else
// the value it would have replaced.
double NumberEntryOr(std::string_view entry, double previous, double lo, double hi);
int WholeEntryOr(std::string_view entry, int previous, int lo, int hi);

// menu_trace_remove (K): the event of trace k >= 1 leaves its group, as one
// undoable change; trace 0 is refused with a message. Done when the events
// changed, so that the set is built again; cancelled when there is no such
// trace.
CommandResult RemoveTraceCommand(Workspace& ws, const TraceSet& set, int32_t trace);
// menu_trace_regroup (U): asks for the group (offering the shown group + 1)
// and gives it to the event of trace k >= 1; a cancelled or unreadable
// answer, or one outside 0..255, changes nothing (cancelled); trace 0 is
// refused as for remove.
CommandResult RegroupTraceCommand(Workspace& ws, const TraceSet& set, int32_t trace, int shownGroup,
                                  Dialogs& dialogs);
// Y: asks for a trace number 0..N; cancelled when cancelled or unreadable,
// the number clamped to 0..N otherwise. Needs an individual or average
// display and fails otherwise.
Outcome<int32_t> JumpTargetCommand(const TraceSet& set, AnalysisType shown, Dialogs& dialogs);

// The auto-reject boxes as the user set them.
struct RejectChoice {
    bool byRSquared = false;
    std::string_view minRSquared{};  // "Minimum R-sqr"
    bool byConfidence = false;
    std::string_view confidencePercent{};  // "Auto-rejection: confidence interval (%)"
};
// After Start Fitting over a superimposed type: the traces that fail the
// chosen criteria are listed and, on Yes, leave their group. Nothing for
// the other types, without a criterion, or with an unreadable one.
// Returns the number of events taken out.
int AutoRejectAfterFits(Workspace& ws, const TraceSet& set, AnalysisType shown,
                        const std::vector<TraceFit>& fits, const RejectChoice& choice,
                        Dialogs& dialogs);

// Non-stationary fluctuation analysis of traces 1..N: appends its row and
// gives the variance-mean plot; nothing with fewer than two traces or when
// the analysis finds no fit.
std::optional<PlotData> FluctuationCommand(ResultsTable& results, const TraceSet& set,
                                           const UnitScale& scale, AnalysisType shown, int group,
                                           const GroupAnalysisSettings& settings);

// The fit the settings ask for; the custom range runs between the cursors.
FitSettings FitSettingsFrom(const GroupAnalysisSettings& settings, int32_t cursorFrom, int32_t cursorTo);
// "Use Last Fit": the fitted time constants and amplitudes become the
// initial guesses, and the guesses are used.
void UseLastFit(GroupAnalysisSettings& settings, const ResultValues& last);

// Appends one row per value list of a measuring analysis of one trace.
void AppendMeasureRows(ResultsTable& results, ResultKind kind, int32_t trace, int group,
                       std::span<const std::vector<double>> rows);

}  // namespace vess::group
