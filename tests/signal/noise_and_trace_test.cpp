// Noise measures and spectra on traces with closed-form answers; trace tools by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include "detection/fft_convolution.h"
#include "statistics/welch_psd.h"
#include "signal/noise_measures.h"
#include "signal/trace_tools.h"
#include "signal/welch_spectrum.h"
#include "support/test_recording.h"

namespace vess {
namespace {

// Gaussian samples by Box-Muller over our own uniform draws (the library's
// distributions differ between implementations).
std::vector<double> GaussianNoise(std::size_t n, double sd, uint64_t seed) {
    std::mt19937_64 rng(seed);
    const auto uniform = [&] { return (double(rng() >> 11) + 0.5) / double(1ull << 53); };
    std::vector<double> v(n);
    for (auto& x : v) x = sd * std::sqrt(-2 * std::log(uniform())) * std::cos(2 * std::numbers::pi * uniform());
    return v;
}

std::vector<double> Sine(std::size_t n, double amplitude, double hz, double fs, double offset = 0) {
    std::vector<double> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = offset + amplitude * std::sin(2 * std::numbers::pi * hz * double(i) / fs);
    return v;
}

TEST(NoiseMeasures, GaussianNoiseAndASineOfKnownAmplitude) {
    // 200000 draws of sd 2: the sample SD is within 2 / sqrt(2 n) = 0.3 % of 2.
    const auto v = GaussianNoise(200000, 2.0, 11);
    const auto m = MeasureNoise(v, 0.05);
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->sd, 2.0, 0.02);
    EXPECT_NEAR(m->rmsAboutBaseline, 2.0, 0.02);
    EXPECT_NEAR(m->median, 0.0, 0.02);
    // Parseval: the density integrated over 0..fs/2 is the variance.
    const PowerSpectrum psd = WelchSpectrum(v, 20000, 1024);
    double power = 0;
    for (double p : psd.psd) power += p * 20000.0 / 1024;
    EXPECT_NEAR(power, 4.0, 0.08);
    EXPECT_EQ(psd.segments, 2 * 200000 / 1024 - 1);

    // 50 Hz at 10 kHz, offset 1000: samples on the crests give peak-to-peak 2A, RMS A / sqrt(2);
    // with the closing sample the coastline is 4A a period over 50 periods.
    const double a = 3;
    const auto sine = MeasureNoise(Sine(10000, a, 50, 10000, 1000), 0.1);
    ASSERT_TRUE(sine);
    EXPECT_NEAR(sine->peakToPeak, 2 * a, 1e-9);
    EXPECT_NEAR(sine->rmsAboutBaseline, a / std::sqrt(2.0), 1e-9);
    EXPECT_NEAR(sine->median, 1000, 1e-9);
    const auto closed = MeasureNoise(Sine(10001, a, 50, 10000, 1000), 0.1);
    EXPECT_NEAR(closed->coastline, 50 * 4 * a, 1e-6);
    EXPECT_NEAR(closed->coastlinePerMs, 50 * 4 * a / 1000, 1e-9);
    EXPECT_FALSE(MeasureNoise(std::vector<double>{1.0}, 0.1));
}

// Noise measured in pieces (median from value counts) equals noise measured
// whole, odd or even, cut at the end; the spectrum read a segment at a time (a
// 2-hour file once needed 2.5 GB to hold its samples twice) equals the
// spectrum of the stretch read whole: the whole file, an offset stretch that
// is no multiple of the hop, and exactly one segment at the file's end.
TEST(NoiseMeasures, RecordingNoiseAndSpectrumInPiecesEqualTheWholeStretch) {
    test::TempDir dir;
    std::mt19937 gen(7);
    std::normal_distribution<double> noise(0, 300);
    std::vector<int16_t> samples(20011);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(std::clamp(std::nearbyint(noise(gen) + 2000 * std::sin(i / 7.0)), -32768.0, 32767.0));
    const auto rec = test::MakeRecording(dir / "n.abf", samples, 50, 3.0f);
    const struct {
        int64_t first, count;
        int segment;
    } cases[] = {{0, 20011, 1024}, {17, 10000, 256}, {19000, 5000, 256}, {20011 - 64, 64, 64}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        const TraceStretch whole = ReadStretch(*rec, c.first, c.count);
        const auto expected = MeasureNoise(whole.values, whole.intervalMs);
        const auto pieces = MeasureRecordingNoise(*rec, c.first, c.count, 999);
        ASSERT_TRUE(expected && pieces);
        EXPECT_EQ(pieces->points, expected->points);
        for (auto field : {&NoiseMeasures::mean, &NoiseMeasures::median, &NoiseMeasures::sd,
                           &NoiseMeasures::rmsAboutBaseline, &NoiseMeasures::peakToPeak, &NoiseMeasures::coastline,
                           &NoiseMeasures::coastlinePerMs})
            EXPECT_EQ((*pieces).*field, (*expected).*field);
        if (c.first + c.count > 20011) continue;  // the spectrum refuses a stretch cut at the end
        const PowerSpectrum spectrum = WelchSpectrum(whole.values, 1e3 / whole.intervalMs, c.segment);
        const PowerSpectrum streamed = RecordingSpectrum(*rec, c.first, c.count, c.segment);
        ASSERT_GT(spectrum.segments, 0);
        EXPECT_EQ(streamed.segments, spectrum.segments);
        EXPECT_EQ(streamed.frequencyHz, spectrum.frequencyHz);
        EXPECT_EQ(streamed.psd, spectrum.psd);
    }
    // A stretch beyond the file or shorter than a segment gives nothing.
    EXPECT_FALSE(MeasureRecordingNoise(*rec, 20010, 5));
    EXPECT_EQ(RecordingSpectrum(*rec, 20000, 64, 64).segments, 0);
    EXPECT_EQ(RecordingSpectrum(*rec, 0, 63, 64).segments, 0);
}

TEST(WelchSpectrum, SinePeakAtItsFrequencyWithItsPower) {
    // 100 Hz on bin 10 of 10 Hz bins; the Hann window spreads A^2/2 over bins 9..11.
    const double a = 3;
    const auto v = Sine(10240 * 2, a, 100, 10240);
    const PowerSpectrum psd = WelchSpectrum(v, 10240, 1024);
    ASSERT_EQ(psd.psd.size(), 513u);
    const auto peak = std::max_element(psd.psd.begin(), psd.psd.end()) - psd.psd.begin();
    EXPECT_DOUBLE_EQ(psd.frequencyHz[std::size_t(peak)], 100.0);
    double power = 0;
    for (int k = 8; k <= 12; ++k) power += psd.psd[std::size_t(k)] * 10.0;
    EXPECT_NEAR(power, a * a / 2, 1e-6);
    // Refused lengths give no spectrum.
    EXPECT_EQ(WelchSpectrum(v, 10240, 1000).segments, 0);
    EXPECT_EQ(WelchSpectrum(std::vector<double>(100, 0.0), 10240, 128).segments, 0);
    EXPECT_EQ(DefaultSegmentLength(3000), 2048);
}

TEST(TraceTools, DifferenceTraceAndVarianceMeanOverARunningWindow) {
    // Steps +1, +2, -1 over 0.5 ms: 2, 4, -2 units/ms at 10.25, 10.75, 11.25 ms.
    const TraceStretch s{{0, 1, 3, 2}, 0.5, 10, "pA"};
    const XYTrace d = DifferenceTrace(s);
    EXPECT_EQ(d.x, (std::vector<double>{10.25, 10.75, 11.25}));
    EXPECT_EQ(d.y, (std::vector<double>{2, 4, -2}));
    EXPECT_EQ(DifferencePlot(s).yAxis, "pA/ms");

    // Windows of 3 over 1 2 3 4 10: means 2, 3, 17/3; variances (n - 1) 1, 1
    // and ((8/3)^2 + (5/3)^2 + (13/3)^2) / 2 = 258/18 = 43/3.
    for (double offset : {0.0, 1e6}) {
        std::vector<double> v{1, 2, 3, 4, 10};
        for (double& x : v) x += offset;
        const XYTrace t = VarianceMeanTrace(v, 3);
        ASSERT_EQ(t.x.size(), 3u);
        EXPECT_NEAR(t.x[0] - offset, 2, 1e-9);
        EXPECT_NEAR(t.x[2] - offset, 17.0 / 3, 1e-9);
        EXPECT_NEAR(t.y[0], 1, 1e-6);
        EXPECT_NEAR(t.y[1], 1, 1e-6);
        EXPECT_NEAR(t.y[2], 43.0 / 3, 1e-6);
    }
    EXPECT_TRUE(VarianceMeanTrace(std::vector<double>{1, 2}, 3).x.empty());
    EXPECT_TRUE(VarianceMeanTrace(std::vector<double>{1, 2}, 1).x.empty());
}

// Convolvers and Welch spectra planned on two threads at once (an unlocked planner
// corrupts the heap within a few hundred plans).
TEST(FftPlanner, ConvolversAndSpectraPlannedOnTwoThreadsAtOnce) {
    constexpr int kRounds = 2000;
    int convolutionErrors = 0, spectrumErrors = 0;
    std::thread convolving([&] {
        for (int r = 0; r < kRounds; ++r) {
            // A causal filter over a delta gives its taps back.
            std::vector<double> taps(std::size_t(3 + r % 40));
            for (std::size_t k = 0; k < taps.size(); ++k) taps[k] = double(k + 1);
            FftConvolver conv(taps, 0);
            std::vector<double> input(taps.size() * 2 - 1, 0.0), output;
            input[taps.size() - 1] = 1;
            conv.Filter(input, output);
            for (std::size_t i = 0; i < output.size(); ++i)
                if (std::abs(output[i] - taps[i]) > 1e-9) ++convolutionErrors;
        }
    });
    for (int r = 0; r < kRounds; ++r) {
        // A sine at bin 4 of a new window length each round (each plans afresh).
        const int n = 16 + r;
        std::vector<double> y(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i) y[std::size_t(i)] = std::sin(2 * std::numbers::pi * 4 * i / n);
        const WelchPsdResult s = WelchPsd(y, 1.0, n, 0);
        const auto peak = std::max_element(s.density.begin(), s.density.end());
        if (peak - s.density.begin() != 4) ++spectrumErrors;
    }
    convolving.join();
    EXPECT_EQ(convolutionErrors, 0);
    EXPECT_EQ(spectrumErrors, 0);
}

}  // namespace
}  // namespace vess
