#include "recording/ui/window_dialogs.h"

namespace vess {
namespace {

thread_local QWidget* asking = nullptr;

// Names the window for the length of one question (questions may nest: a
// message from inside another window's question names that window).
class Asking {
public:
    explicit Asking(QWidget* window) : before_(asking) { asking = window; }
    ~Asking() { asking = before_; }
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;

private:
    QWidget* before_;
};

}  // namespace

QWidget* WindowDialogs::AskingWindow() { return asking; }

void WindowDialogs::Message(const std::string& caption, const std::string& text) {
    Asking scope(window_);
    program_.Message(caption, text);
}

bool WindowDialogs::AskYesNo(const std::string& caption, const std::string& text) {
    Asking scope(window_);
    return program_.AskYesNo(caption, text);
}

Answer WindowDialogs::AskYesNoCancel(const std::string& caption, const std::string& text) {
    Asking scope(window_);
    return program_.AskYesNoCancel(caption, text);
}

bool WindowDialogs::AskOkCancel(const std::string& caption, const std::string& text) {
    Asking scope(window_);
    return program_.AskOkCancel(caption, text);
}

std::optional<std::string> WindowDialogs::Input(const std::string& caption, const std::string& prompt,
                                                const std::string& initial) {
    Asking scope(window_);
    return program_.Input(caption, prompt, initial);
}

std::optional<std::string> WindowDialogs::OpenFile(const FileDialogRequest& request) {
    Asking scope(window_);
    return program_.OpenFile(request);
}

std::optional<std::string> WindowDialogs::SaveFile(const FileDialogRequest& request) {
    Asking scope(window_);
    return program_.SaveFile(request);
}

std::optional<std::string> WindowDialogs::Choose(const std::string& caption, const std::string& prompt,
                                                 const std::vector<std::string>& items, int initial) {
    Asking scope(window_);
    return program_.Choose(caption, prompt, items, initial);
}

std::optional<std::vector<std::string>> WindowDialogs::OpenFiles(const FileDialogRequest& request) {
    Asking scope(window_);
    return program_.OpenFiles(request);
}

std::optional<std::string> WindowDialogs::ChooseFolder(const FolderDialogRequest& request) {
    Asking scope(window_);
    return program_.ChooseFolder(request);
}

}  // namespace vess
