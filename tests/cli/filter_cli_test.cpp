// vess filter, noise and synch over files whose answers are known.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "signal/filter_channel.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using test::ExpectRefused;
using VessSignal = test::VessCliTest;

std::vector<int16_t> Steps(std::size_t n) {
    std::vector<int16_t> s(n);
    for (std::size_t i = 0; i < n; ++i) s[i] = int16_t((i / 700) % 2 ? 900 : -400) + int16_t(i % 13);
    return s;
}

TEST_F(VessSignal, FilterResponsePrintsOneLinePerFrequencyAndRefusesCutoffAtNyquist) {
    test::MakeRecording(dir / "r.abf", Steps(5000), 50);  // 20 kHz
    // Butterworth order 4, 1 kHz at 20 kHz; scipy 1.10.1 sosfreqz of
    // iirfilter(4, 1000, btype="lowpass", fs=20000, output="sos").
    const auto run = Run("filter " + P("r.abf") + " --kind butterworth --pass low --cutoff 1000 --order 4 "
                                                  "--response 500,1000,2000");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "500 -0.016112\n1000 -3.010300\n2000 -24.978904\n");
    ExpectRefused(Run("filter " + P("r.abf") + " --kind elliptic --pass high --cutoff 10000 --order 4"), 1,
                  "below half the sampling frequency (10000 Hz)");
}

TEST_F(VessSignal, FilterOutWritesTheFilteredChannelWithTheSourceScaling) {
    const std::vector<int16_t> raw = Steps(70000);
    auto rec = test::MakeRecording(dir / "r.abf", raw, 50, 4.0f);
    const auto run = Run("filter " + P("r.abf") + " --kind chebyshev --pass high --cutoff 50 --order 3 --ripple 1 "
                                                  "--zero-phase --out " + P("f.abf"));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    auto out = Recording::Open(dir / "f.abf", nullptr);
    ASSERT_TRUE(out);
    EXPECT_EQ(out->PointsPerChannel(), rec->PointsPerChannel());
    EXPECT_EQ(out->IntervalUs(), rec->IntervalUs());
    EXPECT_EQ(out->Units(), rec->Units());
    EXPECT_FLOAT_EQ(out->Bit2pA(400), rec->Bit2pA(400));
    const FilterChoice choice{.kind = FilterKind::Chebyshev, .pass = FilterPass::High, .cutoffHz = 50, .order = 3,
                              .rippleDb = 1, .zeroPhase = true};
    ASSERT_TRUE(ApplyFilter(*rec, choice).ok());
    rec->ReadFiltered(true);
    std::vector<int16_t> expected(raw.size()), got(raw.size());
    rec->ReadSamples(0, expected);
    out->ReadSamples(0, got);
    EXPECT_EQ(got, expected);
    EXPECT_NE(got, raw);
}

TEST_F(VessSignal, NoiseOfASineFileMeasuresAndSpectrumPeak) {
    // 40 Hz of 1000 counts (1 count = 1 unit) at 10240 Hz: 256 points a
    // period, crests on samples, so peak-to-peak is 2000 and each quarter
    // period climbs 1000 monotonically: coastline 40 x 4000 over 10241 points.
    std::vector<int16_t> samples(10241);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(std::nearbyint(1000 * std::sin(2 * std::numbers::pi * double(i) / 256)));
    ASSERT_TRUE(test::MakeRecording(dir / "sine.abf", samples, 1e6 / 10240));
    const auto run = Run("noise " + P("sine.abf") + " --spectrum --segment 1024 --json");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_EQ(j["points"], 10241);
    EXPECT_NEAR(j["peak_to_peak"].get<double>(), 2000, 1e-3);
    EXPECT_NEAR(j["coastline"].get<double>(), 160000, 1e-2);
    EXPECT_NEAR(j["rms_about_median"].get<double>(), 1000 / std::sqrt(2.0), 0.5);
    // 10 Hz bins: the peak on bin 4.
    const auto psd = j["spectrum"]["psd"].get<std::vector<double>>();
    EXPECT_EQ(std::max_element(psd.begin(), psd.end()) - psd.begin(), 4);
    ExpectRefused(Run("noise " + P("sine.abf") + " --spectrum --segment 1000"), 2, "power of 2");
}

TEST_F(VessSignal, SynchGivesTheSweepStartsOfAnEpisodicFile) {
    VESS_REQUIRE_SHARED_DATA();
    // 6 sweeps of 60000 points at 50 us (data README).
    const auto run = Run("synch " + (test::SharedData() / "abf1/05210017_vc_abf1.abf").string());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "0.000\n3000.000\n6000.000\n9000.000\n12000.000\n15000.000\n");
}

}  // namespace
}  // namespace vess
