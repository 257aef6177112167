#include "detection/detection_start.h"

#include <optional>

#include <fmt/format.h>

#include "detection/detector.h"
#include "detection/method_texts.h"
#include "detection/screen_commands.h"
#include "detection/suggest_from_recording.h"

namespace vess {
namespace {

std::string RecordingKey(const Workspace& ws) {
    const Recording& rec = *ws.recording;
    return fmt::format("{}|{}|{}", rec.Path().string(), int(rec.Channel()),
                       NormalizedDirection(ws.params().PeakDirection));
}

constexpr const char* kMixedSettings = "several settings, the last ";

}  // namespace

std::string SuggestOnFirstAnalysis(Workspace& ws) {
    const MethodParameters& m = ws.settings.method;
    if (!ws.recording || m.method == DetectionMethod::Threshold || !m.suggestFromRecording) return {};
    const std::string key = RecordingKey(ws);
    if (ws.suggestedFor == key) return {};
    const Outcome<RecordingSuggestion> s = SuggestFromRecording(ws);
    ws.suggestedFor = key;  // tried once, whatever came of it
    if (!s) return fmt::format("No settings could be suggested from this recording ({}).", s.message());
    ApplySuggestion(ws, s.value());
    return fmt::format("Settings suggested from this recording ({}, noise {:.3g} {}): {}",
                       KernelSourceText(s.value()), s->noiseSdUnits, ws.recording->Units(), DetectionSettingsText(ws));
}

void MarkSuggested(Workspace& ws) {
    if (ws.recording) ws.suggestedFor = RecordingKey(ws);
}

namespace {
std::string FormatDetectionSettings(const MethodParameters& m, const AnalysisParameters& p,
                                    const std::string& units) {
    switch (m.method) {
        case DetectionMethod::Deconvolution:
            return fmt::format("deconvolution, kernel rise {:.3g} ms, decay {:.3g} ms, threshold {:.3g} SD, "
                               "smoothing {:.3g} ms",
                               m.riseTauMs, m.decayTauMs, m.deconvolutionThreshold, m.lowPassMs);
        case DetectionMethod::Template:
            return fmt::format("template, kernel rise {:.3g} ms, decay {:.3g} ms, threshold {:.3g}",
                               m.riseTauMs, m.decayTauMs, m.templateThreshold);
        case DetectionMethod::Threshold: break;
    }
    return fmt::format("threshold, amplitude {:.4g} {}, area {:.4g} {}*ms", p.ThresholdAmplitude, units,
                       p.AreaThreshold, units);
}
}  // namespace

const std::string& DetectionSettingsText(const Workspace& ws) {
    // Asked before every screen analysed: formatted again only when one of
    // the values it shows differs from the last time. The units are read
    // again only when the recording's samples version changed (another
    // recording or channel).
    struct Shown {
        MethodParameters method;
        float amplitude = 0, area = 0;
        uint64_t samples = 0;
        std::string units, text;
    };
    thread_local std::optional<Shown> last;
    const MethodParameters& m = ws.settings.method;
    const AnalysisParameters& p = ws.params();
    const uint64_t samples = ws.recording ? ws.recording->SamplesVersion() : 0;
    const bool sameSettings =
        last && last->method == m && last->amplitude == p.ThresholdAmplitude && last->area == p.AreaThreshold;
    if (sameSettings && last->samples == samples) return last->text;
    std::string units = ws.recording ? ws.recording->Units() : std::string();
    if (!sameSettings || last->units != units) {
        std::string text = FormatDetectionSettings(m, p, units);
        last = Shown{m, p.ThresholdAmplitude, p.AreaThreshold, samples, std::move(units), std::move(text)};
    }
    last->samples = samples;
    return last->text;
}

void NoteDetectionSettings(Workspace& ws) {
    if (!ws.recording) return;
    const std::string& now = DetectionSettingsText(ws);
    const std::string& path = ws.recording->Path().native();
    const bool known = ws.eventsMadeFor == path && !ws.eventsMadeWith.empty();
    if (ws.events.Empty() || (known && ws.eventsMadeWith == now)) ws.eventsMadeWith = now;
    else ws.eventsMadeWith = std::string(kMixedSettings) + now;
    ws.eventsMadeFor = path;
}

std::string EventsStatusText(const Workspace& ws) {
    const int32_t n = ws.events.Count();
    std::string text = std::to_string(n) + (n == 1 ? " event" : " events");
    if (n > 0 && ws.recording && ws.eventsMadeFor == ws.recording->Path().string() &&
        !ws.eventsMadeWith.empty())
        text += " by " + ws.eventsMadeWith;
    return text;
}

CommandResult ReplaceEventsBeforeDetecting(Workspace& ws, Dialogs& dialogs) {
    if (ws.events.Empty()) return CommandResult::Ok();
    const Answer a = dialogs.AskYesNoCancel(
        method_texts::kReplaceCaption,
        fmt::format(fmt::runtime(method_texts::kReplaceQuestion), ws.events.Count()));
    if (a == Answer::Cancel) return CommandResult::Cancelled();
    if (a == Answer::Yes) return ResetEvents(ws, dialogs, /*noConfirmation=*/true);
    return CommandResult::Ok();
}

}  // namespace vess
