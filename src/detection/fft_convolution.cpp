#include "detection/fft_convolution.h"

#include <algorithm>
#include <complex>

#include "recording/fft_plan.h"

namespace vess {

struct FftConvolver::Plans {
    explicit Plans(int points) : fft(points, true), filter(std::size_t(fft.Bins())) {}
    RealFft fft;
    std::vector<std::complex<double>> filter;  // the taps' spectrum
};

FftConvolver::FftConvolver(std::vector<double> taps, int64_t centre) : taps_(std::move(taps)), centre_(centre) {
    if (taps_.empty()) taps_ = {1.0};
    // A block four times the filter (at least 4096 points) keeps the share of
    // each transform thrown away small.
    fftSize_ = 4096;
    while (fftSize_ < 4 * int64_t(taps_.size())) fftSize_ *= 2;
    plans_ = std::make_unique<Plans>(int(fftSize_));
    RealFft& fft = plans_->fft;
    std::fill(fft.Samples(), fft.Samples() + fftSize_, 0.0);
    std::copy(taps_.begin(), taps_.end(), fft.Samples());
    fft.Forward();
    std::copy(fft.Spectrum(), fft.Spectrum() + fft.Bins(), plans_->filter.begin());
}

FftConvolver::~FftConvolver() = default;

void FftConvolver::Filter(const std::vector<double>& input, std::vector<double>& output) const {
    const int64_t m = int64_t(taps_.size());
    const int64_t n = int64_t(input.size()) - (m - 1);
    output.resize(std::size_t(std::max<int64_t>(n, 0)));  // every value is written below
    if (n <= 0) return;
    RealFft& fft = plans_->fft;
    const std::complex<double>* filter = plans_->filter.data();
    const int64_t hop = fftSize_ - (m - 1);
    const double scale = 1.0 / double(fftSize_);
    // Output i needs input i .. i + m - 1 (the full convolution's point
    // i + m - 1); each block gives hop outputs, the first m - 1 points of its
    // inverse transform being wrapped around.
    for (int64_t out = 0; out < n; out += hop) {
        const int64_t take = std::min<int64_t>(fftSize_, int64_t(input.size()) - out);
        std::copy(input.begin() + out, input.begin() + out + take, fft.Samples());
        std::fill(fft.Samples() + take, fft.Samples() + fftSize_, 0.0);
        fft.Forward();
        for (int k = 0; k < fft.Bins(); ++k) fft.Spectrum()[k] *= filter[k];
        fft.Inverse();
        const int64_t count = std::min(hop, n - out);
        for (int64_t i = 0; i < count; ++i) output[std::size_t(out + i)] = fft.Samples()[m - 1 + i] * scale;
    }
}

}  // namespace vess
