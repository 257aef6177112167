// The Gaussian low-pass: a sampled Gaussian kernel, centred on the output
// sample, whose gain at the cut-off is -3 dB (1/sqrt 2). For cut-offs well
// below the sampling frequency its width is sigma = sqrt(ln 2) / (2 pi fc),
// about 0.1325 / fc; nearer half the sampling frequency the sampled kernel's
// width is found so that the gain at the cut-off is still exactly -3 dB.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vess {

// The lowest cut-off whose kernel stays within kMaxGaussianHalfWidth points
// on each side (about fs / 3000).
inline constexpr int64_t kMaxGaussianHalfWidth = 2000;
double LeastGaussianCutoffHz(double sampleRateHz);

// Weights of points -h..h (odd length, symmetric, summing to 1), cut at five
// sigmas, where a weight is below 4e-6 of the central one.
std::vector<double> GaussianKernel(double cutoffHz, double sampleRateHz);

// Gain in dB of a centred symmetric kernel at a frequency.
double KernelResponseDb(std::span<const double> kernel, double frequencyHz, double sampleRateHz);

// out[i] = sum over k of kernel[k] * padded[i + k]: padded holds
// kernel.size() - 1 more samples than out, half before and half after.
void ConvolveCentred(std::span<const double> padded, std::span<const double> kernel, std::span<double> out);

}  // namespace vess
