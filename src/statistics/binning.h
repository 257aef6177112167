// The one bin rule of every histogram: value x falls into bin Int(x / size),
// Int rounding toward minus infinity, and more than kMaxBins bins is refused.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vess {

inline constexpr int64_t kMaxBins = 60000;

// Int(x / binSize) rounded toward minus infinity; binSize > 0.
int64_t BinIndex(double x, double binSize);
// A bin size the rule can use: finite and above 0.
bool ValidBinSize(double binSize);
// True when the values lowest..highest span more bins than allowed (or bin
// numbers too large to tell apart), counted before any integer conversion.
bool TooManyBinsFor(double lowest, double highest, double binSize);

struct BinnedCounts {
    bool tooManyBins = false;     // refused: counts is empty
    int64_t lowestBin = 0;        // bin number of counts[0]
    std::vector<int32_t> counts;  // one per bin, lowest to highest occupied bin
    double LeftEdge(std::size_t i, double binSize) const { return double(lowestBin + int64_t(i)) * binSize; }
};
// Counts values into bins from the lowest to the highest occupied one.
// Infinities and NaN (a division by zero in the arithmetic) are left out; a
// series without a finite value gives no bins. A bin size that is not finite
// and positive is refused as too many bins.
BinnedCounts CountIntoBins(std::span<const double> values, double binSize);

}  // namespace vess
