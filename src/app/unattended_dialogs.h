// Dialogs for a run nobody watches (a screenshot made from the command line):
// every question takes its default answer at once instead of waiting for a
// click that will never come, and messages go to the error stream.
#pragma once

#include <cstdio>

#include "recording/dialogs.h"

namespace vess {

class UnattendedDialogs : public Dialogs {
public:
    void Message(const std::string& caption, const std::string& text) override {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    }
    bool AskYesNo(const std::string&, const std::string&) override { return false; }
    Answer AskYesNoCancel(const std::string&, const std::string&) override { return Answer::Cancel; }
    bool AskOkCancel(const std::string&, const std::string&) override { return false; }
    std::optional<std::string> Input(const std::string&, const std::string&, const std::string& initial) override {
        if (initial.empty()) return std::nullopt;
        return initial;
    }
    std::optional<std::string> Choose(const std::string&, const std::string&, const std::vector<std::string>&,
                                      int initial) override {
        return std::to_string(initial);
    }
    std::optional<std::string> OpenFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::string> SaveFile(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest&) override { return std::nullopt; }
    std::optional<std::string> ChooseFolder(const FolderDialogRequest&) override { return std::nullopt; }
};

}  // namespace vess
