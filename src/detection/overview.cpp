#include "detection/overview.h"

#include <algorithm>

#include "recording/recording.h"

namespace vess {

BlockExtremes RecordingBlockExtremes(const Recording& recording, const JobProgress& progress) {
    BlockExtremes out;
    const int64_t points = recording.PointsPerChannel();
    constexpr int64_t kChunkBlocks = 1024;  // 512 KiB of samples at a time
    std::vector<int16_t> chunk;
    for (int64_t start = 0; start < points; start += kChunkBlocks * kBlockPoints) {
        if (progress && !progress(double(start) / double(points), {})) break;
        chunk.resize(std::size_t(std::min(points - start, kChunkBlocks * kBlockPoints)));
        recording.ReadSamples(start, chunk);
        const BlockExtremes part = SummariseBlocks(chunk, kBlockPoints);
        out.min.insert(out.min.end(), part.min.begin(), part.min.end());
        out.max.insert(out.max.end(), part.max.begin(), part.max.end());
    }
    return out;
}

Job OverviewJob(const std::filesystem::path& path, uint8_t channel,
                std::function<void(BlockExtremes)> apply) {
    return MakeJob(
        "Reading the overview",
        [path, channel](const JobProgress& progress) {
            AbfError error = AbfError::None;
            const std::unique_ptr<Recording> own = Recording::Open(path, &error);
            if (!own || channel >= own->ChannelCount()) return BlockExtremes{};
            own->SetChannel(channel);
            return RecordingBlockExtremes(*own, progress);
        },
        std::move(apply));
}

std::vector<ColumnExtremes> OverviewColumns(const BlockExtremes& blocks, int columnCount) {
    std::vector<ColumnExtremes> out;
    const auto n = int64_t(std::min(blocks.min.size(), blocks.max.size()));
    if (n == 0 || columnCount < 1) return out;
    const int64_t columns = std::min<int64_t>(columnCount, n);
    out.reserve(std::size_t(columns));
    for (int64_t c = 0; c < columns; ++c) {
        const auto begin = std::size_t(c * n / columns), end = std::size_t((c + 1) * n / columns);
        out.push_back({*std::min_element(blocks.min.begin() + std::ptrdiff_t(begin),
                                         blocks.min.begin() + std::ptrdiff_t(end)),
                       *std::max_element(blocks.max.begin() + std::ptrdiff_t(begin),
                                         blocks.max.begin() + std::ptrdiff_t(end))});
    }
    return out;
}

LevelRange OverviewRange(const std::vector<ColumnExtremes>& columns) {
    if (columns.empty()) return {};
    std::vector<int16_t> mins, maxs;
    mins.reserve(columns.size());
    maxs.reserve(columns.size());
    for (const ColumnExtremes& c : columns) mins.push_back(c.min), maxs.push_back(c.max);
    constexpr double kTail = 0.005;
    return {RobustRange(mins, kTail).low, RobustRange(maxs, kTail).high};
}

}  // namespace vess
