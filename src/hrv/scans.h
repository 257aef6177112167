// Scans of the beats for likely detection faults: gaps where beats were
// missed (the beat before each gap joins group 253) and intervals too short
// to be real (the later beat is rejected, group 255).
#pragma once

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

// The number of beats marked. Events must be in time order.
int MarkMissingBeats(EventTable& events, double maxIntervalMs);
int RejectShortIntervals(EventTable& events, double maxIntervalMs);

// menu_ScanMissingBeats and menu_ScanRejectRRIntervals: the question for the
// limit (an empty answer or 0 ends the scan without change), the scan as one
// undoable change, and the report. Cancelled when the events stay out of
// time order or no limit was given.
CommandResult ScanMissingBeatsCommand(Workspace& ws, Dialogs& dialogs);
CommandResult ScanRejectRRIntervalsCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess::hrv
