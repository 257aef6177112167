#include "detection/fft_convolution.h"

#include <algorithm>
#include <complex>

#include "detection/point_loops.h"
#include "recording/fft_plan.h"

namespace vess {

struct FftConvolver::Plans {
    explicit Plans(int points) : fft(points, true) {}
    RealFft fft;
    // The taps' spectrum over the transform's length (a power of two, so the
    // inverse transform's scaling is exact wherever it is applied).
    std::vector<std::complex<double>> filter;
};

FftConvolver::FftConvolver(std::vector<double> taps, int64_t centre) : taps_(std::move(taps)), centre_(centre) {
    if (taps_.empty()) taps_ = {1.0};
    // A block four times the filter keeps the share of each transform thrown
    // away small; at least 2048 points, the fastest per output point for
    // filters of a few hundred taps (measured against 1024 to 16384).
    fftSize_ = 2048;
    while (fftSize_ < 4 * int64_t(taps_.size())) fftSize_ *= 2;
    plans_ = std::make_unique<Plans>(int(fftSize_));
    RealFft& fft = plans_->fft;
    std::fill(fft.Samples(), fft.Samples() + fftSize_, 0.0);
    std::copy(taps_.begin(), taps_.end(), fft.Samples());
    fft.Forward();
    const double scale = 1.0 / double(fftSize_);
    for (int k = 0; k < fft.Bins(); ++k) plans_->filter.push_back(fft.Spectrum()[k] * scale);
}

FftConvolver::~FftConvolver() = default;

namespace {

// Sizes output to outputs points; the block use returned copies each block
// into it.
FftConvolver::BlockUse Into(std::vector<double>& output, int64_t outputs) {
    output.resize(std::size_t(std::max<int64_t>(outputs, 0)));  // every value is written by the blocks
    return [&output](int64_t first, const double* values, int64_t count) {
        std::copy(values, values + count, output.begin() + first);
    };
}

void ToDoubles(const double* from, int64_t count, double* to) { std::copy(from, from + count, to); }
void ToDoubles(const int16_t* from, int64_t count, double* to) { SamplesToDoubles(from, count, to); }

}  // namespace

void FftConvolver::Filter(const std::vector<double>& input, std::vector<double>& output) const {
    const int64_t size = int64_t(input.size());
    FilterBlocks(input.data(), size, Into(output, size - int64_t(taps_.size()) + 1));
}

void FftConvolver::Filter(const int16_t* input, int64_t size, std::vector<double>& output) const {
    FilterBlocks(input, size, Into(output, size - int64_t(taps_.size()) + 1));
}

void FftConvolver::Filter(const int16_t* input, int64_t size, const BlockUse& use) const {
    FilterBlocks(input, size, use);
}

template <class T>
void FftConvolver::FilterBlocks(const T* input, int64_t size, const BlockUse& use) const {
    const int64_t m = int64_t(taps_.size());
    const int64_t n = size - (m - 1);
    RealFft& fft = plans_->fft;
    const int64_t hop = fftSize_ - (m - 1);
    // Output i needs input i .. i + m - 1 (the full convolution's point
    // i + m - 1); each block gives hop outputs, the first m - 1 points of its
    // inverse transform being wrapped around.
    for (int64_t out = 0; out < n; out += hop) {
        const int64_t take = std::min<int64_t>(fftSize_, size - out);
        ToDoubles(input + out, take, fft.Samples());
        std::fill(fft.Samples() + take, fft.Samples() + fftSize_, 0.0);
        fft.Forward();
        MultiplySpectrum(fft.Spectrum(), plans_->filter.data(), fft.Bins());
        fft.Inverse();
        use(out, fft.Samples() + m - 1, std::min(hop, n - out));
    }
}

}  // namespace vess
