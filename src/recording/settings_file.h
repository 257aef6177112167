// The settings file "Vessanto.ini" (sections "Program", "Display",
// "Analysis") and custom settings files (*.SET), which are copies of it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/ini_file.h"
#include "recording/settings.h"

namespace vess {

struct Workspace;

// Values are read with a 10-character buffer, so longer values are cut; the
// data folder is the exception, read whole, since a cut path would name a
// folder that does not exist.
inline constexpr std::size_t kIniValueChars = 10;
// DetectionMethod is read whole ("deconvolution" is longer than 10).
inline constexpr std::size_t kMethodNameChars = 32;

// Written values fit this read: a float that needs more characters is
// written with fewer digits. DisplayOffset& is kept from this value up, so
// that its text fits too.
inline constexpr int32_t kMinDisplayOffset = -999'999'999;

// Every key with its default when the file or the key is missing, the value
// is not a number where one is needed, or the number is outside the key's
// range (the detection parameters' ranges are those of value_ranges.h); each
// value not taken is added to problems, when given, as "key=value: why".
// NumberPointsPeak of 0 becomes 1.
// The settings of a new installation (no settings file): the table's
// defaults, detection by deconvolution with the kernel and thresholds
// suggested from each recording. A settings file without a DetectionMethod
// key keeps the threshold detection of earlier versions.
Settings NewInstallationSettings();
// No settings file, or one that holds no settings (only the recent list).
bool IsNewInstallation(const std::filesystem::path& path);
Settings SettingsFromIni(const IniFile& ini, std::vector<std::string>* problems = nullptr);
Settings LoadIniSettings(const std::filesystem::path& path,
                         std::vector<std::string>* problems = nullptr);
// The message listing the values of path that were not taken.
std::string SettingsProblemsText(const std::filesystem::path& path,
                                 const std::vector<std::string>& problems);
// A settings file read for use: settings is empty when the file cannot be
// read or holds none of the sections (refusal says why); problems lists the
// values that were not taken.
struct SettingsFileRead {
    std::optional<Settings> settings;
    std::string refusal;
    std::vector<std::string> problems;
};
SettingsFileRead ReadSettingsFile(const std::filesystem::path& path);
// Sets every key in ini (booleans "True"/"False"), keeping all else.
void SettingsToIni(const Settings& settings, IniFile& ini);
// Writes every key into the file at path key by key, keeping its other
// sections and keys; through a temporary file. Empty string on success.
std::string SaveIniSettings(const std::filesystem::path& path, const Settings& settings);

// Where "Vessanto.ini" lives: the program's folder when it is writable,
// otherwise $XDG_CONFIG_HOME (or ~/.config) + "Vessantorium/Vessanto.ini".
std::filesystem::path DefaultIniPath(const std::filesystem::path& programDir);

// Save settings (menu, Command6, Command7): writes ws.iniPath and says so.
CommandResult SaveSettingsCommand(Workspace& ws, Dialogs& dialogs);
// On closing the main form: "Save Settings" Yes/No/Cancel. Returns false
// when the user cancelled or the save failed (the form stays open).
CommandResult AskSaveSettingsOnExit(Workspace& ws, Dialogs& dialogs);
// menu_SaveSettingsCustom: the current settings are written to the settings
// file, which is then copied to the chosen *.SET file.
CommandResult SaveCustomSettingsCommand(Workspace& ws, Dialogs& dialogs);
// menu_LoadSettings: the chosen *.SET file replaces the current settings.
CommandResult LoadCustomSettingsCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
