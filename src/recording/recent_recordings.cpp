#include "recording/recent_recordings.h"

#include <algorithm>

#include <fmt/format.h>

#include "recording/ini_file.h"

namespace vess {
namespace {

constexpr std::string_view kSection = "Recent Recordings";

std::string Key(std::size_t i) { return fmt::format("File{}", i + 1); }

}  // namespace

std::vector<std::string> ReadRecentRecordings(const std::filesystem::path& iniPath) {
    const IniFile ini = IniFile::Load(iniPath);
    std::vector<std::string> recent;
    for (std::size_t i = 0; i < kRecentRecordingsKept; ++i)
        if (auto path = ini.Get(kSection, Key(i)); path && !path->empty()) recent.push_back(*path);
    return recent;
}

std::string WriteRecentRecordings(const std::filesystem::path& iniPath,
                                  const std::vector<std::string>& recent) {
    IniFile ini = IniFile::Load(iniPath);
    // Every key is written, so that a shorter list leaves no stale entries.
    for (std::size_t i = 0; i < kRecentRecordingsKept; ++i)
        ini.Set(kSection, Key(i), i < recent.size() ? recent[i] : std::string());
    return ini.Save(iniPath);
}

std::vector<std::string> WithNewest(std::vector<std::string> recent, const std::string& path) {
    std::erase(recent, path);
    recent.insert(recent.begin(), path);
    if (recent.size() > kRecentRecordingsKept) recent.resize(kRecentRecordingsKept);
    return recent;
}

void RememberRecording(const std::filesystem::path& iniPath, const std::filesystem::path& opened) {
    if (iniPath.empty()) return;
    // A list that cannot be written is only a convenience lost: no message
    // on every file opened.
    WriteRecentRecordings(iniPath, WithNewest(ReadRecentRecordings(iniPath), opened.string()));
}

CommandResult CheckRecentRecording(const std::filesystem::path& iniPath, const std::string& path) {
    std::error_code ec;
    if (std::filesystem::is_regular_file(path, ec)) return CommandResult::Ok();
    std::vector<std::string> recent = ReadRecentRecordings(iniPath);
    std::erase(recent, path);
    WriteRecentRecordings(iniPath, recent);
    return CommandResult::Failed(kRecentMissingCaption, RecentMissingText(path));
}

}  // namespace vess
