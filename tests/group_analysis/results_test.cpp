// The results table: row layout, pruning, the results file byte for byte,
// its commands' questions, the text copy, handing a column to an array, the
// numbers in reports and grids, and the units in the grid's headings.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "group_analysis/decay_fit.h"
#include "group_analysis/result_units.h"
#include "group_analysis/results_commands.h"
#include "recording/data_array.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/scripted_dialogs.h"
#include "statistics/result_table.h"
#include "support/test_recording.h"

namespace vess::group {
namespace {

ResultValues Values(double tau1, int trace = 0) {
    return {.kind = ResultKind::DecayFit, .trace = trace, .eventIndex = trace * 3, .group = 2, .tracesAveraged = 12,
            .exponentials = 2, .iterations = 345, .restarts = 4, .amplitude = -52.25, .tau1 = tau1, .a1 = -40.5,
            .tau2 = 25.125, .rSquared = 0.9975,
            .standardErrors = {0.25, 1.5, 0.125, kNotMeasured, kNotMeasured, kNotMeasured, 0.5}, .fitStatus = 1};
}

ResultsTable Table(int rows) {
    ResultsTable t;
    for (int i = 1; i <= rows; ++i) t.Append(WriteResultRow(Values(i, i)));
    return t;
}

double Tau1(const ResultsTable& t, int row) { return ReadResultRow(t[row]).tau1; }

TEST(ResultBytes, EveryFieldRoundTripsAndLiesAtItsOffset) {
    const ResultValues v = Values(3.5, 7);
    const ResultBytes row = WriteResultRow(v);
    EXPECT_EQ(ReadResultRow(row), v);
    const std::span<const uint8_t> bytes(row);
    EXPECT_EQ(le::Get<int32_t>(bytes, result_offsets::kKind), 1);
    EXPECT_EQ(le::Get<int32_t>(bytes, result_offsets::kRestarts), 4);
    EXPECT_EQ(le::Get<double>(bytes, result_offsets::kTau1), 3.5);
    EXPECT_EQ(le::Get<float>(bytes, result_offsets::kStandardErrors + 4), 1.5f);
    EXPECT_EQ(le::Get<int32_t>(bytes, result_offsets::kFitStatus), 1);
    for (std::size_t at = result_offsets::kFree; at < kResultRowBytes; ++at) EXPECT_EQ(row[at], 0);
    // Fluctuation rows keep their measures where decay fits keep the errors.
    const ResultBytes fluctuation = WriteResultRow({.kind = ResultKind::Fluctuation, .baselineVariance = 0.5});
    EXPECT_EQ(le::Get<double>(std::span<const uint8_t>(fluctuation), result_offsets::kBaselineVariance), 0.5);
    EXPECT_EQ(ReadResultRow(fluctuation).baselineVariance, 0.5);
    // A decay-fit row of a fit that was not assessed (status 0, as rows of
    // earlier files) shows no standard errors.
    ResultValues old = v;
    old.fitStatus = 0;
    const ResultBytes oldRow = WriteResultRow(old);
    EXPECT_TRUE(std::isnan(ReadResultRow(oldRow).standardErrors[0]));
    const auto columns = ResultColumns(ResultKind::DecayFit);
    EXPECT_TRUE(std::isnan(ResultCell(oldRow, columns[16])));
    EXPECT_EQ(ResultCell(row, columns[16]), 0.25);
}

// Each command on rows of tau1 1..5; the rows left, by their tau1.
TEST(ResultsTable, PruningCommands) {
    const struct {
        const char* command;
        void (*prune)(ResultsTable&);
        std::vector<double> left;
    } cases[] = {
        {"even", [](ResultsTable& t) { DeleteEvenResults(t); }, {1, 3, 5}},  // Int(5 / 2 + 0.5) = 3 rows
        {"odd", [](ResultsTable& t) { DeleteOddResults(t); }, {2, 4}},
        {"selected", [](ResultsTable& t) { DeleteSelectedResults(t, {2, 5}); }, {1, 3, 4}},
        {"last", [](ResultsTable& t) { DeleteLastResult(t); }, {1, 2, 3, 4}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        ResultsTable t = Table(5);
        c.prune(t);
        std::vector<double> left;
        for (int32_t r = 1; r <= t.Count(); ++r) left.push_back(Tau1(t, r));
        EXPECT_EQ(left, c.left);
    }
    ResultsTable empty;
    DeleteLastResult(empty);
    EXPECT_EQ(empty.Count(), 0);
}

TEST(ResultsFile, HeaderAndRowsByteForByte) {
    const ResultsTable t = Table(2);
    const auto bytes = BuildResultsFile(t);
    ASSERT_EQ(bytes.size(), 41u + 2 * 280u);
    // 16-bit type 8, 16-bit length 37, 26 characters and 11 blanks.
    const std::vector<uint8_t> header = {8, 0, 37, 0};
    EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes.begin()));
    EXPECT_EQ(std::string(bytes.begin() + 4, bytes.begin() + 41),
              "Vessantorium Results File.           ");
    EXPECT_TRUE(std::equal(t[1].begin(), t[1].end(), bytes.begin() + 41));
    EXPECT_TRUE(std::equal(t[2].begin(), t[2].end(), bytes.begin() + 321));
    const auto rows = ParseResultsFile(bytes);
    ASSERT_TRUE(rows);
    EXPECT_EQ(*rows, t.Rows());
    auto foreign = bytes;
    foreign[4] = 'X';
    EXPECT_FALSE(ParseResultsFile(foreign));
    EXPECT_FALSE(ParseResultsFile(std::span<const uint8_t>(bytes).first(3)));
}

TEST(ResultsFile, SaveAsksToReplaceLoadAsksToClearAndTheTextFileRefusesAnExistingName) {
    test::TempDir dir;
    const std::string path = (dir / "fits").string();
    ResultsTable t = Table(3);
    ScriptedDialogs d;
    d.AnswerSaveFile(path);
    ASSERT_TRUE(SaveResultsCommand(t, d));
    EXPECT_TRUE(std::filesystem::exists(dir / "fits.RSL"));
    d.AnswerSaveFile(path).AnswerYesNo(false);
    EXPECT_FALSE(SaveResultsCommand(Table(1), d));
    EXPECT_EQ(d.Transcript().back().caption, "Replace");
    EXPECT_EQ(ReadFileBytes(dir / "fits.RSL")->size(), 41u + 3 * 280u);

    // "No" appends the three loaded rows to the two present.
    ResultsTable loaded = Table(2);
    d.AnswerOpenFile(path + ".RSL").AnswerYesNo(false);
    ASSERT_TRUE(LoadResultsCommand(loaded, d));
    EXPECT_EQ(d.Transcript().back().caption, "Clear results?");
    EXPECT_EQ(loaded.Count(), 5);
    d.AnswerOpenFile(path + ".RSL").AnswerYesNo(true);
    ASSERT_TRUE(LoadResultsCommand(loaded, d));
    EXPECT_EQ(loaded, t);

    // A file without the tag changes nothing.
    std::ofstream(dir / "other.RSL") << "not results";
    d.AnswerOpenFile((dir / "other.RSL").string());
    EXPECT_FALSE(LoadResultsCommand(loaded, d));
    EXPECT_EQ(loaded, t);
    EXPECT_TRUE(d.AllAnswersUsed());

    // The text file refuses a name that exists.
    d.AnswerSaveFile((dir / "out").string());
    ASSERT_TRUE(SaveResultsAsciiCommand(Table(2), d));
    EXPECT_TRUE(std::filesystem::exists(dir / "out.Fit"));
    d.AnswerSaveFile((dir / "out.Fit").string());
    EXPECT_FALSE(ShowFailure(d, SaveResultsAsciiCommand(Table(2), d)));
    EXPECT_EQ(d.Messages().back().caption, "File Exist");
}

TEST(ResultsText, HeadingsAndThreeDecimals) {
    const std::string text = ResultsText(Table(1));
    EXPECT_EQ(text.substr(0, text.find("\r\n")),
              "Amplitude\tTime\tBaseline\tRise\tArea\tHalf-width\tDecay90-37%\tTau1\tA1\tTau2\tA2\t"
              "Tau3\tA3\tOffset\tR-Sqr\tStdev\tSE Tau1\tSE A1\tSE Tau2\tSE A2\tSE Tau3\tSE A3\tSE Offset");
    // Standard errors not measured are blank.
    EXPECT_NE(text.find("\t0.250\t1.500\t0.125\t\t\t\t0.500"), std::string::npos);
    EXPECT_NE(text.find("\r\n-52.250\t0.000\t"), std::string::npos);
    EXPECT_NE(text.find("\t1.000\t-40.500\t25.125\t"), std::string::npos);
}

TEST(ResultsToArray, AsksBeforeClearingAndSaysArrayOneForBoth) {
    const ResultsTable t = Table(3);
    const ResultColumn tau1{"Tau1", result_offsets::kTau1};
    DataArray array;
    ScriptedDialogs d;
    ASSERT_TRUE(PutColumnToArrayCommand(t, tau1, array, 2, d));  // empty: no question
    EXPECT_EQ(array.UpperBound(), 3);
    EXPECT_EQ(array[3], 3.0f);
    d.AnswerYesNo(false);  // append
    PutColumnToArrayCommand(t, tau1, array, 2, d);
    EXPECT_EQ(array.UpperBound(), 6);
    EXPECT_EQ(d.Transcript()[1].caption, "Append data or clear Data before adding");
    EXPECT_EQ(d.Messages().back().caption, "Done Filling Array #1");
    d.AnswerYesNo(true);  // clear
    PutColumnToArrayCommand(t, tau1, array, 2, d);
    EXPECT_EQ(array.UpperBound(), 3);
    // No results: said, and the array is left as it was (not "All of 0 ...").
    EXPECT_FALSE(ShowFailure(d, PutColumnToArrayCommand(ResultsTable{}, tau1, array, 2, d)));
    EXPECT_EQ(d.Messages().back().text, "There are no results to put into the array: fit or measure a trace first.");
    EXPECT_EQ(array.UpperBound(), 3);
}

// Fixed decimals where they show the value, significant digits where a
// nonzero value would read as zero (a channel scaled so that one count is
// 1e-11 of its unit).
TEST(ReportNumbers, NoNonzeroValueReadsAsZero) {
    struct Case {
        double value;
        std::string grid, statistics, thousands;  // FormatResult, FormatNumber(4, grouped), FormatThousands
    };
    const Case cases[] = {
        {-12345.678, "-12345.678", "-12,345.6780", "-12,345.68"},
        {0.0004, "0.0004", "0.0004", "0.0004"},
        {-2.5e-11, "-2.5e-11", "-2.5e-11", "-2.5e-11"},
        {3.21e-7, "3.21e-07", "3.21e-07", "3.21e-07"},
        {0.0, "0.000", "0.0000", "0.00"},
        {-0.0, "0.000", "0.0000", "0.00"},  // no "-0"
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FormatResult(c.value), c.grid) << c.value;
        EXPECT_EQ(FormatNumber(c.value, 4, true), c.statistics) << c.value;
        EXPECT_EQ(FormatThousands(c.value), c.thousands) << c.value;
    }
}

// Units in the headings of the results grid.
TEST(ResultUnits, HeadingsCarryTheRecordingsUnitOrOneBuiltOnIt) {
    struct Case {
        ResultKind kind;
        std::string_view title, signalUnit, heading;
    };
    const Case cases[] = {
        {ResultKind::DecayFit, "Amplitude", "pA", "Amplitude (pA)"},
        {ResultKind::DecayFit, "Area", "mV", "Area (mV·ms)"},
        {ResultKind::DecayFit, "Stdev", "pA", "Stdev (pA)"},
        {ResultKind::Diffusion, "Stdev", "pA", "Stdev (µM)"},  // the model's concentration
        {ResultKind::SpikeShape, "Max Rise", "mV", "Max Rise (mV/ms)"},
        {ResultKind::Fluctuation, "Base Var", "pA", "Base Var (pA²)"},
        {ResultKind::Amperometric, "Charge", "pA", "Charge (pC)"},
        {ResultKind::Amperometric, "Foot Charge", "nA", "Foot Charge (nC)"},
        {ResultKind::Amperometric, "Charge", "mV", "Charge (mV·s)"},
        {ResultKind::SpikeTrain, "Adaptation", "mV", "Adaptation"},
        // No recording open: the recording's unit and those built on it are left out.
        {ResultKind::DecayFit, "Amplitude", "", "Amplitude"},
        {ResultKind::DecayFit, "Area", "", "Area"},
        {ResultKind::DecayFit, "Tau1", "", "Tau1 (ms)"},
    };
    for (const Case& c : cases) EXPECT_EQ(ColumnHeading(c.kind, c.title, c.signalUnit), c.heading) << c.title;
}

}  // namespace
}  // namespace vess::group
