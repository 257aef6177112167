#include "recording/file_list.h"

#include <algorithm>
#include <cctype>

#include "recording/event_file.h"
#include "recording/open_recording.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess {

bool IsEventFileName(const std::filesystem::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return char(std::toupper(c)); });
    return ext == "." + std::string(texts::kEventFileExtension);
}

CommandResult OpenFromFileList(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs) {
    const auto saveEvents = [&] { return SaveEventFileCommand(ws, dialogs); };
    if (!IsEventFileName(path)) return OpenDataFile(ws, path, dialogs, saveEvents);

    // The event file is checked whole before anything changes: a damaged one
    // must not first replace the open recording and its events.
    auto file = ReadCheckedEventFile(path, nullptr);
    if (!file.ok()) return file.status();
    const auto dataPath = path.parent_path() / file->storedName;
    std::error_code ec;
    if (file->storedName.empty() || !std::filesystem::is_regular_file(dataPath, ec)) {
        return CommandResult::Failed(texts::kMissingDataFileCaption,
                                     texts::MissingDataFileText(file->storedName));
    }
    if (CommandResult opened = OpenDataFile(ws, dataPath, dialogs, saveEvents); !opened.ok()) return opened;
    LoadEventFileContents(ws, std::move(file.value()), path, dialogs);
    return CommandResult::Ok();
}

}  // namespace vess
