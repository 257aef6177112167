#include "hrv/spectrum_report.h"

#include <fmt/format.h>

#include "hrv/analysis.h"
#include "hrv/texts.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"

namespace vess::hrv {

std::vector<std::string> SpectrumTitles() {
    return {texts::kSpectrumColumns.begin(), texts::kSpectrumColumns.end()};
}

std::vector<std::vector<std::string>> SpectrumRows(const SpectrumResult& s, const Bands& bands) {
    const auto share = [&](double p) { return s.totalMs2 > 0 ? fmt::format("{:.1f}", 100 * p / s.totalMs2) : "0"; };
    const auto row = [&](std::string_view name, double lo, double hi, const BandPower& b, std::string nu) {
        return std::vector<std::string>{std::string(name),          fmt::format("{:.4g}", lo),
                                        fmt::format("{:.4g}", hi),  fmt::format("{:.3f}", b.powerMs2),
                                        share(b.powerMs2),          std::move(nu),
                                        fmt::format("{:.4f}", b.peakHz)};
    };
    return {row(texts::kVLF, bands.vlfLowHz, bands.vlfHighHz, s.vlf, ""),
            row(texts::kLF, bands.vlfHighHz, bands.lfHighHz, s.lf, fmt::format("{:.2f}", s.lfNu)),
            row(texts::kHF, bands.lfHighHz, bands.hfHighHz, s.hf, fmt::format("{:.2f}", s.hfNu)),
            {std::string(texts::kTotalPower), fmt::format("{:.4g}", bands.vlfLowHz),
             fmt::format("{:.4g}", bands.hfHighHz), fmt::format("{:.3f}", s.totalMs2), "100", "", ""}};
}

std::string SpectrumText(const SpectrumResult& s, const SpectrumOptions& o) {
    std::string out = GridText(SpectrumTitles(), SpectrumRows(s, o.bands));
    out += fmt::format("{}\t{:.4f}\r\n", texts::kLFHF, s.lfHfRatio);
    if (o.method == SpectrumMethod::Welch)
        out += fmt::format("{}\t{} Hz\t{} points\t{}% overlap\t{} windows\r\n", texts::kWelchMethod,
                           o.resampleHz, o.windowPoints, o.overlapPercent, s.windows);
    else
        out += fmt::format("{}\r\n", texts::kLombMethod);
    return out;
}

CommandResult SaveSpectrumCommand(Dialogs& dialogs, const SpectrumResult& s, const SpectrumOptions& options) {
    const auto path = ChooseSavePath(dialogs,
                                     {std::string(texts::kSpectrumCaption), std::string(vess::texts::kTextFileFilter),
                                      std::string(vess::texts::kTextFileExtension), {}},
                                     ExistingFile::AskReplace);
    if (!path) return path.status();
    return WriteResult(WriteFileAtomic(*path, SpectrumText(s, options)));
}

}  // namespace vess::hrv
