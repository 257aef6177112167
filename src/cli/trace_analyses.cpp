// vess ap | ap-train | fepsp | peaks TRACE.csv [--from MS] [--to MS] [--json]:
// the group window's trace analyses on a trace given as a header line and
// two columns (time in ms, value; '-' reads standard input, so
// `vess average ... --csv -` pipes into them). Each prints the rows the
// window appends, under the same headings; values not measured are blank
// (null in JSON).
#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/trace_command.h"
#include "group_analysis/field_potential.h"
#include "group_analysis/measure_columns.h"
#include "group_analysis/multipeak.h"
#include "group_analysis/spike_train.h"

namespace vess::cli {

namespace {

using group::SampledTrace;

struct SpikeOptions {
    Common common;
    double rate = 20, widthAbove = 20, ym = 5, yt = 2;
    std::string rise = "10-90", decay = "90-37%";
    bool thresholdBaseline = false;
    std::string phasePlane;

    group::SpikeShapeSettings Shape() const {
        group::SpikeShapeSettings s;
        s.thresholdRate = rate;
        s.widthAboveThreshold = widthAbove;
        s.useThresholdBaseline = thresholdBaseline;
        group::SetRiseRange(s, rise == "20-80" ? 1 : rise == "30-70" ? 2 : 0);
        if (!group::SetDecayPercent(s, decay)) {
            std::cerr << "vess: --decay takes two percentages such as 90-37%\n";
            throw CLI::RuntimeError(1);
        }
        return s;
    }
};

void AddSpikeOptions(CLI::App* cmd, SpikeOptions& o) {
    cmd->add_option("--rate", o.rate, "dV/dt that marks threshold (units/ms)")->check(CLI::PositiveNumber);
    cmd->add_option("--rise", o.rise, "rise range")->check(CLI::IsMember({"10-90", "20-80", "30-70"}));
    cmd->add_option("--width-above", o.widthAbove, "Width: this far above threshold (units)");
    cmd->add_option("--decay", o.decay, "decay range, fractions of threshold-to-peak");
    cmd->add_flag("--threshold-baseline", o.thresholdBaseline, "AHP against threshold instead of the baseline");
}

}  // namespace

void AddTraceAnalysisCommands(CLI::App& app) {
    auto ap = std::make_shared<SpikeOptions>();
    auto* cmd = AddTraceCommand(app, "ap", "Shape of the tallest action potential of a trace", ap->common);
    AddSpikeOptions(cmd, *ap);
    cmd->callback([ap] {
        const SampledTrace t = Load(ap->common, "ap");
        const auto s = group::MeasureSpike(t, ap->Shape());
        Print(group::columns::kSpikeShape, {group::SpikeShapeValues(s)}, ap->common.json);
    });

    auto train = std::make_shared<SpikeOptions>();
    cmd = AddTraceCommand(app, "ap-train", "Every action potential of a trace and the train's measures",
                          train->common);
    AddSpikeOptions(cmd, *train);
    cmd->add_option("--ym", train->ym, "Ym: a spike rises at least this far above threshold (units)");
    cmd->add_option("--yt", train->yt, "Yt: the trace falls below threshold + Yt between spikes (units)");
    cmd->add_option("--phase-plane", train->phasePlane, "write V and dV/dt to this CSV file");
    cmd->callback([train] {
        const SampledTrace t = Load(train->common, "ap-train");
        const auto result = group::MeasureSpikeTrain(t, {train->Shape(), train->ym, train->yt});
        if (!train->phasePlane.empty()) {
            std::ofstream out(train->phasePlane);
            const auto plot = group::PhasePlanePlot(t, result, "units");
            out << "V,dV/dt\n";
            for (std::size_t i = 0; i < plot.series[0].Size(); ++i)
                out << fmt::format("{:.9g},{:.9g}\n", plot.series[0].x[i], plot.series[0].y[i]);
        }
        Print(group::columns::kSpikeTrain, group::SpikeTrainRows(result), train->common.json);
    });

    struct FieldOptions {
        Common common;
        std::vector<double> stimuli;
        bool currents = false, chord = false;
        double window = 1;
    };
    auto field = std::make_shared<FieldOptions>();
    cmd = AddTraceCommand(app, "fepsp", "Fibre volley, fEPSP slope and amplitude, population spike, paired pulses",
                          field->common);
    cmd->add_option("--stimulus", field->stimuli, "stimulus time(s) in ms; default: the fastest deflections")
        ->delimiter(',');
    cmd->add_flag("--currents", field->currents, "evoked synaptic currents instead of field potentials");
    cmd->add_flag("--chord", field->chord, "10-90 % chord slope instead of the steepest fitted stretch");
    cmd->add_option("--window", field->window, "length of the fitted stretch (ms)")->check(CLI::PositiveNumber);
    cmd->callback([field] {
        const SampledTrace t = Load(field->common, "fepsp");
        group::FieldSettings s;
        s.synapticCurrents = field->currents;
        s.chordSlope = field->chord;
        s.slopeWindowMs = field->window;
        const auto responses = group::MeasureFieldResponses(t, s, field->stimuli);
        std::vector<std::vector<double>> rows;
        for (std::size_t k = 0; k < responses.size(); ++k)
            rows.push_back(group::FieldResponseValues(responses[k], int(k + 1)));
        Print(field->currents ? group::columns::kEvokedCurrent : group::columns::kFieldPotential, rows,
              field->common.json);
    });

    struct PeakOptions {
        Common common;
        double sds = 5, quiet = 0.1;
        std::string direction = "up";
    };
    auto peaks = std::make_shared<PeakOptions>();
    cmd = AddTraceCommand(app, "peaks", "Every peak above a threshold in noise SDs", peaks->common);
    cmd->add_option("--sds", peaks->sds, "threshold in noise SDs")->check(CLI::PositiveNumber);
    cmd->add_option("--quiet", peaks->quiet, "fraction of the stretch at its start that is flat noise")
        ->check(CLI::Range(0.01, 0.9));
    cmd->add_option("--direction", peaks->direction, "up or down")->check(CLI::IsMember({"up", "down"}));
    cmd->callback([peaks] {
        const SampledTrace t = Load(peaks->common, "peaks");
        const auto m = group::FindPeaks(t, {peaks->sds, peaks->quiet, peaks->direction == "down" ? -1 : 1});
        Print(group::columns::kMultipeak, group::MultipeakRows(m), peaks->common.json,
              {{"noise_mean", m.noiseMean}, {"noise_sd", m.noiseSd}});
    });
}

}  // namespace vess::cli
