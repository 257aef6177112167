// The event kernel of the filtering detectors learned from the events the
// user has accepted: their average fitted with a rise and a decay.
#pragma once

#include <string>

#include "detection/event_kernel.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// Learns the kernel from the accepted events of the workspace's table and,
// when the fit succeeds, makes it the kernel of the method settings. Gives
// the report of what was learned, or fails saying why nothing was.
Outcome<std::string> LearnKernelIntoSettings(Workspace& ws, const EventTable& events);

// The menu command: learns from the table shown and tells the user.
CommandResult LearnKernelCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
