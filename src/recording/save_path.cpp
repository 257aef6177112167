#include "recording/save_path.h"

#include "recording/file_io.h"
#include "recording/texts.h"

namespace vess {

Outcome<std::filesystem::path> ChooseSavePath(Dialogs& dialogs, const FileDialogRequest& request,
                                              ExistingFile existing) {
    const auto chosen = dialogs.SaveFile(request);
    if (!chosen || chosen->empty()) return CommandResult::Cancelled();
    auto path = WithDefaultExtension(*chosen, request.defaultExtension);
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return path;
    if (existing == ExistingFile::Refuse)
        return CommandResult::Failed(texts::kFileExistCaption, texts::kFileExistText);
    if (!dialogs.AskYesNo(std::string(texts::kReplaceFileCaption), std::string(texts::kReplaceFileText)))
        return CommandResult::Cancelled();
    return path;
}

std::optional<std::filesystem::path> ChooseOpenPath(Dialogs& dialogs, const FileDialogRequest& request) {
    const auto chosen = dialogs.OpenFile(request);
    if (!chosen || chosen->empty()) return std::nullopt;
    return WithDefaultExtension(*chosen, request.defaultExtension);
}

CommandResult WriteResult(std::string error) {
    return CommandResult::FromError(std::string(texts::kFileErrorCaption), std::move(error));
}

}  // namespace vess
