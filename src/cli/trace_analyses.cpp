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
#include "group_analysis/field_potential.h"
#include "group_analysis/measure_columns.h"
#include "group_analysis/multipeak.h"
#include "group_analysis/spike_train.h"

namespace vess::cli {

namespace {

using group::SampledTrace;

struct Common {
    std::string file;
    double from = -INFINITY, to = INFINITY;
    bool json = false;
};

// A header line, then "time,value" lines (commas, tabs or blanks between);
// the samples must be evenly spaced.
std::optional<SampledTrace> ReadSampledTrace(std::istream& in, std::string& error) {
    std::vector<double> x, y;
    std::string line;
    std::getline(in, line);
    for (int number = 2; std::getline(in, line); ++number) {
        for (char& c : line)
            if (c == ',' || c == '\t' || c == ';' || c == '\r') c = ' ';
        if (line.find_first_not_of(' ') == std::string::npos) continue;
        std::istringstream fields(line);
        double a = 0, b = 0;
        if (!(fields >> a >> b)) {
            error = fmt::format("line {} does not hold two numbers", number);
            return std::nullopt;
        }
        x.push_back(a);
        y.push_back(b);
    }
    if (x.size() < 3) {
        error = "the trace needs at least three points";
        return std::nullopt;
    }
    const double dt = (x.back() - x.front()) / double(x.size() - 1);
    for (std::size_t i = 1; i < x.size(); ++i)
        if (!(dt > 0) || std::fabs(x[i] - x[i - 1] - dt) > 1e-3 * dt) {
            error = fmt::format("the times are not evenly spaced (line {})", i + 2);
            return std::nullopt;
        }
    return SampledTrace{x.front(), dt, std::move(y)};
}

// The stretch between --from and --to.
SampledTrace Load(const Common& o, const char* command) {
    std::ifstream file;
    if (o.file != "-") file.open(o.file);
    if (o.file != "-" && !file) {
        std::cerr << "vess " << command << ": cannot read " << o.file << "\n";
        throw CLI::RuntimeError(1);
    }
    std::string error;
    auto trace = ReadSampledTrace(o.file == "-" ? std::cin : file, error);
    if (!trace) {
        std::cerr << "vess " << command << ": " << o.file << ": " << error << "\n";
        throw CLI::RuntimeError(1);
    }
    SampledTrace out{.startMs = 0, .intervalMs = trace->intervalMs, .y = {}};
    for (std::size_t i = 0; i < trace->Size(); ++i) {
        const double t = trace->TimeAt(double(i));
        if (t < o.from - 1e-9 || t > o.to + 1e-9) continue;
        if (out.y.empty()) out.startMs = t;
        out.y.push_back(trace->y[i]);
    }
    if (out.Size() < 3) {
        std::cerr << "vess " << command << ": fewer than three points between --from and --to\n";
        throw CLI::RuntimeError(1);
    }
    return out;
}

// "Thr Time" -> "thr_time", "Decay%" -> "decay".
std::string Key(std::string_view title) {
    std::string k;
    for (char c : title) {
        if (std::isalnum(static_cast<unsigned char>(c))) k += char(std::tolower(static_cast<unsigned char>(c)));
        else if (!k.empty() && k.back() != '_') k += '_';
    }
    while (!k.empty() && k.back() == '_') k.pop_back();
    return k;
}

template <std::size_t N>
void Print(const std::array<std::string_view, N>& titles, const std::vector<std::vector<double>>& rows,
           bool json, nlohmann::json extra = nlohmann::json::object()) {
    if (json) {
        nlohmann::json out = std::move(extra);
        out["rows"] = nlohmann::json::array();
        for (const auto& row : rows) {
            nlohmann::json r = nlohmann::json::object();
            for (std::size_t c = 0; c < N && c < row.size(); ++c)
                if (titles[c] != "-") r[Key(titles[c])] = std::isfinite(row[c]) ? nlohmann::json(row[c]) : nlohmann::json();
            out["rows"].push_back(r);
        }
        std::cout << out.dump(2) << "\n";
        return;
    }
    std::string line;
    for (std::string_view t : titles)
        if (t != "-") line += (line.empty() ? "" : "\t") + std::string(t);
    std::cout << line << "\n";
    for (const auto& row : rows) {
        line.clear();
        for (std::size_t c = 0; c < N && c < row.size(); ++c)
            if (titles[c] != "-")
                line += (c ? "\t" : "") + (std::isfinite(row[c]) ? fmt::format("{:.3f}", row[c]) : std::string());
        std::cout << line << "\n";
    }
}

CLI::App* AddTraceCommand(CLI::App& app, const char* name, const char* about, Common& o) {
    auto* cmd = app.add_subcommand(name, about);
    cmd->add_option("file", o.file, "trace CSV with a header line: time (ms), value ('-' for standard input)")
        ->required();
    cmd->add_option("--from", o.from, "first cursor: analyse from this time (ms)");
    cmd->add_option("--to", o.to, "second cursor: analyse up to this time (ms)");
    cmd->add_flag("--json", o.json, "print the rows as JSON");
    return cmd;
}

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
