// Damaged files for the opening tests: each corruption of a valid file is
// refused with its caption and text, and whatever was open stays open.
#pragma once

#include <fstream>
#include <functional>
#include <span>
#include <string_view>

#include <gtest/gtest.h>

#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "support/test_recording.h"

namespace vess::test {

template <class T>
void Set(std::vector<uint8_t>& b, std::size_t offset, T value) {
    le::Put<T>(std::span<uint8_t>(b), offset, value);
}

inline std::filesystem::path Save(const TempDir& dir, const std::string& name,
                                  const std::vector<uint8_t>& bytes) {
    const auto p = dir / name;
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return p;
}

struct Corruption {
    const char* name;
    std::function<void(std::vector<uint8_t>&)> apply;
    std::string_view caption, text;
};

// Opens each corrupted copy of valid, declining to save the open events; a
// damaged file's message starts with its text and goes on to name the file
// and the fault. kept() checks that the previous recording is still open.
inline void ExpectEachRefused(Workspace& ws, ScriptedDialogs& dialogs, const TempDir& dir,
                              const std::vector<uint8_t>& valid, std::span<const Corruption> cases,
                              const std::function<void()>& kept) {
    for (const Corruption& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<uint8_t> bytes = valid;
        c.apply(bytes);
        dialogs.ClearTranscript();
        dialogs.AnswerYesNo(false);
        EXPECT_FALSE(ShowFailure(dialogs, OpenDataFile(ws, Save(dir, "bad.abf", bytes), dialogs)));
        const auto messages = dialogs.Messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].caption, c.caption);
        if (c.caption == texts::kDamagedAbfCaption) {
            EXPECT_EQ(messages[0].text.substr(0, c.text.size()), c.text);
            EXPECT_NE(messages[0].text.find("\n\nbad.abf: "), std::string::npos) << messages[0].text;
        } else {
            EXPECT_EQ(messages[0].text, c.text);
        }
        kept();
    }
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace vess::test
