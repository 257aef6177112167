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

// z[i] = (z[i] - centre) / sd.
void Standardise(double* z, int64_t n, double centre, double sd, int lanes = WidestLanes());

// spectrum[k] *= filter[k], as std::complex multiplies finite values, for
// k < bins; the filter's real and imaginary parts are given twice each
// (re[2k] = re[2k + 1] = filter[k].real(), im likewise).
void MultiplySpectrum(std::complex<double>* spectrum, const double* re, const double* im, int64_t bins,
                      int lanes = WidestLanes());

// The first i from `from` on with z[i] > threshold (n when none). When track
// is set, dip and dipIndex follow the points passed over: each one below dip
// becomes the dip.
int64_t NextAbove(const double* z, int64_t from, int64_t n, double threshold, bool track, double& dip,
                  int64_t& dipIndex, int lanes = WidestLanes());

}  // namespace vess
