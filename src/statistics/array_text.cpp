#include "statistics/array_text.h"

#include <algorithm>
#include <charconv>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

#include "recording/data_file.h"
#include "recording/file_io.h"
#include "recording/number_entry.h"
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

// Lines of text handed over in pieces, split at separator with a trailing
// CR removed: the same lines as Lines() gives for the whole text.
class LineSplitter {
public:
    explicit LineSplitter(char separator) : separator_(separator) {}
    template <class F>
    void Feed(std::string_view chunk, const F& line) {
        for (std::size_t end = chunk.find(separator_); end != std::string_view::npos;
             end = chunk.find(separator_)) {
            if (partial_.empty()) {
                Emit(chunk.substr(0, end), line);
            } else {
                partial_.append(chunk.substr(0, end));
                Emit(partial_, line);
                partial_.clear();
            }
            chunk.remove_prefix(end + 1);
        }
        partial_.append(chunk);
    }
    template <class F>
    void End(const F& line) {
        if (!partial_.empty()) Emit(partial_, line);
        partial_.clear();
    }

private:
    template <class F>
    static void Emit(std::string_view l, const F& line) {
        if (!l.empty() && l.back() == '\r') l.remove_suffix(1);
        line(l);
    }
    char separator_;
    std::string partial_;
};

char LineSeparator(std::string_view text) {
    return text.find('\n') == std::string_view::npos ? '\r' : '\n';
}

// The array text file line by line: the header test on lines 1 to 3, the
// announced counts on lines 4 and 5, the rows from line 7. A count is
// capped by the file's size (a row takes at least one byte), so a short
// file cannot claim memory it does not fill.
class ArrayFileParser {
public:
    explicit ArrayFileParser(std::size_t fileBytes) : fileBytes_(double(fileBytes)) {}
    void Line(std::string_view line) {
        if (!valid_) return;
        switch (index_) {
            case 0: valid_ = line.find(texts::kAtfTag) != std::string_view::npos; break;
            case 1: valid_ = line.find(st::kArrayFileShape) != std::string_view::npos; break;
            case 2:
                valid_ = line.substr(std::min<std::size_t>(1, line.size())).substr(0, st::kArrayDataProbe.size()) ==
                         st::kArrayDataProbe;
                break;
            case 3: count1_ = AnnouncedCount(line, st::kMaxArray1Tag); break;
            case 4: count2_ = AnnouncedCount(line, st::kMaxArray2Tag); break;
            case 5: break;
            default: Row(line);
        }
        ++index_;
    }
    bool Valid() const { return valid_; }
    std::optional<ImportedArrays> Finish() {
        if (!valid_ || index_ < 3) return std::nullopt;
        if (!Sized()) return std::nullopt;
        return std::move(arrays_);
    }

private:
    bool Sized() {
        if (sized_) return valid_;
        sized_ = true;
        if (!(count1_ <= kMaxImportCount) || !(count2_ <= kMaxImportCount)) return valid_ = false;
        n1_ = int32_t(std::clamp(count1_, 0.0, fileBytes_));
        n2_ = int32_t(std::clamp(count2_, 0.0, fileBytes_));
        arrays_.array1.Reallocate(0, n1_);
        arrays_.array2.Reallocate(0, n2_);
        return true;
    }
    void Row(std::string_view row) {
        if (!Sized()) return;
        const int64_t i = index_ - 5;
        const std::size_t tab = row.find('\t');
        if (i <= n1_) arrays_.array1[int32_t(i)] = float(LeadingNumber(row.substr(0, tab)));
        if (i <= n2_ && tab != std::string_view::npos)
            arrays_.array2[int32_t(i)] = float(LeadingNumber(row.substr(tab + 1)));
    }

    double fileBytes_;
    int64_t index_ = 0;
    bool valid_ = true, sized_ = false;
    double count1_ = 0, count2_ = 0;
    int32_t n1_ = 0, n2_ = 0;
    ImportedArrays arrays_;
};

// Hands the file's bytes to use in pieces until use returns false or the
// end; false when reading failed.
template <class F>
bool ReadChunks(int fd, const F& use) {
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const ssize_t n = ::read(fd, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0 || !use(std::string_view(buffer.data(), std::size_t(n)))) return true;
    }
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
        // A number beyond the float range would be stored as an infinity:
        // it is skipped like any other line that is no finite number.
        if (const auto v = ParseNumberEntry(first); v && std::isfinite(float(*v))) out.push_back(float(*v));
    }
    return out;
}

CommandResult PasteArrayCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber, std::string_view clipboardText) {
    const int k = arrayNumber == 1 ? 1 : 2;
    const std::vector<float> values = ParseClipboardNumbers(clipboardText);
    if (values.empty()) return CommandResult::Cancelled();
    if (dialogs.AskYesNo(std::string(st::kClearBeforePasteCaption), st::ClearBeforePasteText(int(values.size()), k)))
        ws.Array(k).Assign(values);
    else
        ws.Array(k).Append(values);
    return CommandResult::Ok();
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
    ArrayFileParser parser(text.size());
    LineSplitter lines(LineSeparator(text));
    const auto line = [&parser](std::string_view l) { parser.Line(l); };
    lines.Feed(text, line);
    lines.End(line);
    return parser.Finish();
}

std::optional<ImportedArrays> ReadArraysAtf(const std::filesystem::path& path, std::string* readError,
                                            const JobProgress& progress) {
    const int fd = OpenRegularFile(path, readError);
    if (fd < 0) return std::nullopt;
    struct stat st {};
    std::optional<ImportedArrays> arrays;
    if (::fstat(fd, &st) != 0) {
        if (readError) *readError = std::strerror(errno);
    } else {
        // Two passes, neither holding the file: the line ends first (LF, or
        // CR alone when the file has no LF), then the rows.
        char separator = '\r';
        ReadChunks(fd, [&separator](std::string_view chunk) {
            if (chunk.find('\n') == std::string_view::npos) return true;
            separator = '\n';
            return false;
        });
        ArrayFileParser parser(std::size_t(st.st_size));
        LineSplitter lines(separator);
        const auto line = [&parser](std::string_view l) { parser.Line(l); };
        const double size = std::max<double>(double(st.st_size), 1);
        double bytesRead = 0;
        bool stopped = false;
        if (::lseek(fd, 0, SEEK_SET) == 0 && ReadChunks(fd, [&](std::string_view chunk) {
                lines.Feed(chunk, line);
                bytesRead += double(chunk.size());
                stopped = progress && !progress(bytesRead / size, {});
                // A file that failed the header test is read no further.
                return parser.Valid() && !stopped;
            })) {
            if (stopped) {
                ::close(fd);
                return std::nullopt;
            }
            lines.End(line);
            arrays = parser.Finish();
        } else if (readError) {
            *readError = std::strerror(errno);
        }
    }
    ::close(fd);
    return arrays;
}

CommandResult SaveArraysAsciiCommand(Workspace& ws, Dialogs& dialogs) {
    if (ws.array1.Empty() && ws.array2.Empty()) return CommandResult::Cancelled();
    const std::string stem = ws.recording ? ws.recording->Path().stem().string() : std::string();
    const FileDialogRequest request{std::string(st::kSaveArraysCaption), std::string(texts::kTextFileFilter),
                                    std::string(texts::kTextFileExtension), stem};
    const auto path = ChooseSavePath(dialogs, request, ExistingFile::AskReplace);
    if (!path) return path.status();
    const std::string name = ws.recording ? ws.recording->FileName() : std::string();
    return WriteResult(WriteFileAtomic(*path, ArraysAtfText(name, ws.array1, ws.array2)));
}

std::optional<std::filesystem::path> ChooseArraysImport(Dialogs& dialogs) {
    const FileDialogRequest request{std::string(st::kImportArraysCaption), std::string(st::kArrayImportFilter),
                                    std::string(texts::kTextFileExtension), {}};
    return ChooseOpenPath(dialogs, request);
}

CommandResult PlaceImportedArrays(Workspace& ws, std::optional<ImportedArrays> arrays) {
    if (!arrays)
        return CommandResult::Failed(st::kNotValidArrayCaption, st::kNotValidArrayText);
    ws.array1 = std::move(arrays->array1);
    ws.array2 = std::move(arrays->array2);
    return CommandResult::Ok();
}

CommandResult ImportArraysAsciiCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseArraysImport(dialogs);
    if (!path) return CommandResult::Cancelled();
    return PlaceImportedArrays(ws, ReadArraysAtf(*path));
}

}  // namespace vess
