// Weak rises of the deconvolved trace, kept only where the event kernel fits
// the recorded trace with enough height.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "detection/method_detect.h"
#include "detection/weak_detections.h"
#include "support/test_recording.h"

namespace vess {
namespace {

constexpr double kIntervalUs = 50;  // 20 kHz
const EventKernel kKernel{0.5, 6};

// Gaussian noise of SD noise around -2000 counts with downward kernel-shaped
// events of the given amplitude at the onsets.
std::vector<int16_t> Trace(int64_t points, const std::vector<int64_t>& onsets, double amplitude,
                           double noise, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::normal_distribution<double> gauss(0, noise);
    std::vector<double> x(static_cast<std::size_t>(points));
    for (double& v : x) v = -2000 + gauss(rng);
    const std::vector<double> shape = KernelSamples(kKernel, kIntervalUs, 2000);
    for (int64_t o : onsets)
        for (int64_t i = 0; i < 2000 && o + i < points; ++i) x[std::size_t(o + i)] -= amplitude * shape[std::size_t(i)];
    std::vector<int16_t> out;
    for (double v : x) out.push_back(int16_t(std::lround(v)));
    return out;
}

TEST(WeakRuns, OnlyWholeRunsThatStayBelowTheThreshold) {
    // low 4, high 5: the first run began before z, the third reaches 6, the
    // last is cut off by the end; only the second (4.2, 4.5) is weak.
    const std::vector<double> z{5, 5, 0, 4.2, 4.5, 3, 0, 2, 6, 2, 0, 4.2, 4.3};
    const std::vector<WeakRun> runs = WeakRuns(z, 4, 5);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].start, 3);
    EXPECT_EQ(runs[0].top, 4);
}

TEST(FittedKernelAmplitude, EventHeightRecoveredAndFastPulseSmall) {
    test::TempDir dir;
    const int64_t onset = 4000;
    std::vector<int16_t> x = Trace(12000, {onset}, 200, 20, 7);
    // A fast downward pulse of the same height far from the event.
    for (int64_t i = 9000; i < 9005; ++i) x[std::size_t(i)] -= 200;
    const auto rec = test::MakeRecording(dir / "weak.abf", x, kIntervalUs);
    // The fit finds the onset within 3 ms of any centre near the peak; 20
    // counts of noise over some 500 points leave a few counts of error.
    for (int64_t centre : {onset + 10, onset + 30, onset + 60})
        EXPECT_NEAR(FittedKernelAmplitude(*rec, centre, kKernel, -1), 200, 10) << centre;
    EXPECT_LT(FittedKernelAmplitude(*rec, 9002, kKernel, -1), 40);
    // Upward, the same event fits with a negative height.
    EXPECT_LT(FittedKernelAmplitude(*rec, onset + 30, kKernel, +1), 0);
}

TEST(TraceNoiseSd, MeasuresTheNoiseDespiteEventsAndDrift) {
    test::TempDir dir;
    std::vector<int64_t> onsets;
    for (int64_t o = 2000; o < 390000; o += 4000) onsets.push_back(o);
    std::vector<int16_t> x = Trace(400000, onsets, 150, 30, 11);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = int16_t(x[i] + int(i / 400));  // 1000-count drift
    const auto rec = test::MakeRecording(dir / "noise.abf", x, kIntervalUs);
    EXPECT_NEAR(TraceNoiseSd(*rec), 30, 1.5);
}

// Events of 1.3 noise SDs in white noise: many stay below the deconvolved
// trace's threshold, and none is 2.2 SDs tall, so the weak-rise rule must
// neither lose events nor add false ones (its gain is on recorded noise,
// measured by `vess score`).
TEST(WeakDetections, NeitherLoseSmallEventsNorAddFalseOnesInWhiteNoise) {
    test::TempDir dir;
    std::vector<int64_t> onsets;
    for (int64_t o = 3000; o < 395000; o += 2800) onsets.push_back(o);
    const auto rec = test::MakeRecording(dir / "small.abf", Trace(400000, onsets, 52, 40, 5), kIntervalUs);
    MethodParameters p;
    p.method = DetectionMethod::Deconvolution;
    p.riseTauMs = kKernel.riseTauMs;
    p.decayTauMs = kKernel.decayTauMs;
    const MethodRun withWeak = PrepareMethodRun(p, *rec, -1);
    MethodRun without = PrepareMethodRun(p, *rec, -1);
    without.weakFraction = 1;
    auto score = [&](const MethodRun& run) {
        std::pair<int, int> matchedFalse{0, 0};
        for (int64_t d : FindDetections(run, *rec, 0, rec->PointsPerChannel())) {
            const bool near = std::any_of(onsets.begin(), onsets.end(), [&](int64_t o) { return d >= o - 60 && d <= o + 100; });
            (near ? matchedFalse.first : matchedFalse.second)++;
        }
        return matchedFalse;
    };
    const auto [matchedWith, falseWith] = score(withWeak);
    const auto [matchedWithout, falseWithout] = score(without);
    EXPECT_NEAR(withWeak.traceNoiseSd, 40, 2);
    EXPECT_GE(matchedWith, matchedWithout) << matchedWith << " and " << matchedWithout << " of " << onsets.size() << "; false " << falseWith << " and " << falseWithout;
    EXPECT_GT(matchedWithout, 40);
    EXPECT_LE(falseWith, falseWithout);
}

}  // namespace
}  // namespace vess
