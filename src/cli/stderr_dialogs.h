// The command line's Dialogs: messages go to stderr; nothing is asked, so
// questions get their safe answer (No, Cancel, no file).
#pragma once

#include <iostream>
#include <optional>
#include <string>

#include "recording/safe_answer_dialogs.h"

namespace vess::cli {

class StderrDialogs : public SafeAnswerDialogs {
public:
    void Message(const std::string& caption, const std::string& text) override {
        std::cerr << caption << ": " << text << "\n";
        ++messages;
    }
    int messages = 0;
};

}  // namespace vess::cli
