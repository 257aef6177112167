#include "detection/suggest_from_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "detection/clear_events.h"
#include "detection/detection_start.h"
#include "detection/detector.h"
#include "detection/event_kernel.h"
#include "detection/method_detect.h"
#include "detection/method_filter.h"
#include "detection/method_texts.h"

namespace vess {
namespace {

constexpr double kAmplitudeSds = 4;
// The template criterion (scale over its standard error) is not in units of
// its own noise: its SD depends on the template's length and on how coloured
// the noise is (0.3 on white noise, 0.9 to 1.7 on recordings). The suggested
// threshold is this many of its robust SDs, and never below the default
// (which on white noise is about 14 of them: lower, the Gaussian tail alone
// gave 3 false events a second).
constexpr double kTemplateSds = 4;
// Fewer clear events than this make no kernel: the default is kept.
constexpr std::size_t kMinKernelEvents = 10;

// Average of the candidates from 1 ms before the onset, in the event direction.
std::vector<double> AverageAt(const std::vector<ClearEvent>& events, const std::vector<int16_t>& x,
                              int64_t lead, int64_t length, int dir) {
    std::vector<double> sum(std::size_t(length), 0.0);
    int n = 0;
    for (const ClearEvent& c : events) {
        const int64_t first = c.onset - lead;
        if (first < 0 || first + length > int64_t(x.size())) continue;
        double base = 0;
        for (int64_t i = 0; i < lead; ++i) base += x[std::size_t(first + i)];
        base /= double(std::max<int64_t>(lead, 1));
        for (int64_t i = 0; i < length; ++i) sum[std::size_t(i)] += dir * (x[std::size_t(first + i)] - base);
        ++n;
    }
    for (double& v : sum) v /= std::max(n, 1);
    return sum;
}

}  // namespace

double RecordingNoiseSdCounts(const std::vector<int16_t>& x, double intervalUs,
                              const std::vector<int64_t>& onsets, double decayMs) {
    const int64_t half = std::max<int64_t>(int64_t(25000 / intervalUs), 1);
    std::vector<double> prefix(x.size() + 1, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i) prefix[i + 1] = prefix[i] + x[i];
    std::vector<bool> inEvent(x.size(), false);
    const int64_t before = int64_t(1000 / intervalUs), after = int64_t(5 * decayMs * 1000 / intervalUs);
    for (int64_t o : onsets)
        for (int64_t i = std::max<int64_t>(o - before, 0); i < std::min<int64_t>(o + after, int64_t(x.size())); ++i)
            inEvent[std::size_t(i)] = true;
    std::vector<double> values;
    for (int64_t i = half; i + half < int64_t(x.size()); ++i) {
        if (inEvent[std::size_t(i)]) continue;
        const double mean = (prefix[std::size_t(i + half + 1)] - prefix[std::size_t(i - half)]) / double(2 * half + 1);
        values.push_back(x[std::size_t(i)] - mean);
    }
    return RobustNoise(std::move(values)).sd;
}

Outcome<RecordingSuggestion> SuggestFromRecording(Workspace& ws) {
    RecordingSuggestion s;
    if (!ws.recording) return CommandResult::Failed("no recording is open");
    const Recording& rec = *ws.recording;
    const double intervalUs = rec.IntervalUs();
    const int dir = NormalizedDirection(ws.params().PeakDirection);
    const int64_t n = std::min<int64_t>(rec.PointsPerChannel(), int64_t(120e6 / intervalUs));
    std::vector<int16_t> x(std::size_t(std::max<int64_t>(n, 0)));
    rec.ReadSamples(0, x);
    if (n < int64_t(200000 / intervalUs)) return CommandResult::Failed("the recording is shorter than 0.2 s");
    // From the recording alone: every suggestion starts from the default
    // kernel, whatever kernel is set, so one recording gives one suggestion.
    MethodParameters params;
    params.method = DetectionMethod::Deconvolution;
    // No event rises faster than the recording lets its noise change.
    s.minRiseMs = NoiseCorrelationMs(x, intervalUs);
    std::vector<ClearEvent> clear;
    // Twice: the kernel found with the first pass's events sharpens the second.
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<ClearEvent> found = FindClearEvents(params, x, intervalUs, dir);
        if (found.size() < kMinKernelEvents) break;
        const int64_t lead = std::max<int64_t>(int64_t(1000 / intervalUs), 2);
        const int64_t length = int64_t((KernelPeakMs({params.riseTauMs, params.decayTauMs}) +
                                        5 * params.decayTauMs) * 1000 / intervalUs);
        const KernelFit fit = FitKernel(AverageAt(found, x, lead, lead + length, dir), intervalUs, s.minRiseMs);
        if (!fit.ok) break;
        clear = std::move(found);
        params.riseTauMs = fit.kernel.riseTauMs;
        params.decayTauMs = fit.kernel.decayTauMs;
        params.lowPassMs = SmoothingMsForKernel(fit.kernel);
    }
    s.eventsUsed = int(clear.size());
    std::vector<int64_t> onsets;
    for (const ClearEvent& c : clear) onsets.push_back(c.onset);
    s.noiseSdCounts = RecordingNoiseSdCounts(x, intervalUs, onsets, params.decayTauMs);
    if (!(s.noiseSdCounts > 0)) s.noiseSdCounts = 1;
    s.noiseSdUnits = std::abs(double(rec.Bit2pA2(1))) * s.noiseSdCounts;
    s.riseTauMs = params.riseTauMs;
    s.decayTauMs = params.decayTauMs;
    s.lowPassMs = params.lowPassMs;
    MethodParameters templateParams = params;
    templateParams.method = DetectionMethod::Template;
    const MethodFilter criterion(templateParams, intervalUs, dir);
    s.templateThreshold = std::max(MethodParameters{}.templateThreshold,
                                   kTemplateSds * RobustNoise(criterion.Compute(x, 0, n)).sd);
    s.thresholdAmplitude = float(kAmplitudeSds * s.noiseSdUnits);
    // The area of an event of threshold amplitude and the kernel's shape is
    // amplitude x (decay - rise) / (kernel peak value).
    const EventKernel k{s.riseTauMs, s.decayTauMs};
    const double tp = KernelPeakMs(k);
    const double peak = std::exp(-tp / k.decayTauMs) - std::exp(-tp / k.riseTauMs);
    s.areaThreshold = float(0.5 * s.thresholdAmplitude * (k.decayTauMs - k.riseTauMs) / peak);
    return s;
}

void ApplySuggestion(Workspace& ws, const RecordingSuggestion& s) {
    ws.settings.method.riseTauMs = s.riseTauMs;
    ws.settings.method.decayTauMs = s.decayTauMs;
    ws.settings.method.lowPassMs = s.lowPassMs;
    ws.settings.method.templateThreshold = s.templateThreshold;
    ws.params().ThresholdAmplitude = s.thresholdAmplitude;
    ws.params().AreaThreshold = s.areaThreshold;
}

std::string KernelSourceText(const RecordingSuggestion& s) {
    if (s.eventsUsed == 0) return "too few clear events: default kernel";
    return fmt::format("{} clear events", s.eventsUsed);
}

std::string SuggestionReport(const Workspace& ws, const RecordingSuggestion& s) {
    const std::string units = ws.recording ? ws.recording->Units() : std::string();
    return fmt::format(
        "Noise SD outside events: {:.4g} {} ({:.4g} counts).\n"
        "Kernel ({}): rise {:.3g} ms, decay {:.3g} ms; smoothing {:.3g} ms; "
        "template threshold {:.3g}.\n"
        "Amplitude threshold {:.4g} {}; area threshold {:.4g} {}*ms.",
        s.noiseSdUnits, units, s.noiseSdCounts, KernelSourceText(s), s.riseTauMs, s.decayTauMs, s.lowPassMs,
        s.templateThreshold, s.thresholdAmplitude, units, s.areaThreshold, units);
}

namespace {

// Measures the recording and applies what it suggests; a suggestion that
// cannot be made changes nothing.
Outcome<RecordingSuggestion> SuggestAndApply(Workspace& ws) {
    Outcome<RecordingSuggestion> s = SuggestFromRecording(ws);
    if (!s) return CommandResult::Failed(method_texts::kSuggestCaption, s.message());
    ApplySuggestion(ws, s.value());
    return s;
}

}  // namespace

CommandResult SuggestFromRecordingCommand(Workspace& ws, Dialogs& dialogs) {
    const std::string caption(method_texts::kSuggestCaption);
    if (!ws.recording) return CommandResult::Failed(caption, method_texts::kNoRecording);
    const Outcome<RecordingSuggestion> s = SuggestAndApply(ws);
    if (!s) return s.status();
    MarkSuggested(ws);  // the first analysis does not suggest again over the user's choice
    dialogs.Message(caption, SuggestionReport(ws, s.value()));
    return CommandResult::Ok();
}

std::string UnreachableThresholds(const Workspace& ws) {
    if (!ws.recording || ws.settings.method.method != DetectionMethod::Threshold) return {};
    const Recording& rec = *ws.recording;
    const AnalysisParameters& p = ws.params();
    const double count = std::abs(double(rec.Bit2pA2(1)));
    const double range = std::abs(double(rec.Bit2pA2(65535)));
    // Asked before every screen: the units are read only for a message.
    if (p.ThresholdAmplitude > range)
        return fmt::format("The amplitude threshold {:g} {} is larger than the whole range of the "
                           "channel ({:.4g} {}): no event can reach it.",
                           p.ThresholdAmplitude, rec.Units(), range, rec.Units());
    if (p.ThresholdAmplitude > 0 && p.ThresholdAmplitude < count)
        return fmt::format("The amplitude threshold {:g} {} is less than one count of the channel "
                           "({:.4g} {}): noise alone reaches it.",
                           p.ThresholdAmplitude, rec.Units(), count, rec.Units());
    const auto len = ConvertPeriods(p, rec.IntervalUs());
    if (len) {
        const double maxArea =
            range * double(len->baseOffset + len->decayLen + 2) * rec.IntervalUs() / 1000.0;
        if (p.AreaThreshold > maxArea)
            return fmt::format("The area threshold {:g} {}*ms is larger than any event of this "
                               "channel could have ({:.4g} {}*ms).",
                               p.AreaThreshold, rec.Units(), maxArea, rec.Units());
    }
    return {};
}

CommandResult CheckThresholdsBeforeDetecting(Workspace& ws, Dialogs& dialogs) {
    const std::string problem = UnreachableThresholds(ws);
    if (problem.empty()) return CommandResult::Ok();
    if (!dialogs.AskYesNo(method_texts::kThresholdsCaption,
                          problem + "\n" + method_texts::kOfferSuggestion))
        return CommandResult::Cancelled();
    return SuggestAndApply(ws).status();
}

}  // namespace vess
