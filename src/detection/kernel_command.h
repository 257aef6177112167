// The event kernel of the filtering detectors learned from the events the
// user has accepted: their average fitted with a rise and a decay.
#pragma once

#include <string>

#include "detection/event_kernel.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// Learns the kernel from the accepted events of the workspace's table and,
// when the fit succeeds, makes it the kernel of the method settings. The
// report (or why nothing was learned) is returned in text.
struct LearnedKernel {
    bool ok = false;
    std::string text;
};
LearnedKernel LearnKernelIntoSettings(Workspace& ws, const EventTable& events);

// The menu command: learns from the table shown and tells the user.
bool LearnKernelCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
