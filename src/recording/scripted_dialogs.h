// Dialogs driven by a script: queued answers for every prompt, a transcript
// of every caption and text shown, and a failure on any prompt that the
// script did not expect. Used by tests and by batch runs.
#pragma once

#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include "recording/dialogs.h"

namespace vess {

struct DialogEntry {
    enum class Kind { Message, YesNo, YesNoCancel, OkCancel, Input, OpenFile, SaveFile, OpenFiles, Folder };
    Kind kind;
    std::string caption;
    std::string text;
};

class UnexpectedDialog : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ScriptedDialogs : public Dialogs {
public:
    // Queue answers, consumed in order by prompts of the matching kind.
    // A prompt whose queue is empty throws UnexpectedDialog.
    ScriptedDialogs& AnswerYesNo(bool yes) { yesNo_.push_back(yes); return *this; }
    ScriptedDialogs& AnswerYesNoCancel(Answer a) { yesNoCancel_.push_back(a); return *this; }
    ScriptedDialogs& AnswerOkCancel(bool ok) { okCancel_.push_back(ok); return *this; }
    // std::nullopt answers Cancel.
    ScriptedDialogs& AnswerInput(std::optional<std::string> a) { input_.push_back(std::move(a)); return *this; }
    ScriptedDialogs& AnswerOpenFile(std::optional<std::string> a) { open_.push_back(std::move(a)); return *this; }
    ScriptedDialogs& AnswerSaveFile(std::optional<std::string> a) { save_.push_back(std::move(a)); return *this; }
    ScriptedDialogs& AnswerOpenFiles(std::optional<std::vector<std::string>> a) { openMany_.push_back(std::move(a)); return *this; }
    ScriptedDialogs& AnswerFolder(std::optional<std::string> a) { folder_.push_back(std::move(a)); return *this; }

    void Message(const std::string& caption, const std::string& text) override;
    bool AskYesNo(const std::string& caption, const std::string& text) override;
    Answer AskYesNoCancel(const std::string& caption, const std::string& text) override;
    bool AskOkCancel(const std::string& caption, const std::string& text) override;
    std::optional<std::string> Input(const std::string& caption, const std::string& prompt,
                                     const std::string& initial = {}) override;
    std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
    std::optional<std::vector<std::string>> OpenFiles(const FileDialogRequest& request) override;
    std::optional<std::string> ChooseFolder(const FolderDialogRequest& request) override;

    const std::vector<DialogEntry>& Transcript() const { return transcript_; }
    // Every message box shown so far (caption, text).
    std::vector<DialogEntry> Messages() const;
    // True when every queued answer has been consumed.
    bool AllAnswersUsed() const;
    void ClearTranscript() { transcript_.clear(); }

private:
    template <class T>
    T Take(std::deque<T>& queue, DialogEntry::Kind kind, const std::string& caption,
           const std::string& text);

    std::deque<bool> yesNo_;
    std::deque<Answer> yesNoCancel_;
    std::deque<bool> okCancel_;
    std::deque<std::optional<std::string>> input_;
    std::deque<std::optional<std::string>> open_;
    std::deque<std::optional<std::string>> save_;
    std::deque<std::optional<std::vector<std::string>>> openMany_;
    std::deque<std::optional<std::string>> folder_;
    std::vector<DialogEntry> transcript_;
};

}  // namespace vess
