// The recordings opened last, newest first, kept in the settings file's
// "Recent Recordings" section (keys File1 to File10) and written as soon as
// a file is opened, so the list survives a session whose settings are not
// saved.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "recording/command_result.h"

namespace vess {

inline constexpr std::size_t kRecentRecordingsKept = 10;
inline constexpr std::string_view kRecentMissingCaption = "Recording Not Found";
inline std::string RecentMissingText(const std::string& path) {
    return "The file " + path + " no longer exists.  It is removed from the list of recent recordings.";
}

std::vector<std::string> ReadRecentRecordings(const std::filesystem::path& iniPath);
// Empty string on success.
std::string WriteRecentRecordings(const std::filesystem::path& iniPath,
                                  const std::vector<std::string>& recent);
// path first, any earlier mention of it dropped, at most kRecentRecordingsKept.
std::vector<std::string> WithNewest(std::vector<std::string> recent, const std::string& path);

// Notes a file just opened as the newest of the list in iniPath.
void RememberRecording(const std::filesystem::path& iniPath, const std::filesystem::path& opened);

// Before a file of the list is opened: done when it still exists; otherwise
// it is removed from the list and the check fails with the message that
// says so.
CommandResult CheckRecentRecording(const std::filesystem::path& iniPath, const std::string& path);

}  // namespace vess
