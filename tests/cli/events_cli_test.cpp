#include <gtest/gtest.h>

#include <string>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::RunVessCli;

TEST(VessEvents, TableInUnitsWhenTheDataFileIsBeside) {
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
    const test::VessRun csv = RunVessCli("events " + (dir / "cell.EVT").string() + " --csv", err);
    ASSERT_EQ(csv.exitCode, 0) << csv.err;
    EXPECT_EQ(csv.out.substr(0, csv.out.find('\n')),
              "Event,Time (ms),Amplitude (pA),Time to Rise (ms),Time to Decay (ms),Area (fC),"
              "Baseline (pA),Noise (pA),Group,Channel,Rise10-90 (ms),Half-width (ms),Rise 50 (ms),"
              "Peak Direction,Burst #,Burst Event#,Slope10-90 (pA/msec),Relative Time (ms)");
    EXPECT_NE(csv.out.find("\n1,12.5,-15,0.5,0,"), std::string::npos) << csv.out;
    EXPECT_EQ(csv.err, "");

    const test::VessRun text = RunVessCli("events " + (dir / "cell.EVT").string(), err);
    ASSERT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("PeriodToSearchMax (us): 10000\n"), std::string::npos);

    // Without the data file: raw values, and a word on stderr.
    std::filesystem::remove(dir / "cell.abf");
    const test::VessRun raw = RunVessCli("events " + (dir / "cell.EVT").string() + " --csv", err);
    ASSERT_EQ(raw.exitCode, 0);
    EXPECT_NE(raw.out.find("\n1,12.5,-30,10,0,"), std::string::npos) << raw.out;
    EXPECT_NE(raw.err.find("ADC counts"), std::string::npos);
}

TEST(VessEvents, DamagedFileExitsWithOne) {
    test::TempDir dir;
    ASSERT_EQ(WriteFileAtomic(dir / "bad.EVT", std::string(100, 'x')), "");
    const test::VessRun run = RunVessCli("events " + (dir / "bad.EVT").string(), dir / "err.txt");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("shorter than"), std::string::npos);
}

}  // namespace
}  // namespace vess
