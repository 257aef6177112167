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

bool TooManyBins(int64_t lowestBin, int64_t highestBin) {
    return highestBin - lowestBin + 1 > kMaxBins;
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
    b.lowestBin = BinIndex(lo, binSize);
    const int64_t highest = BinIndex(hi, binSize);
    if (TooManyBins(b.lowestBin, highest)) {
        b.tooManyBins = true;
        return b;
    }
    b.counts.assign(std::size_t(highest - b.lowestBin + 1), 0);
    for (double v : values)
        if (std::isfinite(v)) ++b.counts[std::size_t(BinIndex(v, binSize) - b.lowestBin)];
    return b;
}

}  // namespace vess
