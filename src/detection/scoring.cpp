#include "detection/scoring.h"

namespace vess {

double DetectionScore::Recall() const {
    const int64_t n = truePositives + falseNegatives;
    return n == 0 ? 1.0 : double(truePositives) / double(n);
}

double DetectionScore::Precision() const {
    const int64_t n = truePositives + falsePositives;
    return n == 0 ? 1.0 : double(truePositives) / double(n);
}

double DetectionScore::F1() const {
    const double p = Precision(), r = Recall();
    return p + r == 0 ? 0.0 : 2 * p * r / (p + r);
}

DetectionScore ScoreDetections(std::span<const double> detectedMs, std::span<const double> trueMs,
                               double lowMs, double highMs) {
    DetectionScore score;
    std::size_t j = 0;
    for (const double t : trueMs) {
        // Detections too early for this true event are too early for every
        // later one as well.
        while (j < detectedMs.size() && detectedMs[j] - t < lowMs) ++j;
        if (j < detectedMs.size() && detectedMs[j] - t <= highMs) {
            ++score.truePositives;
            ++j;
        } else {
            ++score.falseNegatives;
        }
    }
    score.falsePositives = int64_t(detectedMs.size()) - score.truePositives;
    return score;
}

}  // namespace vess
