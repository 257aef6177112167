#include "recording/mapped_file.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vess {

MappedFile::OpenResult MappedFile::Open(const std::filesystem::path& path) {
    OpenResult result;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        result.error = std::strerror(errno);
        return result;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        result.error = S_ISDIR(st.st_mode) ? "is a folder" : "not a regular file";
        ::close(fd);
        return result;
    }
    std::unique_ptr<MappedFile> file(new MappedFile);
    if (st.st_size > 0) {
        void* p = ::mmap(nullptr, std::size_t(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p == MAP_FAILED) {
            result.error = std::strerror(errno);
            ::close(fd);
            return result;
        }
        file->map_ = p;
        file->data_ = static_cast<const uint8_t*>(p);
        file->size_ = std::size_t(st.st_size);
    }
    ::close(fd);  // the mapping stays valid without the descriptor
    result.file = std::move(file);
    return result;
}

std::unique_ptr<MappedFile> MappedFile::FromBytes(std::vector<uint8_t> bytes) {
    std::unique_ptr<MappedFile> file(new MappedFile);
    file->owned_ = std::move(bytes);
    file->data_ = file->owned_.data();
    file->size_ = file->owned_.size();
    return file;
}

MappedFile::~MappedFile() {
    if (map_ != nullptr) ::munmap(map_, size_);
}

}  // namespace vess
