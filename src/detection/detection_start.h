// What happens before a detection command runs: the settings suggested from
// a recording the first time it is analysed (when the settings ask for it),
// the question whether new events replace those in the table, and the text
// that names the method and settings that made the events.
#pragma once

#include <string>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

// With a filtering method and suggestFromRecording on, a recording not yet
// suggested for gets its kernel and thresholds from the recording itself.
// Returns the status text saying what was chosen; empty when nothing was
// done (the threshold method, the option off, or already done for it).
std::string SuggestOnFirstAnalysis(Workspace& ws);
// After a suggestion asked for by hand: the first analysis does not make it again.
void MarkSuggested(Workspace& ws);

// "Detection method: rise ... ms, decay ... ms, threshold ... SD, ..." for the
// current method and settings (held until the next call on this thread).
const std::string& DetectionSettingsText(const Workspace& ws);

// Before a detection command: remembers the method and settings about to
// make events (when the table already holds events of other settings, says
// that the table mixes them).
void NoteDetectionSettings(Workspace& ws);
// "N events (by <settings>)" for the status bar.
std::string EventsStatusText(const Workspace& ws);

// Before a detection over the whole recording: with events in the table,
// asks whether to replace them. Yes erases them (one undo step), No keeps
// them and the new events are added; cancelled on Cancel.
CommandResult ReplaceEventsBeforeDetecting(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
