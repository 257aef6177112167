// The detection criterion of the two filtering detectors, computed for any
// stretch of the chosen channel from the samples around it, so that a screen
// gives the values the whole file gives:
//  - deconvolution (Pernia-Andrade et al. 2012): the trace deconvolved with
//    the event kernel (exactly, by the three-point inverse of a sampled
//    double exponential), smoothed by a Gaussian and less its running mean
//    over 50 ms, which takes out the baseline and slow drift;
//  - template (Clements & Bekkers 1997): the template scaled and offset to fit
//    the trace from each point by least squares; the criterion is the scale
//    over its standard error.
// Both are signed so that events give positive values.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "detection/event_kernel.h"
#include "detection/fft_convolution.h"
#include "recording/method_settings.h"
#include "recording/recording.h"

namespace vess {

// The window of the running mean taken off the deconvolved trace (and off the
// recorded trace when its noise is measured).
inline constexpr double kRunningMeanMs = 50;

// The SD of the Gaussian smoothing of the deconvolved trace that suits a
// kernel: its rise time constant, and at least the default. A deconvolved
// slow event is a pulse about as wide as its rise, so narrower smoothing only
// lets more noise through (on a recording whose events rise with 2.9 ms, 3 ms
// smoothing found ten times the added events that 0.8 ms found).
double SmoothingMsForKernel(const EventKernel& kernel);

class MethodFilter {
public:
    MethodFilter(const MethodParameters& params, double intervalUs, int direction);

    DetectionMethod Method() const { return method_; }
    int Direction() const { return direction_; }
    // Points read before and after a stretch to compute it.
    int64_t Margin() const { return margin_; }
    // Length of the template (template method) in points.
    int64_t TemplatePoints() const { return templatePoints_; }
    // The criterion at points first .. first+count-1 of the channel.
    std::vector<double> Compute(const Recording& rec, int64_t first, int64_t count) const;
    // The same on samples held in memory (signal[i] is point i); points
    // outside repeat the nearest sample, as a recording does.
    std::vector<double> Compute(const std::vector<int16_t>& signal, int64_t first,
                                int64_t count) const;

private:
    std::vector<double> FromSamples(const std::vector<double>& x, int64_t count) const;
    DetectionMethod method_;
    int direction_;
    int64_t margin_ = 0;
    int64_t meanHalf_ = 0;        // deconvolution: half the running-mean window
    int64_t templatePoints_ = 0;
    std::vector<double> template_;
    std::unique_ptr<FftConvolver> convolver_;
};

// Centre and SD of the central part of a distribution: a Gaussian fitted (a
// parabola to the logarithm of the counts) to the histogram bins holding at
// least a fifth of the fullest bin, within three robust SDs (median absolute
// deviation) of the median. Events sit in one tail and do not move it.
struct NoiseLevel {
    double centre = 0;
    double sd = 1;
};
NoiseLevel RobustNoise(std::vector<double> values);

// The noise of the criterion over the channel: the whole channel when it is
// at most two minutes long, otherwise 40 stretches of 3 s spread evenly.
NoiseLevel CriterionNoise(const MethodFilter& filter, const Recording& rec);

}  // namespace vess
