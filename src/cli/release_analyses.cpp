// vess ampero | diffusion | ecg TRACE.csv [--from MS] [--to MS] [--json]:
// the group window's amperometric, diffusion and ECG analyses on a trace CSV
// (a header line, then time in ms and value), printing the row the window
// appends under the same headings.
#include "cli/commands.h"
#include "cli/trace_command.h"
#include "group_analysis/amperometry.h"
#include "group_analysis/measure_columns.h"

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

}  // namespace

void AddReleaseAnalysisCommands(CLI::App& app) {
    AddAmperoCommand(app);
}

}  // namespace vess::cli
