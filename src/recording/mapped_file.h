// A read-only view of a whole file's bytes: a memory map on POSIX systems, or
// an owned copy of bytes (for parsing from memory, e.g. in fuzzing). The rest
// of the program sees only Bytes(), so another platform needs just another
// implementation of Open.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vess {

class MappedFile {
public:
    struct OpenResult {
        std::unique_ptr<MappedFile> file;  // null on failure
        std::string error;                 // why it could not be opened
    };
    static OpenResult Open(const std::filesystem::path& path);
    static std::unique_ptr<MappedFile> FromBytes(std::vector<uint8_t> bytes);

    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::span<const uint8_t> Bytes() const { return {data_, size_}; }

private:
    MappedFile() = default;
    const uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    void* map_ = nullptr;          // the mapping, when mapped
    std::vector<uint8_t> owned_;   // the bytes, when not mapped
};

}  // namespace vess
