// The per-point loops of the filtering detectors, run on the widest vectors
// this processor has (found once). Every width gives the bits of the plain
// loop: IEEE division, square root, product and sum are exact to the last bit
// at any width, operations keep their order, and the file is compiled without
// contraction into fused multiply-adds.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

namespace vess {

// Vector widths, in doubles, that the loops can use here: 1 (the plain loop)
// and 2, 4 and 8 where the processor has them, widest last.
std::vector<int> AvailableLanes();
int WidestLanes();

// The sums of the windows x[i .. i + n - 1] and of their squares for i =
// first .. first + m - 1 (first > 0) into y[i - first] and yy[i - first],
// from sY and sYY, those of the window at first - 1, which are left those of
// the last window. Each sum is the window's before less the sample that
// leaves plus the one that comes, exact (the samples are integers) while it
// stays below 2^53.
void SlideWindowSums(const int16_t* x, int64_t n, int64_t first, int64_t m, double& sY, double& sYY, double* y,
                     double* yy, int lanes = WidestLanes());

// to[i] = from[i], for i < count.
void SamplesToDoubles(const int16_t* from, int64_t count, double* to, int lanes = WidestLanes());

// z[i] = (z[i] - centre) / sd.
void Standardise(double* z, int64_t n, double centre, double sd, int lanes = WidestLanes());

// spectrum[k] *= filter[k], as std::complex multiplies finite values, for
// k < bins.
void MultiplySpectrum(std::complex<double>* spectrum, const std::complex<double>* filter, int64_t bins,
                      int lanes = WidestLanes());

// The first i from `from` on with z[i] > threshold (n when none). When track
// is set, dip and dipIndex follow the points passed over: each one below dip
// becomes the dip.
int64_t NextAbove(const double* z, int64_t from, int64_t n, double threshold, bool track, double& dip,
                  int64_t& dipIndex, int lanes = WidestLanes());

}  // namespace vess
