#include "recording/settings_file.h"

#include <unistd.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <fmt/format.h>

#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess {

namespace {

constexpr std::string_view kProgram = "Program", kDisplay = "Display", kAnalysis = "Analysis";

template <class T>
void ReadNumber(const IniFile& ini, std::string_view section, std::string_view key, T& value) {
    const auto text = ini.Get(section, key, kIniValueChars);
    if (!text) return;
    if constexpr (std::is_floating_point_v<T>) {
        T parsed{};
        const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), parsed);
        if (ec == std::errc() && end == text->data() + text->size() && std::isfinite(parsed))
            value = parsed;
    } else {
        int64_t parsed = 0;
        const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), parsed);
        if (ec == std::errc() && end == text->data() + text->size() &&
            parsed >= std::numeric_limits<T>::min() && parsed <= std::numeric_limits<T>::max())
            value = T(parsed);
    }
}

void ReadBool(const IniFile& ini, std::string_view section, std::string_view key, bool& value) {
    auto text = ini.Get(section, key, kIniValueChars);
    if (!text) return;
    for (auto& c : *text) c = char(std::tolower(static_cast<unsigned char>(c)));
    if (*text == "true") value = true;
    else if (*text == "false") value = false;
    else {
        int64_t n = 0;
        const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), n);
        if (ec == std::errc() && end == text->data() + text->size()) value = n != 0;
    }
}

void ReadText(const IniFile& ini, std::string_view section, std::string_view key, std::string& value,
              std::size_t maxChars = kIniValueChars) {
    if (auto text = ini.Get(section, key, maxChars)) value = *text;
}

// A time constant or threshold read only when it is positive and within
// [low, high]; anything else keeps the default.
void ReadBounded(const IniFile& ini, std::string_view key, double low, double high, double& value) {
    double parsed = value;
    ReadNumber(ini, kAnalysis, key, parsed);
    if (parsed >= low && parsed <= high) value = parsed;
}

void ReadMethod(const IniFile& ini, MethodParameters& m) {
    std::string name;
    ReadText(ini, kAnalysis, "DetectionMethod", name);
    if (const auto method = ParseMethodName(name)) m.method = *method;
    ReadBounded(ini, "KernelRiseMs", 0.01, 1000, m.riseTauMs);
    ReadBounded(ini, "KernelDecayMs", 0.02, 10000, m.decayTauMs);
    if (m.decayTauMs <= m.riseTauMs) m.decayTauMs = MethodParameters{}.decayTauMs;
    if (m.decayTauMs <= m.riseTauMs) m.riseTauMs = MethodParameters{}.riseTauMs;
    ReadBounded(ini, "DeconvolutionThreshold", 0.5, 100, m.deconvolutionThreshold);
    ReadBounded(ini, "TemplateThreshold", 0.5, 100, m.templateThreshold);
    ReadBounded(ini, "LowPassMs", 0.01, 100, m.lowPassMs);
    ReadBounded(ini, "MinimumSeparationMs", 0, 1000, m.minSeparationMs);
}

std::string Bool(bool b) { return b ? "True" : "False"; }
template <class T>
std::string Num(T v) { return fmt::format("{}", v); }

}  // namespace

Settings SettingsFromIni(const IniFile& ini) {
    Settings s;
    ReadText(ini, kProgram, "DataDir", s.DataDir, std::string::npos);
    ReadBool(ini, kProgram, "SoundOn", s.SoundOn);
    ReadBool(ini, kProgram, "DisplayTooltips", s.DisplayTooltips);
    ReadBool(ini, kDisplay, "LockBase", s.LockBase);
    ReadText(ini, kDisplay, "FractionWindow", s.FractionWindow);
    ReadBool(ini, kDisplay, "DisplayTrace", s.DisplayTrace);
    ReadText(ini, kDisplay, "DisplayGain", s.DisplayGain);
    ReadNumber(ini, kDisplay, "DisplayOffset&", s.DisplayOffset);
    ReadNumber(ini, kDisplay, "DisplayTotalNumberBlockPerScreen", s.DisplayTotalNumberBlockPerScreen);
    ReadNumber(ini, kDisplay, "GroupNavigate", s.GroupNavigate);
    ReadNumber(ini, kDisplay, "JumpInterval", s.JumpInterval);
    ReadNumber(ini, kDisplay, "FilterType", s.FilterType);
    ReadText(ini, kDisplay, "FilterFreq", s.FilterFreq);
    AnalysisParameters& a = s.analysis;
    ReadNumber(ini, kAnalysis, "PeakDirection%", a.PeakDirection);
    ReadNumber(ini, kAnalysis, "ThresholdAmplitude!", a.ThresholdAmplitude);
    ReadNumber(ini, kAnalysis, "PeriodToSearchMax&", a.PeriodToSearchMax);
    ReadNumber(ini, kAnalysis, "PeriodStartBaseline&", a.PeriodStartBaseline);
    ReadNumber(ini, kAnalysis, "PeriodFindDecayTime&", a.PeriodFindDecayTime);
    ReadNumber(ini, kAnalysis, "DecayPercent!", a.DecayPercent);
    ReadNumber(ini, kAnalysis, "PeriodBaselineAverage&", a.PeriodBaselineAverage);
    ReadNumber(ini, kAnalysis, "AreaThreshold!", a.AreaThreshold);
    ReadBool(ini, kAnalysis, "ComplexPeak", a.ComplexPeak);
    ReadNumber(ini, kAnalysis, "NumberPointsPeak", a.NumberPointsPeak);
    if (a.NumberPointsPeak < 1) a.NumberPointsPeak = 1;
    ReadMethod(ini, s.method);
    return s;
}

Settings LoadIniSettings(const std::filesystem::path& path) {
    return SettingsFromIni(IniFile::Load(path));
}

void SettingsToIni(const Settings& s, IniFile& ini) {
    ini.Set(kProgram, "DataDir", s.DataDir);
    ini.Set(kProgram, "SoundOn", Bool(s.SoundOn));
    ini.Set(kProgram, "DisplayTooltips", Bool(s.DisplayTooltips));
    ini.Set(kDisplay, "LockBase", Bool(s.LockBase));
    ini.Set(kDisplay, "FractionWindow", s.FractionWindow);
    ini.Set(kDisplay, "DisplayTrace", Bool(s.DisplayTrace));
    ini.Set(kDisplay, "DisplayGain", s.DisplayGain);
    ini.Set(kDisplay, "DisplayOffset&", Num(s.DisplayOffset));
    ini.Set(kDisplay, "DisplayTotalNumberBlockPerScreen", Num(s.DisplayTotalNumberBlockPerScreen));
    ini.Set(kDisplay, "GroupNavigate", Num(s.GroupNavigate));
    ini.Set(kDisplay, "JumpInterval", Num(s.JumpInterval));
    ini.Set(kDisplay, "FilterType", Num(s.FilterType));
    ini.Set(kDisplay, "FilterFreq", s.FilterFreq);
    const AnalysisParameters& a = s.analysis;
    ini.Set(kAnalysis, "PeakDirection%", Num(a.PeakDirection));
    ini.Set(kAnalysis, "ThresholdAmplitude!", Num(a.ThresholdAmplitude));
    ini.Set(kAnalysis, "PeriodToSearchMax&", Num(a.PeriodToSearchMax));
    ini.Set(kAnalysis, "PeriodStartBaseline&", Num(a.PeriodStartBaseline));
    ini.Set(kAnalysis, "PeriodFindDecayTime&", Num(a.PeriodFindDecayTime));
    ini.Set(kAnalysis, "DecayPercent!", Num(a.DecayPercent));
    ini.Set(kAnalysis, "PeriodBaselineAverage&", Num(a.PeriodBaselineAverage));
    ini.Set(kAnalysis, "AreaThreshold!", Num(a.AreaThreshold));
    ini.Set(kAnalysis, "ComplexPeak", Bool(a.ComplexPeak));
    ini.Set(kAnalysis, "NumberPointsPeak", Num(a.NumberPointsPeak));
    const MethodParameters& m = s.method;
    ini.Set(kAnalysis, "DetectionMethod", std::string(MethodName(m.method)));
    ini.Set(kAnalysis, "KernelRiseMs", Num(m.riseTauMs));
    ini.Set(kAnalysis, "KernelDecayMs", Num(m.decayTauMs));
    ini.Set(kAnalysis, "DeconvolutionThreshold", Num(m.deconvolutionThreshold));
    ini.Set(kAnalysis, "TemplateThreshold", Num(m.templateThreshold));
    ini.Set(kAnalysis, "LowPassMs", Num(m.lowPassMs));
    ini.Set(kAnalysis, "MinimumSeparationMs", Num(m.minSeparationMs));
}

std::string SaveIniSettings(const std::filesystem::path& path, const Settings& settings) {
    IniFile ini = IniFile::Load(path);
    SettingsToIni(settings, ini);
    return ini.Save(path);
}

std::filesystem::path DefaultIniPath(const std::filesystem::path& programDir) {
    const std::string name(texts::kIniFileName);
    if (!programDir.empty() && ::access(programDir.c_str(), W_OK) == 0) return programDir / name;
    std::filesystem::path config;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) config = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home) config = std::filesystem::path(home) / ".config";
    else config = std::filesystem::temp_directory_path();
    return config / "Vessantorium" / name;
}

bool SaveSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    std::error_code ec;
    if (ws.iniPath.has_parent_path()) std::filesystem::create_directories(ws.iniPath.parent_path(), ec);
    if (!ReportWrite(dialogs, SaveIniSettings(ws.iniPath, ws.settings))) return false;
    dialogs.Message(std::string(texts::kSettingsSavedCaption), std::string(texts::kSettingsSavedText));
    return true;
}

bool AskSaveSettingsOnExit(Workspace& ws, Dialogs& dialogs) {
    switch (dialogs.AskYesNoCancel(std::string(texts::kSaveSettingsCaption),
                                   std::string(texts::kSaveSettingsOnExitText))) {
        case Answer::Yes: SaveSettingsCommand(ws, dialogs); return true;
        case Answer::No: return true;
        case Answer::Cancel: return false;
    }
    return false;
}

bool SaveCustomSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(dialogs,
                                     {std::string(texts::kSaveCustomSettingsCaption), std::string(texts::kCustomSettingsFilter),
                                      std::string(texts::kCustomSettingsExtension), {}},
                                     ExistingFile::AskReplace);
    if (!path) return false;
    std::error_code ec;
    if (ws.iniPath.has_parent_path()) std::filesystem::create_directories(ws.iniPath.parent_path(), ec);
    if (!ReportWrite(dialogs, SaveIniSettings(ws.iniPath, ws.settings))) return false;
    const auto bytes = ReadFileBytes(ws.iniPath);
    if (!bytes) return ReportWrite(dialogs, "Cannot read " + ws.iniPath.string() + ".");
    return ReportWrite(dialogs, WriteFileAtomic(*path, *bytes));
}

bool LoadCustomSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseOpenPath(dialogs, {std::string(texts::kLoadCustomSettingsCaption),
                                               std::string(texts::kCustomSettingsOpenFilter),
                                               std::string(texts::kCustomSettingsExtension), {}});
    if (!path) return false;
    ws.settings = LoadIniSettings(*path);
    return true;
}

}  // namespace vess
