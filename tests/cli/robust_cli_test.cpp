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

// Each refused value exits with status 2 and names itself; a settings file
// with a screen of 2^23 blocks used to overflow the screen's point count.
TEST_F(VessRobust, ParametersOutsideTheirRangesAreRefused) {
    ASSERT_EQ(WriteFileAtomic(dir / "big.SET", std::string_view("[Display]\nDisplayTotalNumberBlockPerScreen=8388608\n")), "");
    const std::pair<std::string, std::string> refused[] = {
        {"--set NumberPointsPeak=32767", "--set: NumberPointsPeak is 32767, outside 1 to 255"},
        {"--set PeriodFindDecayTime=2000000000", "PeriodFindDecayTime is 2000000000 us"},
        {"--settings '" + (dir / "big.SET").string() + "'", "DisplayTotalNumberBlockPerScreen=8388608: outside 1 to 4096"},
        {"--settings '" + (dir / "none.SET").string() + "'", "No such file or directory"},
    };
    for (const auto& [options, message] : refused) {
        SCOPED_TRACE(options);
        const auto r = Run("detect '" + abf + "' " + options);
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
    }
    EXPECT_NE(Run("detect '" + abf + "' --blocks-per-screen 8388608").exitCode, 0);
}

}  // namespace
}  // namespace vess
