#include "detection/decimate.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

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

namespace vess {
namespace {
// Runs longer than this take their levels from a histogram of all 65,536
// levels (zeroed and scanned once a call); shorter ones, a screen of a few
// thousand points, from a histogram of their own span or by selection in a
// copy. All give the level at a rank exactly.
constexpr std::size_t kHistogramFrom = 1 << 14;

// Counts per level: the 16-bit range makes a histogram cheaper than sorting.
std::vector<int64_t> Histogram(std::span<const int16_t> samples) {
    std::vector<int64_t> h(65536, 0);
    for (int16_t s : samples) ++h[std::size_t(int(s) + 32768)];
    return h;
}
int16_t LevelAtRank(const std::vector<int64_t>& h, int64_t rank) {
    int64_t seen = 0;
    for (std::size_t i = 0; i < h.size(); ++i) {
        seen += h[i];
        if (seen > rank) return static_cast<int16_t>(int(i) - 32768);
    }
    return 32767;
}
// The levels at ranks a <= b (0: the lowest) of a short run. A run whose
// levels span not much more than its length (a screen of noise about a
// baseline) is counted into a histogram of that span alone: one pass over
// the run and one over the span. A wider spread is selected in a copy.
std::pair<int16_t, int16_t> LevelsAtRanksOfShortRun(std::span<const int16_t> samples, std::size_t a,
                                                    std::size_t b) {
    const auto [lo, hi] = std::minmax_element(samples.begin(), samples.end());
    const auto span = std::size_t(int(*hi) - int(*lo)) + 1;
    if (span <= 4 * samples.size() + 256) {
        std::vector<uint32_t> counts(span, 0);
        for (const int16_t s : samples) ++counts[std::size_t(int(s) - int(*lo))];
        std::pair<int16_t, int16_t> levels{*hi, *hi};
        std::size_t seen = 0, i = 0;
        for (; i < span && seen <= a; ++i) seen += counts[i];
        levels.first = static_cast<int16_t>(int(*lo) + int(i) - 1);
        for (; i < span && seen <= b; ++i) seen += counts[i];
        levels.second = static_cast<int16_t>(int(*lo) + int(i) - 1);
        return levels;
    }
    std::vector<int16_t> v(samples.begin(), samples.end());
    std::nth_element(v.begin(), v.begin() + std::ptrdiff_t(a), v.end());
    // Everything after rank a is at least its level: rank b is among them.
    if (b > a) std::nth_element(v.begin() + std::ptrdiff_t(a + 1), v.begin() + std::ptrdiff_t(b), v.end());
    return {v[a], v[b]};
}
}  // namespace

LevelRange RobustRange(std::span<const int16_t> samples, double tailFraction) {
    if (samples.empty()) return {};
    const auto n = static_cast<int64_t>(samples.size());
    const auto tail = static_cast<int64_t>(double(n) * std::clamp(tailFraction, 0.0, 0.5));
    const int64_t lowRank = tail, highRank = n - 1 - tail;
    if (samples.size() < kHistogramFrom) {
        const auto [first, second] = LevelsAtRanksOfShortRun(samples, std::size_t(std::min(lowRank, highRank)),
                                                              std::size_t(std::max(lowRank, highRank)));
        return lowRank <= highRank ? LevelRange{first, second} : LevelRange{second, first};
    }
    const auto h = Histogram(samples);
    return {LevelAtRank(h, lowRank), LevelAtRank(h, highRank)};
}

int16_t MedianLevel(std::span<const int16_t> samples) {
    if (samples.empty()) return 0;
    const std::size_t middle = (samples.size() - 1) / 2;
    return LevelsAtRanksOfShortRun(samples, middle, middle).first;
}

}  // namespace vess
