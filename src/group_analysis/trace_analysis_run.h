// The special analyses of the group window over the traces of a set: one
// trace (the shown one) at once, or every trace of a superimposed type as a
// job whose progress and Stop go through the job's callback. Each trace
// gives its rows (amperometry and the fits: one per trace, that is one per
// event of the group) and what it found to draw.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/amperometry.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/ecg_delineation.h"
#include "group_analysis/field_potential.h"
#include "group_analysis/group_settings.h"
#include "group_analysis/multipeak.h"
#include "group_analysis/radial_diffusion.h"
#include "group_analysis/spike_train.h"
#include "group_analysis/trace_set.h"
#include "recording/job.h"

namespace vess {
class ResultsTable;
}

namespace vess::group {

enum class TraceAnalysis { SpikeShape, SpikeTrain, FieldPotential, Multipeak, Amperometric, Diffusion, Ecg };

struct TraceAnalysisSettings {
    SpikeTrainSettings train;     // train.shape also serves the single spike
    FieldSettings field;
    bool stimulusAtStart = false;  // field: the stretch starts at the stimulus (a placed cursor)
    MultipeakSettings peaks;
    AmperoSettings ampero;
    WalkModel walk;
    WalkFitOptions walkFit;
    EcgSettings ecg;
};

// The analyses' settings that the settings file keeps, read from their
// texts; a text that is not a number in range keeps the default.
void ApplyStoredSettings(TraceAnalysisSettings& settings, const GroupAnalysisSettings& stored);

// What one trace gave.
struct TraceOutcome {
    int32_t trace = 0;
    int32_t eventIndex = 0;  // the event of the trace; 0 for the average
    std::vector<std::vector<double>> rows{};
    std::vector<PlotSeries> marks{};
    std::optional<PlotData> plot{};  // the phase plane of a spike train
};

// The rows' kind of an analysis (field potentials depend on the response kind).
ResultKind TraceAnalysisKind(TraceAnalysis analysis, const TraceAnalysisSettings& settings);

// One trace: the analysis of `stretch`. A diffusion fit asked to stop
// (keepGoing false) gives no row.
TraceOutcome AnalyseTrace(TraceAnalysis analysis, const SampledTrace& stretch,
                          const TraceAnalysisSettings& settings, const std::string& units);

struct TraceAnalysisInput {
    TraceAnalysis analysis = TraceAnalysis::Amperometric;
    TraceSet set;
    UnitScale scale;
    std::vector<int32_t> traces;  // which rows of the set, in order (TracesToFit)
    int32_t from = 0, to = 0;     // points of each trace analysed
    int group = 1;
    TraceAnalysisSettings settings;
};

struct TraceAnalysisRun {
    ResultKind kind = ResultKind::None;
    std::vector<TraceOutcome> outcomes{};  // after a stop, the traces done so far
    bool stopped = false;
};

// Whether the analysis is long enough to run as a job: every run over
// several traces, and the diffusion fit always.
bool RunsAsJob(TraceAnalysis analysis, std::size_t traces);

// Runs the analysis over input.traces, reporting after each trace (and
// during a diffusion fit); stops when progress answers false.
TraceAnalysisRun RunTraceAnalyses(const TraceAnalysisInput& input, const JobProgress& progress);

// Appends the run's rows, trace by trace, to the results.
void AppendTraceAnalysisRows(ResultsTable& results, const TraceAnalysisRun& run, int group);

// The marks of all the run's traces in one list: points under the same
// legend are joined; the lines of the later traces go unnamed.
std::vector<PlotSeries> JoinedMarks(const TraceAnalysisRun& run);

}  // namespace vess::group
