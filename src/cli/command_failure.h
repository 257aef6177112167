// How vess ends a command that was not done: a failure as
// "vess COMMAND: message" on stderr, a cancel silently, and either way a
// non-zero exit.
#pragma once

#include <CLI/CLI.hpp>

#include <iostream>
#include <string_view>

#include "recording/command_result.h"

namespace vess::cli {

// Prints the failure; true when the command was done.
inline bool PrintFailure(std::string_view command, const CommandResult& result) {
    if (result.failed()) std::cerr << "vess " << command << ": " << result.message() << "\n";
    return result.ok();
}

// Prints the failure and leaves with exitCode unless the command was done.
inline void ExitUnlessDone(std::string_view command, const CommandResult& result, int exitCode) {
    if (!PrintFailure(command, result)) throw CLI::RuntimeError(exitCode);
}

}  // namespace vess::cli
