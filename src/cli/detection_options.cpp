#include "cli/detection_options.h"

#include <charconv>
#include <iostream>
#include <system_error>

#include "detection/detection_start.h"
#include "detection/kernel_command.h"
#include "detection/suggest_from_recording.h"
#include "recording/detection_inputs.h"
#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/parameter_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "recording/value_ranges.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"

namespace vess::cli {
namespace {

template <class T>
bool ParseNumber(const std::string& text, T& out) {
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, out);
    return ec == std::errc() && ptr == end;
}

}  // namespace

void AddDetectionOptions(CLI::App& cmd, DetectionOptions& o) {
    cmd.add_option("FILE", o.file, "ABF 1.x or ABF 2 recording with 16-bit samples")->required();
    cmd.add_option("--channel", o.channel, "channel position, 0-based")->check(CLI::NonNegativeNumber);
    auto* settings = cmd.add_option("--settings", o.settingsFile,
                                    "settings file (Vessanto.ini or a .SET copy) for the parameters");
    auto* par = cmd.add_option("--par", o.parameterFile, "parameter file (.PAR) or event file (.EVT)");
    settings->excludes(par);
    cmd.add_option("--set", o.sets,
                   "override a parameter, e.g. --set ThresholdAmplitude=10 (repeatable); names: "
                   "PeakDirection ThresholdAmplitude PeriodToSearchMax PeriodStartBaseline "
                   "PeriodFindDecayTime DecayPercent PeriodBaselineAverage AreaThreshold "
                   "ComplexPeak NumberPointsPeak");
    cmd.add_option("--suggest", o.suggest,
                   "start from the parameters of Suggest Analysis Parameters entry 1, 2 or 3")
        ->check(CLI::Range(1, 3));
    cmd.add_option("--method", o.method, "detection method: threshold, deconvolution or template")
        ->check(CLI::IsMember({"threshold", "deconvolution", "template"}));
    cmd.add_flag("--suggest-from-noise", o.suggestFromNoise,
                 "set the method's kernel and thresholds from this recording's noise and events");
    cmd.add_option("--learn-kernel-from", o.learnKernelFrom,
                   "event file (.EVT) of this recording: the kernel of the deconvolution and "
                   "template detectors is fitted to the average of its accepted events");
    cmd.add_option("--blocks-per-screen", o.blocksPerScreen, "256-point blocks per screen")
        ->check(CLI::Range(1, int(kMaxBlocksPerScreen)));
    cmd.add_flag("--filtered", o.filtered,
                 "detect and measure on the filtered trace: the settings' filter, changed by the "
                 "filter options below");
    AddFilterOptions(cmd, o.filter, false);
}

std::string ApplyParameter(AnalysisParameters& p, const std::string& assignment) {
    const auto eq = assignment.find('=');
    if (eq == std::string::npos) return "expected NAME=VALUE, got '" + assignment + "'";
    const std::string name = assignment.substr(0, eq);
    const std::string value = assignment.substr(eq + 1);
    bool ok = false;
    if (name == "PeakDirection") ok = ParseNumber(value, p.PeakDirection);
    else if (name == "ThresholdAmplitude") ok = ParseNumber(value, p.ThresholdAmplitude);
    else if (name == "PeriodToSearchMax") ok = ParseNumber(value, p.PeriodToSearchMax);
    else if (name == "PeriodStartBaseline") ok = ParseNumber(value, p.PeriodStartBaseline);
    else if (name == "PeriodFindDecayTime") ok = ParseNumber(value, p.PeriodFindDecayTime);
    else if (name == "DecayPercent") ok = ParseNumber(value, p.DecayPercent);
    else if (name == "PeriodBaselineAverage") ok = ParseNumber(value, p.PeriodBaselineAverage);
    else if (name == "AreaThreshold") ok = ParseNumber(value, p.AreaThreshold);
    else if (name == "NumberPointsPeak") ok = ParseNumber(value, p.NumberPointsPeak);
    else if (name == "ComplexPeak") {
        ok = value == "0" || value == "1" || value == "true" || value == "false";
        p.ComplexPeak = value == "1" || value == "true";
    } else {
        return "unknown parameter '" + name + "'";
    }
    if (!ok) return "bad value '" + value + "' for " + name;
    return {};
}

CommandResult PrepareWorkspace(const DetectionOptions& o, Workspace& ws) {
    // Without a settings file, a parameter file or a preset, a run is that
    // of a new installation.
    if (o.settingsFile.empty() && o.parameterFile.empty() && o.suggest == 0)
        ws.settings = NewInstallationSettings();
    if (!o.settingsFile.empty()) {
        if (CommandResult loaded = LoadSettingsFileInto(o.settingsFile, ws.settings); !loaded) return loaded;
    }
    if (!o.parameterFile.empty()) {
        if (CommandResult loaded = LoadParameterFileInto(o.parameterFile, ws.params()); !loaded) return loaded;
    }
    // The overrides are checked before the recording is opened, and applied
    // again after a suggested entry.
    for (const std::string& s : o.sets) {
        const std::string problem = ApplyParameter(ws.params(), s);
        if (!problem.empty()) return CommandResult::Failed("--set: " + problem);
    }
    if (!o.method.empty()) ws.settings.method.method = *ParseMethodName(o.method);
    if (const std::string problem = ParameterProblem(ws.params()); !problem.empty())
        return CommandResult::Failed("--set: " + problem);
    if (o.blocksPerScreen > 0) ws.settings.blocksPerScreen = o.blocksPerScreen;

    if (CommandResult opened = OpenRecordingOnChannel(o.file, o.channel, ws); !opened) return opened;
    if (o.filtered) {
        const FilterChoice choice = ResolveFilter(o.filter, FilterChoiceFromSettings(ws.settings));
        if (const CommandResult r = ApplyFilter(*ws.recording, choice); !r)
            return CommandResult::Failed("--filtered: " + r.message());
        SetDetectOnFiltered(ws, true);
    }
    if (o.suggest > 0) {
        ScriptedDialogs quiet;  // the preset's message is not wanted here
        SuggestParameters(ws, quiet, o.suggest, [] { return true; });
        for (const std::string& s : o.sets) ApplyParameter(ws.params(), s);
    }
    if (o.suggestFromNoise) {
        const Outcome<RecordingSuggestion> s = SuggestFromRecording(ws);
        if (!s) return CommandResult::Failed(o.file + ": " + s.message());
        ApplySuggestion(ws, s.value());
        std::cerr << SuggestionReport(ws, s.value()) << "\n";
        if (!o.method.empty()) ws.settings.method.method = *ParseMethodName(o.method);
        for (const std::string& set : o.sets) ApplyParameter(ws.params(), set);
    } else if (const std::string chosen = SuggestOnFirstAnalysis(ws); !chosen.empty()) {
        std::cerr << chosen << "\n";
        for (const std::string& set : o.sets) ApplyParameter(ws.params(), set);
    }
    if (!o.learnKernelFrom.empty()) {
        const Outcome<EventFileContents> contents = ReadCheckedEventFile(o.learnKernelFrom, nullptr);
        if (!contents) return CommandResult::Failed(o.learnKernelFrom + ": " + contents.message());
        EventTable accepted;
        accepted.Assign(contents->records);
        const Outcome<std::string> learned = LearnKernelIntoSettings(ws, accepted);
        if (!learned) return CommandResult::Failed(o.learnKernelFrom + ": " + learned.message());
        std::cerr << learned.value() << "\n";
    }
    return CommandResult::Ok();
}

}  // namespace vess::cli
