// A folder or file typed or pasted into the path box above the folder tree:
// quotes and a "file://" prefix (what file managers paste) are removed, "~"
// is the home folder, and a relative path is taken from the folder shown.
#pragma once

#include <filesystem>
#include <string>

namespace vess {

struct TypedPath {
    enum class Kind { Folder, File, Missing };
    Kind kind = Kind::Missing;
    std::filesystem::path path;  // absolute and normal; the text as read when missing
};

TypedPath ResolveTypedPath(const std::string& text, const std::filesystem::path& shownFolder,
                           const std::filesystem::path& home);

}  // namespace vess
