#include "batch/batch_files.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>
#include <map>
#include <set>
#include <system_error>

#include "recording/file_io.h"
#include "recording/texts.h"

namespace vess {

namespace fs = std::filesystem;

bool HasRecordingExtension(const fs::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return ext == ".abf";
}

namespace {

// The file a path names, whatever way it is written (relative or absolute,
// through links), so that one file named twice is analysed once.
fs::path Identity(const fs::path& path) {
    std::error_code ec;
    fs::path real = fs::weakly_canonical(path, ec);
    if (ec) real = fs::absolute(path, ec).lexically_normal();
    return real;
}

}  // namespace

std::vector<fs::path> ExpandRecordings(const std::vector<fs::path>& inputs) {
    std::map<fs::path, fs::path> byIdentity;  // the file -> the name it was first given by
    const auto add = [&](const fs::path& p) { byIdentity.emplace(Identity(p), p.lexically_normal()); };
    for (const fs::path& input : inputs) {
        std::error_code ec;
        if (!fs::is_directory(input, ec)) {
            add(input);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(input, ec)) {
            if (entry.is_regular_file(ec) && HasRecordingExtension(entry.path())) add(entry.path());
        }
    }
    std::set<fs::path> sorted;
    for (const auto& [identity, given] : byIdentity) sorted.insert(given);
    return {sorted.begin(), sorted.end()};
}

std::optional<std::vector<fs::path>> ReadRecordingList(const fs::path& list, std::string* problem) {
    // Read whole and only as a regular file: a named pipe would wait forever.
    std::string why;
    const auto bytes = ReadFileBytes(list, &why);
    if (!bytes) {
        if (problem) *problem = list.string() + ": cannot read the list of recordings (" + why + ")";
        return std::nullopt;
    }
    return ParseRecordingList(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()),
                              list.parent_path());
}

std::vector<fs::path> ParseRecordingList(std::string_view text, const fs::path& folder) {
    std::vector<fs::path> paths;
    std::istringstream in{std::string(text)};
    std::string line;
    while (std::getline(in, line)) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.pop_back();
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        const fs::path p = line.substr(first);
        paths.push_back(p.is_absolute() ? p : folder / p);
    }
    return paths;
}

std::vector<BatchItem> PlanBatch(const std::vector<fs::path>& files, const fs::path& outDir) {
    std::vector<BatchItem> items;
    std::map<fs::path, fs::path> takenBy;  // event file -> the recording that writes it
    for (const fs::path& file : files) {
        BatchItem item;
        item.file = file;
        const fs::path name =
            fs::path(file.filename()).replace_extension("." + std::string(texts::kEventFileExtension));
        item.eventFile = (outDir.empty() ? file.parent_path() : outDir) / name;
        const auto [at, fresh] = takenBy.emplace(item.eventFile.lexically_normal(), file);
        if (!fresh)
            item.refusal = "its event file " + item.eventFile.string() + " is written for " +
                           at->second.string();
        items.push_back(std::move(item));
    }
    return items;
}

std::optional<Shard> ParseShard(std::string_view text, std::string* problem) {
    Shard shard;
    const std::size_t slash = text.find('/');
    const auto number = [](std::string_view s, int& out) {
        const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
        return ec == std::errc() && end == s.data() + s.size() && !s.empty();
    };
    if (slash == std::string_view::npos || !number(text.substr(0, slash), shard.index) ||
        !number(text.substr(slash + 1), shard.count) || shard.count < 1 || shard.index < 0 ||
        shard.index >= shard.count) {
        if (problem)
            *problem = "--shard " + std::string(text) +
                       ": expected K/N with N at least 1 and K from 0 to N-1";
        return std::nullopt;
    }
    return shard;
}

std::vector<BatchItem> SelectShard(const std::vector<BatchItem>& items, Shard shard) {
    std::vector<BatchItem> mine;
    for (std::size_t i = std::size_t(shard.index); i < items.size(); i += std::size_t(shard.count))
        mine.push_back(items[i]);
    return mine;
}

}  // namespace vess
