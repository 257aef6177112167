// Any text as a settings file: reading never fails, every key has a value,
// and once written and read back the settings are a fixed point.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "recording/ini_file.h"
#include "recording/settings_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vess::IniFile ini = vess::IniFile::Parse(text);
    const vess::Settings first = vess::SettingsFromIni(ini);
    if (first.analysis.NumberPointsPeak < 1) __builtin_trap();
    vess::SettingsToIni(first, ini);
    const vess::Settings second = vess::SettingsFromIni(vess::IniFile::Parse(ini.Text()));
    vess::IniFile again = vess::IniFile::Parse(ini.Text());
    vess::SettingsToIni(second, again);
    const vess::Settings third = vess::SettingsFromIni(vess::IniFile::Parse(again.Text()));
    if (!(second == third)) __builtin_trap();
    return 0;
}
