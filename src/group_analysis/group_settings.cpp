#include "group_analysis/group_settings.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "group_analysis/texts.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"

namespace vess::group {

namespace {

constexpr std::string_view kGroup = "GroupAnalysis", kFitting = "Fitting", kWalk = "RandomWalk",
                           kNonStationary = "NonStationary";
constexpr std::size_t kValueChars = 255;

// One key of one section bound to a field; Read and Write walk the same list
// so that the two can never disagree on a name.
struct Binder {
    const IniFile* in = nullptr;
    IniFile* out = nullptr;

    void Key(std::string_view section, std::string_view key, std::string& v) {
        if (out) return out->Set(section, key, v);
        if (auto t = in->Get(section, key, kValueChars)) v = *t;
    }
    void Key(std::string_view section, std::string_view key, bool& v) {
        if (out) return out->Set(section, key, v ? "1" : "0");
        auto t = in->Get(section, key, kValueChars);
        if (!t) return;
        for (auto& c : *t) c = char(std::tolower(static_cast<unsigned char>(c)));
        if (*t == "true") v = true;
        else if (*t == "false") v = false;
        else if (int n = 0; Parse(*t, n)) v = n != 0;
    }
    void Key(std::string_view section, std::string_view key, int& v) {
        if (out) return out->Set(section, key, fmt::format("{}", v));
        if (auto t = in->Get(section, key, kValueChars)) Parse(*t, v);
    }
    void Key(std::string_view section, std::string_view key, double& v,
             std::string (*text)(double) = ShortestText) {
        if (out) return out->Set(section, key, text(v));
        if (auto t = in->Get(section, key, kValueChars)) Parse(*t, v);
    }
    template <class T>
    static bool Parse(const std::string& text, T& v) {
        T parsed{};
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
        if (ec != std::errc() || end != text.data() + text.size()) return false;
        if constexpr (std::is_floating_point_v<T>)
            if (!std::isfinite(parsed)) return false;
        v = parsed;
        return true;
    }
};

// "DisplayGroup" is written "True"/"False" like the main settings.
void DisplayGroupKey(Binder& b, bool& v) {
    if (b.out) return b.out->Set(kGroup, "DisplayGroup", v ? "True" : "False");
    b.Key(kGroup, "DisplayGroup", v);
}

void Bind(Binder& b, GroupAnalysisSettings& s) {
    DisplayGroupKey(b, s.useGroups);
    b.Key(kGroup, "DisplayGain", s.displayGain);
    b.Key(kGroup, "DisplayOffset", s.displayOffset);
    b.Key(kGroup, "GroupNumber", s.groupNumber);
    b.Key(kGroup, "AnalysisType", s.analysisType);
    b.Key(kGroup, "PeakAlignment", s.alignment);
    b.Key(kGroup, "BlocktoAnalyze", s.blocksToAnalyse);
    b.Key(kGroup, "DisplayEveryPoint", s.displayEveryPoint);
    b.Key(kGroup, "BaselineAdjust", s.adjustBaseline);
    b.Key(kFitting, "FitRange", s.fitRange);
    b.Key(kFitting, "MaxIteration", s.maxIterations);
    b.Key(kFitting, "Tolerance", s.tolerance);
    b.Key(kFitting, "NumberExponential", s.exponentials);
    b.Key(kFitting, "IncludeOffset", s.includeOffset);
    b.Key(kFitting, "FixAmplitude", s.fixAmplitude);
    b.Key(kFitting, "UseGuess", s.useGuess);
    b.Key(kFitting, "tau1", s.tau1);
    b.Key(kFitting, "tau2", s.tau2);
    b.Key(kFitting, "tau3", s.tau3);
    b.Key(kFitting, "A1", s.A1);
    b.Key(kFitting, "A2", s.A2);
    b.Key(kFitting, "A3", s.A3);
    b.Key(kFitting, "Rise", s.riseRange);
    b.Key(kFitting, "WidthAboveThreshold", s.widthAboveThreshold);
    b.Key(kFitting, "Ym", s.ym);
    b.Key(kFitting, "Yt", s.yt);
    b.Key(kFitting, "UseThresholdBaseline", s.useThresholdBaseline);
    b.Key(kFitting, "AmperoRise", s.amperometryRise);
    b.Key(kFitting, "Electrons", s.electrons);
    b.Key(kFitting, "DecayPercent", s.decayRange);
    b.Key(kFitting, "FitMethod", s.fitMethod);
    b.Key(kFitting, "RestartSearch", s.restartSearch);
    b.Key(kWalk, "Type", s.walkType);
    b.Key(kWalk, "Edge", s.walkEdge);
    b.Key(kWalk, "Vmax", s.vmax, WalkText);
    b.Key(kWalk, "Km", s.km, WalkText);
    b.Key(kWalk, "Release", s.release, WalkText);
    b.Key(kWalk, "DeadRadius", s.deadRadius, WalkText);
    b.Key(kWalk, "TotalRadius", s.totalRadius, WalkText);
    b.Key(kWalk, "BinSize", s.walkBinSize, WalkText);
    b.Key(kWalk, "DiffusionCoeff", s.diffusionCoefficient, CoefficientText);
    b.Key(kWalk, "MaxIter", s.walkMaxIterations);
    b.Key(kWalk, "Tolerance", s.walkTolerance);
    b.Key(kNonStationary, "AmplitudeBin", s.amplitudeBins);
    b.Key(kNonStationary, "AverageTrace", s.averageTraces);
    b.Key(kNonStationary, "SubtractBaseVar", s.subtractBaselineVariance);
    b.Key(kNonStationary, "IncludeOffset", s.nonStationaryOffset);
}

std::string Str(std::string_view s) { return std::string(s); }

}  // namespace

std::string ShortestText(double value) { return fmt::format("{}", value); }

std::string WalkText(double value) { return fmt::format("{:.3f}", value); }

std::string CoefficientText(double value) {
    std::string text = fmt::format("{}", value);
    const auto e = text.find('e');
    if (e == std::string::npos) return text;
    // "2.7e-06" -> "2.7e-6": no "+" and no leading zeros in the exponent.
    std::string exponent = text.substr(e + 1);
    const bool negative = exponent.front() == '-';
    exponent.erase(0, exponent.find_first_not_of("+-"));
    exponent.erase(0, std::min(exponent.find_first_not_of('0'), exponent.size() - 1));
    return text.substr(0, e + 1) + (negative ? "-" : "") + exponent;
}

GroupAnalysisSettings GroupSettingsFromIni(const IniFile& ini) {
    GroupAnalysisSettings s;
    Binder b{.in = &ini};
    Bind(b, s);
    if (s.exponentials < 1 || s.exponentials > 3) s.exponentials = 2;
    return s;
}

void GroupSettingsToIni(const GroupAnalysisSettings& settings, IniFile& ini) {
    GroupAnalysisSettings copy = settings;
    Binder b{.out = &ini};
    Bind(b, copy);
}

GroupAnalysisSettings LoadGroupSettings(const std::filesystem::path& path) {
    return GroupSettingsFromIni(IniFile::Load(path));
}

std::string SaveGroupSettings(const std::filesystem::path& path,
                              const GroupAnalysisSettings& settings) {
    IniFile ini = IniFile::Load(path);
    GroupSettingsToIni(settings, ini);
    return ini.Save(path);
}

CommandResult SaveGroupSettingsCommand(const std::filesystem::path& iniPath,
                                       const GroupAnalysisSettings& settings, Dialogs& dialogs) {
    const std::string caption = Str(vess::texts::kSettingsSavedCaption);
    if (CommandResult saved = CommandResult::FromError(caption, SaveGroupSettings(iniPath, settings)); !saved)
        return saved;
    dialogs.Message(caption, Str(vess::texts::kSettingsSavedText));
    return CommandResult::Ok();
}

CommandResult SaveGroupCustomSettingsCommand(const GroupAnalysisSettings& settings, Dialogs& dialogs) {
    const auto path = ChooseSavePath(
        dialogs, {"", Str(vess::texts::kCustomSettingsFilter), Str(vess::texts::kCustomSettingsExtension), ""},
        ExistingFile::AskReplace);
    if (!path) return path.status();
    return CommandResult::FromError(Str(vess::texts::kCustomSettingsFilter), SaveGroupSettings(*path, settings));
}

CommandResult LoadGroupCustomSettingsCommand(GroupAnalysisSettings& settings, Dialogs& dialogs) {
    const auto name = dialogs.OpenFile({"", Str(vess::texts::kCustomSettingsFilter),
                                        Str(vess::texts::kCustomSettingsExtension), ""});
    if (!name || name->empty()) return CommandResult::Cancelled();
    settings = LoadGroupSettings(WithDefaultExtension(*name, vess::texts::kCustomSettingsExtension));
    return CommandResult::Ok();
}

}  // namespace vess::group
