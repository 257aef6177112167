// Test helpers: temporary folders, recordings built on the fly from samples,
// and the location of the shared real recordings.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "recording/abf_writer.h"
#include "recording/recording.h"

namespace vess::test {

// A fresh temporary folder removed when the object dies.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// Writes a one-channel ABF file of these samples (scaled as MakeAbfLayout's)
// and opens it.
std::unique_ptr<Recording> MakeRecording(const std::filesystem::path& file,
                                         std::span<const int16_t> samples, double intervalUs = 50,
                                         float countsPerUnit = 1.0f);

// A layout whose channel 0 converts exactly countsPerUnit counts to one unit
// (pA), so tests can reason in counts.
AbfWriteLayout MakeAbfLayout(double intervalUs, float countsPerUnit = 1.0f);

// ../shared/data beside the checkout; empty path when absent.
std::filesystem::path SharedData();

}  // namespace vess::test

// Skips the current test when the shared data folder is absent.
#define VESS_REQUIRE_SHARED_DATA()                                                        \
    do {                                                                                  \
        if (::vess::test::SharedData().empty())                                           \
            GTEST_SKIP() << "../shared/data is not beside the checkout; real recordings " \
                            "are not available";                                          \
    } while (0)
