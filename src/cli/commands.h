// Subcommands of the vess command-line tool, one file each.
#pragma once

#include <CLI/CLI.hpp>

namespace vess::cli {

void AddInfoCommand(CLI::App& app);      // vess info FILE.abf [--channel N]
void AddSynthCommand(CLI::App& app);     // vess synth OUT.abf [...]
void AddEventsCommand(CLI::App& app);    // vess events FILE.EVT [--csv]
void AddDetectCommand(CLI::App& app);    // vess detect FILE.abf [...]
void AddScoreCommand(CLI::App& app);     // vess score FILE.abf TRUTH [...]
void AddHrvCommand(CLI::App& app);       // vess hrv SOURCE [...]

}  // namespace vess::cli
