#include "recording/file_io.h"

#include <fstream>
#include <system_error>

namespace vess {

std::optional<std::vector<uint8_t>> ReadFileBytes(const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return std::nullopt;
    std::ifstream f(path, std::ios::binary);
    if (!f) return std::nullopt;
    std::vector<uint8_t> bytes;
    char buffer[65536];
    while (f.read(buffer, sizeof buffer) || f.gcount() > 0)
        bytes.insert(bytes.end(), buffer, buffer + f.gcount());
    if (f.bad()) return std::nullopt;
    return bytes;
}

std::string WriteFileAtomic(const std::filesystem::path& path, std::span<const uint8_t> bytes) {
    std::filesystem::path tmp = path;
    tmp += ".tmp";
    std::error_code ignored;
    {
        std::ofstream f(tmp, std::ios::binary | std::ios::trunc);
        if (!f) return "Cannot create " + tmp.string() + ".";
        f.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        f.flush();
        if (!f) {
            f.close();
            std::filesystem::remove(tmp, ignored);
            return "Cannot write " + tmp.string() + ".";
        }
    }
    std::error_code ec;
    std::filesystem::rename(tmp, path, ec);
    if (ec) {
        std::filesystem::remove(tmp, ignored);
        return "Cannot replace " + path.string() + ": " + ec.message() + ".";
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
