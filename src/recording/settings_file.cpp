#include "recording/settings_file.h"

#include <unistd.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/value_ranges.h"
#include "recording/workspace.h"

namespace vess {

namespace {

constexpr std::string_view kProgram = "Program", kDisplay = "Display", kAnalysis = "Analysis";

// Collects the values that were not taken, each with its key and why.
using Problems = std::vector<std::string>;

void Note(Problems* problems, std::string_view key, const std::string& text, std::string_view why) {
    if (problems) problems->push_back(fmt::format("{}={}: {}", key, text, why));
}

// A number of type T from the value's text, or std::nullopt.
template <class T>
std::optional<T> ParseNumber(const std::string& text) {
    if constexpr (std::is_floating_point_v<T>) {
        T parsed{};
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
        if (ec == std::errc() && end == text.data() + text.size() && std::isfinite(parsed))
            return parsed;
    } else {
        int64_t parsed = 0;
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
        if (ec == std::errc() && end == text.data() + text.size() &&
            parsed >= std::numeric_limits<T>::min() && parsed <= std::numeric_limits<T>::max())
            return T(parsed);
    }
    return std::nullopt;
}

// Reads a number within [lo, hi]; anything else keeps the default and is
// noted.
template <class T>
void ReadNumber(const IniFile& ini, std::string_view section, std::string_view key, T& value,
                Problems* problems, T lo = std::numeric_limits<T>::lowest(),
                T hi = std::numeric_limits<T>::max()) {
    const auto text = ini.Get(section, key, kIniValueChars);
    if (!text) return;
    const std::optional<T> parsed = ParseNumber<T>(*text);
    if (!parsed) return Note(problems, key, *text, "not a number");
    if (*parsed < lo || *parsed > hi)
        return Note(problems, key, *text, fmt::format("outside {} to {}", lo, hi));
    value = *parsed;
}

// Reads one detection parameter through field; a value that the detection
// ranges refuse keeps the default and is noted.
template <class T>
void ReadParameter(const IniFile& ini, std::string_view key, AnalysisParameters& params,
                   T AnalysisParameters::*field, Problems* problems) {
    const auto text = ini.Get(kAnalysis, key, kIniValueChars);
    if (!text) return;
    const std::optional<T> parsed = ParseNumber<T>(*text);
    if (!parsed) return Note(problems, key, *text, "not a number");
    AnalysisParameters candidate = params;
    candidate.*field = *parsed;
    if (const std::string why = ParameterProblem(candidate); !why.empty())
        return Note(problems, key, *text, why);
    params = candidate;
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

// A time constant or threshold of the detection methods, read only within
// [low, high]; anything else keeps the default and is noted.
void ReadBounded(const IniFile& ini, std::string_view key, double low, double high, double& value,
                 Problems* problems) {
    ReadNumber(ini, kAnalysis, key, value, problems, low, high);
}

void ReadMethod(const IniFile& ini, MethodParameters& m, Problems* problems) {
    // Method names are longer than the other values' buffer: read whole.
    std::string name;
    ReadText(ini, kAnalysis, "DetectionMethod", name, kMethodNameChars);
    if (const auto method = ParseMethodName(name)) m.method = *method;
    ReadBool(ini, kAnalysis, "SuggestFromRecording", m.suggestFromRecording);
    ReadBounded(ini, "KernelRiseMs", 0.01, 1000, m.riseTauMs, problems);
    ReadBounded(ini, "KernelDecayMs", 0.02, 10000, m.decayTauMs, problems);
    if (m.decayTauMs <= m.riseTauMs) m.decayTauMs = MethodParameters{}.decayTauMs;
    if (m.decayTauMs <= m.riseTauMs) m.riseTauMs = MethodParameters{}.riseTauMs;
    ReadBounded(ini, "DeconvolutionThreshold", 0.5, 100, m.deconvolutionThreshold, problems);
    ReadBounded(ini, "TemplateThreshold", 0.5, 100, m.templateThreshold, problems);
    ReadBounded(ini, "LowPassMs", 0.01, 100, m.lowPassMs, problems);
    ReadBounded(ini, "MinimumSeparationMs", 0, 1000, m.minSeparationMs, problems);
}

std::string Bool(bool b) { return b ? "True" : "False"; }
template <class T>
std::string Num(T v) { return fmt::format("{}", v); }

// Values are read back cut at kIniValueChars, so each is written to fit:
// the shortest exact form when it fits, otherwise the most digits that do.
std::string Num(float v) {
    std::string exact = fmt::format("{}", v);
    if (exact.size() <= kIniValueChars) return exact;
    for (int digits = 9; digits >= 1; --digits) {
        std::string t = fmt::format("{:.{}g}", v, digits);
        // "1.5e-05" -> "1.5e-5": the exponent needs no sign "+" or leading zeros.
        if (const auto e = t.find('e'); e != std::string::npos) {
            std::string mantissa = t.substr(0, e), exponent = t.substr(e + 1);
            const bool negative = exponent.front() == '-';
            exponent.erase(0, exponent.find_first_not_of("+-"));
            exponent.erase(0, std::min(exponent.find_first_not_of('0'), exponent.size() - 1));
            t = mantissa + "e" + (negative ? "-" : "") + exponent;
        }
        if (t.size() <= kIniValueChars) return t;
    }
    return "0";
}
std::string Text(const std::string& v) { return v.substr(0, kIniValueChars); }

}  // namespace

Settings SettingsFromIni(const IniFile& ini, std::vector<std::string>* problems) {
    Settings s;
    ReadText(ini, kProgram, "DataDir", s.dataFolder, std::string::npos);
    ReadBool(ini, kProgram, "SoundOn", s.soundOn);
    ReadBool(ini, kProgram, "DisplayTooltips", s.showToolTips);
    ReadBool(ini, kDisplay, "LockBase", s.lockBaseline);
    ReadText(ini, kDisplay, "FractionWindow", s.windowFraction);
    ReadBool(ini, kDisplay, "DisplayTrace", s.drawTrace);
    ReadText(ini, kDisplay, "DisplayGain", s.displayGain);
    ReadNumber(ini, kDisplay, "DisplayOffset&", s.displayOffsetCounts, problems, kMinDisplayOffset);
    ReadNumber(ini, kDisplay, "DisplayTotalNumberBlockPerScreen", s.blocksPerScreen,
               problems, 1, kMaxBlocksPerScreen);
    ReadNumber(ini, kDisplay, "GroupNavigate", s.navigationGroup, problems, 0, kLastGroup);
    ReadNumber(ini, kDisplay, "JumpInterval", s.jumpIntervalMs, problems, 0);
    ReadNumber(ini, kDisplay, "FilterType", s.filterKind, problems, kMinFilterType, kMaxFilterType);
    ReadText(ini, kDisplay, "FilterFreq", s.filterCutoffHz);
    ReadNumber(ini, kDisplay, "FilterPass", s.filterPass, problems, 0, 1);
    ReadNumber(ini, kDisplay, "FilterOrder", s.filterOrder, problems, 1, kMaxFilterOrder);
    ReadText(ini, kDisplay, "FilterRipple", s.filterRippleDb);
    ReadText(ini, kDisplay, "FilterAttenuation", s.filterAttenuationDb);
    ReadBool(ini, kDisplay, "FilterZeroPhase", s.filterZeroPhase);
    ReadBool(ini, kDisplay, "DetectOnFiltered", s.detectOnFiltered);
    ReadNumber(ini, kDisplay, "LineFrequency", s.lineFrequencyHz, problems, 1, 1000);
    using A = AnalysisParameters;
    AnalysisParameters& a = s.analysis;
    ReadParameter(ini, "PeakDirection%", a, &A::PeakDirection, problems);
    ReadParameter(ini, "ThresholdAmplitude!", a, &A::ThresholdAmplitude, problems);
    ReadParameter(ini, "PeriodToSearchMax&", a, &A::PeriodToSearchMax, problems);
    ReadParameter(ini, "PeriodStartBaseline&", a, &A::PeriodStartBaseline, problems);
    ReadParameter(ini, "PeriodFindDecayTime&", a, &A::PeriodFindDecayTime, problems);
    ReadParameter(ini, "DecayPercent!", a, &A::DecayPercent, problems);
    ReadParameter(ini, "PeriodBaselineAverage&", a, &A::PeriodBaselineAverage, problems);
    ReadParameter(ini, "AreaThreshold!", a, &A::AreaThreshold, problems);
    ReadBool(ini, kAnalysis, "ComplexPeak", a.ComplexPeak);
    ReadParameter(ini, "NumberPointsPeak", a, &A::NumberPointsPeak, problems);
    if (a.NumberPointsPeak < 1) a.NumberPointsPeak = 1;
    ReadMethod(ini, s.method, problems);
    return s;
}

Settings NewInstallationSettings() {
    Settings s;
    s.method.method = DetectionMethod::Deconvolution;
    s.method.suggestFromRecording = true;
    s.filterKind = 5;  // a 4-pole Bessel low-pass at 1 kHz, as amplifiers filter such recordings
    s.filterOrder = 4;
    s.filterCutoffHz = "1000";
    s.filterPass = 0;
    return s;
}

bool IsNewInstallation(const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return true;
    // A file that holds only the list of recent recordings was made by
    // opening files, not by saving settings: still a new installation.
    const IniFile ini = IniFile::Load(path);
    return !ini.HasSection(kProgram) && !ini.HasSection(kDisplay) && !ini.HasSection(kAnalysis);
}

Settings LoadIniSettings(const std::filesystem::path& path, std::vector<std::string>* problems) {
    if (IsNewInstallation(path)) return NewInstallationSettings();
    return SettingsFromIni(IniFile::Load(path), problems);
}

std::string SettingsProblemsText(const std::filesystem::path& path,
                                 const std::vector<std::string>& problems) {
    std::string text = "These values in " + path.string() +
                       " cannot be used; their defaults are kept:";
    for (const std::string& p : problems) text += "\n" + p;
    return text;
}

void SettingsToIni(const Settings& s, IniFile& ini) {
    ini.Set(kProgram, "DataDir", s.dataFolder);
    ini.Set(kProgram, "SoundOn", Bool(s.soundOn));
    ini.Set(kProgram, "DisplayTooltips", Bool(s.showToolTips));
    ini.Set(kDisplay, "LockBase", Bool(s.lockBaseline));
    ini.Set(kDisplay, "FractionWindow", Text(s.windowFraction));
    ini.Set(kDisplay, "DisplayTrace", Bool(s.drawTrace));
    ini.Set(kDisplay, "DisplayGain", Text(s.displayGain));
    ini.Set(kDisplay, "DisplayOffset&", Num(s.displayOffsetCounts));
    ini.Set(kDisplay, "DisplayTotalNumberBlockPerScreen", Num(s.blocksPerScreen));
    ini.Set(kDisplay, "GroupNavigate", Num(s.navigationGroup));
    ini.Set(kDisplay, "JumpInterval", Num(s.jumpIntervalMs));
    ini.Set(kDisplay, "FilterType", Num(s.filterKind));
    ini.Set(kDisplay, "FilterFreq", Text(s.filterCutoffHz));
    ini.Set(kDisplay, "FilterPass", Num(s.filterPass));
    ini.Set(kDisplay, "FilterOrder", Num(s.filterOrder));
    ini.Set(kDisplay, "FilterRipple", Text(s.filterRippleDb));
    ini.Set(kDisplay, "FilterAttenuation", Text(s.filterAttenuationDb));
    ini.Set(kDisplay, "FilterZeroPhase", Bool(s.filterZeroPhase));
    ini.Set(kDisplay, "DetectOnFiltered", Bool(s.detectOnFiltered));
    ini.Set(kDisplay, "LineFrequency", Num(s.lineFrequencyHz));
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
    ini.Set(kAnalysis, "SuggestFromRecording", Bool(m.suggestFromRecording));
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
        // A save that failed keeps the form open, so nothing is lost unseen.
        case Answer::Yes: return SaveSettingsCommand(ws, dialogs);
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

SettingsFileRead ReadSettingsFile(const std::filesystem::path& path) {
    SettingsFileRead read;
    const auto bytes = ReadFileBytes(path, &read.refusal);
    if (!bytes) return read;
    const IniFile ini = IniFile::Parse(
        std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
    if (!ini.HasSection(kProgram) && !ini.HasSection(kDisplay) && !ini.HasSection(kAnalysis)) {
        read.refusal = std::string(texts::kNoSettingsSections);
        return read;
    }
    read.settings = SettingsFromIni(ini, &read.problems);
    return read;
}

bool LoadCustomSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseOpenPath(dialogs, {std::string(texts::kLoadCustomSettingsCaption),
                                               std::string(texts::kCustomSettingsOpenFilter),
                                               std::string(texts::kCustomSettingsExtension), {}});
    if (!path) return false;
    // A file that is missing, unreadable or holds none of the settings
    // sections would silently give every default: it is refused instead.
    const SettingsFileRead read = ReadSettingsFile(*path);
    const std::string caption(texts::kSettingsNotLoadedCaption);
    if (!read.settings) {
        dialogs.Message(caption, texts::SettingsNotLoadedText(path->string(), read.refusal));
        return false;
    }
    ws.settings = *read.settings;
    if (!read.problems.empty()) dialogs.Message(caption, SettingsProblemsText(*path, read.problems));
    return true;
}

}  // namespace vess
