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

// Writes all bytes to fd and flushes them to the disk; "" or the reason.
std::string WriteAllAndSync(int fd, const ChunkSource& next) {
    for (std::span<const uint8_t> bytes = next(); !bytes.empty(); bytes = next()) {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return Why();
            done += std::size_t(n);
        }
    }
    if (::fsync(fd) != 0) return Why();
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

// Overwrites the existing file in place: used when its folder does not let
// us create the temporary file but the file itself is writable.
std::string WriteInPlace(const std::filesystem::path& target, const ChunkSource& bytes) {
    const int fd = ::open(target.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return "Cannot write " + target.string() + ": " + Why() + ".";
    std::string why = WriteAllAndSync(fd, bytes);
    if (::close(fd) != 0 && why.empty()) why = Why();
    if (!why.empty()) return "Cannot write " + target.string() + ": " + why + ".";
    return {};
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

std::string WriteFileAtomic(const std::filesystem::path& path, const ChunkSource& bytes) {
    const std::filesystem::path target = FinalTarget(path);
    struct stat existing {};
    const bool exists = ::stat(target.c_str(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode))
        return "Cannot write " + target.string() + ": it is not a regular file.";

    // A name of our own beside the target, never one the user may own.
    std::string tmpName = (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(tmpName.data());
    if (fd < 0) {
        const int createErrno = errno;
        if ((createErrno == EACCES || createErrno == EPERM) && exists &&
            ::access(target.c_str(), W_OK) == 0)
            return WriteInPlace(target, bytes);
        return "Cannot write " + target.string() + ": " + std::strerror(createErrno) + ".";
    }
    const std::filesystem::path tmp = tmpName;
    ::fchmod(fd, exists ? (existing.st_mode & 07777) : NewFileMode());
    std::string why = WriteAllAndSync(fd, bytes);
    if (::close(fd) != 0 && why.empty()) why = Why();
    if (why.empty() && ::rename(tmp.c_str(), target.c_str()) != 0) why = Why();
    if (!why.empty()) {
        ::unlink(tmp.c_str());
        return "Cannot write " + target.string() + ": " + why + ".";
    }
    // The rename itself reaches the disk with the folder.
    if (const int dir = ::open(target.parent_path().empty() ? "." : target.parent_path().c_str(),
                               O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return {};
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
