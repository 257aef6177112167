// Order statistics and bin counts of millions of values (the noise of a
// recording is measured on them).
//
// The value of a given rank, as std::nth_element finds it, without running
// nth_element on them all (it spends most of its time there mispredicting
// branches): a sample of the values brackets the rank, one pass counts the
// values below the bracket and keeps those inside, a count of those in bins
// of equal width finds the rank's bin, and only its values are put in order
// (all of them in the rare case the bracket misses, and all of a short
// series).
#pragma once

#include <cstddef>

#include "detection/point_loops.h"

namespace vess {

// The value of rank `rank` (0-based) among values[i], i < n, as
// std::nth_element finds it (but for the sign of a zero).
double ValueOfRank(const double* values, std::size_t n, std::size_t rank, int lanes = WidestLanes());

// The same among the distances |values[i] - centre|.
double DistanceOfRank(const double* values, std::size_t n, std::size_t rank, double centre,
                      int lanes = WidestLanes());

// counts[k] = the number of values whose b = (values[i] - low) / width lies
// in [0, bins) with std::size_t(b) = k, for k < bins.
void CountInBins(const double* values, std::size_t n, double low, double width, std::size_t bins, double* counts,
                 int lanes = WidestLanes());

}  // namespace vess
