#include "recording/parameter_file.h"

#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/rounding.h"
#include "recording/save_path.h"
#include "recording/value_ranges.h"
#include "recording/workspace.h"

namespace vess {

namespace {
std::string S(std::string_view v) { return std::string(v); }
}  // namespace

std::vector<uint8_t> BuildParameterFile(std::span<const uint8_t> headerBytes,
                                        const AnalysisParameters& params, int32_t eventCount,
                                        std::string_view dataFileName) {
    std::vector<uint8_t> out(evt::kHeaderBytes, 0);
    std::copy_n(headerBytes.begin(), std::min(headerBytes.size(), out.size()), out.begin());
    WriteParameterFields(out, texts::kParameterFileCreator.substr(0, evt::kCreatorChars), params,
                         false, eventCount, dataFileName);
    return out;
}

ParameterFileContents ParseParameterFile(std::span<const uint8_t> bytes, const AnalysisParameters& base) {
    ParameterFileContents c;
    c.params = base;
    if (bytes.size() < evt::kHeaderBytes) {
        c.problem = EventFileProblem::TooShort;
        return c;
    }
    c.creator = le::GetText(bytes, evt::kCreator, evt::kCreatorChars);
    c.hasProductTag = c.creator.find(texts::kProductTag) != std::string::npos;
    const bool current = c.creator.find(texts::kCurrentVersionTag) != std::string::npos;
    c.params = ReadParameterFields(bytes, base, current);
    c.detail = ParameterProblem(c.params);
    if (!c.detail.empty()) {
        c.problem = EventFileProblem::BadParameters;
        c.params = base;
        return c;
    }
    if (c.params.NumberPointsPeak < 1) c.params.NumberPointsPeak = 1;
    return c;
}

CommandResult SaveParameterFileCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(dialogs,
                                     {S(texts::kSaveParameterCaption), S(texts::kParameterFileFilter),
                                      S(texts::kParameterFileExtension), {}},
                                     ExistingFile::AskReplace);
    if (!path) return path.status();
    const auto header = ws.recording ? ws.recording->HeaderBytes() : BlankHeaderCopy();
    const std::string name = ws.recording ? ws.recording->FileName() : std::string();
    return WriteResult(WriteFileAtomic(*path, BuildParameterFile(header, ws.params(), ws.events.Count(), name)));
}

CommandResult LoadParameterFileCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseOpenPath(dialogs, {S(texts::kLoadParameterCaption), S(texts::kParameterOpenFilter),
                                               S(texts::kParameterFileExtension), {}});
    if (!path) return CommandResult::Cancelled();
    const auto bytes = ReadFileBytes(*path);
    ParameterFileContents file;
    if (bytes) file = ParseParameterFile(*bytes, ws.params());
    else file.problem = EventFileProblem::CannotRead;
    if (file.problem == EventFileProblem::BadParameters && file.hasProductTag)
        return CommandResult::Failed(S(texts::kDamagedFileCaption),
                                     texts::WithReason(texts::kBadParametersText, path->filename().string(),
                                                       file.detail));
    if (file.problem != EventFileProblem::None || !file.hasProductTag)
        return CommandResult::Failed(S(texts::kNotParameterFileCaption), S(texts::kNotParameterFileText));
    ws.params() = file.params;
    return CommandResult::Ok();
}

SuggestResult SuggestParameters(Workspace& ws, Dialogs& dialogs, int entry,
                                const std::function<bool()>& reset) {
    struct Preset {
        float threshold;
        int32_t searchMaxUs, startBaselineUs, findDecayUs;
        float areaThreshold;
        int combo1;
    };
    static constexpr Preset kPresets[3] = {
        {5, 10000, 5000, 20000, 20, 0},
        {5, 20000, 10000, 40000, 50, 0},
        {20, 10000, 10000, 40000, 50, 1},
    };
    if (entry < 1 || entry > 3) return {};
    if (ws.events.Count() > 0 && reset && !reset()) return {};
    const Preset& p = kPresets[entry - 1];
    AnalysisParameters& a = ws.params();
    a.ThresholdAmplitude = p.threshold;
    a.PeriodToSearchMax = p.searchMaxUs;
    a.PeriodStartBaseline = p.startBaselineUs;
    a.PeriodFindDecayTime = p.findDecayUs;
    if (ws.recording) a.PeriodBaselineAverage = RoundClamp32(10.0 * ws.recording->IntervalUs());
    a.AreaThreshold = p.areaThreshold;
    a.DecayPercent = 0.37f;
    dialogs.Message(S(texts::kSuggestParametersCaption), S(texts::kSuggestParametersText));
    return {true, p.combo1};
}

}  // namespace vess
