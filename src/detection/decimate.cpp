#include "detection/decimate.h"

#include <algorithm>

namespace vess {

DecimatedTrace Decimate(std::span<const int16_t> samples, int columnCount) {
    DecimatedTrace out;
    const auto n = static_cast<int64_t>(samples.size());
    if (columnCount < 1 || n == 0 || double(n) < kMinSamplesPerColumn * columnCount) return out;

    out.plain = false;
    out.columns.reserve(static_cast<std::size_t>(columnCount));
    for (int64_t c = 0; c < columnCount; ++c) {
        const int64_t begin = c * n / columnCount;
        const int64_t end = (c + 1) * n / columnCount;
        const auto run = samples.subspan(static_cast<std::size_t>(begin),
                                         static_cast<std::size_t>(end - begin));
        const auto [lo, hi] = std::minmax_element(run.begin(), run.end());
        out.columns.push_back({run.front(), *lo, *hi, run.back(), begin, end - begin});
    }
    return out;
}

BlockExtremes SummariseBlocks(std::span<const int16_t> samples, int blockPoints) {
    BlockExtremes out;
    if (blockPoints < 1) return out;
    for (std::size_t start = 0; start < samples.size(); start += std::size_t(blockPoints)) {
        const auto run = samples.subspan(start, std::min(samples.size() - start,
                                                          std::size_t(blockPoints)));
        const auto [lo, hi] = std::minmax_element(run.begin(), run.end());
        out.min.push_back(*lo);
        out.max.push_back(*hi);
    }
    return out;
}

}  // namespace vess
