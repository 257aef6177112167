// "Remove Near Duplicates": of two events of the same channel whose peaks are
// closer than a separation, the one with the larger amplitude stays.
#pragma once

#include <optional>

#include "detection/editing.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// Removes, as one undo step, every event whose peak lies closer than
// separationMs to a larger event kept before it (events taken in time order;
// equal amplitudes keep the earlier). The table order of the rest is kept.
EditResult RemoveNearDuplicates(Workspace& ws, double separationMs);

// The menu command: asks for the separation in ms (Cancel ends silently).
EditResult RemoveNearDuplicatesCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
