// Numbers that are right or refused, on the command line: values that were
// not measured in the tests, the arrays of a channel with an offset, extreme
// bin sizes, stretches and margins outside the recording; parameters no
// recording can mean, and files that are not regular files (never waited on).
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

class NotMeasuredCli : public ::testing::Test {
protected:
    test::VessRun Run(const std::string& args) { return test::RunVessCli(args, dir / "err.txt"); }
    std::string Put(const std::string& name, std::string_view text) {
        EXPECT_EQ(WriteFileAtomic(dir / name, text), "");
        return (dir / name).string();
    }
    // The events of a real recording, detected with the stored defaults, in
    // an event file beside a link to the recording.
    std::string Detect(const std::string& abf) {
        const auto link = dir / std::filesystem::path(abf).filename();
        std::filesystem::create_symlink(test::SharedData() / abf, link);
        const auto evt = (dir / "events.EVT").string();
        const auto run = Run("detect '" + link.string() + "' --quiet --out '" + evt + "'");
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return evt;
    }
    test::TempDir dir;
};

// 171116sh_0020_saved.abf: some events never fall back to half amplitude and
// keep a half-width that is not measured. A sample compared with itself
// differs by nothing: t 0, p 1, and the count left out is said.
TEST_F(NotMeasuredCli, HalfWidthAgainstItselfIsNoDifference) {
    VESS_REQUIRE_SHARED_DATA();
    const std::string hw = Detect("abf1/171116sh_0020_saved.abf") + ":half-width";
    for (const char* test : {"ttest-equal", "ttest-paired"}) {
        const auto run = Run(std::string("stats ") + test + " " + hw + " " + hw + " --json");
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const auto j = nlohmann::json::parse(run.out);
        EXPECT_EQ(j["t Stat"].get<double>(), 0) << test;
        EXPECT_EQ(j["P value: two-tail"].get<double>(), 1) << test;
        EXPECT_NE(j["note"].get<std::string>().find("that were not measured were left out"), std::string::npos);
    }
}

// multichannelAbf1WithTags.abf channel 1 has an instrument offset. Its event
// grid shows Amplitude 9.994296 mV and Baseline -49.983704 mV for the first
// event (the grid's six-decimal cells); the arrays take exactly those values
// (they used to read 10.0004 and -49.989807).
TEST_F(NotMeasuredCli, ArraysTakeTheGridsValuesOnAChannelWithAnOffset) {
    VESS_REQUIRE_SHARED_DATA();
    const auto link = dir / "multichannelAbf1WithTags.abf";
    std::filesystem::create_symlink(test::SharedData() / "abf1/multichannelAbf1WithTags.abf", link);
    const auto evt = (dir / "events.EVT").string();
    ASSERT_EQ(Run("detect '" + link.string() + "' --channel 1 --quiet --out '" + evt + "'").exitCode, 0);
    const auto first = [&](const char* field) {
        const auto run = Run("array '" + evt + ":" + field + "'");
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return run.out.substr(0, run.out.find('\n'));
    };
    EXPECT_EQ(first("amplitude"), "9.994296");
    EXPECT_EQ(first("baseline"), "-49.983704");
}

TEST_F(NotMeasuredCli, RefusalsInsteadOfWrongNumbers) {
    // A tiny bin used to saturate into one bin holding all three values.
    const std::string three = Put("b.txt", "100\n200\n300\n");
    for (const char* bin : {"1e-17", "inf"}) EXPECT_EQ(Run("hist " + three + " --bin " + bin).exitCode, 1) << bin;
    EXPECT_EQ(Run("correlogram " + three + " --bin inf").exitCode, 1);
    auto rec = test::MakeRecording(dir / "flat.abf", std::vector<int16_t>(20000, 0), 50, 1.0f);  // 1 s
    const std::string abf = (dir / "flat.abf").string();
    ASSERT_EQ(Run("noise " + abf + " --from 0.2 --to 0.5").exitCode, 0);
    for (const char* range : {"--from -10 --to -5", "--from 0.5 --to 0.2", "--from 0 --to 5", "--from 0.2 --to 0.2"}) {
        const auto run = Run("noise " + abf + " " + range);
        EXPECT_EQ(run.exitCode, 2) << range;
        EXPECT_NE(run.err.find("--from and --to must give a stretch from 0 to 1 s"), std::string::npos) << run.err;
    }
    const auto margin = Run("eventfree " + abf + " --out " + (dir / "free.abf").string() + " --margin 1e20");
    EXPECT_EQ(margin.exitCode, 2);
    EXPECT_NE(margin.err.find("the margin must be a number of ms from 0"), std::string::npos) << margin.err;
    EXPECT_FALSE(std::filesystem::exists(dir / "free.abf"));
}

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
