// Accuracy of detection against known event times: a one-to-one greedy
// matching in time order and the usual recall, precision and F1.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "detection/noise_commands.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

struct DetectionScore {
    int64_t truePositives = 0;
    int64_t falsePositives = 0;
    int64_t falseNegatives = 0;
    double Recall() const;
    double Precision() const;
    double F1() const;
};

// Known events to score against, in ms from the start of the data (the time
// of a 0-based sample i is i x interval).
struct TrueEvents {
    std::vector<double> timesMs;  // sorted ascending
    bool onsets = false;          // onset times (peaks follow), else peak times
};

// An onset time in seconds from a list of onsets, as the simulated
// recordings give them: onset t is the 1-based sample round(t x rate), so
// the 0-based sample round(t x rate) - 1, at that sample's time in ms.
double OnsetTimeMs(double seconds, double intervalUs);

// Reads either the synthesiser's CSV (the peak_ms column: peak times in ms
// of 0-based samples, taken as they stand) or a list of onset times in
// seconds, one per line (converted by OnsetTimeMs). nullopt with problem set
// when the file cannot be opened or a line is not a number.
std::optional<TrueEvents> ReadTrueEvents(const std::filesystem::path& path, double intervalUs,
                                         std::string& problem);

// Both lists in ms, sorted ascending. A detection d matches a true time t
// when lowMs <= d - t <= highMs. True events are taken in time order, each
// matched to the earliest detection still unmatched inside its window; a
// detection serves at most one true event.
DetectionScore ScoreDetections(std::span<const double> detectedMs, std::span<const double> trueMs,
                               double lowMs, double highMs);

// What the unmatched detections are: within nearMs of a true event that was
// matched (a second detection of that event), within nearMs of a true event
// that was missed (found, but outside the tolerance), or away from every
// true event (noise).
struct FalsePositiveClasses {
    int64_t secondDetections = 0;
    int64_t displaced = 0;
    int64_t noise = 0;
};
FalsePositiveClasses ClassifyFalsePositives(std::span<const double> detectedMs,
                                            std::span<const double> trueMs, double lowMs,
                                            double highMs, double nearMs);

// Median over the recording's screens of the RMS noise that the RMS noise
// command shows (MeasureScreenNoise: the samples outside the stored events,
// about the screen's mean), in the channel's units; 0 when no screen could be
// measured. A user reads the same figure off a typical quiet screen.
double MedianScreenNoise(const Workspace& ws);

// The way a user of the workbench sets the thresholds, as the message of
// Suggest Analysis Parameters asks ("readjust the amplitude threshold and
// area threshold"), done over a whole recording:
//  1. detect over the whole recording with the parameters as they stand (the
//     suggested ones), so that the events can be left out of the noise;
//  2. measure the RMS noise outside those events (MedianScreenNoise);
//  3. set ThresholdAmplitude to noiseMultiple x that noise, the rule of the
//     baseline and threshold command (kThresholdNoiseMultiple) by default;
//  4. with scaleAreaThreshold, multiply AreaThreshold by the same factor as
//     ThresholdAmplitude changed (the suggested pair keeps its ratio);
//  5. erase the events and detect over the whole recording again.
// Nothing here looks at the true events. The detection itself runs exactly
// as the analysis buttons run it; only the two thresholds change.
struct NoiseProtocolOptions {
    double noiseMultiple = kThresholdNoiseMultiple;
    bool scaleAreaThreshold = false;
};
struct NoiseProtocolResult {
    CommandResult status = CommandResult::Ok();  // failed: either pass refused the parameters
    int32_t firstPassEvents = 0;
    double rmsNoiseUnits = 0;  // 0: no screen could be measured, thresholds kept
    float thresholdAmplitude = 0;
    float areaThreshold = 0;
};
NoiseProtocolResult DetectWithNoiseThreshold(Workspace& ws, const NoiseProtocolOptions& options = {});

}  // namespace vess
