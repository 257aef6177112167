// Placeholder until the 'events' subcommand is written.
#include <iostream>

#include "cli/commands.h"

namespace vess::cli {

void AddEventsCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("events", "not available yet");
    cmd->allow_extras();
    cmd->callback([] {
        std::cerr << "vess events: not available yet\n";
        throw CLI::RuntimeError(2);
    });
}

}  // namespace vess::cli
