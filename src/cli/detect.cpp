// Placeholder until the 'detect' subcommand is written.
#include <iostream>

#include "cli/commands.h"

namespace vess::cli {

void AddDetectCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("detect", "not available yet");
    cmd->allow_extras();
    cmd->callback([] {
        std::cerr << "vess detect: not available yet\n";
        throw CLI::RuntimeError(2);
    });
}

}  // namespace vess::cli
