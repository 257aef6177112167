// Which recordings a batch analyses and where each one's event file goes:
// files and folders expanded into one sorted list, list files read, the
// event file beside each recording or in an output folder, and the share of
// the list that one of several machines (or array jobs) takes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vess {

struct BatchItem {
    std::filesystem::path file;
    std::filesystem::path eventFile;
    std::string refusal;  // why the file is not analysed; empty when it is
};

// Whether the name ends in ".abf" (any case).
bool HasRecordingExtension(const std::filesystem::path& path);

// Files as given and the recordings (*.abf, any case) directly inside each
// folder, sorted by path and each file once, however it is named (relative,
// absolute, through a link). A path that does not exist is kept, so that its
// row in the summary says so.
std::vector<std::filesystem::path> ExpandRecordings(const std::vector<std::filesystem::path>& inputs);

// A list file: one path per line; blank lines and lines starting with '#'
// are skipped, and a relative path is taken from the list's folder. The
// paths still go through ExpandRecordings. std::nullopt (and *problem) when
// the list cannot be read or is not a regular file (a named pipe is refused,
// not waited on).
std::optional<std::vector<std::filesystem::path>> ReadRecordingList(const std::filesystem::path& list,
                                                                    std::string* problem);
// The paths of a list's text, relative ones taken from folder.
std::vector<std::filesystem::path> ParseRecordingList(std::string_view text,
                                                      const std::filesystem::path& folder);

// The event file of each recording: its name with the extension ".EVT",
// beside it, or in outDir when that is not empty. A recording whose event
// file another recording of the list already takes is refused, so that no
// batch writes one file twice.
std::vector<BatchItem> PlanBatch(const std::vector<std::filesystem::path>& files,
                                 const std::filesystem::path& outDir);

// Share index of count: recordings index, index + count, index + 2 count, ...
// of the sorted list, so that count shards take every recording once.
struct Shard {
    int index = 0;
    int count = 1;
};
// "K/N" with 0 <= K < N; std::nullopt (and *problem) otherwise.
std::optional<Shard> ParseShard(std::string_view text, std::string* problem);
std::vector<BatchItem> SelectShard(const std::vector<BatchItem>& items, Shard shard);

}  // namespace vess
