// Commands over the program-wide results table: pruning, text out, the
// results file (*.RSL) and handing a column to a work array.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "group_analysis/result_row.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/results_table.h"

namespace vess {
struct Workspace;
class DataArray;
}

namespace vess::group {

void DeleteLastResult(ResultsTable& table);
// Keeps rows 1, 3, 5, ... (Int(count / 2 + 0.5) rows remain).
void DeleteEvenResults(ResultsTable& table);
// Keeps rows 2, 4, 6, ...
void DeleteOddResults(ResultsTable& table);
// Removes the given 1-based rows, closing the gaps.
void DeleteSelectedResults(ResultsTable& table, const std::set<int32_t>& rows);

// The grid as text: a heading line and one line per row, tab-separated,
// values in "0.000" format, columns of the last row's kind.
std::string ResultsText(const ResultsTable& table);
std::string FormatResult(double value);  // "0.000"

// menu_copyasciifile: saves the text to a new "ASCII File (*.Fit)"; an
// existing name is refused.
CommandResult SaveResultsAsciiCommand(const ResultsTable& table, Dialogs& dialogs);

// The results file: a variant-string header (16-bit type 8, 16-bit length
// 37, the tag padded with blanks to 37 characters) then the rows.
inline constexpr std::size_t kResultsHeaderChars = 37;
inline constexpr std::size_t kResultsHeaderBytes = 4 + kResultsHeaderChars;
inline constexpr int16_t kVariantStringType = 8;
std::vector<uint8_t> BuildResultsFile(const ResultsTable& table);
// The rows of a results file, or std::nullopt when its header does not
// carry the tag. Bytes after the last whole row are ignored.
std::optional<std::vector<ResultBytes>> ParseResultsFile(std::span<const uint8_t> bytes);

// menu_SaveResults / menu_LoadResults.
CommandResult SaveResultsCommand(const ResultsTable& table, Dialogs& dialogs);
CommandResult LoadResultsCommand(ResultsTable& table, Dialogs& dialogs);
// menu_LoadResults in three steps, for reading the file as a job: the name
// chosen, the file's rows read (std::nullopt when it is not a results
// file), then the rows put in the table after the clear question, or the
// failed with the reason it is not a results file.
std::optional<std::string> ChooseResultsFile(Dialogs& dialogs);
std::optional<std::vector<ResultBytes>> ReadResultsFile(const std::string& name);
CommandResult PlaceLoadedResults(ResultsTable& table, Dialogs& dialogs, const std::string& name,
                                 std::optional<std::vector<ResultBytes>> rows);

// menu_Put2Array1 / menu_Put2Array2: the column's values into work array 1
// or 2, asking whether to clear an array that holds data first; fails when
// there are no results.
CommandResult PutColumnToArrayCommand(const ResultsTable& table, const ResultColumn& column,
                                      DataArray& array, int arrayNumber, Dialogs& dialogs);

}  // namespace vess::group
