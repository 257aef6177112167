// Reading back what a test wrote, and opening the shared real recordings.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "recording/file_io.h"
#include "recording/recording.h"
#include "support/test_recording.h"

namespace vess::test {

// The file's bytes as text; "<missing>" when it cannot be read.
inline std::string ReadText(const std::filesystem::path& p) {
    const auto b = ReadFileBytes(p);
    return b ? std::string(b->begin(), b->end()) : std::string("<missing>");
}

// The recording at path; a failure to open is a test failure (callers still
// ASSERT_TRUE the result before using it).
inline std::unique_ptr<Recording> OpenFile(const std::filesystem::path& path) {
    AbfError error{};
    std::string detail;
    auto rec = Recording::Open(path, &error, &detail);
    EXPECT_TRUE(rec) << path.string() << ": " << detail;
    return rec;
}

// A recording of ../shared/data by its relative name.
inline std::unique_ptr<Recording> OpenShared(const std::string& name) { return OpenFile(SharedData() / name); }

}  // namespace vess::test
