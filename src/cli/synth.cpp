// Placeholder until the 'synth' subcommand is written.
#include <iostream>

#include "cli/commands.h"

namespace vess::cli {

void AddSynthCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("synth", "not available yet");
    cmd->allow_extras();
    cmd->callback([] {
        std::cerr << "vess synth: not available yet\n";
        throw CLI::RuntimeError(2);
    });
}

}  // namespace vess::cli
