// Subcommands of the vess command-line tool, one file each.
#pragma once

#include <CLI/CLI.hpp>

namespace vess::cli {

void AddInfoCommand(CLI::App& app);      // vess info FILE.abf [--channel N]
void AddSynthCommand(CLI::App& app);     // vess synth OUT.abf [...]
void AddEventsCommand(CLI::App& app);    // vess events FILE.EVT [--csv]
void AddDetectCommand(CLI::App& app);    // vess detect FILE.abf [...]
void AddScoreCommand(CLI::App& app);     // vess score FILE.abf TRUTH [...]
void AddAverageCommand(CLI::App& app);   // vess average FILE.EVT --group G [...]
void AddFitCommand(CLI::App& app);       // vess fit TRACE.csv [...]
void AddCheckCommand(CLI::App& app);     // vess check FILE.abf [--method M] [--json]
void AddArrayCommand(CLI::App& app);     // vess array SOURCE [--group G] [--intervals]
void AddStatsCommand(CLI::App& app);     // vess stats TEST A [B] [--alpha A] [--json]
void AddHistCommand(CLI::App& app);      // vess hist SOURCE --bin SIZE [--kind K] [--csv]
void AddCorrelogramCommand(CLI::App& app);  // vess correlogram A [B] --bin SIZE --max-bins N
void AddHrvCommand(CLI::App& app);       // vess hrv SOURCE [...]
void AddFilterCommand(CLI::App& app);    // vess filter FILE.abf --kind K --pass P --cutoff HZ --order N [...]
void AddSignalToolCommands(CLI::App& app);  // vess noise, eventfree, synch
void AddBatchCommand(CLI::App& app);     // vess batch FILES... | --list LIST [...]
void AddTraceAnalysisCommands(CLI::App& app);  // vess ap, ap-train, fepsp, peaks TRACE.csv
void AddReleaseAnalysisCommands(CLI::App& app);  // vess ampero, diffusion, ecg TRACE.csv

}  // namespace vess::cli
