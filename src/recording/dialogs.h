// The one way commands talk to the user: messages, questions, input boxes and
// file pickers. The desktop program implements it with real dialogs, tests
// with ScriptedDialogs, the command-line tool with CliDialogs.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vess {

enum class Answer { Yes, No, Cancel };

struct FileDialogRequest {
    std::string caption;
    std::string filter;            // e.g. "Event File (*.EVT)"
    std::string defaultExtension;  // without the dot, e.g. "EVT"
    std::string suggestedName;     // may be empty; a folder starts the picker there
};

struct FolderDialogRequest {
    std::string caption;
    std::string startFolder;  // may be empty
};

class Dialogs {
public:
    virtual ~Dialogs() = default;

    // A modal message box with an OK button.
    virtual void Message(const std::string& caption, const std::string& text) = 0;
    // Yes/No question; true means Yes.
    virtual bool AskYesNo(const std::string& caption, const std::string& text) = 0;
    // Yes/No/Cancel question.
    virtual Answer AskYesNoCancel(const std::string& caption, const std::string& text) = 0;
    // OK/Cancel question with Cancel as the default button; true means OK.
    virtual bool AskOkCancel(const std::string& caption, const std::string& text) = 0;
    // Input box; std::nullopt when cancelled. An empty answer counts as cancel
    // for every caller, so implementations may return either.
    virtual std::optional<std::string> Input(const std::string& caption, const std::string& prompt,
                                             const std::string& initial = {}) = 0;
    // A choice from a list of items, initial selected: the chosen item's
    // 0-based index as text; std::nullopt when cancelled. Dialogs without a
    // list ask for the index in an input box (the prompt names the range).
    virtual std::optional<std::string> Choose(const std::string& caption, const std::string& prompt,
                                              const std::vector<std::string>& items, int initial) {
        (void)items;
        return Input(caption, prompt, std::to_string(initial));
    }
    // File pickers; std::nullopt when cancelled. The returned path is as the
    // user typed it: callers add the default extension when it has none.
    virtual std::optional<std::string> OpenFile(const FileDialogRequest& request) = 0;
    virtual std::optional<std::string> SaveFile(const FileDialogRequest& request) = 0;
    // Several existing files at once; std::nullopt when cancelled, never an
    // empty list.
    virtual std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest& request) = 0;
    // An existing folder; std::nullopt when cancelled.
    virtual std::optional<std::string> ChooseFolder(const FolderDialogRequest& request) = 0;
};

}  // namespace vess
