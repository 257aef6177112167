// Any text as a settings file: reading never fails, every value taken lies in
// its key's range, and what was read is written so that it reads back the
// same (the values survive the 10-character read).
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "recording/ini_file.h"
#include "recording/settings_file.h"
#include "recording/value_ranges.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vess::IniFile ini = vess::IniFile::Parse(text);
    std::vector<std::string> problems;
    const vess::Settings first = vess::SettingsFromIni(ini, &problems);
    if (first.analysis.NumberPointsPeak < 1) __builtin_trap();
    if (!vess::ParameterProblem(first.analysis).empty()) __builtin_trap();
    if (first.blocksPerScreen < 1 ||
        first.blocksPerScreen > vess::kMaxBlocksPerScreen)
        __builtin_trap();
    vess::SettingsToIni(first, ini);
    const vess::Settings second = vess::SettingsFromIni(vess::IniFile::Parse(ini.Text()), &problems);
    if (!(first == second)) __builtin_trap();
    return 0;
}
