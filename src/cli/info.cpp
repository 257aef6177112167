// Placeholder until the 'info' subcommand is written.
#include <iostream>

#include "cli/commands.h"

namespace vess::cli {

void AddInfoCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("info", "not available yet");
    cmd->allow_extras();
    cmd->callback([] {
        std::cerr << "vess info: not available yet\n";
        throw CLI::RuntimeError(2);
    });
}

}  // namespace vess::cli
