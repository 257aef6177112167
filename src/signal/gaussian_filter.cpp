#include "signal/gaussian_filter.h"

#include <cmath>
#include <numbers>

namespace vess {

namespace {

constexpr double kSigmas = 5.0;

// sigma in sample points for a cut-off far below the sampling frequency.
double AnalyticSigma(double cutoffHz, double sampleRateHz) {
    return std::sqrt(std::log(2.0)) / (2.0 * std::numbers::pi * cutoffHz / sampleRateHz);
}

std::vector<double> KernelOfSigma(double sigma) {
    const int64_t half = int64_t(std::ceil(kSigmas * sigma));
    std::vector<double> k(std::size_t(2 * half + 1));
    double sum = 0;
    for (int64_t i = -half; i <= half; ++i) {
        const double w = std::exp(-0.5 * double(i * i) / (sigma * sigma));
        k[std::size_t(i + half)] = w;
        sum += w;
    }
    for (double& w : k) w /= sum;
    return k;
}

double KernelGain(std::span<const double> kernel, double cyclesPerPoint) {
    const int64_t half = int64_t(kernel.size() / 2);
    double h = 0;
    for (int64_t i = -half; i <= half; ++i)
        h += kernel[std::size_t(i + half)] * std::cos(2.0 * std::numbers::pi * cyclesPerPoint * double(i));
    return h;
}

}  // namespace

double LeastGaussianCutoffHz(double sampleRateHz) {
    // The cut-off whose sigma makes the kernel reach kMaxGaussianHalfWidth.
    const double sigma = double(kMaxGaussianHalfWidth) / kSigmas;
    return std::sqrt(std::log(2.0)) / (2.0 * std::numbers::pi * sigma) * sampleRateHz;
}

std::vector<double> GaussianKernel(double cutoffHz, double sampleRateHz) {
    const double at = cutoffHz / sampleRateHz;
    // The gain at the cut-off falls as sigma grows: bisect between a kernel
    // too narrow to reach -3 dB and one wide enough.
    double lo = 0.05, hi = std::max(2.0 * AnalyticSigma(cutoffHz, sampleRateHz), 1.0);
    for (int i = 0; i < 100; ++i) {
        const double mid = 0.5 * (lo + hi);
        (KernelGain(KernelOfSigma(mid), at) > std::sqrt(0.5) ? lo : hi) = mid;
        if (hi - lo < 1e-12 * hi) break;
    }
    return KernelOfSigma(0.5 * (lo + hi));
}

double KernelResponseDb(std::span<const double> kernel, double frequencyHz, double sampleRateHz) {
    return 20.0 * std::log10(std::fabs(KernelGain(kernel, frequencyHz / sampleRateHz)));
}

void ConvolveCentred(std::span<const double> padded, std::span<const double> kernel, std::span<double> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        double sum = 0;
        for (std::size_t k = 0; k < kernel.size(); ++k) sum += kernel[k] * padded[i + k];
        out[i] = sum;
    }
}

}  // namespace vess
