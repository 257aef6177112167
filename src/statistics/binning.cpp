#include "statistics/binning.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vess {

int64_t BinIndex(double x, double binSize) {
    const double k = std::floor(x / binSize);
    constexpr double kLimit = 9.0e18;
    if (!(k > -kLimit)) return std::numeric_limits<int64_t>::min() / 2;  // -inf, NaN
    if (k > kLimit) return std::numeric_limits<int64_t>::max() / 2;
    return int64_t(k);
}

bool ValidBinSize(double binSize) { return std::isfinite(binSize) && binSize > 0; }

bool TooManyBinsFor(double lowest, double highest, double binSize) {
    // Counted in double before any conversion to an integer: a tiny bin
    // gives bin numbers beyond any integer, which must not saturate into one
    // bin. Bin numbers beyond 2^53 cannot be told apart either.
    constexpr double kExactLimit = 9007199254740992.0;  // 2^53
    const double lo = std::floor(lowest / binSize), hi = std::floor(highest / binSize);
    if (!(std::fabs(lo) <= kExactLimit && std::fabs(hi) <= kExactLimit)) return true;
    return hi - lo + 1 > double(kMaxBins);
}

BinnedCounts CountIntoBins(std::span<const double> values, double binSize) {
    BinnedCounts b;
    double lo = std::numeric_limits<double>::infinity();
    double hi = -lo;
    for (double v : values)
        if (std::isfinite(v)) {
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    if (!(lo <= hi)) return b;  // no finite value
    if (!ValidBinSize(binSize) || TooManyBinsFor(lo, hi, binSize)) {
        b.tooManyBins = true;
        return b;
    }
    b.lowestBin = BinIndex(lo, binSize);
    const int64_t highest = BinIndex(hi, binSize);
    b.counts.assign(std::size_t(highest - b.lowestBin + 1), 0);
    for (double v : values)
        if (std::isfinite(v)) ++b.counts[std::size_t(BinIndex(v, binSize) - b.lowestBin)];
    return b;
}

}  // namespace vess
