#include "recording/scripted_dialogs.h"

namespace vess {

namespace {
const char* KindName(DialogEntry::Kind kind) {
    switch (kind) {
        case DialogEntry::Kind::Message: return "message";
        case DialogEntry::Kind::YesNo: return "yes/no question";
        case DialogEntry::Kind::YesNoCancel: return "yes/no/cancel question";
        case DialogEntry::Kind::OkCancel: return "ok/cancel question";
        case DialogEntry::Kind::Input: return "input box";
        case DialogEntry::Kind::OpenFile: return "open-file dialog";
        case DialogEntry::Kind::SaveFile: return "save-file dialog";
        case DialogEntry::Kind::OpenFiles: return "open-files dialog";
        case DialogEntry::Kind::Folder: return "folder dialog";
    }
    return "dialog";
}
}  // namespace

template <class T>
T ScriptedDialogs::Take(std::deque<T>& queue, DialogEntry::Kind kind, const std::string& caption,
                        const std::string& text) {
    transcript_.push_back({kind, caption, text});
    if (queue.empty()) {
        throw UnexpectedDialog(std::string("unexpected ") + KindName(kind) + " \"" + caption +
                               "\": " + text);
    }
    T answer = std::move(queue.front());
    queue.pop_front();
    return answer;
}

void ScriptedDialogs::Message(const std::string& caption, const std::string& text) {
    transcript_.push_back({DialogEntry::Kind::Message, caption, text});
}

bool ScriptedDialogs::AskYesNo(const std::string& caption, const std::string& text) {
    return Take(yesNo_, DialogEntry::Kind::YesNo, caption, text);
}

Answer ScriptedDialogs::AskYesNoCancel(const std::string& caption, const std::string& text) {
    return Take(yesNoCancel_, DialogEntry::Kind::YesNoCancel, caption, text);
}

bool ScriptedDialogs::AskOkCancel(const std::string& caption, const std::string& text) {
    return Take(okCancel_, DialogEntry::Kind::OkCancel, caption, text);
}

std::optional<std::string> ScriptedDialogs::Input(const std::string& caption,
                                                  const std::string& prompt, const std::string&) {
    return Take(input_, DialogEntry::Kind::Input, caption, prompt);
}

std::optional<std::string> ScriptedDialogs::OpenFile(const FileDialogRequest& request) {
    return Take(open_, DialogEntry::Kind::OpenFile, request.caption, request.filter);
}

std::optional<std::string> ScriptedDialogs::SaveFile(const FileDialogRequest& request) {
    return Take(save_, DialogEntry::Kind::SaveFile, request.caption, request.filter);
}

std::optional<std::vector<std::string>> ScriptedDialogs::OpenFiles(const FileDialogRequest& request) {
    auto answer = Take(openMany_, DialogEntry::Kind::OpenFiles, request.caption, request.filter);
    if (answer && answer->empty()) return std::nullopt;
    return answer;
}

std::optional<std::string> ScriptedDialogs::ChooseFolder(const FolderDialogRequest& request) {
    return Take(folder_, DialogEntry::Kind::Folder, request.caption, request.startFolder);
}

std::vector<DialogEntry> ScriptedDialogs::Messages() const {
    std::vector<DialogEntry> out;
    for (const auto& e : transcript_)
        if (e.kind == DialogEntry::Kind::Message) out.push_back(e);
    return out;
}

bool ScriptedDialogs::AllAnswersUsed() const {
    return yesNo_.empty() && yesNoCancel_.empty() && okCancel_.empty() && input_.empty() &&
           open_.empty() && save_.empty() && openMany_.empty() && folder_.empty();
}

}  // namespace vess
