// Options shared by the commands that run the detection over a file (detect,
// score): the channel, where the parameters come from, NAME=VALUE overrides
// and the screen size. Opening the file and applying the options either
// succeeds completely or returns a message for the user.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/filter_options.h"
#include "recording/command_result.h"
#include "recording/workspace.h"

namespace vess::cli {

struct DetectionOptions {
    std::string file;
    int channel = 0;
    std::string settingsFile;
    std::string parameterFile;
    std::vector<std::string> sets;
    int blocksPerScreen = 0;  // 0: the settings' value
    int suggest = 0;          // 1..3: a Suggest Analysis Parameters entry first
    std::string method;       // threshold, deconvolution or template; empty: the settings'
    bool suggestFromNoise = false;  // parameters from the recording's noise and events
    bool filtered = false;          // detect on the trace filtered by the settings' filter
    FilterOptions filter;           // ... with these changes
    std::string learnKernelFrom;    // event file whose accepted events give the kernel
};

// Registers --channel, --settings, --par, --suggest, --set and
// --blocks-per-screen.
void AddDetectionOptions(CLI::App& cmd, DetectionOptions& options);

// Opens the recording, selects the channel and fills the parameters (file,
// then suggested entry, then --set overrides) and the screen size; a failure
// says what went wrong.
CommandResult PrepareWorkspace(const DetectionOptions& options, Workspace& ws);

// Applies one NAME=VALUE to the detection parameters; empty string on
// success.
std::string ApplyParameter(AnalysisParameters& params, const std::string& assignment);

}  // namespace vess::cli
