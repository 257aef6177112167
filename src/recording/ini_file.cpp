#include "recording/ini_file.h"

#include <algorithm>
#include <cctype>

#include "recording/file_io.h"

namespace vess {

namespace {

std::string_view Trim(std::string_view s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const auto last = s.find_last_not_of(" \t");
    return s.substr(first, last - first + 1);
}

bool SameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// "[name]" -> name; std::nullopt for other lines.
std::optional<std::string_view> SectionName(std::string_view line) {
    line = Trim(line);
    if (line.size() < 2 || line.front() != '[') return std::nullopt;
    const auto close = line.find(']');
    if (close == std::string_view::npos) return std::nullopt;
    return Trim(line.substr(1, close - 1));
}

struct KeyLine {
    std::string_view key, value;
};

std::optional<KeyLine> ParseKey(std::string_view line) {
    const auto t = Trim(line);
    if (t.empty() || t.front() == ';') return std::nullopt;
    const auto eq = line.find('=');
    if (eq == std::string_view::npos) return std::nullopt;
    return KeyLine{Trim(line.substr(0, eq)), Trim(line.substr(eq + 1))};
}

// The value as written after "key=": quoted when reading would otherwise
// lose its outer blanks or a pair of quotes around it.
std::string StoredValue(std::string_view value) {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    if (!value.empty() && (blank(value.front()) || blank(value.back()) || quoted))
        return "\"" + std::string(value) + "\"";
    return std::string(value);
}

}  // namespace

IniFile IniFile::Parse(std::string_view text) {
    IniFile ini;
    std::size_t start = 0;
    while (start < text.size()) {
        auto end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        ini.lines_.emplace_back(line);
        start = end + 1;
    }
    return ini;
}

IniFile IniFile::Load(const std::filesystem::path& path) {
    const auto bytes = ReadFileBytes(path);
    if (!bytes) return {};
    return Parse(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
}

std::size_t IniFile::FindSection(std::string_view section) const {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const auto name = SectionName(lines_[i]);
        if (name && SameName(*name, section)) return i;
    }
    return std::string::npos;
}

std::optional<std::string> IniFile::Get(std::string_view section, std::string_view key,
                                        std::size_t maxChars) const {
    const std::size_t s = FindSection(section);
    if (s == std::string::npos) return std::nullopt;
    for (std::size_t i = s + 1; i < lines_.size() && !SectionName(lines_[i]); ++i) {
        const auto kv = ParseKey(lines_[i]);
        if (!kv || !SameName(kv->key, key)) continue;
        std::string_view v = kv->value;
        if (v.size() >= 2 && v.front() == '"' && v.back() == '"') v = v.substr(1, v.size() - 2);
        return std::string(v.substr(0, std::min(maxChars, v.size())));
    }
    return std::nullopt;
}

void IniFile::Set(std::string_view section, std::string_view key, std::string_view value) {
    std::string line = std::string(key) + "=" + StoredValue(value);
    std::size_t s = FindSection(section);
    if (s == std::string::npos) {
        while (!lines_.empty() && Trim(lines_.back()).empty()) lines_.pop_back();
        if (!lines_.empty()) lines_.emplace_back();
        lines_.push_back("[" + std::string(section) + "]");
        lines_.push_back(std::move(line));
        return;
    }
    std::size_t insertAt = s + 1;
    for (std::size_t i = s + 1; i < lines_.size() && !SectionName(lines_[i]); ++i) {
        const auto kv = ParseKey(lines_[i]);
        if (kv && SameName(kv->key, key)) {
            lines_[i] = std::move(line);
            return;
        }
        if (!Trim(lines_[i]).empty()) insertAt = i + 1;  // after the section's last non-blank line
    }
    lines_.insert(lines_.begin() + std::ptrdiff_t(insertAt), std::move(line));
}

std::string IniFile::Text() const {
    std::string out;
    for (const auto& line : lines_) out += line + "\r\n";
    return out;
}

std::string IniFile::Save(const std::filesystem::path& path) const {
    return WriteFileAtomic(path, Text());
}

}  // namespace vess
