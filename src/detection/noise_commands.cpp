#include "detection/noise_commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "detection/measurements.h"
#include "detection/texts.h"

namespace vess {
namespace {

std::string InUnits(const Recording& rec, double value) {
    const std::string units = rec.Units();
    return units.empty() ? fmt::format("{:.3f}", value) : fmt::format("{:.3f} {}", value, units);
}

std::string Report(const Recording& rec, const NoiseMeasure& m) {
    return fmt::format("{}{}\n{}{}\n{}{}", detection_texts::kBaselineLabel,
                       InUnits(rec, m.baselineUnits), detection_texts::kRmsNoiseLabel,
                       InUnits(rec, m.rmsUnits), detection_texts::kPointsLabel, m.points);
}

// Every sample of the screen lies inside a stored event.
CommandResult NoQuietTrace(std::string_view caption) {
    return CommandResult::Failed(caption, detection_texts::kNoQuietTraceText);
}

}  // namespace

NoiseMeasure MeasureScreenNoise(const Screen& screen, const EventTable& events) {
    NoiseMeasure m;
    if (!screen.Valid()) return m;
    // The recorded samples of the screen: the last screen may end early.
    const int64_t n = std::clamp<int64_t>(RecordedSpan(screen).last + 1, 0, screen.WindowLen());
    // Mark the samples inside stored events (start .. decay point).
    std::vector<bool> inEvent(std::size_t(n), false);
    const int64_t first = screen.AbsoluteIndex(0);
    for (const EventRecord& r : events.Records()) {
        const int64_t lo = std::max<int64_t>(int64_t(r.sampleIndex) - r.riseTime - first, 0);
        const int64_t hi = std::min<int64_t>(int64_t(r.sampleIndex) + r.decayTime - first, n - 1);
        for (int64_t i = lo; i <= hi; ++i) inEvent[std::size_t(i)] = true;
    }
    // Two passes (mean, then squares about it) keep the RMS exact for traces
    // that sit far from zero.
    double sum = 0;
    for (int64_t i = 0; i < n; ++i)
        if (!inEvent[std::size_t(i)]) {
            sum += screen.GetSampleValue(i);
            ++m.points;
        }
    m.pointsExcluded = n - m.points;
    if (m.points == 0) return m;
    const double meanCounts = sum / double(m.points);
    double squares = 0;
    for (int64_t i = 0; i < n; ++i)
        if (!inEvent[std::size_t(i)]) {
            const double d = screen.GetSampleValue(i) - meanCounts;
            squares += d * d;
        }
    const Recording& rec = screen.Rec();
    // Units per count, as the channel converts differences (no offset).
    const double perCount = double(rec.Bit2pA2(1 << 20)) / double(1 << 20);
    m.baselineUnits = meanCounts * perCount + double(rec.Offset());
    m.rmsUnits = std::sqrt(squares / double(m.points)) * perCount;
    m.valid = true;
    return m;
}

Outcome<NoiseMeasure> ShowRmsNoise(Workspace& ws, Dialogs& dialogs) {
    if (!ws.recording) return CommandResult::Cancelled();
    const NoiseMeasure m = MeasureScreenNoise(ShownScreen(ws), ws.events);
    if (!m.valid) return NoQuietTrace(detection_texts::kRmsNoiseCaption);
    dialogs.Message(detection_texts::kRmsNoiseCaption,
                    fmt::format("{}{}\n{}{}", detection_texts::kRmsNoiseLabel,
                                InUnits(*ws.recording, m.rmsUnits), detection_texts::kPointsLabel,
                                m.points));
    return m;
}

Outcome<BaselineThresholdResult> BaselineThreshold(Workspace& ws, Dialogs& dialogs) {
    BaselineThresholdResult result;
    if (!ws.recording) return CommandResult::Cancelled();
    result.noise = MeasureScreenNoise(ShownScreen(ws), ws.events);
    if (!result.noise.valid) return NoQuietTrace(detection_texts::kBaselineThresholdCaption);
    result.suggestedThreshold = static_cast<float>(kThresholdNoiseMultiple * result.noise.rmsUnits);
    const std::string text =
        fmt::format("{}\n{}{}\n\n{}", Report(*ws.recording, result.noise),
                    detection_texts::kSuggestedThresholdLabel,
                    InUnits(*ws.recording, result.suggestedThreshold),
                    detection_texts::kUseThresholdQuestion);
    if (dialogs.AskYesNo(detection_texts::kBaselineThresholdCaption, text)) {
        ws.params().ThresholdAmplitude = result.suggestedThreshold;
        result.applied = true;
    }
    return result;
}

}  // namespace vess
