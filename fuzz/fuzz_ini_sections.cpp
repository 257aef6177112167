// Any text as the settings sections of the group analysis (GroupAnalysis,
// Fitting, RandomWalk, NonStationary) and of the heart-rate windows (HRV):
// reading never fails, and what was read is written so that it reads back
// the same.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "group_analysis/group_settings.h"
#include "hrv/hrv_options.h"
#include "recording/ini_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vess::IniFile ini = vess::IniFile::Parse(text);
    const vess::group::GroupAnalysisSettings group = vess::group::GroupSettingsFromIni(ini);
    const vess::hrv::HrvOptions hrv = vess::hrv::HrvOptionsFromIni(ini);
    vess::group::GroupSettingsToIni(group, ini);
    vess::hrv::TimeDomainOptionsToIni(hrv, ini);
    vess::hrv::GeometricOptionsToIni(hrv, ini);
    const vess::IniFile again = vess::IniFile::Parse(ini.Text());
    if (!(vess::group::GroupSettingsFromIni(again) == group)) __builtin_trap();
    if (!(vess::hrv::HrvOptionsFromIni(again) == hrv)) __builtin_trap();
    return 0;
}
