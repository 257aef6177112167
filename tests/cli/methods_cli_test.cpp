// The detection methods from the command line: score, detect with a learned
// kernel, the accuracy check, and the method however it is chosen.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/synth.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::RunVessCli;

TEST(VessMethods, ScoreTablesEveryMethodAndDetectLearnsTheKernelFromEvents) {
    test::TempDir dir;
    SynthOptions o;
    o.seconds = 8;
    o.seed = 4;
    o.noiseRmsPa = 2;  // median amplitude 20 pA: every method finds most events
    const SynthRecording synth = Synthesise(o);
    const auto abf = dir / "syn.abf";
    ASSERT_EQ(WriteSynthetic(abf, synth), "");
    const auto err = dir / "err.txt";

    const test::VessRun score =
        RunVessCli("score " + abf.string() + " " + (dir / "syn_events.csv").string() +
                       " --all-methods --suggest-from-noise",
                   err);
    ASSERT_EQ(score.exitCode, 0) << score.err;
    for (const char* method : {"\nthreshold ", "\ndeconvolution ", "\ntemplate "})
        EXPECT_NE(score.out.find(method), std::string::npos) << score.out;
    // At a signal-to-noise ratio of 10 the deconvolution row's F1 (the last
    // column) is high.
    const std::size_t row = score.out.find("\ndeconvolution ");
    const std::string line = score.out.substr(row + 1, score.out.find('\n', row + 1) - row - 1);
    EXPECT_GT(std::stod(line.substr(line.find_last_of(' ') + 1)), 0.9) << line;

    const auto evt = dir / "syn.EVT";
    ASSERT_EQ(RunVessCli("detect " + abf.string() + " --method deconvolution --suggest-from-noise --out " +
                             evt.string(),
                         err)
                  .exitCode,
              0);
    const test::VessRun learned = RunVessCli(
        "detect " + abf.string() + " --method deconvolution --learn-kernel-from " + evt.string(), err);
    ASSERT_EQ(learned.exitCode, 0) << learned.err;
    // The synthesiser's kernel: decay 5 ms.
    const std::size_t at = learned.err.find("decay ");
    ASSERT_NE(at, std::string::npos) << learned.err;
    EXPECT_NEAR(std::stod(learned.err.substr(at + 6)), 5, 1.5) << learned.err;

    // An event file that does not exist changes nothing and says why.
    const test::VessRun missing = RunVessCli(
        "detect " + abf.string() + " --learn-kernel-from " + (dir / "none.EVT").string(), err);
    EXPECT_NE(missing.exitCode, 0);
    EXPECT_NE(missing.err.find("none.EVT"), std::string::npos) << missing.err;
}

// The accuracy check's rules are checked in tests/detection; here its JSON:
// ten bins up to 10 noise SDs, and no rate per minute from 20 s of trace.
TEST(VessMethods, CheckReportsRecallPerBinAsJson) {
    test::TempDir dir;
    SynthOptions o;
    o.seconds = 20;
    o.seed = 6;
    o.eventsPerSecond = 0.05;
    o.noiseRmsPa = 2;
    const auto abf = dir / "quiet.abf";
    ASSERT_EQ(WriteSynthetic(abf, Synthesise(o)), "");
    const test::VessRun run = RunVessCli(
        "check " + abf.string() + " --method deconvolution --suggest-from-noise --events 150 --json",
        dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const nlohmann::json j = nlohmann::json::parse(run.out);
    EXPECT_EQ(j["added"], 150);
    ASSERT_EQ(j["bins"].size(), 10u);
    EXPECT_NEAR(double(j["bins"].back()["to"]), 10 * double(j["noise_sd"]), 1e-6 * double(j["noise_sd"]));
    EXPECT_DOUBLE_EQ(double(j["bins"].back()["recall"]), 1.0);
    EXPECT_TRUE(j["false_per_minute"].is_null());
}

// A run with no options is a new installation's (deconvolution, suggested
// from the recording); the suggestion starts from the recording alone, so
// the method named on the command line or in a settings file, whatever
// kernel that file held, gives the same events; --method threshold is a
// settings file of an earlier version.
TEST(VessMethods, OneMethodGivesOneSetOfEventsHoweverItIsChosen) {
    test::TempDir dir;
    SynthOptions o;
    o.seconds = 8;
    o.seed = 4;
    o.noiseRmsPa = 3;
    const auto abf = dir / "syn.abf";
    ASSERT_EQ(WriteSynthetic(abf, Synthesise(o)), "");
    const auto ini = [&](const char* name, const char* text) {
        EXPECT_EQ(WriteFileAtomic(dir / name, std::string_view(text)), "");
        return " --settings " + (dir / name).string();
    };
    const std::string slowKernel =
        ini("slow.ini", "[Analysis]\r\nDetectionMethod=deconvolution\r\nKernelRiseMs=3\r\nKernelDecayMs=30\r\n");
    const std::string earlier = ini("old.ini", "[Analysis]\r\nPeakDirection%=-1\r\n");
    const auto events = [&](const std::string& options) {
        const auto evt = dir / "run.EVT";
        const test::VessRun run = RunVessCli("detect " + abf.string() + options + " --quiet --out " + evt.string(),
                                             dir / "err.txt");
        EXPECT_EQ(run.exitCode, 0) << options << run.err;
        return ReadEventFile(evt).records;
    };
    const auto fresh = events("");
    ASSERT_GT(fresh.size(), 10u);
    for (const std::string& same : {std::string(" --method deconvolution"),
                                    std::string(" --method deconvolution --suggest-from-noise"),
                                    slowKernel + " --suggest-from-noise"})
        EXPECT_EQ(events(same), fresh) << same;
    const auto threshold = events(" --method threshold");
    EXPECT_EQ(events(earlier), threshold);
    EXPECT_NE(threshold, fresh);
}

// Test pulses every few seconds, far larger than the spontaneous currents,
// are left out of the suggested kernel (with them its decay was 307 ms).
TEST(VessMethods, SuggestionLeavesOutTestPulses) {
    VESS_REQUIRE_SHARED_DATA();
    const auto abf = test::SharedData() / "abf1" / "171116sh_0020_saved.abf";
    test::TempDir dir;
    const test::VessRun run =
        RunVessCli("detect " + abf.string() + " --method deconvolution --suggest-from-noise --quiet", dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::size_t at = run.err.find("decay ");
    ASSERT_NE(at, std::string::npos) << run.err;
    EXPECT_LT(std::stod(run.err.substr(at + 6)), 15) << run.err;
}

}  // namespace
}  // namespace vess
