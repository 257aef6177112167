// Initialisation files of sections and keys ("[Section]" lines and
// "key=value" lines), read and written key by key the way the desktop
// platforms' profile functions do: names compare without regard to case,
// key text is otherwise exact ("PeakDirection%", "DisplayOffset&"), and
// writing a key keeps every other section, key, comment and blank line.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vess {

class IniFile {
public:
    IniFile() = default;
    // Parses text; never fails (lines that are neither sections nor keys are
    // kept as they are).
    static IniFile Parse(std::string_view text);
    // A missing or unreadable file gives an empty IniFile.
    static IniFile Load(const std::filesystem::path& path);

    // The value of key in section, blanks trimmed and one pair of enclosing
    // double quotes removed, cut at maxChars characters; std::nullopt when
    // the section or key is missing.
    std::optional<std::string> Get(std::string_view section, std::string_view key,
                                   std::size_t maxChars = std::string::npos) const;
    // Sets key in section, replacing its line or adding it at the end of the
    // section; a missing section is added at the end of the file.
    void Set(std::string_view section, std::string_view key, std::string_view value);

    bool HasSection(std::string_view section) const { return FindSection(section) != std::string::npos; }

    std::string Text() const;  // CR LF line ends
    // Writes through a temporary file; empty string on success.
    std::string Save(const std::filesystem::path& path) const;

private:
    // Index of the section's header line, or npos.
    std::size_t FindSection(std::string_view section) const;
    std::vector<std::string> lines_;
};

}  // namespace vess
