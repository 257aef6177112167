#include <gtest/gtest.h>

#include <cmath>
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

}  // namespace
}  // namespace vess
