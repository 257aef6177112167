#include "cli/series_source.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "cli/named_recording.h"
#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/texts.h"
#include "statistics/array_fill.h"
#include "statistics/array_text.h"
#include "statistics/texts.h"

namespace vess::cli {

namespace {

constexpr std::string_view kIntervalsField = "interevent";

bool IsEventFile(const std::filesystem::path& p) {
    std::string ext = p.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext == ".evt";
}

std::optional<std::string> ReadText(const std::filesystem::path& path) {
    const auto bytes = ReadFileBytes(path);
    if (!bytes) return std::nullopt;
    return std::string(bytes->begin(), bytes->end());
}

LoadedSeries Failure(std::string message) { return {{}, std::move(message)}; }

LoadedSeries FromEventFile(const std::filesystem::path& path, const std::string& fieldName, int group,
                           bool intervals) {
    const Outcome<EventFileContents> checked = ReadCheckedEventFile(path, nullptr);
    if (!checked) return Failure(checked.caption() + ": " + checked.message());
    const EventFileContents& f = checked.value();
    EventTable table;
    table.Assign(f.records);
    if (group != 0 && std::none_of(f.records.begin(), f.records.end(),
                                   [&](const EventRecord& r) { return InSourceGroup(r, group); }))
        return Failure(stats_texts::NoGroupEventsText(group));
    const auto recording = OpenNamedRecording(path, f);
    if (intervals || fieldName == kIntervalsField)
        return {InterEventIntervals(table, group, recording ? recording->IntervalUs() : 0.0), {}};
    const auto field = ArrayFieldFromName(fieldName);
    if (!field) return Failure("unknown event field \"" + fieldName + "\"");
    if (!recording && ArrayFieldNeedsRecording(*field))
        return Failure("the data file " + f.storedName + " is not beside " + path.filename().string() +
                       "; \"" + fieldName + "\" needs it for its conversion");
    return {EventFieldValues(recording.get(), table, *field, group), {}};
}

LoadedSeries FromArrayFile(const std::filesystem::path& path, int column) {
    std::string readError;
    const auto arrays = ReadArraysAtf(path, &readError);
    if (!readError.empty()) return Failure(path.string() + ": cannot be read");
    if (!arrays) return Failure(path.string() + ": " + std::string(stats_texts::kNotValidArrayText));
    const DataArray& a = column == 1 ? arrays->array1 : arrays->array2;
    return {{a.Values().begin(), a.Values().end()}, {}};
}

LoadedSeries FromNumberFile(const std::filesystem::path& path) {
    const auto text = ReadText(path);
    if (!text) return Failure(path.string() + ": cannot be read");
    return {ParseClipboardNumbers(*text), {}};
}

LoadedSeries Load(const std::string& source, int group, bool intervals) {
    namespace fs = std::filesystem;
    const std::size_t colon = source.rfind(':');
    if (colon != std::string::npos && colon + 1 < source.size() && fs::exists(source.substr(0, colon))) {
        const fs::path path = source.substr(0, colon);
        const std::string suffix = source.substr(colon + 1);
        if (IsEventFile(path)) return FromEventFile(path, suffix, group, intervals);
        if (suffix == "1" || suffix == "2") return FromArrayFile(path, suffix == "1" ? 1 : 2);
        return Failure("\"" + suffix + "\" is not a column (1 or 2) of " + path.string());
    }
    if (!fs::exists(source)) return Failure(source + ": no such file");
    if (IsEventFile(source)) {
        if (intervals) return FromEventFile(source, std::string(kIntervalsField), group, true);
        return Failure(source + ": name the event field, e.g. " + source + ":amplitude");
    }
    return FromNumberFile(source);
}

}  // namespace

LoadedSeries LoadSeries(const std::string& source, int group, bool intervals) {
    LoadedSeries s = Load(source, group, intervals);
    if (s.Ok() && intervals && !IsEventFile(std::filesystem::path(source.substr(0, source.rfind(':')))))
        s.values = SortedDifferences(std::move(s.values));
    return s;
}

}  // namespace vess::cli
