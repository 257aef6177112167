// The baseline of the deconvolved trace leaves out the blocks that events
// occupy, so that a small event among dense large ones is measured as it is
// alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "detection/method_filter.h"
#include "support/test_recording.h"
#include "trace_helpers.h"

namespace vess {
namespace {

constexpr double kIntervalUs = 50;
const EventKernel kKernel{0.5, 6};

MethodFilter Deconvolution() {
    return MethodFilter({.method = DetectionMethod::Deconvolution, .riseTauMs = kKernel.riseTauMs,
                         .decayTauMs = kKernel.decayTauMs},
                        kIntervalUs, -1);
}

// The highest criterion within 5 ms after onset.
double PeakAfter(const std::vector<double>& criterion, int64_t onset) {
    return *std::max_element(criterion.begin() + onset, criterion.begin() + onset + 100);
}

TEST(BaselineLeaveOut, ASmallEventAmongDenseOnesIsMeasuredAsAlone) {
    constexpr int64_t kPoints = 40000, kSmall = 20000;
    // Large events every 2 ms (one in each of the baseline's blocks) for
    // 100 ms either side of the small one, which has 8 ms to itself.
    std::vector<int64_t> large;
    for (int64_t o = kSmall - 2000; o < kSmall + 2000; o += 40)
        if (std::abs(o - kSmall) >= 160) large.push_back(o);
    const std::vector<int16_t> alone = test::KernelTrace(kPoints, {kSmall}, 60, 5, kKernel);
    const std::vector<int16_t> burst = test::KernelTrace(kPoints, large, 300, 0, kKernel);
    std::vector<int16_t> dense(alone);
    for (std::size_t i = 0; i < dense.size(); ++i) dense[i] = int16_t(dense[i] + burst[i] + 2000);

    const MethodFilter all = Deconvolution();
    MethodFilter leaving(all);
    const NoiseLevel noise = RobustNoise(all.Compute(alone, 0, kPoints));
    leaving.LeaveOutAbove(noise.centre + 3 * noise.sd);

    const double asAlone = PeakAfter(leaving.Compute(alone, 0, kPoints), kSmall);
    const double amongAll = PeakAfter(all.Compute(dense, 0, kPoints), kSmall);
    const double amongLeaving = PeakAfter(leaving.Compute(dense, 0, kPoints), kSmall);
    // Counting every block, the burst lifts the baseline above the small
    // event; leaving its blocks out, the event keeps its height.
    EXPECT_LT(amongAll, 0.5 * asAlone);
    EXPECT_NEAR(amongLeaving, asAlone, 0.05 * asAlone);
    // A level nothing reaches leaves no block out: the criterion is the one
    // that counts every block (but for the rounding of a longer transform).
    MethodFilter unreached(all);
    unreached.LeaveOutAbove(1e300);
    const std::vector<double> a = unreached.Compute(dense, 0, kPoints), b = all.Compute(dense, 0, kPoints);
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1e-9) << i;
}

TEST(BaselineLeaveOut, NoiseAwayFromEventsIsTheNoiseWithoutThem) {
    // 20 s of noise of 5 counts, alone and with 40 events a second of 10 to
    // 200 counts.
    constexpr int64_t kPoints = 400000;
    const std::vector<int16_t> quiet = test::KernelTrace(kPoints, {}, 0, 5, kKernel);
    std::vector<double> x(quiet.begin(), quiet.end());
    const std::vector<double> shape = KernelSamples(kKernel, kIntervalUs, 3000);
    for (int64_t o = 100, k = 0; o + 3000 < kPoints; o += 500, ++k) {
        const double amplitude = 10 * std::pow(20.0, double(k % 13) / 12);
        for (std::size_t i = 0; i < shape.size(); ++i) x[std::size_t(o) + i] -= amplitude * shape[i];
    }
    const std::vector<int16_t> busy(x.begin(), x.end());
    test::TempDir dir;
    const auto quietRec = test::MakeRecording(dir / "quiet.abf", quiet, kIntervalUs, 1);
    const auto busyRec = test::MakeRecording(dir / "busy.abf", busy, kIntervalUs, 1);
    MethodFilter filter = Deconvolution();
    const NoiseLevel truth = CriterionNoise(filter, *quietRec);
    filter.LeaveOutAbove(truth.centre + 3 * truth.sd);
    const double everywhere = CriterionNoise(filter, *busyRec).sd;
    const double away = CriterionNoise(filter, *busyRec, NearEvents::NotANumber).sd;
    // Measured everywhere, the events widen the noise by 3 %; away from them
    // it is the noise's own within 1 % (measured: 3.3 % and 0.7 %).
    EXPECT_GT(everywhere, 1.025 * truth.sd);
    EXPECT_NEAR(away, truth.sd, 0.01 * truth.sd);
}

}  // namespace
}  // namespace vess
