// The dialogs of one tool window: every message, question and file picker
// goes on to the program's Dialogs with this window named as the one that
// asks, so that the desktop dialogs open in front of it rather than behind
// the main window.
#pragma once

#include "recording/dialogs.h"

class QWidget;

namespace vess {

class WindowDialogs : public Dialogs {
public:
    WindowDialogs(Dialogs& program, QWidget* window) : program_(program), window_(window) {}

    // The window whose dialogs are asking now, or nullptr (the desktop
    // dialogs' parent while it is set).
    static QWidget* AskingWindow();

    void Message(const std::string& caption, const std::string& text) override;
    bool AskYesNo(const std::string& caption, const std::string& text) override;
    Answer AskYesNoCancel(const std::string& caption, const std::string& text) override;
    bool AskOkCancel(const std::string& caption, const std::string& text) override;
    std::optional<std::string> Input(const std::string& caption, const std::string& prompt,
                                     const std::string& initial = {}) override;
    std::optional<std::string> Choose(const std::string& caption, const std::string& prompt,
                                      const std::vector<std::string>& items, int initial) override;
    std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
    std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest& request) override;
    std::optional<std::string> ChooseFolder(const FolderDialogRequest& request) override;

private:
    Dialogs& program_;
    QWidget* window_;
};

}  // namespace vess
