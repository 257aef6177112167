// The detection methods from the command line: score, detect with a learned
// kernel, the accuracy check, and the method however it is chosen.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "recording/event_file.h"
#include "recording/synth.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using test::Contains;

class VessMethods : public test::VessCliTest {
protected:
    // syn.abf synthesised with these options; the true events are in syn_events.csv.
    void Synth(const SynthOptions& o) { ASSERT_EQ(WriteSynthetic(dir / "syn.abf", Synthesise(o)), ""); }
    // The kernel decay (ms) that a run of detect reported on stderr.
    static double KernelDecayMs(const test::VessRun& run) {
        const std::size_t at = run.err.find("decay ");
        EXPECT_NE(at, std::string::npos) << run.err;
        return at == std::string::npos ? -1 : std::stod(run.err.substr(at + 6));
    }
};

TEST_F(VessMethods, ScoreTablesEveryMethodAndDetectLearnsTheKernelFromEvents) {
    Synth({.seconds = 8, .seed = 4, .noiseRmsPa = 2});  // median amplitude 20 pA: every method finds most events
    const auto score = Run("score " + P("syn.abf") + " " + P("syn_events.csv") + " --all-methods --suggest-from-noise");
    ASSERT_EQ(score.exitCode, 0) << score.err;
    for (const char* method : {"\nthreshold ", "\ndeconvolution ", "\ntemplate "})
        EXPECT_TRUE(Contains(score.out, method)) << score.out;
    // At a signal-to-noise ratio of 10 the deconvolution row's F1 (the last column) is high.
    const std::size_t row = score.out.find("\ndeconvolution ");
    const std::string line = score.out.substr(row + 1, score.out.find('\n', row + 1) - row - 1);
    EXPECT_GT(std::stod(line.substr(line.find_last_of(' ') + 1)), 0.9) << line;

    const std::string detect = "detect " + P("syn.abf") + " --method deconvolution";
    ASSERT_EQ(Run(detect + " --suggest-from-noise --out " + P("syn.EVT")).exitCode, 0);
    const auto learned = Run(detect + " --learn-kernel-from " + P("syn.EVT"));
    ASSERT_EQ(learned.exitCode, 0) << learned.err;
    EXPECT_NEAR(KernelDecayMs(learned), 5, 1.5);  // the synthesiser's kernel: decay 5 ms
    // An event file that does not exist changes nothing and says why.
    const auto missing = Run("detect " + P("syn.abf") + " --learn-kernel-from " + P("none.EVT"));
    EXPECT_NE(missing.exitCode, 0);
    EXPECT_TRUE(Contains(missing.err, "none.EVT")) << missing.err;
}

// The accuracy check's rules are checked in tests/detection; here its JSON:
// ten bins up to 10 noise SDs, and no rate per minute from 20 s of trace.
TEST_F(VessMethods, CheckReportsRecallPerBinAsJson) {
    Synth({.seconds = 20, .seed = 6, .eventsPerSecond = 0.05, .noiseRmsPa = 2});
    const auto run = Run("check " + P("syn.abf") + " --method deconvolution --suggest-from-noise --events 150 --json");
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
TEST_F(VessMethods, OneMethodGivesOneSetOfEventsHoweverItIsChosen) {
    Synth({.seconds = 8, .seed = 4, .noiseRmsPa = 3});
    const std::string slowKernel =
        " --settings " + Put("slow.ini", "[Analysis]\r\nDetectionMethod=deconvolution\r\nKernelRiseMs=3\r\nKernelDecayMs=30\r\n");
    const std::string earlier = " --settings " + Put("old.ini", "[Analysis]\r\nPeakDirection%=-1\r\n");
    const auto events = [&](const std::string& options) {
        const auto run = Run("detect " + P("syn.abf") + options + " --quiet --out " + P("run.EVT"));
        EXPECT_EQ(run.exitCode, 0) << options << run.err;
        return ReadEventFile(dir / "run.EVT").records;
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
TEST_F(VessMethods, SuggestionLeavesOutTestPulses) {
    VESS_REQUIRE_SHARED_DATA();
    const auto run = Run("detect '" + (test::SharedData() / "abf1/171116sh_0020_saved.abf").string() +
                         "' --method deconvolution --suggest-from-noise --quiet");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_LT(KernelDecayMs(run), 15);
}

}  // namespace
}  // namespace vess
