#include "statistics/array_text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "detection/number_entry.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "statistics/texts.h"

namespace vess {

namespace st = stats_texts;

namespace {

constexpr std::string_view kEol = "\r\n";
// An announced count beyond this is not an array file of ours.
constexpr double kMaxImportCount = 50'000'000;

std::string Quoted(std::string_view s) { return "\"" + std::string(s) + "\""; }

// Lines split at LF with a trailing CR removed (CR-only text is split at CR).
std::vector<std::string_view> Lines(std::string_view text) {
    const char separator = text.find('\n') == std::string_view::npos ? '\r' : '\n';
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(separator, start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

std::string_view BeforeTab(std::string_view line) { return line.substr(0, line.find('\t')); }

// The number at the start of text (blanks skipped), 0 when there is none.
double LeadingNumber(std::string_view text) {
    const std::string s(text);
    return std::strtod(s.c_str(), nullptr);
}

std::string Cell(const DataArray& a, int32_t i) {
    return i <= a.UpperBound() ? FormatArrayValue(a[i]) : std::string();
}

// The announced count after tag (the number 12 characters after its start).
double AnnouncedCount(std::string_view line, std::string_view tag) {
    const std::size_t at = line.find(tag.substr(0, tag.size() - 1));
    return at == std::string_view::npos ? 0 : LeadingNumber(line.substr(std::min(line.size(), at + 12)));
}

}  // namespace

std::string FormatArrayValue(float value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

std::string ArraysClipboardText(const DataArray& a1, const DataArray& a2) {
    std::string out = st::ArrayName(1) + "\t" + st::ArrayName(2) + std::string(kEol);
    const int32_t rows = std::max(a1.UpperBound(), a2.UpperBound());
    for (int32_t i = 1; i <= rows; ++i) out += Cell(a1, i) + "\t" + Cell(a2, i) + std::string(kEol);
    return out;
}

std::vector<float> ParseClipboardNumbers(std::string_view text) {
    std::vector<float> out;
    for (std::string_view line : Lines(text)) {
        std::string first(BeforeTab(line));
        std::erase(first, '\n');
        if (const auto v = ParseNumberEntry(first)) out.push_back(float(*v));
    }
    return out;
}

bool PasteArrayCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber, std::string_view clipboardText) {
    const int k = arrayNumber == 1 ? 1 : 2;
    const std::vector<float> values = ParseClipboardNumbers(clipboardText);
    if (values.empty()) return false;
    if (dialogs.AskYesNo(std::string(st::kClearBeforePasteCaption), st::ClearBeforePasteText(int(values.size()), k)))
        ws.Array(k).Assign(values);
    else
        ws.Array(k).Append(values);
    return true;
}

std::string ArraysAtfText(const std::string& recordingName, const DataArray& a1, const DataArray& a2) {
    const std::string eol(kEol);
    std::string out = std::string(texts::kAtfTag) + "\t" + std::string(texts::kAtfVersion) + eol;
    out += std::string(st::kArrayFileShape) + eol;
    out += Quoted(std::string(st::kArrayDataTag) + recordingName) + eol;
    out += Quoted(std::string(st::kMaxArray1Tag) + std::to_string(a1.UpperBound())) + eol;
    out += Quoted(std::string(st::kMaxArray2Tag) + std::to_string(a2.UpperBound())) + eol;
    out += Quoted(st::ArrayName(1)) + "\t" + Quoted(st::ArrayName(2)) + eol;
    const int32_t rows = std::max(a1.UpperBound(), a2.UpperBound());
    const auto cell = [](const DataArray& a, int32_t i) { return i <= a.UpperBound() ? FormatArrayValue(a[i]) : " "; };
    for (int32_t i = 1; i <= rows; ++i) out += cell(a1, i) + "\t" + cell(a2, i) + eol;
    return out;
}

std::optional<ImportedArrays> ParseArraysAtf(std::string_view text) {
    const std::vector<std::string_view> lines = Lines(text);
    if (lines.size() < 3 || lines[0].find(texts::kAtfTag) == std::string_view::npos ||
        lines[1].find(st::kArrayFileShape) == std::string_view::npos ||
        lines[2].substr(std::min<std::size_t>(1, lines[2].size())).substr(0, st::kArrayDataProbe.size()) !=
            st::kArrayDataProbe)
        return std::nullopt;
    const double count1 = lines.size() > 3 ? AnnouncedCount(lines[3], st::kMaxArray1Tag) : 0;
    const double count2 = lines.size() > 4 ? AnnouncedCount(lines[4], st::kMaxArray2Tag) : 0;
    if (!(count1 <= kMaxImportCount) || !(count2 <= kMaxImportCount)) return std::nullopt;
    ImportedArrays arrays;
    const auto n1 = int32_t(std::max(0.0, count1)), n2 = int32_t(std::max(0.0, count2));
    arrays.array1.Reallocate(0, n1);
    arrays.array2.Reallocate(0, n2);
    for (std::size_t line = 6; line < lines.size(); ++line) {
        const auto i = int32_t(line - 5);
        const std::string_view row = lines[line];
        const std::size_t tab = row.find('\t');
        if (i <= n1) arrays.array1[i] = float(LeadingNumber(row.substr(0, tab)));
        if (i <= n2 && tab != std::string_view::npos) arrays.array2[i] = float(LeadingNumber(row.substr(tab + 1)));
    }
    return arrays;
}

bool SaveArraysAsciiCommand(Workspace& ws, Dialogs& dialogs) {
    if (ws.array1.Empty() && ws.array2.Empty()) return false;
    const std::string stem = ws.recording ? ws.recording->Path().stem().string() : std::string();
    const FileDialogRequest request{std::string(st::kSaveArraysCaption), std::string(texts::kTextFileFilter),
                                    std::string(texts::kTextFileExtension), stem};
    const auto path = ChooseSavePath(dialogs, request, ExistingFile::AskReplace);
    if (!path) return false;
    const std::string name = ws.recording ? ws.recording->FileName() : std::string();
    return ReportWrite(dialogs, WriteFileAtomic(*path, ArraysAtfText(name, ws.array1, ws.array2)));
}

bool ImportArraysAsciiCommand(Workspace& ws, Dialogs& dialogs) {
    const FileDialogRequest request{std::string(st::kImportArraysCaption), std::string(st::kArrayImportFilter),
                                    std::string(texts::kTextFileExtension), {}};
    const auto path = ChooseOpenPath(dialogs, request);
    if (!path) return false;
    const auto bytes = ReadFileBytes(*path);
    const auto arrays = bytes ? ParseArraysAtf(std::string_view(reinterpret_cast<const char*>(bytes->data()),
                                                                bytes->size()))
                              : std::nullopt;
    if (!arrays) {
        dialogs.Message(std::string(st::kNotValidArrayCaption), std::string(st::kNotValidArrayText));
        return false;
    }
    ws.array1 = arrays->array1;
    ws.array2 = arrays->array2;
    return true;
}

}  // namespace vess
