#include "group_analysis/results_commands.h"

#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "group_analysis/texts.h"
#include "recording/data_array.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/number_text.h"
#include "recording/texts.h"
#include "statistics/texts.h"

namespace vess::group {

namespace {

// Keeps the rows whose 1-based number satisfies keep.
template <class Keep>
void KeepRows(ResultsTable& table, Keep keep) {
    std::vector<ResultBytes> kept;
    for (int32_t i = 1; i <= table.Count(); ++i)
        if (keep(i)) kept.push_back(table[i]);
    table.Assign(std::move(kept));
}

std::string Str(std::string_view s) { return std::string(s); }

std::optional<std::filesystem::path> AskSavePath(Dialogs& dialogs, std::string_view filter,
                                                 std::string_view extension) {
    const auto name = dialogs.SaveFile({"", Str(filter), Str(extension), ""});
    if (!name || name->empty()) return std::nullopt;
    return WithDefaultExtension(*name, extension);
}

}  // namespace

void DeleteLastResult(ResultsTable& table) {
    if (table.Count() > 0) KeepRows(table, [n = table.Count()](int32_t i) { return i < n; });
}
void DeleteEvenResults(ResultsTable& table) {
    KeepRows(table, [](int32_t i) { return i % 2 == 1; });
}
void DeleteOddResults(ResultsTable& table) {
    KeepRows(table, [](int32_t i) { return i % 2 == 0; });
}
void DeleteSelectedResults(ResultsTable& table, const std::set<int32_t>& rows) {
    KeepRows(table, [&](int32_t i) { return !rows.contains(i); });
}

// A measure that could not be made is stored as not-a-number and shown blank.
std::string FormatResult(double value) { return std::isfinite(value) ? FixedOrSignificant(value, 3) : std::string(); }

std::string ResultsText(const ResultsTable& table) {
    const ResultKind kind =
        table.Empty() ? ResultKind::None : ReadResultRow(table[table.Count()]).kind;
    const auto columns = ResultColumns(kind);
    std::string out;
    for (std::size_t c = 0; c < columns.size(); ++c) out += (c ? "\t" : "") + Str(columns[c].title);
    out += "\r\n";
    for (const ResultBytes& row : table.Rows()) {
        for (std::size_t c = 0; c < columns.size(); ++c)
            out += (c ? "\t" : "") + FormatResult(ResultCell(row, columns[c]));
        out += "\r\n";
    }
    return out;
}

CommandResult SaveResultsAsciiCommand(const ResultsTable& table, Dialogs& dialogs) {
    const auto path = AskSavePath(dialogs, texts::kAsciiFitFilter, texts::kAsciiFitExtension);
    if (!path) return CommandResult::Cancelled();
    if (std::filesystem::exists(*path))
        return CommandResult::Failed(Str(vess::texts::kFileExistCaption), Str(vess::texts::kFileExistText));
    return CommandResult::FromError(Str(texts::kWindowCaption), WriteFileAtomic(*path, ResultsText(table)));
}

std::vector<uint8_t> BuildResultsFile(const ResultsTable& table) {
    std::vector<uint8_t> bytes(kResultsHeaderBytes + std::size_t(table.Count()) * kResultRowBytes);
    std::span<uint8_t> out(bytes);
    le::Put<int16_t>(out, 0, kVariantStringType);
    le::Put<int16_t>(out, 2, int16_t(kResultsHeaderChars));
    le::PutText(out, 4, kResultsHeaderChars, texts::kResultsFileTag);
    std::size_t at = kResultsHeaderBytes;
    for (const ResultBytes& row : table.Rows()) {
        std::copy(row.begin(), row.end(), bytes.begin() + std::ptrdiff_t(at));
        at += kResultRowBytes;
    }
    return bytes;
}

std::optional<std::vector<ResultBytes>> ParseResultsFile(std::span<const uint8_t> bytes) {
    if (bytes.size() < 4) return std::nullopt;
    const auto length = std::size_t(std::max<int16_t>(0, le::Get<int16_t>(bytes, 2)));
    if (le::Get<int16_t>(bytes, 0) != kVariantStringType || bytes.size() < 4 + length)
        return std::nullopt;
    if (le::GetText(bytes, 4, length).find(texts::kResultsFileTag) == std::string::npos)
        return std::nullopt;
    std::vector<ResultBytes> rows;
    for (std::size_t at = 4 + length; at + kResultRowBytes <= bytes.size(); at += kResultRowBytes) {
        ResultBytes row;
        std::copy_n(bytes.begin() + std::ptrdiff_t(at), kResultRowBytes, row.begin());
        rows.push_back(row);
    }
    return rows;
}

CommandResult SaveResultsCommand(const ResultsTable& table, Dialogs& dialogs) {
    const auto path = AskSavePath(dialogs, texts::kResultsFileFilter, texts::kResultsFileExtension);
    if (!path) return CommandResult::Cancelled();
    if (std::filesystem::exists(*path) &&
        !dialogs.AskYesNo(Str(texts::kReplaceCaption), Str(texts::kReplaceText)))
        return CommandResult::Cancelled();
    return CommandResult::FromError(Str(texts::kWindowCaption), WriteFileAtomic(*path, BuildResultsFile(table)));
}

std::optional<std::string> ChooseResultsFile(Dialogs& dialogs) {
    auto name = dialogs.OpenFile({"", Str(texts::kResultsFileFilter), Str(texts::kResultsFileExtension), ""});
    if (!name || name->empty()) return std::nullopt;
    return name;
}

std::optional<std::vector<ResultBytes>> ReadResultsFile(const std::string& name) {
    const auto bytes = ReadFileBytes(WithDefaultExtension(name, texts::kResultsFileExtension));
    return bytes ? ParseResultsFile(*bytes) : std::nullopt;
}

CommandResult PlaceLoadedResults(ResultsTable& table, Dialogs& dialogs, const std::string& name,
                                 std::optional<std::vector<ResultBytes>> rows) {
    if (!rows)
        return CommandResult::Failed(Str(texts::kResultsFileFilter),
                                     name + " is not a results file: its header does not say \"" +
                                         Str(texts::kResultsFileTag) + "\".");
    std::vector<ResultBytes> all;
    if (table.Count() > 0 &&
        !dialogs.AskYesNo(Str(texts::kClearResultsCaption), texts::ClearResultsPrompt(table.Count())))
        all = table.Rows();
    all.insert(all.end(), rows->begin(), rows->end());
    table.Assign(std::move(all));
    return CommandResult::Ok();
}

CommandResult LoadResultsCommand(ResultsTable& table, Dialogs& dialogs) {
    const auto name = ChooseResultsFile(dialogs);
    if (!name) return CommandResult::Cancelled();
    return PlaceLoadedResults(table, dialogs, *name, ReadResultsFile(*name));
}

CommandResult PutColumnToArrayCommand(const ResultsTable& table, const ResultColumn& column,
                                      DataArray& array, int arrayNumber, Dialogs& dialogs) {
    if (table.Empty())
        return CommandResult::Failed(Str(texts::kDoneFillingCaption), Str(texts::kNoResultsToPutText));
    std::vector<float> values;
    // Cells that were not measured are not data.
    for (const ResultBytes& row : table.Rows())
        if (const double x = ResultCell(row, column); std::isfinite(x)) values.push_back(float(x));
    if (!array.Empty() &&
        dialogs.AskYesNo(Str(stats_texts::kClearOrAppendCaption), texts::ClearArrayPrompt(arrayNumber)))
        array.Clear();
    if (array.Empty()) array.Assign(values);
    else array.Append(values);
    dialogs.Message(Str(texts::kDoneFillingCaption), texts::DoneFillingText(int(values.size())));
    return CommandResult::Ok();
}

}  // namespace vess::group
