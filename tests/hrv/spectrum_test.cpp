#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "hrv/rr_intervals.h"
#include "hrv/spectrum.h"

namespace vess::hrv {
namespace {

// RR(t) = 700 + 30 sin(2 pi 0.1 t) + 20 sin(2 pi 0.25 t) ms, each interval
// taking the value at the time of the beat that ends it (solved by fixed
// point: the slope is below 0.02 ms/ms, so five steps settle it). A sine of
// amplitude A carries A^2 / 2: LF 450 ms^2, HF 200 ms^2, VLF none.
struct Series {
    std::vector<double> timesMs, rrMs;
};
Series TwoSines(int count) {
    const auto f = [](double ms) {
        const double t = ms / 1000;
        return 700 + 30 * std::sin(2 * M_PI * 0.1 * t) + 20 * std::sin(2 * M_PI * 0.25 * t);
    };
    Series s;
    double t = 0;
    for (int k = 0; k < count; ++k) {
        double end = t + 700;
        for (int i = 0; i < 5; ++i) end = t + f(end);
        s.rrMs.push_back(end - t);
        s.timesMs.push_back(end);
        t = end;
    }
    return s;
}

// Tolerance 3 %: the Hann window's main lobe (+-2 bins of 1/64 Hz) lies
// inside each band, its side lobes put well under 0.1 % outside; the sum of
// a windowed sine's density over all bins matches A^2/2 to within the
// window's ripple for off-bin frequencies (under 1 %), and the spline through
// beats 0.7 s apart loses under 1 % of the 0.25 Hz amplitude squared.
TEST(Spectrum, WelchRecoversTwoSines) {
    const Series s = TwoSines(1000);
    const SpectrumResult r = AnalyseSpectrum(s.timesMs, s.rrMs, HumanSpectrumPreset());
    ASSERT_EQ(r.error, "");
    EXPECT_GT(r.windows, 15);
    EXPECT_NEAR(r.lf.powerMs2, 450, 450 * 0.03);
    EXPECT_NEAR(r.hf.powerMs2, 200, 200 * 0.03);
    EXPECT_LT(r.vlf.powerMs2, 2);
    EXPECT_NEAR(r.lf.peakHz, 0.1, 1.0 / 64);
    EXPECT_NEAR(r.hf.peakHz, 0.25, 1.0 / 64);
    EXPECT_NEAR(r.lfHfRatio, 2.25, 2.25 * 0.05);
    EXPECT_NEAR(r.lfNu + r.hfNu, 100, 1e-9);
    EXPECT_NEAR(r.lfNu, 100 * 450.0 / 650, 1.5);
    // The density integrates to the variance of the detrended series.
    double total = 0;
    for (double p : r.densityMs2PerHz) total += p * (r.frequencyHz[1] - r.frequencyHz[0]);
    EXPECT_NEAR(total, 650, 650 * 0.03);
}

// Lomb-Scargle on the uneven beats needs no resampling; 5 %: its frequency
// grid is four times finer than 1/T and leakage of the unwindowed sine
// spreads some power into neighbouring bins across the band edges.
TEST(Spectrum, LombScargleRecoversTwoSines) {
    const Series s = TwoSines(600);
    SpectrumOptions o;
    o.method = SpectrumMethod::LombScargle;
    const SpectrumResult r = AnalyseSpectrum(s.timesMs, s.rrMs, o);
    ASSERT_EQ(r.error, "");
    EXPECT_NEAR(r.lf.powerMs2, 450, 450 * 0.05);
    EXPECT_NEAR(r.hf.powerMs2, 200, 200 * 0.05);
    EXPECT_NEAR(r.lf.peakHz, 0.1, 0.005);
    EXPECT_NEAR(r.hf.peakHz, 0.25, 0.005);
}

TEST(Spectrum, MousePresetScalesTheBandsAndFailuresAreReported) {
    const SpectrumOptions mouse = MouseSpectrumPreset();
    const SpectrumOptions human = HumanSpectrumPreset();
    EXPECT_NEAR(mouse.bands.vlfHighHz, 10 * human.bands.vlfHighHz, 1e-12);
    EXPECT_NEAR(mouse.bands.hfHighHz, 10 * human.bands.hfHighHz, 1e-12);
    EXPECT_GT(mouse.resampleHz, 2 * mouse.bands.hfHighHz);  // Nyquist above the HF band

    // A mouse series at 10 beats a second with sines at 1 Hz (LF) and 3 Hz (HF).
    std::vector<double> times, rr;
    double t = 0;
    for (int k = 0; k < 3000; ++k) {
        const double v = 100 + 4 * std::sin(2 * M_PI * 1.0 * t / 1000) + 2 * std::sin(2 * M_PI * 3.0 * t / 1000);
        t += v;
        times.push_back(t);
        rr.push_back(v);
    }
    const SpectrumResult r = AnalyseSpectrum(times, rr, mouse);
    ASSERT_EQ(r.error, "");
    EXPECT_NEAR(r.lf.peakHz, 1.0, 0.05);
    EXPECT_NEAR(r.hf.peakHz, 3.0, 0.05);
    EXPECT_NEAR(r.lf.powerMs2, 8, 8 * 0.1);  // 4^2 / 2, the value taken at the starting beat
    EXPECT_NEAR(r.hf.powerMs2, 2, 2 * 0.1);

    const std::vector<double> few{1, 2, 3};
    EXPECT_NE(AnalyseSpectrum(few, few, human).error, "");
    // 300 s at 1e9 Hz would be 3e11 points; a beat at 1e30 ms, as many
    // Lomb-Scargle frequencies: both refused before anything is held.
    SpectrumOptions fast = mouse;
    fast.resampleHz = 1e9;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("choose a lower resampling rate"), std::string::npos);
    times.back() = 1e30;
    fast.method = SpectrumMethod::LombScargle;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("analyse a shorter stretch"), std::string::npos);
}

TEST(Spectrum, SplineAndDetrendPieces) {
    // A natural spline reproduces a straight line exactly and passes through its knots.
    const std::vector<double> x{0, 1, 2.5, 4}, line{1, 3, 6, 9};
    const std::vector<double> at{0, 0.5, 2.5, 3.25, 4};
    const auto y = CubicSplineAt(x, line, at);
    for (std::size_t i = 0; i < at.size(); ++i) EXPECT_NEAR(y[i], 1 + 2 * at[i], 1e-12);
    std::vector<double> ramp{1, 3, 5, 7};
    RemoveTrend(ramp, Detrend::Linear);
    for (double v : ramp) EXPECT_NEAR(v, 0, 1e-12);
    std::vector<double> shifted{1, 3, 5, 7};
    RemoveTrend(shifted, Detrend::Mean);
    EXPECT_DOUBLE_EQ(shifted[0], -3);
}

}  // namespace
}  // namespace vess::hrv
