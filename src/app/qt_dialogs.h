// Dialogs shown with real Qt message boxes, input boxes and file pickers.
// Captions and texts are passed through exactly as the commands give them.
#pragma once

#include <QString>

#include <filesystem>
#include <functional>

#include "recording/dialogs.h"

class QWidget;

namespace vess {

// Turns the program's filter forms into a Qt name filter:
//   "Event File (*.EVT)"                      -> "Event File (*.EVT *.evt)"
//   "Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT"
//                                             -> "Parameter File (*.PAR *.par);;Event File (*.EVT *.evt)"
// Patterns are matched in either case, since files from other systems often
// carry lower-case extensions.
QString ToQtFilter(const std::string& filter);

class QtDialogs : public Dialogs {
public:
    explicit QtDialogs(QWidget* parent = nullptr) : parent_(parent) {}
    void SetParent(QWidget* parent) { parent_ = parent; }
    // The folder file pickers start in, asked at each picker: an empty or
    // bare suggested name is taken inside it.
    void SetStartFolder(std::function<std::filesystem::path()> folder) { startFolder_ = std::move(folder); }

    void Message(const std::string& caption, const std::string& text) override;
    bool AskYesNo(const std::string& caption, const std::string& text) override;
    Answer AskYesNoCancel(const std::string& caption, const std::string& text) override;
    bool AskOkCancel(const std::string& caption, const std::string& text) override;
    std::optional<std::string> Input(const std::string& caption, const std::string& prompt,
                                     const std::string& initial = {}) override;
    // A list of the items, initial selected; a double click chooses.
    std::optional<std::string> Choose(const std::string& caption, const std::string& prompt,
                                      const std::vector<std::string>& items, int initial) override;
    std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
    std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest& request) override;
    std::optional<std::string> ChooseFolder(const FolderDialogRequest& request) override;

private:
    // The tool window whose question this is, else the main window.
    QWidget* Parent() const;
    QString StartPath(const std::string& suggested) const;

    QWidget* parent_;
    std::function<std::filesystem::path()> startFolder_;
};

}  // namespace vess
