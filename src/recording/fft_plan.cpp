#include "recording/fft_plan.h"

#include <fftw3.h>

#include <mutex>
#include <stdexcept>

namespace vess {
namespace {

std::mutex& PlannerMutex() {
    static std::mutex m;
    return m;
}

fftw_complex* AsFftw(std::complex<double>* p) { return reinterpret_cast<fftw_complex*>(p); }

}  // namespace

struct RealFft::Plans {
    fftw_plan forward = nullptr;
    fftw_plan inverse = nullptr;
};

RealFft::RealFft(int points, bool withInverse) : points_(points) {
    if (points < 1) throw std::invalid_argument("a transform needs at least one point");
    // FFTW's complex type is two doubles, laid out as std::complex<double>.
    samples_ = fftw_alloc_real(std::size_t(points));
    spectrum_ = reinterpret_cast<std::complex<double>*>(fftw_alloc_complex(std::size_t(Bins())));
    plans_ = std::make_unique<Plans>();
    const std::lock_guard lock(PlannerMutex());
    plans_->forward = fftw_plan_dft_r2c_1d(points, samples_, AsFftw(spectrum_), FFTW_ESTIMATE);
    if (withInverse)
        plans_->inverse = fftw_plan_dft_c2r_1d(points, AsFftw(spectrum_), samples_, FFTW_ESTIMATE);
}

RealFft::~RealFft() {
    {
        const std::lock_guard lock(PlannerMutex());
        if (plans_->forward) fftw_destroy_plan(plans_->forward);
        if (plans_->inverse) fftw_destroy_plan(plans_->inverse);
    }
    fftw_free(samples_);
    fftw_free(spectrum_);
}

void RealFft::Forward() { fftw_execute(plans_->forward); }

void RealFft::Inverse() {
    if (!plans_->inverse) throw std::logic_error("transform planned without its inverse");
    fftw_execute(plans_->inverse);
}

}  // namespace vess
