#include "recording/detection_inputs.h"

#include <optional>
#include <vector>

#include "recording/file_io.h"
#include "recording/parameter_file.h"
#include "recording/rate_defaults.h"
#include "recording/settings_file.h"
#include "recording/texts.h"

namespace vess {

CommandResult LoadSettingsFileInto(const std::filesystem::path& path, Settings& settings) {
    const SettingsFileRead read = ReadSettingsFile(path);
    if (!read.settings) return CommandResult::Failed(path.string() + ": " + read.refusal);
    if (!read.problems.empty()) return CommandResult::Failed(SettingsProblemsText(path, read.problems));
    settings = *read.settings;
    return CommandResult::Ok();
}

CommandResult LoadParameterFileInto(const std::filesystem::path& path, AnalysisParameters& params) {
    std::string why;
    const std::optional<std::vector<uint8_t>> bytes = ReadFileBytes(path, &why);
    if (!bytes) return CommandResult::Failed(path.string() + ": cannot open the parameter file (" + why + ")");
    const ParameterFileContents contents = ParseParameterFile(*bytes, params);
    if (contents.problem == EventFileProblem::BadParameters)
        return CommandResult::Failed(path.string() + ": " + contents.detail);
    if (contents.problem != EventFileProblem::None)
        return CommandResult::Failed(path.string() + ": too short or unreadable for a parameter file");
    if (!contents.hasProductTag)
        return CommandResult::Failed(path.string() + ": not a parameter or an event file of this program");
    params = contents.params;
    return CommandResult::Ok();
}

CommandResult OpenRecordingOnChannel(const std::filesystem::path& path, int channel, Workspace& ws) {
    AbfError error = AbfError::None;
    std::string detail;
    ws.recording = Recording::Open(path, &error, &detail);
    if (!ws.recording) {
        if (error == AbfError::FloatingPoint) return CommandResult::Failed(path.string() + ": " + texts::NotIntegerText(detail));
        return CommandResult::Failed(path.string() + ": " + (detail.empty() ? "cannot open the recording" : detail));
    }
    if (channel < 0 || channel >= ws.recording->ChannelCount()) {
        const std::string problem = path.string() + " has " +
                                    std::to_string(ws.recording->ChannelCount()) +
                                    " channel(s); channel " + std::to_string(channel) +
                                    " does not exist";
        ws.recording.reset();
        return CommandResult::Failed(problem);
    }
    ws.recording->SetChannel(static_cast<uint8_t>(channel));
    ws.screenStartBlock = 0;
    ws.analysedBlocks.Clear();
    ApplyRateDefaults(ws);
    return CommandResult::Ok();
}

}  // namespace vess
