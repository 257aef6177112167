// vess synth, info and events as a user runs them.
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

bool Has(const std::string& text, const std::string& line) {
    return text.find("\n" + line + "\n") != std::string::npos;
}

TEST(VessSynthInfo, SynthesisedFileReportsItsDerivedValues) {
    test::TempDir dir;
    const auto abf = dir / "s.abf";
    const auto made = test::RunVessCli(
        "synth '" + abf.string() + "' --seconds 2 --rate 10000 --seed 3", dir / "err.txt");
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_TRUE(std::filesystem::exists(dir / "s_events.csv"));

    const auto info = test::RunVessCli("info '" + abf.string() + "'", dir / "err.txt");
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_EQ(info.out.rfind("DAT File Info:  s.abf\n", 0), 0u);
    EXPECT_TRUE(Has(info.out, "ADCSampleInterval 100"));
    EXPECT_TRUE(Has(info.out, "Points per channel: 20000"));
    EXPECT_TRUE(Has(info.out, "Blocks (256 points): 78"));  // 20000 / 256 = 78.1
    EXPECT_TRUE(Has(info.out, "Units: pA"));
    EXPECT_TRUE(Has(info.out, "Duration (s): 2.000000"));
}

// --scan reads every sample: the minimum sits inside the first 2^20-point
// read, in a lane of the sixteen side by side other than the first, and the
// maximum at the very last point (after the last whole sixteen of a short
// last read); at 2 counts per pA -1234 and 4321 counts are -617 and 2160.5 pA.
TEST(VessSynthInfo, ScanGivesTheRangeOfEverySample) {
    test::TempDir dir;
    std::vector<int16_t> samples((1 << 20) + 37, 7);
    samples[70001] = -1234;
    samples.back() = 4321;
    test::MakeRecording(dir / "r.abf", samples, 50, 2.0f);
    const auto r = test::RunVessCli("info '" + (dir / "r.abf").string() + "' --scan", dir / "err.txt");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Has(r.out, "Sample range (counts): -1234 to 4321")) << r.out;
    EXPECT_TRUE(Has(r.out, "Sample range (pA): -617.00000 to 2160.50000")) << r.out;
    const auto plain = test::RunVessCli("info '" + (dir / "r.abf").string() + "'", dir / "err.txt");
    EXPECT_EQ(plain.out.find("Sample range"), std::string::npos);
}

TEST(VessSynthInfo, BadInputsExitWithStatus1AndAMessage) {
    test::TempDir dir;
    const auto notAbf = dir / "x.abf";
    std::ofstream(notAbf) << "hello";
    const auto r = test::RunVessCli("info '" + notAbf.string() + "'", dir / "err.txt");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("This is not an Axon Binary File."), std::string::npos);

    ASSERT_EQ(test::RunVessCli("synth '" + (dir / "s.abf").string() + "' --seconds 0.1",
                               dir / "err.txt").exitCode, 0);
    const auto channel = test::RunVessCli("info '" + (dir / "s.abf").string() + "' --channel 1",
                                          dir / "err.txt");
    EXPECT_EQ(channel.exitCode, 1);
    EXPECT_NE(channel.err.find("channels 0 to 0"), std::string::npos);

    const auto synth = test::RunVessCli("synth '" + (dir / "t.abf").string() + "' --seconds -1",
                                        dir / "err.txt");
    EXPECT_EQ(synth.exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(dir / "t.abf"));
}

// Real recordings of both formats print the values ../shared/data/README.md
// lists for them (spot checks of the command's output; the readers
// themselves are checked row by row against that table elsewhere).
TEST(VessSynthInfo, RealRecordingsOfBothFormats) {
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    const struct {
        const char* file;
        std::vector<const char*> lines;
    } cases[] = {
        {"abf1/multichannelAbf1WithTags.abf",
         {"Channel: 1 (ADC 1)", "Units: mV", "Blocks (256 points): 1207", "Gain: 0.0499552526",
          "First samples (counts): -8183, -8183, -8183", "First values (mV): -49.98370, -49.98370, -49.98370",
          "Last value (mV): -59.97800", "Tags: 2"}},
        {"abf2/18425108.abf",
         {"FileVersionNumber 2.9.0.0", "Channel: 1 (ADC 1)", "ADCChannelName (1) 10_Vm", "Units: mV",
          "Interval per channel (us): 40", "Blocks (256 points): 977", "Points per channel: 250000", "Sweeps: 1",
          "First samples (counts): -2338, -2338, -2340"}},
    };
    for (const auto& c : cases) {
        const auto r = test::RunVessCli(
            "info '" + (test::SharedData() / c.file).string() + "' --channel 1", dir / "err.txt");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        for (const char* line : c.lines) EXPECT_TRUE(Has(r.out, line)) << c.file << ": " << line << "\n" << r.out;
    }
    const auto floats = test::RunVessCli(
        "info '" + (test::SharedData() / "abf2/SWHLab_gain_float32.abf").string() + "'", dir / "err.txt");
    EXPECT_EQ(floats.exitCode, 1);
    EXPECT_NE(floats.err.find("Not in Integer Format"), std::string::npos) << floats.err;
}

TEST(VessEvents, TableInUnitsWhenTheDataFileIsBesideAndDamagedFilesRefused) {
    test::TempDir dir;
    // 2 counts a pA, 50 us a point.
    auto rec = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(2048, 0), 50, 2.0f);
    EventTable table;
    EventRecord r;
    r.time = 12.5f;
    r.amplitude = -30;
    r.riseTime = 10;
    table.Append(r);
    ASSERT_EQ(WriteEventFile(dir / "cell.EVT", rec->HeaderBytes(), AnalysisParameters{}, table,
                             "cell.abf"),
              "");
    const auto err = dir / "err.txt";
    const test::VessRun csv = test::RunVessCli("events " + (dir / "cell.EVT").string() + " --csv", err);
    ASSERT_EQ(csv.exitCode, 0) << csv.err;
    EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')),
              "Event,Time (ms),Amplitude (pA),Time to Rise (ms),Time to Decay (ms),Area (fC),"
              "Baseline (pA),Noise (pA),Group,Channel,Rise10-90 (ms),Half-width (ms),Rise 50 (ms),"
              "Peak Direction,Burst #,Burst Event#,Slope10-90 (pA/msec),Relative Time (ms)");
    EXPECT_NE(csv.out.find("\n1,12.5,-15,0.5,0,"), std::string::npos) << csv.out;
    EXPECT_EQ(csv.err, "");

    const test::VessRun text = test::RunVessCli("events " + (dir / "cell.EVT").string(), err);
    ASSERT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("PeriodToSearchMax (us): 10000\n"), std::string::npos);

    // Without the data file: raw values, and a word on stderr.
    std::filesystem::remove(dir / "cell.abf");
    const test::VessRun raw = test::RunVessCli("events " + (dir / "cell.EVT").string() + " --csv", err);
    ASSERT_EQ(raw.exitCode, 0);
    EXPECT_NE(raw.out.find("\n1,12.5,-30,10,0,"), std::string::npos) << raw.out;
    EXPECT_NE(raw.err.find("ADC counts"), std::string::npos);

    // A damaged event file: status 1, nothing on stdout.
    ASSERT_EQ(WriteFileAtomic(dir / "bad.EVT", std::string(100, 'x')), "");
    const test::VessRun bad = test::RunVessCli("events " + (dir / "bad.EVT").string(), err);
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_NE(bad.err.find("shorter than"), std::string::npos);
}

}  // namespace
}  // namespace vess
