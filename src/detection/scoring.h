// Accuracy of detection against known event times: a one-to-one greedy
// matching in time order and the usual recall, precision and F1.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vess {

struct DetectionScore {
    int64_t truePositives = 0;
    int64_t falsePositives = 0;
    int64_t falseNegatives = 0;
    double Recall() const;
    double Precision() const;
    double F1() const;
};

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

}  // namespace vess
