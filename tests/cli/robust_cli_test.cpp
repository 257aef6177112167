// vess refuses what no recording can mean, and never blocks on a file that
// is not a regular file.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

class VessRobust : public ::testing::Test {
protected:
    test::TempDir dir;
    std::string abf = (dir / "s.abf").string();
    void SetUp() override {
        ASSERT_EQ(test::RunVessCli("synth '" + abf + "' --seconds 0.5 --seed 4", dir / "err.txt").exitCode, 0);
    }
    test::VessRun Run(const std::string& args) { return test::RunVessCli(args, dir / "err.txt"); }
};

// Before, vess info waited forever for a writer to open the pipe.
TEST_F(VessRobust, ANamedPipeIsRefusedAtOnce) {
    const auto fifo = dir / "pipe.abf";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const auto r = test::RunVessCli("info '" + fifo.string() + "'", dir / "err.txt");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("not a regular file"), std::string::npos) << r.err;
    const auto events = Run("events '" + fifo.string() + "'");
    EXPECT_EQ(events.exitCode, 1);
    EXPECT_NE(events.err.find("not a regular file"), std::string::npos) << events.err;
}

TEST_F(VessRobust, ParametersOutsideTheirRangesAreRefused) {
    const auto npp = Run("detect '" + abf + "' --set NumberPointsPeak=32767");
    EXPECT_EQ(npp.exitCode, 2);
    EXPECT_NE(npp.err.find("--set: NumberPointsPeak is 32767, outside 1 to 255"), std::string::npos)
        << npp.err;
    const auto hour = Run("detect '" + abf + "' --set PeriodFindDecayTime=2000000000");
    EXPECT_EQ(hour.exitCode, 2);
    EXPECT_NE(hour.err.find("PeriodFindDecayTime is 2000000000 us"), std::string::npos) << hour.err;
    const auto blocks = Run("detect '" + abf + "' --blocks-per-screen 8388608");
    EXPECT_NE(blocks.exitCode, 0);

    // A settings file with a screen of 2^23 blocks overflowed the point count
    // of a screen and aborted.
    ASSERT_EQ(WriteFileAtomic(dir / "big.SET",
                              std::string_view("[Display]\nDisplayTotalNumberBlockPerScreen=8388608\n")),
              "");
    const auto big = Run("detect '" + abf + "' --settings '" + (dir / "big.SET").string() + "'");
    EXPECT_EQ(big.exitCode, 2);
    EXPECT_NE(big.err.find("DisplayTotalNumberBlockPerScreen=8388608: outside 1 to 4096"),
              std::string::npos)
        << big.err;
    const auto none = Run("detect '" + abf + "' --settings '" + (dir / "none.SET").string() + "'");
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_NE(none.err.find("No such file or directory"), std::string::npos) << none.err;
}

}  // namespace
}  // namespace vess
