#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "recording/event_grid.h"
#include "recording/scripted_dialogs.h"
#include "statistics/array_entry.h"
#include "statistics/array_fill.h"
#include "statistics/math_operation.h"
#include "stats_fixture.h"

namespace vess {
namespace {

using test::TempDir;

std::vector<float> Values(const DataArray& a) { return {a.Values().begin(), a.Values().end()}; }

using ArrayFillTest = test::FiveEventsTest;

TEST(DataArray, ClearedArrayHoldsOneZeroAndCountsAsEmpty) {
    DataArray a;
    EXPECT_EQ(a.LowerBound(), 1);
    EXPECT_EQ(a.UpperBound(), 1);
    EXPECT_EQ(a[1], 0.0f);
    EXPECT_TRUE(a.Empty());
    const float two[] = {1, 2};
    a.Assign(two);
    EXPECT_FALSE(a.Empty());
}

TEST_F(ArrayFillTest, AppendingToAClearedArrayKeepsTheLeadingZero) {
    dialogs.AnswerYesNo(false).AnswerInput("0");
    ASSERT_TRUE(PutEventDataCommand(ws, dialogs, 1, ArrayField::Amplitude));
    const auto v = Values(ws.array1);
    ASSERT_EQ(v.size(), 6u);
    EXPECT_EQ(v[0], 0.0f);
    EXPECT_EQ(v[1], ws.recording->Bit2pA2(-2));
    const auto& t = dialogs.Transcript();
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[0].caption, "Append data or clear Data before adding");
    EXPECT_EQ(t[2].text, "All of 5 event data are safely put into Array #1 for further statistical data analysis.");
}

TEST_F(ArrayFillTest, ClearingFirstGivesExactlyTheGroupInTableOrder) {
    dialogs.AnswerYesNo(true).AnswerInput("1");
    ASSERT_TRUE(PutEventDataCommand(ws, dialogs, 2, ArrayField::Amplitude));
    // Group 1 is events 1, 3, 5 (amplitudes -2, -6, -10 counts).
    const std::vector<float> expected = {ws.recording->Bit2pA2(-2), ws.recording->Bit2pA2(-6),
                                         ws.recording->Bit2pA2(-10)};
    EXPECT_EQ(Values(ws.array2), expected);
    EXPECT_EQ(dialogs.Messages().back().caption, "Done Filling Array #2");
    EXPECT_TRUE(ws.array1.Empty());
}

TEST_F(ArrayFillTest, ConversionsGiveTheGridsValues) {
    const EventRecord& e = ws.events[1];
    const Recording* r = ws.recording.get();
    // Amplitude and noise are differences, the baseline a level (offset 3 units), as in the grid.
    ASSERT_NE(r->Bit2pA(100), r->Bit2pA2(100));
    const std::pair<ArrayField, EventField> sameAsGrid[] = {
        {ArrayField::Amplitude, EventField::Amplitude}, {ArrayField::Noise, EventField::Noise},
        {ArrayField::Baseline, EventField::Baseline}};
    for (const auto& [field, column] : sameAsGrid)
        EXPECT_EQ(ArrayFieldValue(r, e, field), std::get<float>(EventCellValue(r, e, 1, int(column) + 1)))
            << ArrayFieldCaption(field);
    EXPECT_EQ(ArrayFieldValue(r, e, ArrayField::Baseline), r->Bit2pA(e.baseline));
    // 4 points of 50 us are 0.2 ms; 1000 points 50 ms.
    EXPECT_FLOAT_EQ(ArrayFieldValue(r, e, ArrayField::RiseTime), 0.2f);
    EXPECT_FLOAT_EQ(ArrayFieldValue(r, e, ArrayField::RelativeTime), 50.0f);
    EXPECT_EQ(ArrayFieldValue(r, e, ArrayField::Area), -7.25f);
    EXPECT_EQ(ArrayFieldValue(r, e, ArrayField::PeakDirection), -1.0f);
    EXPECT_EQ(ArrayFieldValue(r, e, ArrayField::Time, 1000.0), 1010.0f);
}

TEST_F(ArrayFillTest, TimeAsksForAConstantAndCancelChangesNothing) {
    dialogs.AnswerYesNo(true).AnswerInput("0").AnswerInput(std::nullopt);
    EXPECT_FALSE(PutEventDataCommand(ws, dialogs, 1, ArrayField::Time));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Add a constant");
    EXPECT_TRUE(ws.array1.Empty());

    const int32_t rows[] = {4, 2};
    dialogs.AnswerYesNo(true).AnswerInput("100");
    ASSERT_TRUE(PutHighlightedEventDataCommand(ws, dialogs, 1, ArrayField::Time, rows));
    EXPECT_EQ(Values(ws.array1), (std::vector<float>{150, 130}));  // selection order, 100 ms added
}

TEST_F(ArrayFillTest, SilentWithoutEventsGroupMatchesOrSelection) {
    Workspace empty;
    EXPECT_FALSE(PutEventDataCommand(empty, dialogs, 1, ArrayField::Amplitude));
    EXPECT_FALSE(PutHighlightedEventDataCommand(ws, dialogs, 1, ArrayField::Amplitude, {}));
    const int32_t row[] = {1};  // the highlighted-rows menus stop at Slope10-90
    EXPECT_FALSE(PutHighlightedEventDataCommand(ws, dialogs, 1, ArrayField::RelativeTime, row));
    EXPECT_TRUE(dialogs.Transcript().empty());
    dialogs.AnswerYesNo(true).AnswerInput("7");  // no event has group 7
    EXPECT_FALSE(PutEventDataCommand(ws, dialogs, 1, ArrayField::Amplitude));
    EXPECT_TRUE(dialogs.Messages().empty());
    EXPECT_TRUE(ws.array1.Empty());
}

TEST_F(ArrayFillTest, InterEventIntervalsOfSortedTimes) {
    // All times 10, 20, 30, 45, 50 sorted: 10, 10, 15, 5.
    dialogs.AnswerYesNo(true).AnswerInput("0");
    ASSERT_TRUE(InterEventIntervalsCommand(ws, dialogs, 1));
    EXPECT_EQ(Values(ws.array1), (std::vector<float>{10, 10, 15, 5}));
    EXPECT_EQ(dialogs.Messages().back().text,
              "All of 4 inter-event intervals are safely put into Array #1 for further statistical data analysis.");
}

TEST_F(ArrayFillTest, TooFewEventsForIntervalsKeepsTheArray) {
    ws.events.Truncate(1);
    const float kept[] = {7, 8};
    ws.array2.Assign(kept);
    dialogs.AnswerYesNo(true).AnswerInput("0");
    EXPECT_FALSE(ShowFailure(dialogs, InterEventIntervalsCommand(ws, dialogs, 2)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, "Not enough events to add.");
    EXPECT_EQ(Values(ws.array2), (std::vector<float>{7, 8}));
}

TEST_F(ArrayFillTest, MathOperationUsesTheShorterOperandAndReplacesTheDestination) {
    const float a[] = {1, 2, 3, 4};
    const float b[] = {10, 20, 0};
    ws.array1.Assign(a);
    ws.array2.Assign(b);
    MathRequest r{MathOperand::Array1, 0, MathOperation::Addition, MathOperand::Array2, 0, 2};
    ASSERT_TRUE(MathOperationCommand(ws, dialogs, r));
    EXPECT_EQ(Values(ws.array2), (std::vector<float>{11, 22, 3}));

    // A constant applies to every element; event fields come in table order.
    r = {MathOperand::Time, 0, MathOperation::Multiply, MathOperand::Constant, 2, 1};
    EXPECT_EQ(ComputeMath(ws, r).values, (std::vector<float>{20, 60, 40, 100, 90}));
    r = {MathOperand::Constant, 9, MathOperation::SquareRoot, MathOperand::Array2, 0, 1};
    EXPECT_EQ(ComputeMath(ws, r).values, (std::vector<float>{3}));
}

TEST_F(ArrayFillTest, DivisionByZeroGivesInfinityAndSaysSo) {
    const float a[] = {1, -1, 0};
    const float zero[] = {0, 0, 0};
    ws.array1.Assign(a);
    ws.array2.Assign(zero);
    const MathRequest r{MathOperand::Array1, 0, MathOperation::Divide, MathOperand::Array2, 0, 1};
    ASSERT_TRUE(MathOperationCommand(ws, dialogs, r));
    EXPECT_EQ(ws.array1[1], std::numeric_limits<float>::infinity());
    EXPECT_EQ(ws.array1[2], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(ws.array1[3]));
    ASSERT_EQ(dialogs.Messages().size(), 2u);
    EXPECT_NE(dialogs.Messages()[1].text.find("3 of the results"), std::string::npos);
}

TEST(ParseTypedValue, ReadsWhatTheGridShowsAndRefusesText) {
    EXPECT_EQ(ParseTypedValue("1,234.500"), 1234.5);  // the grid's "#,##0.000" read back
    EXPECT_EQ(ParseTypedValue(" -0.25 "), -0.25);
    EXPECT_EQ(ParseTypedValue("2e3"), 2000.0);
    for (const char* text : {"", "abc", "1.5x", "nan"}) EXPECT_FALSE(ParseTypedValue(text)) << text;
}

TEST(SetArrayElement, OverwritesInsideAndGrowsWithZerosPastTheEnd) {
    DataArray a;  // cleared: upper bound 1, element 1 = 0
    SetArrayElement(a, 1, 5.0f);
    EXPECT_EQ(a.UpperBound(), 1);
    EXPECT_EQ(a[1], 5.0f);
    // Row 4 of a one-element array: elements 2 and 3 appear as 0.
    SetArrayElement(a, 4, 7.0f);
    SetArrayElement(a, 0, 9.0f);  // element 0 is not a value
    EXPECT_EQ(std::vector<float>(a.Values().begin(), a.Values().end()), (std::vector<float>{5, 0, 0, 7}));
    EXPECT_EQ(a[0], 0.0f);
}

}  // namespace
}  // namespace vess
