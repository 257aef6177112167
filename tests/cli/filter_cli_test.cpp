// vess filter, noise and synch over files whose answers are known.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "signal/filter_channel.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<int16_t> Steps(std::size_t n) {
    std::vector<int16_t> s(n);
    for (std::size_t i = 0; i < n; ++i) s[i] = int16_t((i / 700) % 2 ? 900 : -400) + int16_t(i % 13);
    return s;
}

TEST(FilterCli, ResponsePrintsOneLinePerFrequencyAndRefusesCutoffAtNyquist) {
    test::TempDir dir;
    test::MakeRecording(dir / "r.abf", Steps(5000), 50);  // 20 kHz
    const std::string file = (dir / "r.abf").string();
    // Butterworth order 4, 1 kHz at 20 kHz; scipy 1.10.1 sosfreqz of
    // iirfilter(4, 1000, btype="lowpass", fs=20000, output="sos").
    const test::VessRun run = test::RunVessCli(
        "filter " + file + " --kind butterworth --pass low --cutoff 1000 --order 4 --response 500,1000,2000",
        dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "500 -0.016112\n1000 -3.010300\n2000 -24.978904\n");

    const test::VessRun refused = test::RunVessCli(
        "filter " + file + " --kind elliptic --pass high --cutoff 10000 --order 4", dir / "err.txt");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("below half the sampling frequency (10000 Hz)"), std::string::npos) << refused.err;
}

TEST(FilterCli, OutWritesTheFilteredChannelWithTheSourceScaling) {
    test::TempDir dir;
    const std::vector<int16_t> raw = Steps(70000);
    auto rec = test::MakeRecording(dir / "r.abf", raw, 50, 4.0f);
    const test::VessRun run = test::RunVessCli("filter " + (dir / "r.abf").string() +
                                                   " --kind chebyshev --pass high --cutoff 50 --order 3 "
                                                   "--ripple 1 --zero-phase --out " + (dir / "f.abf").string(),
                                               dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    AbfError error = AbfError::None;
    auto out = Recording::Open(dir / "f.abf", &error);
    ASSERT_TRUE(out);
    EXPECT_EQ(out->PointsPerChannel(), rec->PointsPerChannel());
    EXPECT_EQ(out->IntervalUs(), rec->IntervalUs());
    EXPECT_EQ(out->Units(), rec->Units());
    EXPECT_FLOAT_EQ(out->Bit2pA(400), rec->Bit2pA(400));
    FilterChoice choice;
    choice.kind = FilterKind::Chebyshev;
    choice.pass = FilterPass::High;
    choice.cutoffHz = 50;
    choice.order = 3;
    choice.rippleDb = 1;
    choice.zeroPhase = true;
    ASSERT_TRUE(ApplyFilter(*rec, choice).ok());
    rec->ReadFiltered(true);
    std::vector<int16_t> expected(raw.size()), got(raw.size());
    rec->ReadSamples(0, expected);
    out->ReadSamples(0, got);
    EXPECT_EQ(got, expected);
    EXPECT_NE(got, raw);
}

TEST(VessNoise, SineFileMeasuresAndSpectrumPeak) {
    // 40 Hz of 1000 counts (1 count = 1 unit) at 10240 Hz: 256 points a
    // period, crests on samples, so peak-to-peak is 2000 and each quarter
    // period climbs 1000 monotonically: coastline 40 x 4000 over 10241 points.
    test::TempDir dir;
    std::vector<int16_t> samples(10241);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(std::nearbyint(1000 * std::sin(2 * std::numbers::pi * double(i) / 256)));
    ASSERT_TRUE(test::MakeRecording(dir / "sine.abf", samples, 1e6 / 10240));
    const auto run = test::RunVessCli(
        "noise " + (dir / "sine.abf").string() + " --spectrum --segment 1024 --json", dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_EQ(j["points"], 10241);
    EXPECT_NEAR(j["peak_to_peak"].get<double>(), 2000, 1e-3);
    EXPECT_NEAR(j["coastline"].get<double>(), 160000, 1e-2);
    EXPECT_NEAR(j["rms_about_median"].get<double>(), 1000 / std::sqrt(2.0), 0.5);
    // 10 Hz bins: the peak on bin 4.
    const auto psd = j["spectrum"]["psd"].get<std::vector<double>>();
    EXPECT_EQ(std::max_element(psd.begin(), psd.end()) - psd.begin(), 4);

    const auto refused = test::RunVessCli("noise " + (dir / "sine.abf").string() + " --spectrum --segment 1000",
                                          dir / "err.txt");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(refused.err.find("power of 2"), std::string::npos);
}

TEST(VessSynch, SweepStartsOfAnEpisodicFile) {
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    // 6 sweeps of 60000 points at 50 us (data README).
    const auto run = test::RunVessCli(
        "synch " + (test::SharedData() / "abf1/05210017_vc_abf1.abf").string(), dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "0.000\n3000.000\n6000.000\n9000.000\n12000.000\n15000.000\n");
}

}  // namespace
}  // namespace vess
