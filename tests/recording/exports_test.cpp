#include <gtest/gtest.h>

#include <cmath>

#include "recording/event_exports.h"
#include "recording/event_grid.h"
#include "recording/event_grid_format.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/event_fixtures.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::ReadText;
using test::TempDir;

EventRecord Sample() {
    EventRecord r = test::MakeEvent(1234.5f, -10, 255);
    r.channel = 2;
    r.burstNumber = 3;
    r.burstEventNumber = 7;
    return r;
}

// Column captions carry the unit (those of a pA channel are checked through the CSV file's header).
TEST(EventGrid, LabelsCarryTheColumnsUnit) {
    EXPECT_EQ(EventColumnLabel(5, "mV"), "Area (mV x ms)");
    EXPECT_EQ(EventColumnRawLabel(2), "Amplitude (counts)");
    EXPECT_EQ(EventColumnRawLabel(17), "Relative Time (points)");
}

// Each column's type: bytes as bytes, unconverted 16-bit fields as 16-bit
// integers, conversions as floats (the values are checked through the ASCII table).
TEST(EventGrid, CellValuesConvertPerColumn) {
    TempDir dir;
    const auto rec = test::OffsetRecording(dir);
    ASSERT_TRUE(rec);
    const EventRecord r = Sample();
    auto cell = [&](int c) { return EventCellValue(*rec, r, 9, c); };
    EXPECT_EQ(cell(0), CellValue(int32_t(9)));
    EXPECT_EQ(cell(2), CellValue(-5.0f));                    // -10 counts / 2, no offset
    EXPECT_EQ(cell(6), CellValue(rec->Bit2pA(100)));         // with offset
    EXPECT_EQ(cell(8), CellValue(uint8_t(255)));
    EXPECT_EQ(cell(9), CellValue(uint8_t(2)));
    EXPECT_EQ(cell(13), CellValue(int16_t(-1)));
    EXPECT_EQ(cell(15), CellValue(int16_t(7)));
    EXPECT_EQ(cell(17), CellValue(50.0f));                   // 1000 points x 50 us
    // Without a recording the raw counts and points are shown.
    EXPECT_EQ(EventCellValue(nullptr, r, 1, 2), CellValue(int32_t(-10)));
    EXPECT_EQ(EventCellValue(nullptr, r, 1, 17), CellValue(int32_t(1000)));
    EXPECT_EQ(FormatCell(CellValue(0.1f)), "0.1");
    EXPECT_EQ(FormatCell(CellValue(uint8_t(255))), "255");
    EXPECT_EQ(FormatCell(CellValue(int16_t(-1))), "-1");
}

// A recording of 2 counts a pA and 50 us a point, open in ws.
class EventExports : public ::testing::Test {
protected:
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
    void SetUp() override {
        ws.recording = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(1024, 0), 50, 2.0f);
    }
};

TEST_F(EventExports, AtfTimeAndAmplitude) {
    ws.events.Append(Sample());
    dialogs.AnswerSaveFile((dir / "out").string());
    ASSERT_TRUE(SaveDataCommand(ws, dialogs));
    const std::string one = "ATF\t1.0\r\n0\t2\r\n\"Time(ms)\"\t\"Amplitude(pA)\"\r\n1234.5\t-5\r\n";
    EXPECT_EQ(ReadText(dir / "out.txt"), one);

    // Replace question: No keeps the file.
    ws.events.Append(Sample());
    dialogs.AnswerSaveFile((dir / "out.txt").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveDataCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");
    EXPECT_EQ(ReadText(dir / "out.txt"), one);
    dialogs.AnswerSaveFile((dir / "out.txt").string()).AnswerYesNo(true);
    ASSERT_TRUE(SaveDataCommand(ws, dialogs));
    EXPECT_EQ(ReadText(dir / "out.txt"), one + "1234.5\t-5\r\n");
}

TEST_F(EventExports, AsciiTableRefusesAnExistingFile) {
    ws.events.Append(Sample());
    ws.events.Append(EventRecord{});
    dialogs.AnswerSaveFile((dir / "table").string());
    ASSERT_TRUE(SaveToAsciiFileCommand(ws, dialogs));
    const std::string text = ReadText(dir / "table.ASC");
    EXPECT_EQ(text,
              "Time\tAmplitude\tTime to Rise\tTime to Decay\tArea\tBaseline\tNoise\tGroup\tChannel\t"
              "Rise10-90\tHalf-width\tRise 50\tPeak Direction\tBurst #\tBurst Event#\tSlope10-90\tRelative Time\r\n"
              "1234.5\t-5\t0.2\t1\t-7.25\t50\t2\t255\t2\t0.15\t1.5\t0.1\t-1\t3\t7\t-33.5\t50\r\n"
              "0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\r\n");
    dialogs.AnswerSaveFile((dir / "table.ASC").string());
    EXPECT_FALSE(ShowFailure(dialogs, SaveToAsciiFileCommand(ws, dialogs)));
    EXPECT_EQ(dialogs.Messages().back().caption, "File Exist");
    EXPECT_EQ(ReadText(dir / "table.ASC"), text);
}

// The event grid's decimals per column and the widest text of each column.
TEST(GridFormat, DecimalsShowOneStepOfTheUnit) {
    // {step, decimals}: 50 us in ms; 100 us exactly one decimal; one count of a pA channel, in nA.
    const std::pair<double, int> steps[] = {{0.05, 2}, {0.1, 1}, {0.0305, 2}, {0.00305, 3},
                                            {1, 0},    {40, 0},  {1e-12, 6},  {0, 0}};
    for (const auto& [step, decimals] : steps) EXPECT_EQ(DecimalsForStep(step), decimals) << step;
    EXPECT_EQ(FormatGridCell(CellValue(12.3456f), 2), "12.35");
    EXPECT_EQ(FormatGridCell(CellValue(int16_t(-7)), 2), "-7");
    EXPECT_EQ(FormatGridCell(CellValue(uint8_t(255)), 3), "255");
    EXPECT_EQ(FormatGridCell(CellValue(std::nanf("")), 2), "");
    EXPECT_EQ(FormatGridCell(CellValue(-2.5e-11f), 6), "-2.5e-11");  // no nonzero value reads as 0
    // Without a recording converted columns hold raw counts: whole numbers.
    EXPECT_EQ(EventColumnDecimals(nullptr, 2), 0);
    EXPECT_EQ(EventColumnDecimals(nullptr, 1), 2);   // Time in ms as stored
}

// 171116sh_0020_saved.abf (data README): 50 us, one count 0.0305176 pA, 70 000 ms.
TEST(GridFormat, ColumnsOfARealRecording) {
    VESS_REQUIRE_SHARED_DATA();
    const auto rec = test::OpenShared("abf1/171116sh_0020_saved.abf");
    ASSERT_TRUE(rec);
    EXPECT_EQ(EventColumnDecimals(rec.get(), 1), 2);   // Time
    EXPECT_EQ(EventColumnDecimals(rec.get(), 2), 2);   // Amplitude, 0.0305 pA
    EXPECT_EQ(EventColumnDecimals(rec.get(), 3), 2);   // Time to Rise, 0.05 ms
    EXPECT_EQ(EventColumnDecimals(rec.get(), 5), 3);   // Area, 0.0305 x 0.05 = 0.0015
    EXPECT_EQ(EventColumnWidestText(rec.get(), 1), "70000.00");
    // 65535 counts x 0.0305176 pA = 1999.97 pA peak to peak.
    EXPECT_EQ(EventColumnWidestText(rec.get(), 2), "-1999.97");
    // 32767 points x 0.05 ms.
    EXPECT_EQ(EventColumnWidestText(rec.get(), 3), "1638.35");
}

// The CSV file holds the grid as the window shows it: the event number and
// all 17 columns headed with their units, values converted (2 counts a pA,
// 50 us a point: -30 counts -15 pA, 4 and 20 points 0.2 and 1 ms), a
// half-width that was not measured left empty; the file name is asked with a
// .csv default and an existing file is replaced only after the question.
using GridCsv = EventExports;

TEST_F(GridCsv, EveryGridColumnInTheGridsUnitsThroughTheSaveDialog) {
    const EventRecord r{.time = 12.5f, .amplitude = -30, .riseTime = 4, .decayTime = 20, .halfWidth = std::nanf(""),
                        .peakDirection = -1};
    ws.events.Append(r);
    ws.events.Append(r);
    dialogs.AnswerSaveFile((dir / "grid").string());
    ASSERT_TRUE(SaveGridCsvCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript()[0].text, "CSV File (*.csv)");
    EXPECT_EQ(ReadText(dir / "grid.csv"),
              "Event,Time (ms),Amplitude (pA),Time to Rise (ms),Time to Decay (ms),Area (fC),Baseline (pA),Noise (pA),"
              "Group,Channel,Rise10-90 (ms),Half-width (ms),Rise 50 (ms),Peak Direction,Burst #,Burst Event#,"
              "Slope10-90 (pA/msec),Relative Time (ms)\n"
              "1,12.5,-15,0.2,1,0,0,0,0,0,0,,0,-1,0,0,0,0\n2,12.5,-15,0.2,1,0,0,0,0,0,0,,0,-1,0,0,0,0\n");
    dialogs.AnswerSaveFile((dir / "grid.csv").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveGridCsvCommand(ws, dialogs));
}

}  // namespace
}  // namespace vess
