#include "recording/data_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vess {

int OpenRegularFile(const std::filesystem::path& path, std::string* error) {
    // O_NONBLOCK so that opening a named pipe returns at once instead of
    // waiting for a writer; it is refused just below.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        if (error) *error = std::strerror(errno);
        return -1;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        if (error) *error = S_ISDIR(st.st_mode) ? "is a folder" : "not a regular file";
        ::close(fd);
        return -1;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    return fd;
}

DataFile::OpenResult DataFile::Open(const std::filesystem::path& path) {
    OpenResult result;
    const int fd = OpenRegularFile(path, &result.error);
    if (fd < 0) return result;
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        result.error = std::strerror(errno);
        ::close(fd);
        return result;
    }
    std::unique_ptr<DataFile> file(new DataFile);
    file->fd_ = fd;
    file->size_ = uint64_t(st.st_size);
    result.file = std::move(file);
    return result;
}

std::unique_ptr<DataFile> DataFile::FromBytes(std::vector<uint8_t> bytes) {
    std::unique_ptr<DataFile> file(new DataFile);
    file->owned_ = std::move(bytes);
    file->size_ = file->owned_.size();
    return file;
}

DataFile::~DataFile() {
    if (fd_ >= 0) ::close(fd_);
}

std::size_t DataFile::ReadAt(uint64_t offset, std::span<uint8_t> out) const {
    if (fd_ < 0) {
        if (offset >= owned_.size()) return 0;
        const std::size_t n = std::min<std::size_t>(out.size(), owned_.size() - std::size_t(offset));
        std::copy_n(owned_.begin() + std::ptrdiff_t(offset), n, out.begin());
        return n;
    }
    std::size_t done = 0;
    while (done < out.size()) {
        const ssize_t got = ::pread(fd_, out.data() + done, out.size() - done, off_t(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            const int code = errno;
            const std::lock_guard lock(errorMutex_);
            error_ = std::strerror(code);
            break;
        }
        if (got == 0) break;  // end of file
        done += std::size_t(got);
    }
    return done;
}

std::string DataFile::Error() const {
    const std::lock_guard lock(errorMutex_);
    return error_;
}

}  // namespace vess
