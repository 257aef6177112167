#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "signal/filter_channel.h"
#include "signal/filter_design.h"
#include "support/test_recording.h"

namespace vess {
namespace {

struct BesselReference {
    int order;
    FilterPass pass;
    double cutoffHz;
    double hz[3], db[3];
};

// scipy 1.10.1 at fs = 20000:
//   sos = signal.bessel(order, cutoff, btype=..., norm="mag", fs=20000, output="sos")
//   20*log10(abs(signal.sosfreqz(sos, worN=hz, fs=20000)[1]))
// norm="mag" puts -3 dB at the cut-off.
const BesselReference kBessel[] = {
    {1, FilterPass::Low, 1000, {500, 1000, 5000}, {-0.9583601765, -3.010299957, -16.11335117}},
    {2, FilterPass::Low, 1000, {500, 1000, 5000}, {-0.703656867, -3.010299957, -28.01141109}},
    {3, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.6804544291, -12.50025104, -39.38190937}},
    {4, FilterPass::Low, 1000, {250, 2000, 5000}, {-0.171292405, -14.0476685, -49.86210584}},
    {5, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.7105524086, -14.81789793, -59.32863953}},
    {6, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.719158735, -15.00106979, -67.8627643}},
    {7, FilterPass::Low, 1000, {250, 2000, 5000}, {-0.1794534119, -14.83874934, -75.6148354}},
    {8, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.7274692355, -14.53194364, -82.71369333}},
    {16, FilterPass::Low, 1000, {500, 1000, 2000}, {-0.7364611775, -3.010299957, -13.25292793}},
    {8, FilterPass::Low, 9000, {4000, 9000, 9900}, {-0.03877386221, -3.010299957, -114.9693531}},
    {4, FilterPass::High, 100, {50, 100, 200}, {-13.40693498, -3.010299957, -0.7047628835}},
};

TEST(BesselFilter, ResponsesAgreeWithTheReferenceDesignAcrossOrdersAndPasses) {
    for (const BesselReference& r : kBessel) {
        const FilterDesign d = DesignFilter(FilterChoice{.kind = FilterKind::Bessel, .pass = r.pass, .cutoffHz = r.cutoffHz, .order = r.order}, 20000);
        ASSERT_TRUE(d.error.empty()) << d.error;
        EXPECT_EQ(d.sections.size(), std::size_t((r.order + 1) / 2));
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(ResponseDb(d.sections, r.hz[i], 20000), r.db[i], 1e-6)
                << "order " << r.order << " at " << r.hz[i] << " Hz";
    }
}

// The Gaussian's gain is exp(-ln 2 / 2 (f / fc)^2), -3.0103 (f / fc)^2 dB, for
// cut-offs far below the sampling frequency; near half of it the sampled
// kernel is widened until the gain at the cut-off is -3 dB all the same.
TEST(GaussianFilter, GainFollowsTheGaussianAndIsMinus3DbAtTheCutoff) {
    const double minus3 = -10 * std::log10(2.0);
    for (double fc : {20.0, 100.0, 1000.0}) {
        const FilterDesign d = DesignFilter(FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::Low, .cutoffHz = fc, .order = 4}, 20000);
        ASSERT_TRUE(d.error.empty()) << d.error;
        ASSERT_EQ(d.kernel.size() % 2, 1u);
        for (double ratio : {0.5, 1.0, 2.0})
            EXPECT_NEAR(DesignResponseDb(d, ratio * fc, 20000), minus3 * ratio * ratio, 2e-3) << fc << " " << ratio;
    }
    const FilterDesign nearNyquist = DesignFilter(FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::Low, .cutoffHz = 8000, .order = 4}, 20000);
    EXPECT_NEAR(DesignResponseDb(nearNyquist, 8000, 20000), minus3, 1e-6);
    EXPECT_LT(DesignResponseDb(nearNyquist, 9999, 20000), minus3);

    // Low-pass only, and no kernel longer than the bound.
    EXPECT_NE(FilterChoiceProblem(FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::High, .cutoffHz = 100, .order = 4}, 20000), "");
    EXPECT_NE(FilterChoiceProblem(FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::Low, .cutoffHz = 5, .order = 4}, 20000), "");
    EXPECT_EQ(FilterChoiceProblem(FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::Low, .cutoffHz = 7, .order = 0}, 20000), "");
}

// Filtering a recording with the Gaussian: centred (a step keeps its place,
// half-way at the step), held at the ends (a flat start and end stay
// flat), and the same across the file filter's 65,536-point blocks.
TEST(GaussianFilter, FilteredChannelIsCentredAndHeldAtTheEnds) {
    test::TempDir dir;
    std::vector<int16_t> raw(140000, -1000);
    for (std::size_t i = 70000; i < raw.size(); ++i) raw[i] = 1000;
    auto rec = test::MakeRecording(dir / "step.abf", raw, 50);
    FilteredChannel f = FilterChannel(*rec, FilterChoice{.kind = FilterKind::Gaussian, .pass = FilterPass::Low, .cutoffHz = 100, .order = 4});
    ASSERT_TRUE(f.counts) << f.status.message();
    rec->AttachFiltered(std::move(f.counts));
    rec->ReadFiltered(true);
    std::vector<int16_t> out(raw.size());
    rec->ReadSamples(0, out);
    EXPECT_EQ(out.front(), -1000);
    EXPECT_EQ(out.back(), 1000);
    // Sample 69999.5 is the step's middle: the two samples beside it are
    // equally far from 0, and the step is spread over a few sigmas (26.5 points).
    EXPECT_EQ(out[69999], -out[70000]);
    EXPECT_GT(out[70000], 0);
    EXPECT_LT(out[70000], 100);
    EXPECT_GT(out[69950], -1000);
    EXPECT_EQ(out[69800], -1000);
    // Across the block boundary at 65,536 nothing changes in the flat part.
    EXPECT_EQ(out[65535], -1000);
    EXPECT_EQ(out[65536], -1000);
}

}  // namespace
}  // namespace vess
