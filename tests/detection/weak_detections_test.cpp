// Weak rises of the deconvolved trace, kept only where the event kernel fits
// the recorded trace with enough height; the fit stops before the next event.
#include <gtest/gtest.h>

#include <cmath>

#include "detection/method_detect.h"
#include "detection/weak_detections.h"
#include "trace_helpers.h"

namespace vess {
namespace {

constexpr double kIntervalUs = 50;
const EventKernel kKernel{0.5, 6};

std::vector<int16_t> Trace(int64_t points, const std::vector<int64_t>& onsets, double amplitude,
                           double noise, uint64_t seed) {
    return test::KernelTrace(points, onsets, amplitude, noise, kKernel, 0, seed);
}

TEST(WeakRuns, OnlyWholeRunsThatStayBelowTheThreshold) {
    // Low 4, high 5: the first run began before z, the third reaches 6, the
    // last is cut off; only the second is weak.
    const std::vector<double> z{5, 5, 0, 4.2, 4.5, 3, 0, 2, 6, 2, 0, 4.2, 4.3};
    const std::vector<WeakRun> runs = WeakRuns(z, 4, 5);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(std::tuple(runs[0].start, runs[0].top), std::tuple(3, 4));
    // Found piece by piece, split anywhere (in the run begun before z, in
    // the weak run), the same.
    for (int64_t split = 1; split <= int64_t(z.size()); ++split) {
        WeakRunScan scan(4, 5);
        scan.Scan(z.data(), 0, 1);
        scan.Scan(z.data(), 1, split);
        scan.Scan(z.data(), split, int64_t(z.size()));
        ASSERT_EQ(scan.Runs().size(), 1u) << split;
        EXPECT_EQ(std::tuple(scan.Runs()[0].start, scan.Runs()[0].top), std::tuple(3, 4)) << split;
    }
}

TEST(FittedKernelAmplitude, EventHeightRecoveredAndFastPulseSmall) {
    test::TempDir dir;
    const int64_t onset = 4000;
    std::vector<int16_t> x = Trace(12000, {onset}, 200, 20, 7);
    // A fast pulse of the same height; upward the event fits with a negative height.
    for (int64_t i = 9000; i < 9005; ++i) x[std::size_t(i)] -= 200;
    const auto rec = test::MakeRecording(dir / "weak.abf", x, kIntervalUs);
    for (int64_t centre : {onset + 10, onset + 30, onset + 60})
        EXPECT_NEAR(FittedKernelAmplitude(*rec, centre, kKernel, -1), 200, 10) << centre;
    EXPECT_LT(FittedKernelAmplitude(*rec, 9002, kKernel, -1), 40);
    EXPECT_LT(FittedKernelAmplitude(*rec, onset + 30, kKernel, +1), 0);
}

// A small event 15 ms before a large one keeps its height when the fit stops at the large one.
TEST(FittedKernelAmplitude, StopsBeforeTheNextEvent) {
    test::TempDir dir;
    const int64_t small = 4000, large = small + 300;  // 15 ms apart at 50 us
    std::vector<int16_t> x = Trace(12000, {small}, 150, 20, 7);
    const std::vector<int16_t> big = Trace(12000, {large}, 1500, 0, 3);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = int16_t(x[i] + big[i] + 2000);
    const auto rec = test::MakeRecording(dir / "pair.abf", x, kIntervalUs);
    // Over the whole window the large event pulls the fitted height far down.
    EXPECT_LT(FittedKernelAmplitude(*rec, small + 20, kKernel, -1), 100);
    EXPECT_NEAR(FittedKernelAmplitude(*rec, small + 20, kKernel, -1, large), 150, 15);
    // An end before the kernel's peak leaves no onset to try.
    EXPECT_EQ(FittedKernelAmplitude(*rec, small + 20, kKernel, -1, small - 100), 0);
}

TEST(TraceNoiseSd, MeasuresTheNoiseDespiteEventsAndDrift) {
    test::TempDir dir;
    std::vector<int16_t> x = Trace(400000, test::Every(2000, 390000, 4000), 150, 30, 11);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = int16_t(x[i] + int(i / 400));  // 1000-count drift
    const auto rec = test::MakeRecording(dir / "noise.abf", x, kIntervalUs);
    EXPECT_NEAR(TraceNoiseSd(*rec), 30, 1.5);
}

// Events of 1.3 noise SDs in white noise: the weak-rise rule neither loses
// events nor adds false ones (its gain, on recorded noise, is measured by `vess score`).
TEST(WeakDetections, NeitherLoseSmallEventsNorAddFalseOnesInWhiteNoise) {
    test::TempDir dir;
    const std::vector<int64_t> onsets = test::Every(3000, 395000, 2800);
    const auto rec = test::MakeRecording(dir / "small.abf", Trace(400000, onsets, 52, 40, 5), kIntervalUs);
    const MethodParameters p{
        .method = DetectionMethod::Deconvolution, .riseTauMs = kKernel.riseTauMs, .decayTauMs = kKernel.decayTauMs};
    const MethodRun withWeak = PrepareMethodRun(p, *rec, -1);
    MethodRun without = PrepareMethodRun(p, *rec, -1);
    without.weakFraction = 1;
    auto score = [&](const MethodRun& run) {
        std::pair<int, int> matchedFalse{0, 0};
        for (int64_t d : FindDetections(run, *rec, 0, rec->PointsPerChannel())) {
            const bool near = std::ranges::any_of(onsets, [&](int64_t o) { return d >= o - 60 && d <= o + 100; });
            (near ? matchedFalse.first : matchedFalse.second)++;
        }
        return matchedFalse;
    };
    const auto [matchedWith, falseWith] = score(withWeak);
    const auto [matchedWithout, falseWithout] = score(without);
    EXPECT_NEAR(withWeak.traceNoiseSd, 40, 2);
    EXPECT_GE(matchedWith, matchedWithout) << "of " << onsets.size() << "; false " << falseWith << ", " << falseWithout;
    EXPECT_TRUE(matchedWithout > 40 && falseWith <= falseWithout);
}

}  // namespace
}  // namespace vess
