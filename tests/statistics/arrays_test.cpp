// Filling the work arrays from events, arithmetic on them, typed values, and
// the arrays as text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "recording/event_grid.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "statistics/array_entry.h"
#include "statistics/array_fill.h"
#include "statistics/array_text.h"
#include "statistics/math_operation.h"
#include "stats_fixture.h"
#include "support/read_back.h"

namespace vess {
namespace {

using test::TempDir;

std::vector<float> Values(const DataArray& a) { return {a.Values().begin(), a.Values().end()}; }

using ArrayFillTest = test::FiveEventsTest;

TEST_F(ArrayFillTest, AppendingToAClearedArrayKeepsTheLeadingZeroClearingGivesTheGroup) {
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

    dialogs.AnswerYesNo(true).AnswerInput("1");
    ASSERT_TRUE(PutEventDataCommand(ws, dialogs, 2, ArrayField::Amplitude));
    // Group 1 is events 1, 3, 5 (amplitudes -2, -6, -10 counts), in table order.
    const Recording& r = *ws.recording;
    EXPECT_EQ(Values(ws.array2), (std::vector<float>{r.Bit2pA2(-2), r.Bit2pA2(-6), r.Bit2pA2(-10)}));
    EXPECT_EQ(dialogs.Messages().back().caption, "Done Filling Array #2");
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

TEST_F(ArrayFillTest, InterEventIntervalsOfSortedTimesOrNoneWithTooFewEvents) {
    // All times 10, 20, 30, 45, 50 sorted: 10, 10, 15, 5.
    dialogs.AnswerYesNo(true).AnswerInput("0");
    ASSERT_TRUE(InterEventIntervalsCommand(ws, dialogs, 1));
    EXPECT_EQ(Values(ws.array1), (std::vector<float>{10, 10, 15, 5}));
    EXPECT_EQ(dialogs.Messages().back().text,
              "All of 4 inter-event intervals are safely put into Array #1 for further statistical data analysis.");

    ws.events.Truncate(1);
    ws.array2.Assign(std::vector<float>{7, 8});
    dialogs.ClearTranscript();
    dialogs.AnswerYesNo(true).AnswerInput("0");
    EXPECT_FALSE(ShowFailure(dialogs, InterEventIntervalsCommand(ws, dialogs, 2)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, "Not enough events to add.");
    EXPECT_EQ(Values(ws.array2), (std::vector<float>{7, 8}));
}

TEST_F(ArrayFillTest, MathOperationUsesTheShorterOperandAndDivisionByZeroSaysSo) {
    ws.array1.Assign(std::vector<float>{1, 2, 3, 4});
    ws.array2.Assign(std::vector<float>{10, 20, 0});
    MathRequest r{MathOperand::Array1, 0, MathOperation::Addition, MathOperand::Array2, 0, 2};
    ASSERT_TRUE(MathOperationCommand(ws, dialogs, r));
    EXPECT_EQ(Values(ws.array2), (std::vector<float>{11, 22, 3}));

    // A constant applies to every element; event fields come in table order.
    r = {MathOperand::Time, 0, MathOperation::Multiply, MathOperand::Constant, 2, 1};
    EXPECT_EQ(ComputeMath(ws, r).values, (std::vector<float>{20, 60, 40, 100, 90}));
    r = {MathOperand::Constant, 9, MathOperation::SquareRoot, MathOperand::Array2, 0, 1};
    EXPECT_EQ(ComputeMath(ws, r).values, (std::vector<float>{3}));

    // Division by zero gives infinities (and 0 / 0 not a number) and says how many.
    ws.array1.Assign(std::vector<float>{1, -1, 0});
    ws.array2.Assign(std::vector<float>{0, 0, 0});
    dialogs.ClearTranscript();
    ASSERT_TRUE(MathOperationCommand(ws, dialogs, {MathOperand::Array1, 0, MathOperation::Divide, MathOperand::Array2, 0, 1}));
    EXPECT_EQ(ws.array1[1], std::numeric_limits<float>::infinity());
    EXPECT_EQ(ws.array1[2], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(ws.array1[3]));
    ASSERT_EQ(dialogs.Messages().size(), 2u);
    EXPECT_NE(dialogs.Messages()[1].text.find("3 of the results"), std::string::npos);
}

TEST(ArrayEntry, TypedValuesAreReadAsTheGridShowsThemAndGrowTheArrayWithZeros) {
    EXPECT_EQ(ParseTypedValue("1,234.500"), 1234.5);  // the grid's "#,##0.000" read back
    EXPECT_EQ(ParseTypedValue(" -0.25 "), -0.25);
    EXPECT_EQ(ParseTypedValue("2e3"), 2000.0);
    for (const char* text : {"", "abc", "1.5x", "nan"}) EXPECT_FALSE(ParseTypedValue(text)) << text;

    DataArray a;  // cleared: upper bound 1, element 1 = 0
    EXPECT_TRUE(a.Empty());
    SetArrayElement(a, 1, 5.0f);
    EXPECT_EQ(a.UpperBound(), 1);
    EXPECT_EQ(a[1], 5.0f);
    // Row 4 of a one-element array: elements 2 and 3 appear as 0.
    SetArrayElement(a, 4, 7.0f);
    SetArrayElement(a, 0, 9.0f);  // element 0 is not a value
    EXPECT_EQ(Values(a), (std::vector<float>{5, 0, 0, 7}));
    EXPECT_EQ(a[0], 0.0f);
    EXPECT_FALSE(a.Empty());
}

// The work arrays as text: the clipboard, the text file and its commands.
const auto ReadAll = test::ReadText;

DataArray Of(std::vector<float> v) {
    DataArray a;
    a.Assign(v);
    return a;
}

TEST(ArrayText, ValuesInShortestPlainDecimalAndPasteTakesTheFirstCellOfNumericLinesAsked) {
    EXPECT_EQ(FormatArrayValue(0.1f), "0.1");
    EXPECT_EQ(FormatArrayValue(12.0f), "12");
    EXPECT_EQ(FormatArrayValue(-3.5e-7f), "-0.00000035");
    EXPECT_EQ(FormatArrayValue(1234567.0f), "1234567");
    EXPECT_EQ(ArraysClipboardText(Of({1, 2.5f}), Of({3})), "Array #1\tArray #2\r\n1\t3\r\n2.5\t\r\n");
    EXPECT_EQ(ParseClipboardNumbers("1.5\rabc\r2\t7\r"), (std::vector<float>{1.5f, 2.0f}));
    // Beyond the float range a number would become an infinity: skipped.
    EXPECT_EQ(ParseClipboardNumbers("1e39\r-1e39\r5\r"), (std::vector<float>{5.0f}));
    EXPECT_EQ(ParseClipboardNumbers("Array #1\tArray #2\r\n3\t\r\n\t4\r\n"), (std::vector<float>{3.0f}));

    Workspace ws;
    ScriptedDialogs dialogs;
    dialogs.AnswerYesNo(false);
    ASSERT_TRUE(PasteArrayCommand(ws, dialogs, 2, "1.5\rabc\r2\t7"));
    EXPECT_EQ(dialogs.Transcript()[0].caption, "Clear Data Array?");
    EXPECT_EQ(dialogs.Transcript()[0].text,
              "There are 2 numbers extracted from the clipboard.  Would you like to clear the Array#2 before "
              "pasting?");
    EXPECT_EQ(ws.array2.UpperBound(), 3);  // the cleared array's 0, then 1.5 and 2
    dialogs.AnswerYesNo(true);
    ASSERT_TRUE(PasteArrayCommand(ws, dialogs, 2, "8\r9"));
    EXPECT_EQ(ws.array2, Of({8, 9}));
}

TEST(ArrayText, FileOfTenAndThreeValuesAndImportRefusesOtherFilesAndFillsMissingRowsWithZero) {
    const DataArray a1 = Of({1, 2, 3, 4, 5, 6, 7, 8, 9, 10.5f});
    const DataArray a2 = Of({-1, 0.25f, 1e6f});
    const std::string text = ArraysAtfText("cell.abf", a1, a2);
    const std::string expectedHead =
        "ATF\t1.0\r\n3\t2\r\n\"Array Data : cell.abf\"\r\n\"MaxArray1 : 10\"\r\n\"MaxArray2 : 3\"\r\n"
        "\"Array #1\"\t\"Array #2\"\r\n1\t-1\r\n2\t0.25\r\n3\t1000000\r\n4\t \r\n";
    EXPECT_EQ(text.substr(0, expectedHead.size()), expectedHead);
    EXPECT_TRUE(text.ends_with("10.5\t \r\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6 + 10);

    const auto back = ParseArraysAtf(text);
    ASSERT_TRUE(back);
    EXPECT_EQ(std::tuple(back->array1.LowerBound(), back->array1.UpperBound(), back->array2.UpperBound()), std::tuple(0, 10, 3));
    EXPECT_EQ(std::tuple(back->array1[0], back->array1[10], back->array2[3]), std::tuple(0.0f, 10.5f, 1e6f));
    // Written again, the imported arrays give the same bytes.
    EXPECT_EQ(ArraysAtfText("cell.abf", back->array1, back->array2), text);

    EXPECT_FALSE(ParseArraysAtf("ATF\t1.0\r\n0\t2\r\n\"Time(ms)\"\t\"Amplitude(pA)\"\r\n"));
    EXPECT_FALSE(ParseArraysAtf("ATF\t1.0\r\n3\t2\r\nArray Data : x\r\n"));  // no opening quote
    EXPECT_FALSE(ParseArraysAtf(""));
    const auto short_ = ParseArraysAtf(
        "ATF\t1.0\r\n3\t2\r\n\"Array Data : x\"\r\n\"MaxArray1 : 4\"\r\n\"MaxArray2 : 2\"\r\n\"a\"\t\"b\"\r\n5\t6\r\n");
    ASSERT_TRUE(short_);
    EXPECT_EQ(short_->array1.UpperBound(), 4);
    EXPECT_EQ(std::tuple(short_->array1[1], short_->array1[4], short_->array2[1]), std::tuple(5.0f, 0.0f, 6.0f));
    // A count the file cannot hold is cut to the file's size in bytes.
    const std::string huge =
        "ATF\t1.0\r\n3\t2\r\n\"Array Data : x\"\r\n\"MaxArray1 : 50000000\"\r\n\"MaxArray2 : 2\"\r\n\"a\"\t\"b\"\r\n5\t6\r\n";
    EXPECT_EQ(ParseArraysAtf(huge)->array1.UpperBound(), int32_t(huge.size()));
}

// Read from a file in pieces (LF or CR-only line ends), the arrays are those of
// the whole text; progress rises to 1 and a stop after the first piece reads no further.
TEST(ArrayText, AFileReadInPiecesGivesTheArraysOfItsText) {
    TempDir dir;
    std::vector<float> many(70000);
    for (std::size_t i = 0; i < many.size(); ++i) many[i] = float(i) * 0.5f;
    std::string text = ArraysAtfText("cell.abf", Of(many), Of({1, 2, 3}));
    for (const bool crOnly : {false, true}) {
        if (crOnly) std::erase(text, '\n');
        ASSERT_EQ(WriteFileAtomic(dir / "a.txt", text), "");
        const auto read = ReadArraysAtf(dir / "a.txt");
        ASSERT_TRUE(read);
        EXPECT_EQ(read->array1, ParseArraysAtf(text)->array1);
        EXPECT_EQ(read->array1.UpperBound(), 70000);
        EXPECT_EQ(read->array1[70000], 34999.5f);
        EXPECT_EQ(read->array2, ParseArraysAtf(text)->array2);
    }
    std::vector<double> shares;
    ASSERT_TRUE(ReadArraysAtf(dir / "a.txt", nullptr, [&](double done, const std::string&) {
        shares.push_back(done);
        return true;
    }));
    ASSERT_GT(shares.size(), 2u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_LT(shares.front(), 0.5);
    EXPECT_DOUBLE_EQ(shares.back(), 1.0);
    int calls = 0;
    EXPECT_FALSE(ReadArraysAtf(dir / "a.txt", nullptr, [&](double, const std::string&) { return ++calls < 1; }));
    EXPECT_EQ(calls, 1);
    std::string why;
    EXPECT_FALSE(ReadArraysAtf(dir / "missing.txt", &why));
    EXPECT_NE(why, "");
}

TEST(ArrayText, SaveAndImportCommandsAndAForeignFile) {
    TempDir dir;
    Workspace ws;
    ws.recording = test::OffsetRecording(dir);
    ASSERT_TRUE(ws.recording);
    ScriptedDialogs dialogs;
    // Both arrays empty: nothing asked.
    EXPECT_FALSE(SaveArraysAsciiCommand(ws, dialogs));
    EXPECT_TRUE(dialogs.Transcript().empty());

    ws.array1 = Of({0.1f, 2, 3});
    ws.array2 = Of({4});
    dialogs.AnswerSaveFile((dir / "arrays").string());
    ASSERT_TRUE(SaveArraysAsciiCommand(ws, dialogs));
    const std::string first = ReadAll(dir / "arrays.txt");
    EXPECT_TRUE(first.starts_with("ATF\t1.0\r\n3\t2\r\n\"Array Data : rec.abf\"\r\n"));

    Workspace other;
    dialogs.AnswerOpenFile((dir / "arrays.txt").string());
    ASSERT_TRUE(ImportArraysAsciiCommand(other, dialogs));
    EXPECT_EQ(other.array1.LowerBound(), 0);
    EXPECT_EQ(other.array2.UpperBound(), 1);
    // An existing file asks to replace; No keeps it.
    dialogs.AnswerSaveFile((dir / "arrays.txt").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveArraysAsciiCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");
    EXPECT_EQ(ReadAll(dir / "arrays.txt"), first);

    // A foreign file is said to be one and the arrays are kept.
    ASSERT_EQ(WriteFileAtomic(dir / "x.txt", std::string_view("hello\r\n")), "");
    dialogs.ClearTranscript();
    dialogs.AnswerOpenFile((dir / "x.txt").string());
    EXPECT_FALSE(ShowFailure(dialogs, ImportArraysAsciiCommand(ws, dialogs)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "Not a Valid Data Array");
    EXPECT_EQ(ws.array1.UpperBound(), 3);
}

}  // namespace
}  // namespace vess
