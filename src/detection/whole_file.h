// Detection over a whole recording, as the desktop program does it when the
// user analyses the first screen and then runs the non-stop analysis to the
// end. The command line and the accuracy bench use this, so they find exactly
// the events of the desktop program for the same file and parameters.
#pragma once

#include <cstdint>
#include <functional>

#include "detection/screen_commands.h"
#include "recording/command_result.h"
#include "recording/workspace.h"

namespace vess {

struct WholeFileResult {
    CommandResult status = CommandResult::Ok();  // failed: the parameters were refused
    int64_t screens = 0;       // screens analysed
    int32_t eventsAdded = 0;
};

// Returns false from the callback to stop early.
using ProgressCallback = std::function<bool(const NonStopAnalysis::Progress&)>;

// Shows the first screen, analyses it, then runs the non-stop analysis over
// every following screen. The table keeps the events it held before.
// Fails, having done nothing, when the parameters are refused.
WholeFileResult DetectWholeFile(Workspace& ws, const ProgressCallback& progress = {});

}  // namespace vess
