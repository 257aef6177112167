#include "recording/file_io.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "recording/data_file.h"

namespace vess {

namespace {

std::string Why() { return std::strerror(errno); }

// Writes all bytes to fd; "" or the reason.
std::string WriteAll(int fd, const ChunkSource& next) {
    for (std::span<const uint8_t> bytes = next(); !bytes.empty(); bytes = next()) {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return Why();
            done += std::size_t(n);
        }
    }
    return {};
}

// The file a symbolic link finally names (path itself when it is no link),
// so that saving through a link replaces its target and keeps the link.
std::filesystem::path FinalTarget(const std::filesystem::path& path) {
    std::filesystem::path p = path;
    std::error_code ec;
    for (int hops = 0; hops < 40 && std::filesystem::is_symlink(p, ec); ++hops) {
        const std::filesystem::path link = std::filesystem::read_symlink(p, ec);
        if (ec) break;
        p = link.is_absolute() ? link : p.parent_path() / link;
    }
    return p;
}

// The permission bits a new file gets from the process's umask.
mode_t NewFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mode_t(0666) & ~mask;
}

// The refusal for a folder that forbids the temporary file: writing into the
// old file instead would leave it half new on a full disk or a crash.
std::string NoNewFileWhy(int createErrno, bool exists) {
    if ((createErrno == EACCES || createErrno == EPERM) && exists)
        return "its folder does not allow a new file beside it (" + std::string(std::strerror(createErrno)) +
               "); the file is left unchanged rather than overwritten in place. Save to another folder";
    return std::strerror(createErrno);
}

}  // namespace

std::optional<std::vector<uint8_t>> ReadFileBytes(const std::filesystem::path& path,
                                                  std::string* error) {
    const int fd = OpenRegularFile(path, error);
    if (fd < 0) return std::nullopt;
    std::vector<uint8_t> bytes;
    uint8_t buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            if (error) *error = Why();
            ::close(fd);
            return std::nullopt;
        }
        if (n == 0) break;
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    ::close(fd);
    return bytes;
}

std::string WriteFileAtomic(const std::filesystem::path& path, std::span<const uint8_t> bytes) {
    bool given = false;
    return WriteFileAtomic(path, [&]() -> std::span<const uint8_t> {
        if (given) return {};
        given = true;
        return bytes;
    });
}

AtomicFile::AtomicFile(const std::filesystem::path& path) : target_(FinalTarget(path)) {
    struct stat existing {};
    const bool exists = ::stat(target_.c_str(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode)) {
        why_ = "it is not a regular file";
        return;
    }
    // A name of our own beside the target, never one the user may own.
    tmp_ = (target_.parent_path() / ("." + target_.filename().string() + ".XXXXXX")).string();
    fd_ = ::mkstemp(tmp_.data());
    if (fd_ < 0) {
        why_ = NoNewFileWhy(errno, exists);
        tmp_.clear();
        return;
    }
    ::fchmod(fd_, exists ? (existing.st_mode & 07777) : NewFileMode());
}

AtomicFile::~AtomicFile() {
    if (fd_ >= 0) ::close(fd_);
    if (!tmp_.empty() && !renamed_) ::unlink(tmp_.c_str());
}

bool AtomicFile::Write(std::span<const uint8_t> bytes) {
    if (!why_.empty()) return false;
    bool given = false;
    why_ = WriteAll(fd_, [&]() -> std::span<const uint8_t> {
        if (given) return {};
        given = true;
        return bytes;
    });
    return why_.empty();
}

std::string AtomicFile::Finish() {
    if (why_.empty() && ::fsync(fd_) != 0) why_ = Why();
    if (fd_ >= 0 && ::close(fd_) != 0 && why_.empty()) why_ = Why();
    fd_ = -1;
    if (why_.empty() && ::rename(tmp_.c_str(), target_.c_str()) != 0) why_ = Why();
    if (!why_.empty()) return Error();
    renamed_ = true;
    // The rename itself reaches the disk with the folder.
    if (const int dir = ::open(target_.parent_path().empty() ? "." : target_.parent_path().c_str(),
                               O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return {};
}

std::string AtomicFile::Error() const {
    return why_.empty() ? std::string() : "Cannot write " + target_.string() + ": " + why_ + ".";
}

std::string WriteFileAtomic(const std::filesystem::path& path, const ChunkSource& next) {
    AtomicFile file(path);
    for (std::span<const uint8_t> bytes = next(); !bytes.empty(); bytes = next())
        if (!file.Write(bytes)) break;
    return file.Finish();
}

std::string WriteFileAtomic(const std::filesystem::path& path, std::string_view text) {
    return WriteFileAtomic(
        path, std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

std::filesystem::path WithDefaultExtension(const std::filesystem::path& path,
                                           std::string_view extension) {
    if (path.filename().string().find('.') != std::string::npos) return path;
    std::filesystem::path out = path;
    out += ".";
    out += std::string(extension);
    return out;
}

std::string TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

}  // namespace vess
