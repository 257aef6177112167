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

// A file written under a temporary name beside its target and renamed over
// the target once every byte is on disk, so a failure never destroys an
// existing file: dropped unfinished, it removes its temporary file. Saving
// through a symbolic link replaces the link's final target and keeps the
// link; a replaced file keeps its permission bits, a new one gets the
// umask's. A file whose folder forbids new files is refused, never written
// in place.
class AtomicFile {
public:
    explicit AtomicFile(const std::filesystem::path& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Appends bytes; false once anything has failed (then Error() says why).
    bool Write(std::span<const uint8_t> bytes);
    // Flushes, renames over the target and returns "" on success, otherwise
    // the message; the target is untouched on failure.
    std::string Finish();
    // "" while all is well, otherwise "Cannot write <file>: <why>."
    std::string Error() const;
    // Where the bytes written so far can be read until Finish renames them
    // over the target (empty when no temporary file could be made).
    std::filesystem::path PendingPath() const { return tmp_; }

private:
    std::filesystem::path target_;
    std::string tmp_;
    int fd_ = -1;
    bool renamed_ = false;
    std::string why_;
};

// Writes bytes through an AtomicFile. Returns an empty string on success,
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
