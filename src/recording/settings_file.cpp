#include "recording/settings_file.h"

#include <unistd.h>

#include <charconv>
#include <concepts>
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

std::string BoolText(bool b) { return b ? "True" : "False"; }

// Values are read back cut at kIniValueChars, so each number is written to
// fit: the shortest exact form when it fits, otherwise the most digits that do.
std::string NumberText(float v) {
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
// Display and filter numbers: the shortest exact form, or ten significant
// digits cut to the buffer, as these values have always been written.
std::string NumberText(double v) {
    std::string exact = fmt::format("{}", v);
    if (exact.size() <= kIniValueChars) return exact;
    return fmt::format("{:.10g}", v).substr(0, kIniValueChars);
}
template <std::integral T>
std::string NumberText(T v) { return fmt::format("{}", v); }

// One pass over every key: reads the keys into the settings (in given) or
// writes the settings into the keys (out given). The key names appear only
// in KeyTable below, so reading and writing cannot disagree on one.
struct KeyVisitor {
    const IniFile* in = nullptr;
    IniFile* out = nullptr;
    Problems* problems = nullptr;

    void Text(std::string_view section, std::string_view key, std::string& value,
              std::size_t maxChars = kIniValueChars) {
        if (out) return out->Set(section, key, value);
        if (auto text = in->Get(section, key, maxChars)) value = *text;
    }

    void Flag(std::string_view section, std::string_view key, bool& value) {
        if (out) return out->Set(section, key, BoolText(value));
        auto text = in->Get(section, key, kIniValueChars);
        if (!text) return;
        for (auto& c : *text) c = char(std::tolower(static_cast<unsigned char>(c)));
        if (*text == "true") value = true;
        else if (*text == "false") value = false;
        else if (const auto n = ParseNumber<int64_t>(*text)) value = *n != 0;
    }

    // A number within [lo, hi]; anything else keeps the default and is noted.
    template <class T>
    void Number(std::string_view section, std::string_view key, T& value,
                T lo = std::numeric_limits<T>::lowest(), T hi = std::numeric_limits<T>::max()) {
        if (out) return out->Set(section, key, NumberText(value));
        const auto text = in->Get(section, key, kIniValueChars);
        if (!text) return;
        const std::optional<T> parsed = ParseNumber<T>(*text);
        if (!parsed) return Note(problems, key, *text, "not a number");
        if (*parsed < lo || *parsed > hi)
            return Note(problems, key, *text, fmt::format("outside {} to {}", lo, hi));
        value = *parsed;
    }

    // A detection parameter; a value that the detection ranges refuse keeps
    // the default and is noted.
    template <class T>
    void Parameter(std::string_view key, AnalysisParameters& params, T AnalysisParameters::*field) {
        if (out) return out->Set(kAnalysis, key, NumberText(params.*field));
        const auto text = in->Get(kAnalysis, key, kIniValueChars);
        if (!text) return;
        const std::optional<T> parsed = ParseNumber<T>(*text);
        if (!parsed) return Note(problems, key, *text, "not a number");
        AnalysisParameters candidate = params;
        candidate.*field = *parsed;
        if (const std::string why = ParameterProblem(candidate); !why.empty())
            return Note(problems, key, *text, why);
        params = candidate;
    }

    // Method names are longer than the other values' buffer: read whole.
    void Method(std::string_view key, DetectionMethod& method) {
        if (out) return out->Set(kAnalysis, key, std::string(MethodName(method)));
        std::string name;
        Text(kAnalysis, key, name, kMethodNameChars);
        if (const auto parsed = ParseMethodName(name)) method = *parsed;
    }
};

void KeyTable(KeyVisitor& k, Settings& s) {
    // The data folder is read whole: a cut path would name a folder that does
    // not exist.
    k.Text(kProgram, "DataDir", s.dataFolder, std::string::npos);
    k.Flag(kProgram, "SoundOn", s.soundOn);
    k.Flag(kProgram, "DisplayTooltips", s.showToolTips);
    k.Flag(kDisplay, "LockBase", s.lockBaseline);
    k.Number(kDisplay, "FractionWindow", s.windowFraction);
    k.Flag(kDisplay, "DisplayTrace", s.drawTrace);
    k.Number(kDisplay, "DisplayGain", s.displayGain);
    k.Number(kDisplay, "DisplayOffset&", s.displayOffsetCounts, kMinDisplayOffset);
    k.Number(kDisplay, "DisplayTotalNumberBlockPerScreen", s.blocksPerScreen, 1, kMaxBlocksPerScreen);
    k.Number(kDisplay, "GroupNavigate", s.navigationGroup, 0, kLastGroup);
    k.Number(kDisplay, "JumpInterval", s.jumpIntervalMs, 0);
    k.Number(kDisplay, "FilterType", s.filterKind, kMinFilterType, kMaxFilterType);
    k.Number(kDisplay, "FilterFreq", s.filterCutoffHz);
    k.Number(kDisplay, "FilterPass", s.filterPass, 0, 1);
    k.Number(kDisplay, "FilterOrder", s.filterOrder, 1, kMaxFilterOrder);
    k.Number(kDisplay, "FilterRipple", s.filterRippleDb);
    k.Number(kDisplay, "FilterAttenuation", s.filterAttenuationDb);
    k.Flag(kDisplay, "FilterZeroPhase", s.filterZeroPhase);
    k.Flag(kDisplay, "DetectOnFiltered", s.detectOnFiltered);
    k.Number(kDisplay, "LineFrequency", s.lineFrequencyHz, 1, 1000);
    using A = AnalysisParameters;
    AnalysisParameters& a = s.analysis;
    k.Parameter("PeakDirection%", a, &A::PeakDirection);
    k.Parameter("ThresholdAmplitude!", a, &A::ThresholdAmplitude);
    k.Parameter("PeriodToSearchMax&", a, &A::PeriodToSearchMax);
    k.Parameter("PeriodStartBaseline&", a, &A::PeriodStartBaseline);
    k.Parameter("PeriodFindDecayTime&", a, &A::PeriodFindDecayTime);
    k.Parameter("DecayPercent!", a, &A::DecayPercent);
    k.Parameter("PeriodBaselineAverage&", a, &A::PeriodBaselineAverage);
    k.Parameter("AreaThreshold!", a, &A::AreaThreshold);
    k.Flag(kAnalysis, "ComplexPeak", a.ComplexPeak);
    k.Parameter("NumberPointsPeak", a, &A::NumberPointsPeak);
    // Time constants and thresholds of the detection methods, each read only
    // within its range.
    MethodParameters& m = s.method;
    k.Method("DetectionMethod", m.method);
    k.Number(kAnalysis, "KernelRiseMs", m.riseTauMs, 0.01, 1000.0);
    k.Number(kAnalysis, "KernelDecayMs", m.decayTauMs, 0.02, 10000.0);
    k.Number(kAnalysis, "DeconvolutionThreshold", m.deconvolutionThreshold, 0.5, 100.0);
    k.Number(kAnalysis, "TemplateThreshold", m.templateThreshold, 0.5, 100.0);
    k.Number(kAnalysis, "LowPassMs", m.lowPassMs, 0.01, 100.0);
    k.Number(kAnalysis, "MinimumSeparationMs", m.minSeparationMs, 0.0, 1000.0);
    k.Flag(kAnalysis, "SuggestFromRecording", m.suggestFromRecording);
}

}  // namespace

Settings SettingsFromIni(const IniFile& ini, std::vector<std::string>* problems) {
    Settings s;
    KeyVisitor reader{.in = &ini, .problems = problems};
    KeyTable(reader, s);
    if (s.analysis.NumberPointsPeak < 1) s.analysis.NumberPointsPeak = 1;
    MethodParameters& m = s.method;
    if (m.decayTauMs <= m.riseTauMs) m.decayTauMs = MethodParameters{}.decayTauMs;
    if (m.decayTauMs <= m.riseTauMs) m.riseTauMs = MethodParameters{}.riseTauMs;
    return s;
}

Settings NewInstallationSettings() {
    Settings s;
    s.method.method = DetectionMethod::Deconvolution;
    s.method.suggestFromRecording = true;
    s.filterKind = 5;  // a 4-pole Bessel low-pass at 1 kHz, as amplifiers filter such recordings
    s.filterOrder = 4;
    s.filterCutoffHz = 1000;
    s.filterPass = 0;
    return s;
}

namespace {

// A file that holds only the list of recent recordings was made by opening
// files, not by saving settings: still a new installation.
bool HoldsSettings(const IniFile& ini) {
    return ini.HasSection(kProgram) || ini.HasSection(kDisplay) || ini.HasSection(kAnalysis);
}

}  // namespace

bool IsNewInstallation(const std::filesystem::path& path) {
    std::error_code ec;
    return !std::filesystem::exists(path, ec) || !HoldsSettings(IniFile::Load(path));
}

Settings LoadIniSettings(const std::filesystem::path& path, std::vector<std::string>* problems) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return NewInstallationSettings();
    const IniFile ini = IniFile::Load(path);
    if (!HoldsSettings(ini)) return NewInstallationSettings();
    return SettingsFromIni(ini, problems);
}

std::string SettingsProblemsText(const std::filesystem::path& path,
                                 const std::vector<std::string>& problems) {
    std::string text = "These values in " + path.string() +
                       " cannot be used; their defaults are kept:";
    for (const std::string& p : problems) text += "\n" + p;
    return text;
}

void SettingsToIni(const Settings& settings, IniFile& ini) {
    Settings copy = settings;
    KeyVisitor writer{.out = &ini};
    KeyTable(writer, copy);
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

CommandResult SaveSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    std::error_code ec;
    if (ws.iniPath.has_parent_path()) std::filesystem::create_directories(ws.iniPath.parent_path(), ec);
    if (CommandResult written = WriteResult(SaveIniSettings(ws.iniPath, ws.settings)); !written) return written;
    dialogs.Message(std::string(texts::kSettingsSavedCaption), std::string(texts::kSettingsSavedText));
    return CommandResult::Ok();
}

CommandResult AskSaveSettingsOnExit(Workspace& ws, Dialogs& dialogs) {
    switch (dialogs.AskYesNoCancel(std::string(texts::kSaveSettingsCaption),
                                   std::string(texts::kSaveSettingsOnExitText))) {
        // A save that failed keeps the form open, so nothing is lost unseen.
        case Answer::Yes: return SaveSettingsCommand(ws, dialogs);
        case Answer::No: return CommandResult::Ok();
        case Answer::Cancel: return CommandResult::Cancelled();
    }
    return CommandResult::Cancelled();
}

CommandResult SaveCustomSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(dialogs,
                                     {std::string(texts::kSaveCustomSettingsCaption), std::string(texts::kCustomSettingsFilter),
                                      std::string(texts::kCustomSettingsExtension), {}},
                                     ExistingFile::AskReplace);
    if (!path) return path.status();
    std::error_code ec;
    if (ws.iniPath.has_parent_path()) std::filesystem::create_directories(ws.iniPath.parent_path(), ec);
    if (CommandResult written = WriteResult(SaveIniSettings(ws.iniPath, ws.settings)); !written) return written;
    const auto bytes = ReadFileBytes(ws.iniPath);
    if (!bytes) return WriteResult("Cannot read " + ws.iniPath.string() + ".");
    return WriteResult(WriteFileAtomic(*path, *bytes));
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

CommandResult LoadCustomSettingsCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseOpenPath(dialogs, {std::string(texts::kLoadCustomSettingsCaption),
                                               std::string(texts::kCustomSettingsOpenFilter),
                                               std::string(texts::kCustomSettingsExtension), {}});
    if (!path) return CommandResult::Cancelled();
    // A file that is missing, unreadable or holds none of the settings
    // sections would silently give every default: it is refused instead.
    const SettingsFileRead read = ReadSettingsFile(*path);
    const std::string caption(texts::kSettingsNotLoadedCaption);
    if (!read.settings) return CommandResult::Failed(caption, texts::SettingsNotLoadedText(path->string(), read.refusal));
    ws.settings = *read.settings;
    // Loaded: the values that were not taken are a note, not a failure.
    if (!read.problems.empty()) dialogs.Message(caption, SettingsProblemsText(*path, read.problems));
    return CommandResult::Ok();
}

}  // namespace vess
