// vess: the command-line side of the workbench, a second user of the core.
#include <CLI/CLI.hpp>

#include "cli/commands.h"

int main(int argc, char** argv) {
    CLI::App app{"vess - detect and measure synaptic events in ABF recordings"};
    app.require_subcommand(1);
    vess::cli::AddInfoCommand(app);
    vess::cli::AddSynthCommand(app);
    vess::cli::AddEventsCommand(app);
    vess::cli::AddDetectCommand(app);
    vess::cli::AddScoreCommand(app);
    vess::cli::AddAverageCommand(app);
    vess::cli::AddFitCommand(app);
    vess::cli::AddCheckCommand(app);
    vess::cli::AddArrayCommand(app);
    vess::cli::AddStatsCommand(app);
    vess::cli::AddHistCommand(app);
    vess::cli::AddCorrelogramCommand(app);
    vess::cli::AddHrvCommand(app);
    vess::cli::AddFilterCommand(app);
    vess::cli::AddSignalToolCommands(app);
    vess::cli::AddBatchCommand(app);
    vess::cli::AddTraceAnalysisCommands(app);
    vess::cli::AddReleaseAnalysisCommands(app);
    CLI11_PARSE(app, argc, argv);
    return 0;
}
