// Dialogs for work that runs with no one to ask (the command line, batch
// runs): every question gets its safe answer (No, Cancel, no file); what
// becomes of a message is the subclass's.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recording/dialogs.h"

namespace vess {

class SafeAnswerDialogs : public Dialogs {
public:
    bool AskYesNo(const std::string&, const std::string&) override { return false; }
    Answer AskYesNoCancel(const std::string&, const std::string&) override { return Answer::Cancel; }
    bool AskOkCancel(const std::string&, const std::string&) override { return false; }
    std::optional<std::string> Input(const std::string&, const std::string&,
                                     const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> OpenFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::string> SaveFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest&) override {
        return std::nullopt;
    }
    std::optional<std::string> ChooseFolder(const FolderDialogRequest&) override { return std::nullopt; }
};

}  // namespace vess
