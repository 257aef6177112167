#include "hrv/hrv_options.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "hrv/texts.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"

namespace vess::hrv {

namespace {

struct PresetValues {
    double upperMs, lowerMs, segmentSeconds;
};
// Human adults: 300 to 2000 ms (200 to 30 beats a minute), 5-minute segments.
constexpr PresetValues kHuman{2000, 300, 300};
// Mice: 50 to 250 ms (1200 to 240 beats a minute), 1-minute segments.
constexpr PresetValues kMouse{250, 50, 60};
// What a fresh settings file holds.
constexpr PresetValues kStored{100, 10, 0};

double ReadDouble(const IniFile& ini, std::string_view key, double fallback) {
    const auto text = ini.Get(texts::kSection, key);
    if (!text) return fallback;
    double v = 0;
    const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), v);
    return ec == std::errc() && end == text->data() + text->size() && std::isfinite(v) ? v : fallback;
}

bool ReadFlag(const IniFile& ini, std::string_view key) {
    const auto text = ini.Get(texts::kSection, key);
    if (!text) return false;
    if (*text == "True" || *text == "true") return true;
    return ReadDouble(ini, key, 0) != 0;
}

std::string Number(double v) { return fmt::format("{}", v); }

int32_t SegmentPoints(double seconds, double intervalUs) {
    return intervalUs > 0 ? int32_t(std::nearbyint(seconds * 1e6 / intervalUs)) : 30000;
}

}  // namespace

HrvOptions HrvOptionsFromIni(const IniFile& ini) {
    HrvOptions o;
    o.upperBoundMs = ReadDouble(ini, texts::kKeyUpperBound, o.upperBoundMs);
    o.lowerBoundMs = ReadDouble(ini, texts::kKeyLowerBound, o.lowerBoundMs);
    const double points = ReadDouble(ini, texts::kKeyPointsPerSegment, o.pointsPerSegment);
    if (points >= 1 && points <= 2147483647.0) o.pointsPerSegment = int32_t(points);
    o.thresholdMs = ReadDouble(ini, texts::kKeyThreshold, o.thresholdMs);
    o.includeZeroSegments = ReadFlag(ini, texts::kKeyIncludeZero);
    o.excludeLastSegment = ReadFlag(ini, texts::kKeyExcludeLast);
    o.rrBinMs = ReadDouble(ini, texts::kKeyRRBinSize, o.rrBinMs);
    o.deltaRRBinMs = ReadDouble(ini, texts::kKeyDeltaRRBinSize, o.deltaRRBinMs);
    return o;
}

HrvOptions LoadHrvOptions(const std::filesystem::path& iniPath) {
    return HrvOptionsFromIni(IniFile::Load(iniPath));
}

void TimeDomainOptionsToIni(const HrvOptions& o, IniFile& ini) {
    ini.Set(texts::kSection, texts::kKeyUpperBound, Number(o.upperBoundMs));
    ini.Set(texts::kSection, texts::kKeyLowerBound, Number(o.lowerBoundMs));
    ini.Set(texts::kSection, texts::kKeyPointsPerSegment, Number(o.pointsPerSegment));
    ini.Set(texts::kSection, texts::kKeyThreshold, Number(o.thresholdMs));
    ini.Set(texts::kSection, texts::kKeyIncludeZero, o.includeZeroSegments ? "1" : "0");
    ini.Set(texts::kSection, texts::kKeyExcludeLast, o.excludeLastSegment ? "1" : "0");
}

void GeometricOptionsToIni(const HrvOptions& o, IniFile& ini) {
    ini.Set(texts::kSection, texts::kKeyRRBinSize, Number(o.rrBinMs));
    ini.Set(texts::kSection, texts::kKeyDeltaRRBinSize, Number(o.deltaRRBinMs));
    ini.Set(texts::kSection, texts::kKeyUpperBound, Number(o.upperBoundMs));
    ini.Set(texts::kSection, texts::kKeyLowerBound, Number(o.lowerBoundMs));
}

CommandResult SaveHrvOptionsCommand(const std::filesystem::path& iniPath, const HrvOptions& options,
                                    HrvWindow window, Dialogs& dialogs) {
    IniFile ini = IniFile::Load(iniPath);
    if (window == HrvWindow::TimeDomain) TimeDomainOptionsToIni(options, ini);
    else GeometricOptionsToIni(options, ini);
    if (CommandResult saved = WriteResult(ini.Save(iniPath)); !saved) return saved;
    dialogs.Message(std::string(vess::texts::kSettingsSavedCaption),
                    std::string(vess::texts::kSettingsSavedText));
    return CommandResult::Ok();
}

HrvOptions ApplyPreset(HrvOptions options, Preset preset, double intervalUs) {
    const PresetValues* v = preset == Preset::Human   ? &kHuman
                            : preset == Preset::Mouse ? &kMouse
                            : preset == Preset::Stored ? &kStored
                                                       : nullptr;
    if (!v) return options;
    options.upperBoundMs = v->upperMs;
    options.lowerBoundMs = v->lowerMs;
    options.pointsPerSegment =
        preset == Preset::Stored ? HrvOptions{}.pointsPerSegment : SegmentPoints(v->segmentSeconds, intervalUs);
    return options;
}

Preset PresetInForce(const HrvOptions& options, double intervalUs) {
    for (Preset p : {Preset::Human, Preset::Mouse, Preset::Stored})
        if (ApplyPreset(options, p, intervalUs) == options) return p;
    return Preset::Custom;
}

std::string_view PresetName(Preset preset) {
    switch (preset) {
        case Preset::Stored: return "Defaults (small rodents)";
        case Preset::Human: return "Human";
        case Preset::Mouse: return "Mouse";
        case Preset::Custom: break;
    }
    return "Custom";
}

}  // namespace vess::hrv
