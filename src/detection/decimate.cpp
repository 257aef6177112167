#include "detection/decimate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "recording/sample_range.h"

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
// The levels at ascending ranks (0: the lowest) of a short run. A run whose
// levels span not much more than its length (a screen of noise about a
// baseline) is counted into a histogram: one pass over the run, and each
// rank found from the nearer end of the span (the upper tail from the top,
// so a rank near the top does not walk the whole span). A wider spread is
// selected in a copy.
template <std::size_t N>
std::array<int16_t, N> LevelsAtRanksOfShortRun(std::span<const int16_t> samples,
                                               const std::array<std::size_t, N>& ranks) {
    int16_t lo = samples.front(), hi = samples.front();
    FoldRange(samples, lo, hi);
    std::array<int16_t, N> levels{};
    if (std::size_t(int(hi) - int(lo)) + 1 <= 4 * samples.size() + 256) {
        // Every screen shown asks for its levels: the counts are indexed by a
        // level's 16 bits as they stand (no offset to subtract per sample)
        // and kept zero between calls, only the span counted being cleared
        // after each.
        thread_local std::vector<uint32_t> table(65536, 0);
        uint32_t* const counts = table.data();
        const auto at = [counts](int level) -> uint32_t& { return counts[uint16_t(level)]; };
        const int16_t* s = samples.data();
        const std::size_t n = samples.size();
        std::size_t j = 0;
        for (; j + 4 <= n; j += 4) {
            ++counts[uint16_t(s[j])];
            ++counts[uint16_t(s[j + 1])];
            ++counts[uint16_t(s[j + 2])];
            ++counts[uint16_t(s[j + 3])];
        }
        for (; j < n; ++j) ++counts[uint16_t(s[j])];
        std::size_t seen = 0;  // the samples below level
        int level = lo;
        for (std::size_t k = 0; k < N; ++k) {
            if (ranks[k] < n / 2) {
                for (; seen <= ranks[k]; ++level) seen += at(level);
                levels[k] = static_cast<int16_t>(level - 1);
                continue;
            }
            // The sample fromTop places below the highest: the level at
            // which the samples at or above it first outnumber fromTop.
            const std::size_t fromTop = n - 1 - ranks[k];
            std::size_t above = 0;
            int top = int(hi) + 1;
            while (above <= fromTop) above += at(--top);
            levels[k] = static_cast<int16_t>(top);
        }
        // Zero again for the next run: the span, in one or (across the
        // wrap of the 16 bits from -1 to 0) two pieces.
        if (lo < 0 && hi >= 0) {
            std::fill(counts + uint16_t(lo), counts + 65536, 0u);
            std::fill(counts, counts + hi + 1, 0u);
        } else {
            std::fill(counts + uint16_t(lo), counts + uint16_t(hi) + 1, 0u);
        }
        return levels;
    }
    std::vector<int16_t> v(samples.begin(), samples.end());
    auto from = v.begin();
    for (std::size_t k = 0; k < N; ++k) {
        const auto at = v.begin() + std::ptrdiff_t(ranks[k]);
        // Everything after the previous rank is at least its level: this
        // rank is among them.
        if (at >= from) std::nth_element(from, at, v.end());
        levels[k] = *at;
        from = at + 1;
    }
    return levels;
}
}  // namespace

LevelRange RobustRange(std::span<const int16_t> samples, double tailFraction) {
    if (samples.empty()) return {};
    const auto n = static_cast<int64_t>(samples.size());
    const auto tail = static_cast<int64_t>(double(n) * std::clamp(tailFraction, 0.0, 0.5));
    const int64_t lowRank = tail, highRank = n - 1 - tail;
    if (samples.size() < kHistogramFrom) {
        const auto [first, second] = LevelsAtRanksOfShortRun<2>(
            samples, {std::size_t(std::min(lowRank, highRank)), std::size_t(std::max(lowRank, highRank))});
        return lowRank <= highRank ? LevelRange{first, second} : LevelRange{second, first};
    }
    const auto h = Histogram(samples);
    return {LevelAtRank(h, lowRank), LevelAtRank(h, highRank)};
}

int16_t MedianLevel(std::span<const int16_t> samples) {
    if (samples.empty()) return 0;
    return LevelsAtRanksOfShortRun<1>(samples, {(samples.size() - 1) / 2})[0];
}

LevelSummary RobustRangeAndMedian(std::span<const int16_t> samples, double tailFraction) {
    if (samples.empty()) return {};
    if (samples.size() >= kHistogramFrom) return {RobustRange(samples, tailFraction), MedianLevel(samples)};
    const auto n = samples.size();
    const auto tail = static_cast<std::size_t>(double(n) * std::clamp(tailFraction, 0.0, 0.5));
    const std::size_t lowRank = std::min(tail, n - 1), highRank = n - 1 - std::min(tail, n - 1);
    std::array<std::size_t, 3> ranks{lowRank, (n - 1) / 2, highRank};
    std::sort(ranks.begin(), ranks.end());
    const auto levels = LevelsAtRanksOfShortRun<3>(samples, ranks);
    const auto at = [&](std::size_t rank) {
        return levels[std::size_t(std::find(ranks.begin(), ranks.end(), rank) - ranks.begin())];
    };
    return {{at(lowRank), at(highRank)}, at((n - 1) / 2)};
}

}  // namespace vess
