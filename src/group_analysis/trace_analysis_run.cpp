#include "group_analysis/trace_analysis_run.h"

#include <algorithm>
#include <cmath>

#include "group_analysis/trace_commands.h"
#include "recording/results_table.h"

namespace vess::group {

namespace {

// The share of a diffusion fit done after so many simulations: each
// iteration of the search takes one to a few of them.
double WalkShare(int simulations, int maxIterations) {
    return std::min(1.0, double(simulations) / (2.0 * std::max(maxIterations, 1)));
}

TraceOutcome Diffusion(const SampledTrace& stretch, const TraceAnalysisSettings& s) {
    const WalkFit fit = FitWalk(stretch, s.walk, s.walkFit);
    if (fit.stopped) return {};
    return {.rows = {WalkFitValues(fit)}, .marks = WalkFitMarkers(stretch, fit)};
}

// A stored number when it is within [lo, hi], else the value it would replace.
double WithinOr(double stored, double previous, double lo, double hi) {
    return stored >= lo && stored <= hi ? stored : previous;
}

}  // namespace

void ApplyStoredSettings(TraceAnalysisSettings& s, const GroupAnalysisSettings& stored) {
    constexpr double kBig = 1e300;
    SpikeShapeSettings& shape = s.train.shape;
    SetRiseRange(shape, std::clamp(stored.riseRange, 0, 2));
    SetDecayPercent(shape, stored.decayRange);
    shape.widthAboveThreshold = WithinOr(stored.widthAboveThreshold, shape.widthAboveThreshold, 0, kBig);
    shape.useThresholdBaseline = stored.useThresholdBaseline;
    s.train.minHeight = WithinOr(stored.ym, s.train.minHeight, 0, kBig);
    s.train.hysteresis = WithinOr(stored.yt, s.train.hysteresis, 0, kBig);
    SetAmperoRise(s.ampero, stored.amperometryRise);
    SetAmperoDecay(s.ampero, stored.decayRange);
    s.ampero.electrons = WithinOr(stored.electrons, s.ampero.electrons, 1e-9, kBig);
    WalkModel& m = s.walk;
    m.release = WithinOr(stored.release, m.release, 1e-12, kBig);
    m.vmax = WithinOr(stored.vmax, m.vmax, 1e-12, kBig);
    m.km = WithinOr(stored.km, m.km, 1e-12, kBig);
    m.deadRadius = WithinOr(stored.deadRadius, m.deadRadius, 0, kBig);
    m.totalRadius = WithinOr(stored.totalRadius, m.totalRadius, 1e-12, kBig);
    m.binSize = WithinOr(stored.walkBinSize, m.binSize, 1e-12, kBig);
    m.diffusion = WithinOr(stored.diffusionCoefficient, m.diffusion, 1e-30, kBig);
    m.diffusingEdge = stored.walkEdge != "Reflecting";
    s.walkFit.maxIterations = std::max(stored.walkMaxIterations, 1);
    if (stored.walkTolerance > 0) s.walkFit.tolerance = stored.walkTolerance;
}

ResultKind TraceAnalysisKind(TraceAnalysis analysis, const TraceAnalysisSettings& settings) {
    switch (analysis) {
        case TraceAnalysis::SpikeShape: return ResultKind::SpikeShape;
        case TraceAnalysis::SpikeTrain: return ResultKind::SpikeTrain;
        case TraceAnalysis::FieldPotential:
            return settings.field.synapticCurrents ? ResultKind::EvokedCurrent : ResultKind::FieldPotential;
        case TraceAnalysis::Multipeak: return ResultKind::Multipeak;
        case TraceAnalysis::Amperometric: return ResultKind::Amperometric;
        case TraceAnalysis::Diffusion: return ResultKind::Diffusion;
        case TraceAnalysis::Ecg: return ResultKind::Ecg;
    }
    return ResultKind::None;
}

TraceOutcome AnalyseTrace(TraceAnalysis analysis, const SampledTrace& stretch,
                          const TraceAnalysisSettings& s, const std::string& units) {
    switch (analysis) {
        case TraceAnalysis::SpikeShape: {
            const SpikeShape spike = MeasureSpike(stretch, s.train.shape);
            return {.rows = {SpikeShapeValues(spike)}, .marks = SpikeMarkers(spike)};
        }
        case TraceAnalysis::SpikeTrain: {
            const SpikeTrain train = MeasureSpikeTrain(stretch, s.train);
            return {.rows = SpikeTrainRows(train), .marks = SpikeTrainMarkers(train),
                    .plot = PhasePlanePlot(stretch, train, units)};
        }
        case TraceAnalysis::FieldPotential: {
            std::vector<double> stimuli;
            if (s.stimulusAtStart) stimuli.push_back(stretch.startMs);
            const auto responses = MeasureFieldResponses(stretch, s.field, stimuli);
            TraceOutcome out{.marks = FieldMarkers(responses)};
            for (std::size_t k = 0; k < responses.size(); ++k)
                out.rows.push_back(FieldResponseValues(responses[k], int(k + 1)));
            return out;
        }
        case TraceAnalysis::Multipeak: {
            const Multipeak m = FindPeaks(stretch, s.peaks);
            return {.rows = MultipeakRows(m), .marks = MultipeakMarkers(m)};
        }
        case TraceAnalysis::Amperometric: {
            const AmperoSpike spike = MeasureAmperoSpike(stretch, s.ampero);
            return {.rows = {AmperoValues(spike)}, .marks = AmperoMarkers(spike)};
        }
        case TraceAnalysis::Diffusion: return Diffusion(stretch, s);
        case TraceAnalysis::Ecg: {
            const EcgBeat beat = DelineateBeat(stretch, s.ecg);
            return {.rows = {EcgValues(beat)}, .marks = EcgMarkers(stretch, beat)};
        }
    }
    return {};
}

bool RunsAsJob(TraceAnalysis analysis, std::size_t traces) {
    return traces > 1 || analysis == TraceAnalysis::Diffusion;
}

TraceAnalysisRun RunTraceAnalyses(const TraceAnalysisInput& in, const JobProgress& progress) {
    TraceAnalysisRun run{.kind = TraceAnalysisKind(in.analysis, in.settings)};
    const double n = double(std::max<std::size_t>(in.traces.size(), 1));
    for (std::size_t k = 0; k < in.traces.size(); ++k) {
        const int32_t t = in.traces[k];
        const std::string note = "Trace " + std::to_string(t) + " of " + std::to_string(in.set.count);
        if (progress && !progress(double(k) / n, note)) {
            run.stopped = true;
            break;
        }
        TraceAnalysisSettings settings = in.settings;
        if (progress)
            settings.walkFit.keepGoing = [&](int simulations) {
                return progress((double(k) + WalkShare(simulations, settings.walkFit.maxIterations)) / n, note);
            };
        TraceOutcome out = AnalyseTrace(in.analysis, TraceStretch(in.set, t, in.from, in.to, in.scale),
                                        settings, in.scale.units);
        if (in.analysis == TraceAnalysis::Diffusion && out.rows.empty()) {
            run.stopped = true;
            break;
        }
        out.trace = t;
        if (t >= 1 && std::size_t(t) < in.set.eventIndex.size()) out.eventIndex = in.set.eventIndex[std::size_t(t)];
        run.outcomes.push_back(std::move(out));
    }
    return run;
}

void AppendTraceAnalysisRows(ResultsTable& results, const TraceAnalysisRun& run, int group) {
    for (const TraceOutcome& o : run.outcomes)
        for (const auto& values : o.rows) results.Append(MeasureRow(run.kind, o.trace, group, values, o.eventIndex));
}

std::vector<PlotSeries> JoinedMarks(const TraceAnalysisRun& run) {
    std::vector<PlotSeries> joined;
    for (const TraceOutcome& o : run.outcomes)
        for (PlotSeries s : o.marks) {
            auto same = std::ranges::find_if(joined, [&](const PlotSeries& j) { return j.legend == s.legend; });
            if (same == joined.end()) {
                joined.push_back(std::move(s));
            } else if (s.kind == SeriesKind::Scatter && same->kind == SeriesKind::Scatter) {
                same->x.insert(same->x.end(), s.x.begin(), s.x.begin() + std::ptrdiff_t(s.Size()));
                same->y.insert(same->y.end(), s.y.begin(), s.y.begin() + std::ptrdiff_t(s.Size()));
            } else {
                // A line of another trace: drawn on its own, named once.
                s.legend.clear();
                joined.push_back(std::move(s));
            }
        }
    return joined;
}

}  // namespace vess::group
