// The command line's Dialogs: messages go to stderr; nothing is asked, so
// questions get their safe answer (No, Cancel, no file).
#pragma once

#include <iostream>
#include <optional>
#include <string>

#include "recording/dialogs.h"

namespace vess::cli {

class StderrDialogs : public Dialogs {
public:
    void Message(const std::string& caption, const std::string& text) override {
        std::cerr << caption << ": " << text << "\n";
        ++messages;
    }
    bool AskYesNo(const std::string&, const std::string&) override { return false; }
    Answer AskYesNoCancel(const std::string&, const std::string&) override { return Answer::Cancel; }
    bool AskOkCancel(const std::string&, const std::string&) override { return false; }
    std::optional<std::string> Input(const std::string&, const std::string&,
                                     const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> OpenFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::string> SaveFile(const FileDialogRequest&) override { return std::nullopt; }
    int messages = 0;
};

}  // namespace vess::cli
