// A read-only data file read with explicit positioned reads, never through a
// memory map: when the file is cut short or replaced while it is open, a read
// comes back short and the caller can say so, where a map would kill the
// process. Bytes held in memory (for parsing from memory, e.g. in fuzzing)
// answer the same reads.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace vess {

class DataFile {
public:
    struct OpenResult {
        std::unique_ptr<DataFile> file;  // null on failure
        std::string error;               // why it could not be opened
    };
    // Opens a regular file only: a folder, a named pipe or a device is
    // refused without blocking on it.
    static OpenResult Open(const std::filesystem::path& path);
    static std::unique_ptr<DataFile> FromBytes(std::vector<uint8_t> bytes);

    ~DataFile();
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    // The size when the file was opened.
    uint64_t Size() const { return size_; }
    // Reads up to out.size() bytes at offset and returns how many were read:
    // fewer at the end of the file or when the read failed (then Error()
    // says why).
    std::size_t ReadAt(uint64_t offset, std::span<uint8_t> out) const;
    // The reason of the last failed read ("" when reads only ran short).
    // Reads may run on several threads at once.
    std::string Error() const;

private:
    DataFile() = default;
    int fd_ = -1;
    uint64_t size_ = 0;
    std::vector<uint8_t> owned_;  // the bytes, when not read from a file
    mutable std::string error_;
    mutable std::mutex errorMutex_;
};

// Opens path for reading when it is a regular file; returns the descriptor,
// or -1 with *error set. Never blocks on a named pipe or device.
int OpenRegularFile(const std::filesystem::path& path, std::string* error);

}  // namespace vess
