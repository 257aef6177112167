#include "detection/scoring.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <vector>

#include "detection/whole_file.h"
#include "recording/file_io.h"
#include "recording/rounding.h"
#include "recording/screen.h"

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

double OnsetTimeMs(double seconds, double intervalUs) {
    const int64_t oneBased = RoundEven(seconds * 1e6 / intervalUs);
    return double(oneBased - 1) * intervalUs / 1000.0;
}

std::optional<TrueEvents> ReadTrueEvents(const std::filesystem::path& path, double intervalUs,
                                         std::string& problem) {
    std::string why;
    const auto bytes = ReadFileBytes(path, &why);  // regular files only
    if (!bytes) {
        problem = path.string() + ": cannot open (" + why + ")";
        return std::nullopt;
    }
    std::istringstream in(std::string(bytes->begin(), bytes->end()));
    TrueEvents truth;
    std::string line;
    int peakColumn = -1;
    while (std::getline(in, line)) {
        if (line.empty() || line == "\r") continue;
        if (line.find("peak_ms") != std::string::npos) {
            std::stringstream header(line);
            std::string name;
            for (int c = 0; std::getline(header, name, ','); ++c)
                if (name == "peak_ms") peakColumn = c;
            continue;
        }
        try {
            if (peakColumn >= 0) {
                std::stringstream row(line);
                std::string cell;
                for (int c = 0; c <= peakColumn; ++c) std::getline(row, cell, ',');
                truth.timesMs.push_back(std::stod(cell));
            } else {
                truth.timesMs.push_back(OnsetTimeMs(std::stod(line), intervalUs));
                truth.onsets = true;
            }
        } catch (const std::exception&) {
            problem = path.string() + ": cannot read the line '" + line + "'";
            return std::nullopt;
        }
    }
    std::sort(truth.timesMs.begin(), truth.timesMs.end());
    return truth;
}

namespace {

// The greedy matching: for each detection, the true event it serves or -1.
std::vector<int64_t> Match(std::span<const double> detectedMs, std::span<const double> trueMs,
                           double lowMs, double highMs) {
    std::vector<int64_t> truthOf(detectedMs.size(), -1);
    std::size_t j = 0;
    for (std::size_t t = 0; t < trueMs.size(); ++t) {
        // Detections too early for this true event are too early for every
        // later one as well.
        while (j < detectedMs.size() && detectedMs[j] - trueMs[t] < lowMs) ++j;
        if (j < detectedMs.size() && detectedMs[j] - trueMs[t] <= highMs) truthOf[j++] = int64_t(t);
    }
    return truthOf;
}

}  // namespace

DetectionScore ScoreDetections(std::span<const double> detectedMs, std::span<const double> trueMs,
                               double lowMs, double highMs) {
    DetectionScore score;
    for (const int64_t t : Match(detectedMs, trueMs, lowMs, highMs))
        if (t >= 0) ++score.truePositives;
    score.falsePositives = int64_t(detectedMs.size()) - score.truePositives;
    score.falseNegatives = int64_t(trueMs.size()) - score.truePositives;
    return score;
}

FalsePositiveClasses ClassifyFalsePositives(std::span<const double> detectedMs,
                                            std::span<const double> trueMs, double lowMs,
                                            double highMs, double nearMs) {
    const std::vector<int64_t> truthOf = Match(detectedMs, trueMs, lowMs, highMs);
    std::vector<bool> matched(trueMs.size(), false);
    for (const int64_t t : truthOf)
        if (t >= 0) matched[std::size_t(t)] = true;
    FalsePositiveClasses c;
    for (std::size_t d = 0; d < detectedMs.size(); ++d) {
        if (truthOf[d] >= 0) continue;
        // The nearest true event.
        const auto it = std::lower_bound(trueMs.begin(), trueMs.end(), detectedMs[d]);
        int64_t nearest = -1;
        double best = nearMs;
        for (auto k : {it - trueMs.begin() - 1, it - trueMs.begin()}) {
            if (k < 0 || k >= int64_t(trueMs.size())) continue;
            const double dist = std::abs(detectedMs[d] - trueMs[std::size_t(k)]);
            if (dist <= best) {
                best = dist;
                nearest = k;
            }
        }
        if (nearest < 0)
            ++c.noise;
        else if (matched[std::size_t(nearest)])
            ++c.secondDetections;
        else
            ++c.displaced;
    }
    return c;
}

double MedianScreenNoise(const Workspace& ws) {
    if (!ws.recording) return 0;
    std::vector<double> rms;
    const int32_t bps = ws.BlocksPerScreen();
    for (int32_t b = 0; b + bps <= ws.recording->BlockCount(); b += bps) {
        const NoiseMeasure m = MeasureScreenNoise(Screen(*ws.recording, b, bps), ws.events);
        if (m.valid) rms.push_back(m.rmsUnits);
    }
    if (rms.empty()) return 0;
    const auto middle = rms.begin() + std::ptrdiff_t(rms.size() / 2);
    std::nth_element(rms.begin(), middle, rms.end());
    return *middle;
}

NoiseProtocolResult DetectWithNoiseThreshold(Workspace& ws, const NoiseProtocolOptions& options) {
    NoiseProtocolResult result;
    if (!ws.recording) return result;
    ws.events.Clear();
    const WholeFileResult first = DetectWholeFile(ws);
    result.firstPassEvents = ws.events.Count();
    if (!first.status) {
        result.status = first.status;
        return result;
    }
    AnalysisParameters& p = ws.params();
    result.rmsNoiseUnits = MedianScreenNoise(ws);
    if (result.rmsNoiseUnits > 0) {
        const float threshold = static_cast<float>(options.noiseMultiple * result.rmsNoiseUnits);
        if (options.scaleAreaThreshold && p.ThresholdAmplitude > 0)
            p.AreaThreshold = p.AreaThreshold * threshold / p.ThresholdAmplitude;
        p.ThresholdAmplitude = threshold;
    }
    result.thresholdAmplitude = p.ThresholdAmplitude;
    result.areaThreshold = p.AreaThreshold;
    ws.events.Clear();
    result.status = DetectWholeFile(ws).status;
    return result;
}

}  // namespace vess
