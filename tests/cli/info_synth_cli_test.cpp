// vess synth, info and events as a user runs them.
#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using test::Contains;
using VessSynthInfo = test::VessCliTest;

bool Has(const std::string& text, const std::string& line) { return Contains(text, "\n" + line + "\n"); }

TEST_F(VessSynthInfo, SynthesisedFileReportsItsDerivedValues) {
    const auto made = Run("synth " + P("s.abf") + " --seconds 2 --rate 10000 --seed 3");
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_TRUE(std::filesystem::exists(dir / "s_events.csv"));
    const auto info = Run("info " + P("s.abf"));
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_EQ(info.out.rfind("DAT File Info:  s.abf\n", 0), 0u);
    // 20000 / 256 = 78.1 blocks.
    for (const char* line : {"ADCSampleInterval 100", "Points per channel: 20000", "Blocks (256 points): 78",
                             "Units: pA", "Duration (s): 2.000000"})
        EXPECT_TRUE(Has(info.out, line)) << line;
}

// --scan reads every sample: the minimum sits inside the first 2^20-point
// read, in a lane of the sixteen side by side other than the first, and the
// maximum at the very last point (after the last whole sixteen of a short
// last read); at 2 counts per pA -1234 and 4321 counts are -617 and 2160.5 pA.
TEST_F(VessSynthInfo, ScanGivesTheRangeOfEverySample) {
    std::vector<int16_t> samples((1 << 20) + 37, 7);
    samples[70001] = -1234;
    samples.back() = 4321;
    test::MakeRecording(dir / "r.abf", samples, 50, 2.0f);
    const auto r = Run("info " + P("r.abf") + " --scan");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Has(r.out, "Sample range (counts): -1234 to 4321")) << r.out;
    EXPECT_TRUE(Has(r.out, "Sample range (pA): -617.00000 to 2160.50000")) << r.out;
    EXPECT_FALSE(Contains(Run("info " + P("r.abf")).out, "Sample range"));
}

TEST_F(VessSynthInfo, BadInputsExitWithStatus1AndAMessage) {
    test::ExpectRefused(Run("info " + Put("x.abf", "hello")), 1, "This is not an Axon Binary File.");
    ASSERT_EQ(Run("synth " + P("s.abf") + " --seconds 0.1").exitCode, 0);
    test::ExpectRefused(Run("info " + P("s.abf") + " --channel 1"), 1, "channels 0 to 0");
    EXPECT_EQ(Run("synth " + P("t.abf") + " --seconds -1").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(dir / "t.abf"));
}

// Real recordings of both formats print the values ../shared/data/README.md
// lists for them (spot checks of the command's output; the readers
// themselves are checked row by row against that table elsewhere).
TEST_F(VessSynthInfo, RealRecordingsOfBothFormats) {
    VESS_REQUIRE_SHARED_DATA();
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"abf1/multichannelAbf1WithTags.abf",
         {"Channel: 1 (ADC 1)", "Units: mV", "Blocks (256 points): 1207", "Gain: 0.0499552526",
          "First samples (counts): -8183, -8183, -8183", "First values (mV): -49.98370, -49.98370, -49.98370",
          "Last value (mV): -59.97800", "Tags: 2"}},
        {"abf2/18425108.abf",
         {"FileVersionNumber 2.9.0.0", "Channel: 1 (ADC 1)", "ADCChannelName (1) 10_Vm", "Units: mV",
          "Interval per channel (us): 40", "Blocks (256 points): 977", "Points per channel: 250000", "Sweeps: 1",
          "First samples (counts): -2338, -2338, -2340"}},
    };
    for (const auto& [file, lines] : cases) {
        const auto r = Run("info '" + (test::SharedData() / file).string() + "' --channel 1");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        for (const char* line : lines) EXPECT_TRUE(Has(r.out, line)) << file << ": " << line << "\n" << r.out;
    }
}

using VessEvents = test::VessCliTest;

TEST_F(VessEvents, TableInUnitsWhenTheDataFileIsBesideAndDamagedFilesRefused) {
    // 2 counts a pA, 50 us a point.
    auto rec = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(2048, 0), 50, 2.0f);
    EventTable table;
    table.Append(EventRecord{.time = 12.5f, .amplitude = -30, .riseTime = 10});
    ASSERT_EQ(WriteEventFile(dir / "cell.EVT", rec->HeaderBytes(), AnalysisParameters{}, table, "cell.abf"), "");
    const auto csv = Run("events " + P("cell.EVT") + " --csv");
    ASSERT_EQ(csv.exitCode, 0) << csv.err;
    EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')),
              "Event,Time (ms),Amplitude (pA),Time to Rise (ms),Time to Decay (ms),Area (fC),"
              "Baseline (pA),Noise (pA),Group,Channel,Rise10-90 (ms),Half-width (ms),Rise 50 (ms),"
              "Peak Direction,Burst #,Burst Event#,Slope10-90 (pA/msec),Relative Time (ms)");
    EXPECT_TRUE(Contains(csv.out, "\n1,12.5,-15,0.5,0,")) << csv.out;
    EXPECT_EQ(csv.err, "");
    EXPECT_TRUE(Contains(Run("events " + P("cell.EVT")).out, "PeriodToSearchMax (us): 10000\n"));
    // Without the data file: raw values, and a word on stderr.
    std::filesystem::remove(dir / "cell.abf");
    const auto raw = Run("events " + P("cell.EVT") + " --csv");
    ASSERT_EQ(raw.exitCode, 0);
    EXPECT_TRUE(Contains(raw.out, "\n1,12.5,-30,10,0,")) << raw.out;
    EXPECT_TRUE(Contains(raw.err, "ADC counts"));
    // A damaged event file: status 1, nothing on stdout.
    const auto bad = Run("events " + Put("bad.EVT", std::string(100, 'x')));
    test::ExpectRefused(bad, 1, "shorter than");
    EXPECT_EQ(bad.out, "");
}

}  // namespace
}  // namespace vess
