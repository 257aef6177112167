// Real discrete Fourier transforms of a fixed length over buffers of their
// own. Every FFTW plan of the program is made and destroyed here, under one
// lock: FFTW's planner is not thread-safe (executing a plan is), and batch
// workers, accuracy checks and spectra plan on different threads at once.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>

namespace vess {

class RealFft {
public:
    // Plans the forward transform of points samples, and the inverse one as
    // well when withInverse is set.
    explicit RealFft(int points, bool withInverse = false);
    ~RealFft();
    RealFft(const RealFft&) = delete;
    RealFft& operator=(const RealFft&) = delete;

    int Points() const { return points_; }
    int Bins() const { return points_ / 2 + 1; }
    // The samples (Points() values) and the spectrum (Bins() values).
    double* Samples() { return samples_; }
    std::complex<double>* Spectrum() { return spectrum_; }

    // Samples to spectrum.
    void Forward();
    // Spectrum to samples, unscaled (Points() times the inverse); needs
    // withInverse. The spectrum is overwritten.
    void Inverse();

private:
    struct Plans;
    int points_;
    double* samples_ = nullptr;
    std::complex<double>* spectrum_ = nullptr;
    std::unique_ptr<Plans> plans_;
};

}  // namespace vess
