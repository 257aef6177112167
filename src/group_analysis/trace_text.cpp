#include "group_analysis/trace_text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "group_analysis/texts.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "statistics/prompts.h"

namespace vess::group {

namespace {
std::string Str(std::string_view s) { return std::string(s); }
}  // namespace

std::string GroupAnalysisHeader(const std::string& fileName, int group, std::optional<int32_t> trace) {
    std::string h = Str(texts::kGroupAnalysisHeader) + fileName + Str(texts::kGroupHeader) + std::to_string(group);
    if (trace) h += Str(texts::kTraceHeader) + std::to_string(*trace);
    return h;
}

std::string CurveFitHeader(int group, int32_t trace) {
    return Str(texts::kCurveFitHeader) + Str(texts::kGroupHeader) + std::to_string(group) +
           Str(texts::kTraceHeader) + std::to_string(trace);
}

ResultCurve TraceCurve(const TraceSet& set, const UnitScale& scale, int32_t t, std::string header) {
    ResultCurve c{.header = std::move(header), .timeMs = {}, .values = {}};
    if (t < 0 || t > set.count) return c;
    const auto row = set.Row(t);
    for (int32_t j = 0; j < set.length; ++j) {
        c.timeMs.push_back(set.TimeMs(j));
        c.values.push_back(scale.Level(row[std::size_t(j)]));
    }
    return c;
}

ResultCurve FittedCurve(const TraceSet& set, int32_t from, const std::vector<double>& values,
                        std::string header) {
    ResultCurve c{.header = std::move(header), .timeMs = {}, .values = values};
    for (std::size_t k = 0; k < values.size(); ++k) c.timeMs.push_back(set.TimeMs(from + int32_t(k)));
    return c;
}

std::string CurveText(const ResultCurve& curve, const std::string& units, double divideBy) {
    const double by = divideBy == 0 || !std::isfinite(divideBy) ? 1.0 : divideBy;
    std::string text = curve.header + "\r\n" + Str(texts::kTimeColumn) + "\tAmplitude (" + units + ")\r\n";
    const std::size_t n = std::min(curve.timeMs.size(), curve.values.size());
    for (std::size_t k = 0; k < n; ++k)
        text += fmt::format("{:.4f}\t{:.4f}\r\n", curve.timeMs[k], curve.values[k] / by);
    return text;
}

std::optional<double> AskNormalization(Dialogs& dialogs) {
    return AskNumber(dialogs, Str(texts::kNormalizeCaption), Str(texts::kNormalizePrompt), "1");
}

Outcome<std::string> TraceDataText(const TraceSet& set, const UnitScale& scale, const std::string& fileName,
                                   int group, Dialogs& dialogs) {
    if (set.Empty()) return CommandResult::Cancelled();
    const auto which = AskNumber(dialogs, Str(texts::kCopyTraceCaption), texts::CopyTracePrompt(set.count), "0");
    if (!which) return CommandResult::Cancelled();
    const auto t = int32_t(std::clamp(std::trunc(*which), 0.0, double(set.count)));
    const auto factor = AskNormalization(dialogs);
    if (!factor) return CommandResult::Cancelled();
    return CurveText(TraceCurve(set, scale, t, GroupAnalysisHeader(fileName, group, t)), scale.units, *factor);
}

Outcome<std::string> CurveDataText(const std::optional<ResultCurve>& curve, const std::string& units,
                                   Dialogs& dialogs) {
    if (!curve || curve->values.empty())
        return CommandResult::Failed(Str(texts::kCurveDataCaption), Str(texts::kNoResultCurve));
    const auto factor = AskNormalization(dialogs);
    if (!factor) return CommandResult::Cancelled();
    return CurveText(*curve, units, *factor);
}

CommandResult SaveTextFileCommand(const std::string& text, Dialogs& dialogs) {
    const auto path = ChooseSavePath(
        dialogs, {"", Str(vess::texts::kTextFileFilter), Str(vess::texts::kTextFileExtension), ""}, ExistingFile::AskReplace);
    if (!path) return path.status();
    return CommandResult::FromError(Str(texts::kWindowCaption), WriteFileAtomic(*path, text));
}

}  // namespace vess::group
