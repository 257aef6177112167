// The event-file commands of the main form: save, open (with its checks),
// the loader, and the save-and-reset question.
#include <string>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess {

namespace {

std::string S(std::string_view v) { return std::string(v); }

std::string OpenName(const Workspace& ws) {
    return ws.recording ? ws.recording->FileName() : std::string();
}

std::vector<uint8_t> HeaderCopy(const Workspace& ws) {
    return ws.recording ? ws.recording->HeaderBytes() : BlankHeaderCopy();
}

}  // namespace

CommandResult SaveEventFileCommand(Workspace& ws, Dialogs& dialogs) {
    FileDialogRequest request{S(texts::kSaveEventCaption), S(texts::kEventFileFilter),
                              S(texts::kEventFileExtension), {}};
    if (ws.recording) request.suggestedName = ws.recording->Path().stem().string() + ".EVT";
    const auto path = ChooseSavePath(dialogs, request, ExistingFile::AskReplace);
    if (!path) return path.status();
    CommandResult written = WriteResult(WriteEventFile(*path, HeaderCopy(ws), ws.params(), ws.events, OpenName(ws)));
    if (written) ws.history.MarkSaved();
    return written;
}

CommandResult OpenEventFileCommand(Workspace& ws, Dialogs& dialogs) {
    if (ws.events.Count() >= 1 &&
        dialogs.AskYesNo(S(texts::kSavePreviousEventsCaption),
                         texts::SavePreviousEventsText(ws.events.Count(), OpenName(ws)))) {
        // A save that failed or was cancelled keeps the events.
        if (CommandResult saved = SaveEventFileCommand(ws, dialogs); !saved) return saved;
    }
    const auto path = ChooseOpenPath(dialogs, {S(texts::kOpenEventCaption), S(texts::kEventFileFilter),
                                               S(texts::kEventFileExtension), {}});
    if (!path) return CommandResult::Cancelled();
    const std::string openName = OpenName(ws);
    auto file = ReadCheckedEventFile(*path, &openName);
    if (!file) return file.status();
    LoadEventFileContents(ws, std::move(file.value()), *path, dialogs);
    return CommandResult::Ok();
}

CommandResult OpenEventFile(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs) {
    auto file = ReadCheckedEventFile(path, nullptr);
    if (!file) return file.status();
    LoadEventFileContents(ws, std::move(file.value()), path, dialogs);
    return CommandResult::Ok();
}

void LoadEventFileContents(Workspace& ws, EventFileContents file, const std::filesystem::path& path,
                           Dialogs& dialogs) {
    AnalysisParameters params = ws.params();
    params = ReadParameterFields(file.header, params, true);
    if (params.NumberPointsPeak < 1) params.NumberPointsPeak = 1;

    ws.history.Checkpoint(ws.events, "Open event file");
    ws.events.Assign(std::move(file.records));
    ws.params() = params;
    ws.selectedEvent = 0;
    ws.history.MarkSaved();

    if (file.version != EventFileVersion::Current &&
        dialogs.AskYesNo(S(texts::kOlderVersionCaption), S(texts::kOlderVersionText))) {
        // Rewritten over the header copy it already holds, so nothing of the
        // original header is lost. The events are loaded either way, so a
        // failed rewrite is shown here rather than failing the open.
        ShowFailure(dialogs, WriteResult(WriteEventFile(path, file.header, ws.params(), ws.events, file.storedName)));
    }
}

CommandResult ConfirmResetForParameterChange(Workspace& ws, Dialogs& dialogs) {
    if (ws.events.Count() == 0) return CommandResult::Ok();
    if (!dialogs.AskYesNo(S(texts::kSaveAndResetCaption), texts::SaveAndResetText(ws.events.Count())))
        return CommandResult::Cancelled();
    if (CommandResult saved = SaveEventFileCommand(ws, dialogs); !saved) return saved;
    ws.history.Checkpoint(ws.events, "Reset events");
    ws.events.Clear();
    ws.selectedEvent = 0;
    return CommandResult::Ok();
}

}  // namespace vess
