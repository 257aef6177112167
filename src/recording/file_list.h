// A click on a file in the main form's file list: an event file (extension
// EVT, any case) opens the data file named in it from the same folder and
// then loads its events; any other file is opened as a recording.
#pragma once

#include <filesystem>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

struct Workspace;

// Done when a recording (and, for an event file, its events) was opened.
CommandResult OpenFromFileList(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs);

bool IsEventFileName(const std::filesystem::path& path);

}  // namespace vess
