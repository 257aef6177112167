// vess noise and vess synch over files whose answers are known.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

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
