// The save-file flow shared by every command that writes a file: the save
// dialog, the default extension when the name has no ".", and what to do
// when the file exists (the replace question, or a refusal).
#pragma once

#include <filesystem>
#include <optional>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

enum class ExistingFile { AskReplace, Refuse };

// The chosen path; cancelled when the user cancelled or answered No to
// "Replace File"; (Refuse) failed with "File Exist".
Outcome<std::filesystem::path> ChooseSavePath(Dialogs& dialogs, const FileDialogRequest& request,
                                              ExistingFile existing);

// The file dialog's answer with the default extension added; std::nullopt
// when cancelled.
std::optional<std::filesystem::path> ChooseOpenPath(Dialogs& dialogs, const FileDialogRequest& request);

// A writer's error (empty when written) as a command's result, a failure
// under the "File Error" caption.
CommandResult WriteResult(std::string error);

}  // namespace vess
