// A value that was not measured (kept as not-a-number) or that overflowed
// (an infinity) has no place in a statistic. Every consumer of a series takes
// its finite values through these and says how many it left out.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace vess {

struct FiniteSeries {
    std::vector<double> values;   // the finite values, in their order
    std::size_t leftOut = 0;      // NaN and infinities dropped
};
FiniteSeries FiniteOnly(std::span<const double> values);

// Pairs (x[i], y[i]) of the shorter length; a pair with a non-finite member
// is left out whole.
struct FinitePairs {
    std::vector<double> x, y;
    std::size_t leftOut = 0;      // pairs dropped
};
FinitePairs FinitePairsOnly(std::span<const double> x, std::span<const double> y);

// "3 values that were not measured were left out" (empty for 0).
std::string LeftOutText(std::size_t count);

// Work arrays hold 32-bit floats, which step by more than 1 above 2^24: a
// note for a histogram or correlogram of such values (empty when none is).
std::string LostPrecisionText(std::span<const double> values);

// Two notes as one sentence list ("a; b"), either may be empty.
std::string JoinNotes(const std::string& first, const std::string& second);

}  // namespace vess
