// Detection by the deconvolution and template detectors: where the criterion
// rises above its threshold (in noise SDs of the deconvolved trace, or in
// scale over standard error for the template), split where it shows two
// peaks; the peak of each event is then sought in the recorded trace after
// its detection point and measured as every event is.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "detection/detector.h"
#include "detection/method_filter.h"
#include "recording/settings.h"

namespace vess {

// Everything a run of a filtering detector needs, prepared once per command.
struct MethodRun {
    MethodRun(const MethodParameters& params, double intervalUs, int direction, NoiseLevel noise);
    MethodParameters params;
    MethodFilter filter;
    NoiseLevel noise;              // of the criterion (centre 0, SD 1 for the template)
    double threshold = 0;          // in units of noise.sd
    int64_t minSeparationPoints = 0;
    // A dip below this fraction of the smaller of two peaks separates them
    // (two events closer than a Gaussian smoothing of the deconvolved trace
    // leave a shallow dip: two at 2.5 SDs dip to 0.88 of their peaks).
    double dipFraction = 0.92;
    int64_t peakWindowPoints = 0;  // the peak is sought this far after the detection point
    int64_t lookPoints = 0;        // criterion read around a stretch to find its detections
    // Weak crossings (weak_detections.h), deconvolution only: from this
    // fraction of the threshold, kept when the kernel fitted there is this
    // many noise SDs of the recorded trace (traceNoiseSd, counts; 0: none kept).
    double weakFraction = 1;
    double weakAmplitudeSds = 0;
    double traceNoiseSd = 0;
    // How far after a detection the next one bounds its peak and decay; a
    // detection has no later neighbour beyond it.
    int64_t FollowPoints() const { return lookPoints / 2; }
    // The last window index (exclusive) of the event detected at onset when
    // the next detection is at next (nullopt: none found).
    int64_t Limit(int64_t onset, std::optional<int64_t> next) const {
        return next && *next < onset + FollowPoints() ? *next : onset + FollowPoints();
    }
};

// Builds the run for a recording; the noise of the deconvolved trace is
// measured over the channel (CriterionNoise).
MethodRun PrepareMethodRun(const MethodParameters& params, const Recording& rec, int direction);

// Detection points from a criterion: indices into z (already in SD units)
// where it crosses the threshold, and where a second peak follows a dip that
// falls below dipFraction of the smaller peak (or below the threshold, at
// least the minimum separation after the previous peak).
std::vector<int64_t> DetectionPoints(const std::vector<double>& z, double threshold,
                                     int64_t minSeparationPoints, double dipFraction);

// The same found piece by piece as z is written: Scan(z, available, n) takes
// the points below available (of n in all), each call with more of them.
class DetectionScan {
public:
    DetectionScan(double threshold, int64_t minSeparationPoints, double dipFraction)
        : threshold_(threshold), minSeparation_(minSeparationPoints), dipFraction_(dipFraction) {}
    void Scan(const double* z, int64_t available, int64_t n);
    const std::vector<int64_t>& Points() const { return points_; }

private:
    double threshold_;
    int64_t minSeparation_;
    double dipFraction_;
    bool begunBefore_ = true;  // the run above the threshold that began before z is to pass
    int64_t next_ = 0;         // the point to take next
    int64_t lastPeak_ = -1;    // index of the current event's highest point
    double lastPeakValue_ = 0;
    double dip_ = INFINITY;  // lowest value since lastPeak
    int64_t dipIndex_ = -1;
    std::vector<int64_t> points_;
};

// Detection points (point indices of the channel) in first .. first+count-1,
// followed by the first one after that stretch when there is one within
// FollowPoints (it bounds the last event's peak and decay).
std::vector<int64_t> FindDetections(const MethodRun& run, const Recording& rec, int64_t first,
                                    int64_t count);

// Measures the event detected at window index onset of det's screen: the
// extreme point from onset to before limit (at most the peak window), the
// baseline over the BaseLen samples just before onset, the start and decay
// walks (the decay not past limit) and the area. nullopt when the peak does
// not lie beyond the baseline or the baseline is not recorded. An onset on the
// decay of an earlier event is measured on the trace less that decay
// (earlier_decay.h).
std::optional<MeasuredEvent> MeasureDetection(const Detector& det, const MethodRun& run,
                                              int64_t onset, int64_t limit);

}  // namespace vess
