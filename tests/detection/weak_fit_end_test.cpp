// The kernel fit that confirms a weak detection stops before the next event:
// a small event 15 ms before a large one keeps its height.
#include <gtest/gtest.h>

#include "detection/weak_detections.h"
#include "trace_helpers.h"

namespace vess {
namespace {

TEST(FittedKernelAmplitude, StopsBeforeTheNextEvent) {
    const EventKernel kernel{0.5, 6};
    test::TempDir dir;
    const int64_t small = 4000, large = small + 300;  // 15 ms apart at 50 us
    std::vector<int16_t> x = test::KernelTrace(12000, {small}, 150, 20, kernel, 0, 7);
    const std::vector<int16_t> big = test::KernelTrace(12000, {large}, 1500, 0, kernel);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = int16_t(x[i] + big[i] + 2000);
    const auto rec = test::MakeRecording(dir / "pair.abf", x, 50);
    // Over the whole window the large event pulls the fitted height far down.
    EXPECT_LT(FittedKernelAmplitude(*rec, small + 20, kernel, -1), 100);
    EXPECT_NEAR(FittedKernelAmplitude(*rec, small + 20, kernel, -1, large), 150, 15);
    // An end before the kernel's peak leaves no onset to try.
    EXPECT_EQ(FittedKernelAmplitude(*rec, small + 20, kernel, -1, small - 100), 0);
}

}  // namespace
}  // namespace vess
