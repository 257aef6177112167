// The detection criterion of the two filtering detectors, computed for any
// stretch of the chosen channel from the samples around it, so that a screen
// gives the values the whole file gives:
//  - deconvolution (Pernia-Andrade et al. 2012): the trace deconvolved with
//    the event kernel (exactly, by the three-point inverse of a sampled
//    double exponential), smoothed by a Gaussian and less its running median
//    over 50 ms (of 2 ms block means, interpolated), which takes out the
//    baseline and slow drift; a median, so that a large event does not shift
//    the level its neighbours are measured from (with a mean, a small event
//    10 ms after a large one went unseen), and one that can leave out the
//    blocks events occupy, so that dense events do not either;
//  - template (Clements & Bekkers 1997): the template scaled and offset to fit
//    the trace from each point by least squares; the criterion is the scale
//    over its standard error.
// Both are signed so that events give positive values.
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "detection/block_baseline.h"
#include "detection/event_kernel.h"
#include "detection/fft_convolution.h"
#include "recording/method_settings.h"
#include "recording/recording.h"

namespace vess {

// The window of the running median taken off the deconvolved trace (and of
// the running mean taken off the recorded trace when its noise is measured).
inline constexpr double kBaselineWindowMs = 50;

// The SD of the Gaussian smoothing of the deconvolved trace that suits a
// kernel: its rise time constant, and at least the default. A deconvolved
// slow event is a pulse about as wide as its rise, so narrower smoothing only
// lets more noise through (on a recording whose events rise with 2.9 ms, 3 ms
// smoothing found ten times the added events that 0.8 ms found).
double SmoothingMsForKernel(const EventKernel& kernel);

// What the criterion holds near the blocks left out of its baseline: its
// value, or not a number (for measuring the noise away from events).
enum class NearEvents { Criterion, NotANumber };

struct NoiseLevel {
    double centre = 0;
    double sd = 1;
};

class MethodFilter {
public:
    MethodFilter(const MethodParameters& params, double intervalUs, int direction);
    // Compute works in the convolver's buffers: a thread computing beside
    // another needs a copy of its own.
    MethodFilter(const MethodFilter& other);
    MethodFilter(MethodFilter&&) = default;
    MethodFilter& operator=(const MethodFilter&) = delete;

    DetectionMethod Method() const { return method_; }
    int Direction() const { return direction_; }
    // Points read before and after a stretch to compute it.
    int64_t Margin() const { return margin_ + Apron(); }
    // Deconvolution: blocks where the criterion (before its noise is taken
    // off) rises above level are left out of the running median, so that
    // dense events do not raise the baseline their neighbours are measured
    // from. Infinite (the default): every block counts.
    void LeaveOutAbove(double level) { leaveOutAbove_ = level; }
    double LeftOutAbove() const { return leaveOutAbove_; }
    // Length of the template (template method) in points.
    int64_t TemplatePoints() const { return templatePoints_; }
    // The criterion at points first .. first+count-1 of the channel.
    std::vector<double> Compute(const Recording& rec, int64_t first, int64_t count) const;
    // The same into out, whose memory is reused: a caller going through a
    // long recording stretch by stretch keeps one buffer, and this thread's
    // working buffers are kept from call to call too, so the pages of
    // multi-megabyte vectors are not given back and faulted in again for
    // every stretch.
    // With NearEvents::NotANumber, the points of a left-out block and of the
    // blocks on either side of it are not a number.
    // With units, the criterion is given in them: (v - centre) / sd.
    // written(from, n) is called as out[from .. from + n - 1] is written, in
    // order, for a caller to read them while they are in the cache.
    using Written = std::function<void(int64_t from, int64_t n)>;
    void Compute(const Recording& rec, int64_t first, int64_t count, std::vector<double>& out,
                 NearEvents near = NearEvents::Criterion, NoiseLevel units = {}, const Written& written = {}) const;
    // The same on samples held in memory (signal[i] is point i); points
    // outside repeat the nearest sample, as a recording does.
    std::vector<double> Compute(const std::vector<int16_t>& signal, int64_t first,
                                int64_t count) const;

private:
    // x begins at point first - ReachBefore() - Apron() of the channel.
    void FromSamples(const std::vector<int16_t>& x, int64_t first, int64_t count, std::vector<double>& out,
                     NearEvents near, NoiseLevel units = {}, const Written& written = {}) const;
    // Points first .. first + count - 1 into out; filtered[j] is point origin + j.
    void LessRunningMedian(const std::vector<double>& filtered, int64_t origin, int64_t first, int64_t count,
                           double* out, NearEvents near, NoiseLevel units, const StreamedBlockMeans& means) const;
    // Points read beyond the deconvolution's own reach for the baseline.
    // Leaving blocks out needs the criterion over the median window around
    // every block of the stretch, and so twice the blocks.
    int64_t Apron() const {
        if (blockPoints_ <= 0) return 0;
        return (std::isfinite(leaveOutAbove_) ? 2 * blocksAside_ + 4 : blocksAside_ + 3) * blockPoints_;
    }
    DetectionMethod method_;
    int direction_;
    int64_t margin_ = 0;
    // Deconvolution: the baseline is the median of the means of blocks of
    // blockPoints_ (aligned on the channel's points), blocksAside_ either
    // side of each block, interpolated between block centres.
    int64_t blockPoints_ = 0;
    int64_t blocksAside_ = 0;
    double leaveOutAbove_ = INFINITY;
    int64_t templatePoints_ = 0;
    std::vector<double> template_;
    std::unique_ptr<FftConvolver> convolver_;
};

// Centre and SD of the central part of a distribution: a Gaussian fitted (a
// parabola to the logarithm of the counts) to the histogram bins holding at
// least a fifth of the fullest bin, within three robust SDs (median absolute
// deviation) of the median. Events sit in one tail and do not move it.
NoiseLevel RobustNoise(std::vector<double> values);

// The stretches (first point, count) a channel's noise is measured over: the
// whole channel when it is at most two minutes long, otherwise 40 stretches
// of 3 s spread evenly.
std::vector<std::pair<int64_t, int64_t>> NoiseStretches(const Recording& rec);

// The noise of the criterion over the NoiseStretches of the channel. Away
// from events: only where no block near is left out of the baseline (over
// all points when that leaves less than a quarter of them), so that the
// events of an event-rich recording do not widen what is measured.
NoiseLevel CriterionNoise(const MethodFilter& filter, const Recording& rec,
                          NearEvents near = NearEvents::Criterion);

}  // namespace vess
