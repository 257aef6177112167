// The command-line tests' fixture: a temporary folder and the vess program
// run with its standard error captured there.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess::test {

class VessCliTest : public ::testing::Test {
protected:
    TempDir dir;
    VessRun Run(const std::string& args) { return RunVessCli(args, dir / "err.txt"); }
    // The quoted path of name in the folder.
    std::string P(const std::string& name) const { return "'" + (dir / name).string() + "'"; }
    // Writes text into name in the folder; its quoted path.
    std::string Put(const std::string& name, std::string_view text) {
        EXPECT_EQ(WriteFileAtomic(dir / name, text), "");
        return P(name);
    }
};

inline bool Contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// A run that ended with status code and said message on standard error.
inline void ExpectRefused(const VessRun& r, int code, std::string_view message) {
    EXPECT_EQ(r.exitCode, code) << r.err;
    EXPECT_TRUE(Contains(r.err, message)) << r.err;
}

}  // namespace vess::test
