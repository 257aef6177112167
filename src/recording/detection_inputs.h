// What a detection run over a file starts from, read the same way by every
// caller that runs one without a window (vess detect, batch runs): a settings
// file, a parameter file, and the recording opened on a channel. Each either
// succeeds completely or fails with a message for the user naming the file.
#pragma once

#include <filesystem>
#include <string>

#include "recording/command_result.h"
#include "recording/settings.h"
#include "recording/workspace.h"

namespace vess {

// A settings file (Vessanto.ini or a .SET copy) replaces settings. A missing
// file, one that is no settings file, or one with values that were not taken
// is refused rather than giving the defaults silently.
CommandResult LoadSettingsFileInto(const std::filesystem::path& path, Settings& settings);

// The detection parameters of a parameter file (.PAR) or an event file
// (.EVT) of this program replace params.
CommandResult LoadParameterFileInto(const std::filesystem::path& path, AnalysisParameters& params);

// Opens the recording into ws on the 0-based channel position, shown from
// its first screen. A channel the file does not have is refused.
CommandResult OpenRecordingOnChannel(const std::filesystem::path& path, int channel, Workspace& ws);

}  // namespace vess
