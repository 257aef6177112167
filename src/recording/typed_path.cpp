#include "recording/typed_path.h"

#include <cctype>
#include <string>
#include <system_error>

namespace vess {
namespace {

std::string Trimmed(const std::string& s) {
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return s.substr(first, s.find_last_not_of(" \t\r\n") - first + 1);
}

// "%20" and the like in a pasted file address.
std::string Unescaped(const std::string& s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '%' && i + 2 < s.size() && std::isxdigit(static_cast<unsigned char>(s[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(s[i + 2]))) {
            out += char(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += s[i];
        }
    }
    return out;
}

}  // namespace

TypedPath ResolveTypedPath(const std::string& text, const std::filesystem::path& shownFolder,
                           const std::filesystem::path& home) {
    std::string s = Trimmed(text);
    if (s.size() >= 2 && (s.front() == '"' || s.front() == '\'') && s.back() == s.front())
        s = s.substr(1, s.size() - 2);
    if (s.rfind("file://", 0) == 0) s = Unescaped(s.substr(7));
    TypedPath out;
    if (s.empty()) return out;
    std::filesystem::path p = s;
    if (s == "~" || s.rfind("~/", 0) == 0) p = home / s.substr(s.size() > 1 ? 2 : 1);
    if (p.is_relative()) p = shownFolder / p;
    p = p.lexically_normal();
    if (p.has_filename() == false && p != p.root_path()) p = p.parent_path();
    out.path = p;
    std::error_code ec;
    if (std::filesystem::is_directory(p, ec)) out.kind = TypedPath::Kind::Folder;
    else if (std::filesystem::is_regular_file(p, ec)) out.kind = TypedPath::Kind::File;
    return out;
}

}  // namespace vess
