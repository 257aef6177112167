// How a command that can fail or be stopped ended: done, failed with the
// message that says why, or cancelled (the user said Cancel or asked the work
// to stop), which calls for no message at all. Commands do not show their own
// failure: the caller does, in one way (ShowFailure in a window, the command
// line's message on stderr), and shows nothing on cancel.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "recording/dialogs.h"

namespace vess {

class CommandResult {
public:
    static CommandResult Ok() { return CommandResult(Kind::Ok, {}, {}); }
    static CommandResult Failed(std::string message) { return CommandResult(Kind::Failed, {}, std::move(message)); }
    // A failure a window shows under this caption.
    static CommandResult Failed(std::string_view caption, std::string_view message) {
        return CommandResult(Kind::Failed, std::string(caption), std::string(message));
    }
    static CommandResult Cancelled() { return CommandResult(Kind::Cancelled, {}, {}); }
    // The lower-level convention of an empty message for success.
    static CommandResult FromError(std::string error) {
        return error.empty() ? Ok() : Failed(std::move(error));
    }
    static CommandResult FromError(std::string caption, std::string error) {
        return error.empty() ? Ok() : Failed(std::move(caption), std::move(error));
    }

    bool ok() const { return kind_ == Kind::Ok; }
    bool failed() const { return kind_ == Kind::Failed; }
    bool cancelled() const { return kind_ == Kind::Cancelled; }
    explicit operator bool() const { return ok(); }
    // Why it failed and the caption to show it under; empty unless failed().
    const std::string& message() const { return message_; }
    const std::string& caption() const { return caption_; }

private:
    enum class Kind { Ok, Failed, Cancelled };
    CommandResult(Kind kind, std::string caption, std::string message)
        : kind_(kind), caption_(std::move(caption)), message_(std::move(message)) {}

    Kind kind_;
    std::string caption_;
    std::string message_;
};

// A command's result together with the value it made when it was done.
template <class T>
class Outcome {
public:
    Outcome(T value) : status_(CommandResult::Ok()), value_(std::move(value)) {}  // NOLINT: a value is done
    // A failed or cancelled command; an ok status without a value is a
    // programming error and reads as cancelled.
    Outcome(CommandResult status) : status_(status.ok() ? CommandResult::Cancelled() : std::move(status)) {}  // NOLINT

    bool ok() const { return status_.ok(); }
    bool failed() const { return status_.failed(); }
    bool cancelled() const { return status_.cancelled(); }
    explicit operator bool() const { return ok(); }
    const std::string& message() const { return status_.message(); }
    const std::string& caption() const { return status_.caption(); }
    const CommandResult& status() const { return status_; }
    // Only when ok().
    T& value() { return value_.value(); }
    const T& value() const { return value_.value(); }
    T& operator*() { return value_.value(); }
    const T& operator*() const { return value_.value(); }
    T* operator->() { return &value_.value(); }
    const T* operator->() const { return &value_.value(); }

private:
    CommandResult status_;
    std::optional<T> value_;
};

// How a window ends a command: its failure in a message box, nothing when it
// was done or cancelled. True when it was done.
inline bool ShowFailure(Dialogs& dialogs, const CommandResult& result) {
    if (result.failed()) dialogs.Message(result.caption(), result.message());
    return result.ok();
}

}  // namespace vess
