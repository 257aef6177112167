#include "recording/detection_inputs.h"

#include <optional>
#include <vector>

#include "recording/file_io.h"
#include "recording/parameter_file.h"
#include "recording/rate_defaults.h"
#include "recording/settings_file.h"
#include "recording/texts.h"

namespace vess {

std::string LoadSettingsFileInto(const std::filesystem::path& path, Settings& settings) {
    const SettingsFileRead read = ReadSettingsFile(path);
    if (!read.settings) return path.string() + ": " + read.refusal;
    if (!read.problems.empty()) return SettingsProblemsText(path, read.problems);
    settings = *read.settings;
    return {};
}

std::string LoadParameterFileInto(const std::filesystem::path& path, AnalysisParameters& params) {
    std::string why;
    const std::optional<std::vector<uint8_t>> bytes = ReadFileBytes(path, &why);
    if (!bytes) return path.string() + ": cannot open the parameter file (" + why + ")";
    const ParameterFileContents contents = ParseParameterFile(*bytes, params);
    if (contents.problem == EventFileProblem::BadParameters)
        return path.string() + ": " + contents.detail;
    if (contents.problem != EventFileProblem::None)
        return path.string() + ": too short or unreadable for a parameter file";
    if (!contents.hasProductTag)
        return path.string() + ": not a parameter or an event file of this program";
    params = contents.params;
    return {};
}

std::string OpenRecordingOnChannel(const std::filesystem::path& path, int channel, Workspace& ws) {
    AbfError error = AbfError::None;
    std::string detail;
    ws.recording = Recording::Open(path, &error, &detail);
    if (!ws.recording) {
        if (error == AbfError::FloatingPoint) return path.string() + ": " + texts::NotIntegerText(detail);
        return path.string() + ": " + (detail.empty() ? "cannot open the recording" : detail);
    }
    if (channel < 0 || channel >= ws.recording->ChannelCount()) {
        const std::string problem = path.string() + " has " +
                                    std::to_string(ws.recording->ChannelCount()) +
                                    " channel(s); channel " + std::to_string(channel) +
                                    " does not exist";
        ws.recording.reset();
        return problem;
    }
    ws.recording->SetChannel(static_cast<uint8_t>(channel));
    ws.screenStartBlock = 0;
    ws.analysedBlocks.Clear();
    ApplyRateDefaults(ws);
    return {};
}

}  // namespace vess
