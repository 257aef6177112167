// The save-file flow shared by every command that writes a file: the save
// dialog, the default extension when the name has no ".", and what to do
// when the file exists (the replace question, or a refusal).
#pragma once

#include <filesystem>
#include <optional>

#include "recording/dialogs.h"

namespace vess {

enum class ExistingFile { AskReplace, Refuse };

// The chosen path, or std::nullopt when the user cancelled, answered No to
// "Replace File", or (Refuse) was told "File Exist".
std::optional<std::filesystem::path> ChooseSavePath(Dialogs& dialogs, const FileDialogRequest& request,
                                                    ExistingFile existing);

// The file dialog's answer with the default extension added; std::nullopt
// when cancelled.
std::optional<std::filesystem::path> ChooseOpenPath(Dialogs& dialogs, const FileDialogRequest& request);

// Shows a write failure (an empty error means success). True on success.
bool ReportWrite(Dialogs& dialogs, const std::string& error);

}  // namespace vess
