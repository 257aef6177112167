// The event grid's decimals per column and the widest text of each column.
#include <gtest/gtest.h>

#include <cmath>

#include "recording/event_grid_format.h"
#include "recording/recording.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(GridFormat, DecimalsShowOneStepOfTheUnit) {
    EXPECT_EQ(DecimalsForStep(0.05), 2);      // 50 us in ms
    EXPECT_EQ(DecimalsForStep(0.025), 2);
    EXPECT_EQ(DecimalsForStep(0.1), 1);       // 100 us: exactly one decimal
    EXPECT_EQ(DecimalsForStep(0.0305), 2);    // one count of a 10 V / 32768 pA channel
    EXPECT_EQ(DecimalsForStep(0.00305), 3);   // the same in nA
    EXPECT_EQ(DecimalsForStep(1), 0);
    EXPECT_EQ(DecimalsForStep(40), 0);
    EXPECT_EQ(DecimalsForStep(1e-12), 6);
    EXPECT_EQ(DecimalsForStep(0), 0);
    EXPECT_EQ(FormatGridCell(CellValue(12.3456f), 2), "12.35");
    EXPECT_EQ(FormatGridCell(CellValue(int16_t(-7)), 2), "-7");
    EXPECT_EQ(FormatGridCell(CellValue(uint8_t(255)), 3), "255");
    EXPECT_EQ(FormatGridCell(CellValue(std::nanf("")), 2), "");
    // No nonzero value reads as zero: a count of 1e-11 units keeps its digits.
    EXPECT_EQ(FormatGridCell(CellValue(-2.5e-11f), 6), "-2.5e-11");
}

// Without a recording converted columns hold raw counts and points.
TEST(GridFormat, WithoutARecordingRawColumnsAreWholeNumbers) {
    EXPECT_EQ(EventColumnDecimals(nullptr, 2), 0);   // Amplitude in counts
    EXPECT_EQ(EventColumnDecimals(nullptr, 1), 2);   // Time in ms as stored
    EXPECT_EQ(EventColumnDecimals(nullptr, 8), 0);   // Group
    EXPECT_EQ(EventColumnDecimals(nullptr, 0), 0);   // event number
}

// 171116sh_0020_saved.abf: 50 us, one count 10 V / 32768 / (0.01 V/pA) =
// 0.0305176 pA, 1 400 000 points (70 000 ms) - see the data README.
TEST(GridFormat, ColumnsOfARealRecording) {
    VESS_REQUIRE_SHARED_DATA();
    AbfError error{};
    const auto rec = Recording::Open(test::SharedData() / "abf1/171116sh_0020_saved.abf", &error);
    ASSERT_TRUE(rec);
    EXPECT_EQ(EventColumnDecimals(rec.get(), 1), 2);   // Time
    EXPECT_EQ(EventColumnDecimals(rec.get(), 2), 2);   // Amplitude, 0.0305 pA
    EXPECT_EQ(EventColumnDecimals(rec.get(), 3), 2);   // Time to Rise, 0.05 ms
    EXPECT_EQ(EventColumnDecimals(rec.get(), 5), 3);   // Area, 0.0305 x 0.05 = 0.0015
    EXPECT_EQ(EventColumnDecimals(rec.get(), 8), 0);   // Group
    EXPECT_EQ(EventColumnWidestText(rec.get(), 1), "70000.00");
    // 65535 counts x 0.0305176 pA = 1999.97 pA peak to peak.
    EXPECT_EQ(EventColumnWidestText(rec.get(), 2), "-1999.97");
    // 32767 points x 0.05 ms.
    EXPECT_EQ(EventColumnWidestText(rec.get(), 3), "1638.35");
    EXPECT_EQ(EventColumnWidestText(rec.get(), 8), "255");
}

}  // namespace
}  // namespace vess
