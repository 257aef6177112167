// Opening a data file from the file list: the question about the current
// events, the checks on the file, the channel question, and the replacement
// of the open recording.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "recording/channel_labels.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/recording.h"
#include "recording/workspace.h"

namespace vess {

// The caption and text that tell the user why a file was refused.
struct OpenRefusal {
    std::string caption;
    std::string text;
};
OpenRefusal RefusalFor(AbfError error, const std::string& fileName, const std::string& detail);

// Asks for the channel of a file with several, offering each channel with
// its name and unit, the first selected; std::nullopt when cancelled.
// Answers that are not a channel of the file are explained and asked again.
std::optional<uint8_t> AskChannel(const std::vector<ChannelLabel>& channels, Dialogs& dialogs);

// Opens path as the new recording. When the current recording has events,
// first asks whether to save them; on Yes saveEvents is called, and the
// opening stops with its result if it was not done (nothing saved, so
// nothing is dropped). A refusal fails with the caption and text that say
// why; a cancelled channel question is cancelled; either leaves the
// recording, its events and the current directory as they were. Done when
// path was opened: the events and their history are emptied, the screen
// goes back to block 0 and the file's folder becomes the current directory.
CommandResult OpenDataFile(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs,
                           const std::function<CommandResult()>& saveEvents = {});

// When part of the open recording could not be read (the file was cut short
// or failed on disk while open) and the user has not been told yet: says so
// once, keeping the events, and when there are events offers to save them
// (saveEvents, which shows its own failure). Returns true when the fault was
// shown now: this notice is what the function is for, so it is no failure
// and the answer stays a plain bool.
bool ReportReadFault(Workspace& ws, Dialogs& dialogs, const std::function<bool()>& saveEvents);

}  // namespace vess
