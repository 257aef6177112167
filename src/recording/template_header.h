// The template header "SamplABF.dat" in the program's folder, on which the
// ABF files the program writes (event-free recordings, tachograms) are built.
// It is made by our own writer when missing, never copied from elsewhere.
#pragma once

#include <filesystem>
#include <string>

namespace vess {

struct TemplateHeaderResult {
    std::filesystem::path path;  // folder / "SamplABF.dat"
    std::string error;           // empty when the file exists or was written
};

// Writes folder/SamplABF.dat (a one-channel header with no samples) when it
// does not exist; an existing file is left as it is.
TemplateHeaderResult EnsureTemplateHeader(const std::filesystem::path& folder);

}  // namespace vess
