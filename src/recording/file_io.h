// Whole-file reads and safe writes for the program's own small files (event,
// parameter, settings and text files).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vess {

// The file's bytes, or std::nullopt when it cannot be read (then *error, when
// given, says why). Only regular files are read: a named pipe or a device is
// refused at once rather than waited on.
std::optional<std::vector<uint8_t>> ReadFileBytes(const std::filesystem::path& path,
                                                  std::string* error = nullptr);

// Writes bytes to a temporary file beside path and renames it over path, so a
// failure never destroys an existing file. Returns an empty string on success,
// otherwise a message saying what went wrong.
std::string WriteFileAtomic(const std::filesystem::path& path, std::span<const uint8_t> bytes);
std::string WriteFileAtomic(const std::filesystem::path& path, std::string_view text);
// The same for a file too long to hold in memory: next() hands out the bytes
// chunk by chunk, an empty chunk at the end.
using ChunkSource = std::function<std::span<const uint8_t>()>;
std::string WriteFileAtomic(const std::filesystem::path& path, const ChunkSource& next);

// Adds "." + extension when the file name has no "." in it.
std::filesystem::path WithDefaultExtension(const std::filesystem::path& path,
                                           std::string_view extension);

// Blanks trimmed from both ends (only ' ', like the fixed-width text fields).
std::string TrimBlanks(std::string_view text);

}  // namespace vess
