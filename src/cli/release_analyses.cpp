// vess ampero | diffusion | ecg TRACE.csv [--from MS] [--to MS] [--json]:
// the group window's amperometric, diffusion and ECG analyses on a trace CSV
// (a header line, then time in ms and value), printing the row the window
// appends under the same headings.
#include <fstream>

#include "cli/commands.h"
#include "cli/trace_command.h"
#include "group_analysis/amperometry.h"
#include "group_analysis/ecg_delineation.h"
#include "group_analysis/measure_columns.h"
#include "group_analysis/radial_diffusion.h"

namespace vess::cli {

namespace {

void AddAmperoCommand(CLI::App& app) {
    struct Options {
        Common common;
        std::string rise = "50-90% Rise", decay = "90-37%";
        double electrons = 2;
    };
    auto o = std::make_shared<Options>();
    auto* cmd = AddTraceCommand(app, "ampero", "Quantal release spike of an amperometric current trace (pA)",
                                o->common);
    cmd->add_option("--rise", o->rise, "rise range")
        ->check(CLI::IsMember({"50-90% Rise", "25-75% Rise", "10-90% Rise"}));
    cmd->add_option("--decay", o->decay, "decay range, fractions of Imax");
    cmd->add_option("--electrons", o->electrons, "electrons per oxidised molecule")->check(CLI::PositiveNumber);
    cmd->callback([o] {
        group::AmperoSettings s;
        s.electrons = o->electrons;
        group::SetAmperoRise(s, o->rise);
        if (!group::SetAmperoDecay(s, o->decay)) {
            std::cerr << "vess ampero: --decay takes two percentages such as 90-37%\n";
            throw CLI::RuntimeError(1);
        }
        const auto spike = group::MeasureAmperoSpike(Load(o->common, "ampero"), s);
        Print(group::columns::kAmperometric, {group::AmperoValues(spike)}, o->common.json);
    });
}

void AddDiffusionCommand(CLI::App& app) {
    struct Options {
        Common common;
        group::WalkModel model;
        std::string edge = "Diffusing";
        group::WalkFitOptions fit;
        std::string simulated;
    };
    auto o = std::make_shared<Options>();
    auto* cmd = AddTraceCommand(app, "diffusion",
                                "Fit release, Vmax and Km of the diffusion and uptake model (stimulus at the "
                                "first point)",
                                o->common);
    auto& m = o->model;
    cmd->add_option("--release", m.release, "starting release (trace units, µM when calibrated)")
        ->check(CLI::PositiveNumber);
    cmd->add_option("--vmax", m.vmax, "starting Vmax (per s)")->check(CLI::PositiveNumber);
    cmd->add_option("--km", m.km, "starting Km")->check(CLI::PositiveNumber);
    cmd->add_option("--diffusion-coeff", m.diffusion, "diffusion coefficient (cm²/s)")->check(CLI::PositiveNumber);
    cmd->add_option("--dead-radius", m.deadRadius, "dead space around the electrode (µm)")
        ->check(CLI::NonNegativeNumber);
    cmd->add_option("--total-radius", m.totalRadius, "radius of the simulated volume (µm)")
        ->check(CLI::PositiveNumber);
    cmd->add_option("--bin-size", m.binSize, "shell width (µm)")->check(CLI::PositiveNumber);
    cmd->add_option("--edge", o->edge, "outer boundary")->check(CLI::IsMember({"Diffusing", "Reflecting"}));
    cmd->add_option("--max-iter", o->fit.maxIterations, "simplex iterations")->check(CLI::PositiveNumber);
    cmd->add_option("--tolerance", o->fit.tolerance, "simplex tolerance")->check(CLI::PositiveNumber);
    cmd->add_option("--simulated", o->simulated, "write time and the fitted curve to this CSV file");
    cmd->callback([o] {
        o->model.diffusingEdge = o->edge == "Diffusing";
        if (o->model.totalRadius <= o->model.deadRadius) {
            std::cerr << "vess diffusion: --total-radius must exceed --dead-radius\n";
            throw CLI::RuntimeError(1);
        }
        const auto trace = Load(o->common, "diffusion");
        const auto fit = group::FitWalk(trace, o->model, o->fit);
        if (!o->simulated.empty()) {
            std::ofstream out(o->simulated);
            out << "time,simulated\n";
            for (std::size_t i = 0; i < fit.simulated.size(); ++i)
                out << fmt::format("{:.9g},{:.9g}\n", trace.TimeAt(double(i)), fit.simulated[i]);
        }
        Print(group::columns::kDiffusion, {group::WalkFitValues(fit)}, o->common.json);
    });
}

void AddEcgCommand(CLI::App& app) {
    struct Options {
        Common common;
        double rr = 0;
    };
    auto o = std::make_shared<Options>();
    auto* cmd = AddTraceCommand(app, "ecg", "Delineate one ECG beat (R upwards): P, QRS and T, intervals, QTc",
                                o->common);
    cmd->add_option("--rr", o->rr, "RR interval (ms) for QTc; without it QTc is not measured")
        ->check(CLI::PositiveNumber);
    cmd->callback([o] {
        group::EcgSettings s;
        if (o->rr > 0) s.rrMs = o->rr;
        const auto beat = group::DelineateBeat(Load(o->common, "ecg"), s);
        Print(group::columns::kEcg, {group::EcgValues(beat)}, o->common.json);
    });
}

}  // namespace

void AddReleaseAnalysisCommands(CLI::App& app) {
    AddAmperoCommand(app);
    AddDiffusionCommand(app);
    AddEcgCommand(app);
}

}  // namespace vess::cli
