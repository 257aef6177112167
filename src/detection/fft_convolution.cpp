#include "detection/fft_convolution.h"

#include <fftw3.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace vess {
namespace {

// FFTW's planner is not thread-safe (executing a plan is): batch runs build
// convolvers on several threads at once.
std::mutex& PlannerMutex() {
    static std::mutex m;
    return m;
}

}  // namespace

struct FftConvolver::Plans {
    double* time = nullptr;
    fftw_complex* freq = nullptr;
    fftw_complex* filter = nullptr;
    fftw_plan forward = nullptr;
    fftw_plan backward = nullptr;
    ~Plans() {
        const std::lock_guard lock(PlannerMutex());
        if (forward) fftw_destroy_plan(forward);
        if (backward) fftw_destroy_plan(backward);
        fftw_free(time);
        fftw_free(freq);
        fftw_free(filter);
    }
};

FftConvolver::FftConvolver(std::vector<double> taps, int64_t centre)
    : taps_(std::move(taps)), centre_(centre), plans_(std::make_unique<Plans>()) {
    if (taps_.empty()) taps_ = {1.0};
    // A block four times the filter (at least 4096 points) keeps the share of
    // each transform thrown away small.
    fftSize_ = 4096;
    while (fftSize_ < 4 * int64_t(taps_.size())) fftSize_ *= 2;
    const int n = int(fftSize_);
    Plans& p = *plans_;
    p.time = fftw_alloc_real(std::size_t(n));
    p.freq = fftw_alloc_complex(std::size_t(n / 2 + 1));
    p.filter = fftw_alloc_complex(std::size_t(n / 2 + 1));
    const std::lock_guard lock(PlannerMutex());
    p.forward = fftw_plan_dft_r2c_1d(n, p.time, p.freq, FFTW_ESTIMATE);
    p.backward = fftw_plan_dft_c2r_1d(n, p.freq, p.time, FFTW_ESTIMATE);
    std::fill(p.time, p.time + n, 0.0);
    std::copy(taps_.begin(), taps_.end(), p.time);
    fftw_execute(p.forward);
    std::memcpy(p.filter, p.freq, sizeof(fftw_complex) * std::size_t(n / 2 + 1));
}

FftConvolver::~FftConvolver() = default;

void FftConvolver::Filter(const std::vector<double>& input, std::vector<double>& output) const {
    const int64_t m = int64_t(taps_.size());
    const int64_t n = int64_t(input.size()) - (m - 1);
    output.assign(std::size_t(std::max<int64_t>(n, 0)), 0.0);
    if (n <= 0) return;
    Plans& p = *plans_;
    const int64_t hop = fftSize_ - (m - 1);
    const double scale = 1.0 / double(fftSize_);
    // Output i needs input i .. i + m - 1 (the full convolution's point
    // i + m - 1); each block gives hop outputs, the first m - 1 points of its
    // inverse transform being wrapped around.
    for (int64_t out = 0; out < n; out += hop) {
        const int64_t take = std::min<int64_t>(fftSize_, int64_t(input.size()) - out);
        std::copy(input.begin() + out, input.begin() + out + take, p.time);
        std::fill(p.time + take, p.time + fftSize_, 0.0);
        fftw_execute(p.forward);
        for (int64_t k = 0; k <= fftSize_ / 2; ++k) {
            const double re = p.freq[k][0] * p.filter[k][0] - p.freq[k][1] * p.filter[k][1];
            const double im = p.freq[k][0] * p.filter[k][1] + p.freq[k][1] * p.filter[k][0];
            p.freq[k][0] = re;
            p.freq[k][1] = im;
        }
        fftw_execute(p.backward);
        const int64_t count = std::min(hop, n - out);
        for (int64_t i = 0; i < count; ++i) output[std::size_t(out + i)] = p.time[m - 1 + i] * scale;
    }
}

}  // namespace vess
