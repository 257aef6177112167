// How a command that can fail or be stopped ended: done, failed with the
// message that says why, or cancelled (the user said Cancel or asked the work
// to stop), which calls for no message at all.
#pragma once

#include <string>
#include <utility>

namespace vess {

class CommandResult {
public:
    static CommandResult Ok() { return CommandResult(Outcome::Ok, {}); }
    static CommandResult Failed(std::string message) { return CommandResult(Outcome::Failed, std::move(message)); }
    static CommandResult Cancelled() { return CommandResult(Outcome::Cancelled, {}); }
    // The lower-level convention of an empty message for success.
    static CommandResult FromError(std::string error) {
        return error.empty() ? Ok() : Failed(std::move(error));
    }

    bool ok() const { return outcome_ == Outcome::Ok; }
    bool failed() const { return outcome_ == Outcome::Failed; }
    bool cancelled() const { return outcome_ == Outcome::Cancelled; }
    explicit operator bool() const { return ok(); }
    // Why it failed; empty unless failed().
    const std::string& message() const { return message_; }

private:
    enum class Outcome { Ok, Failed, Cancelled };
    CommandResult(Outcome outcome, std::string message) : outcome_(outcome), message_(std::move(message)) {}

    Outcome outcome_;
    std::string message_;
};

}  // namespace vess
