// The template detector's criterion at each point: the least-squares scale
// of the template on the window there, over the standard error of that fit,
// in the event direction, from the window's sums.
#pragma once

#include <cmath>
#include <cstdint>

#include "detection/point_loops.h"

namespace vess {

// A divisor b that a division can multiply by instead, to the same bits:
// with hi = 1/b rounded and lo = (1 - hi b) / b rounded (the remainder is
// exact), fma(a, hi, a lo) is a/b rounded when b is an integer below 2^40
// and a/b is zero or above 2^-900 in size (the criterion's sums, of samples
// and of the template, never come near it). hi + lo is 1/b within 2^-106 of
// it, so the fma's exact operand misses a/b by about 2^-105 of a/b; and a/b,
// a 53-bit number over B 2^k (B odd), is never nearer than 2^-54 / B of
// itself to a point halfway between two doubles (a - b M is a nonzero
// multiple of 2^k times M's half step), so both round alike. Other divisors
// are divided (exact is false).
struct ExactReciprocal {
    double divisor, hi, lo;
    bool exact;
    static ExactReciprocal Of(double b) {
        const double hi = 1 / b;
        return {b, hi, std::fma(-hi, b, 1.0) / b, b >= 1 && b < 0x1p40 && b == std::floor(b)};
    }
};

// a divided by over.divisor in place, as the plain loop divides. In place
// rather than returned: a vector returned across a function compiled for
// narrower vectors changes the calling convention (clang refuses it).
struct Divided {
    template <class V>
    [[gnu::always_inline]] void operator()(V& a, const ExactReciprocal& over) const {
        a = a / over.divisor;
    }
};

// sT and sTT are the template's sum and sum of squares, denom is
// sTT - sT sT / n, n its length. The vector loops of Tile (point_loops.cpp)
// take the same steps in the same order (the widest dividing by n and n - 1
// by multiplying, to the same bits), so every point gets the value it gets
// alone.
struct TemplateCriterion {
    double sT, sTT, denom, n, nLess1, direction;
    ExactReciprocal byN = ExactReciprocal::Of(n), byNLess1 = ExactReciprocal::Of(nLess1);

    // The fitted scale, and the variance of the fit's residual (at least
    // 1e-12 / nLess1), whose square root is the scale's standard error. Vectors
    // go by reference: a function compiled for wider vectors than this one
    // may call it (always inlined). over(a, by) divides a by by.divisor.
    template <class V, class Over = Divided>
    [[gnu::always_inline]] void Fit(const V& sY, const V& sYY, const V& sTY, V& scale, V& variance,
                                    Over over = {}) const {
        V mean = sT * sY;
        over(mean, byN);
        scale = (sTY - mean) / denom;
        V offset = sY - scale * sT;
        over(offset, byN);
        const V sse = sYY + scale * scale * sTT + n * offset * offset -
                      2 * (scale * sTY + offset * sY - scale * offset * sT);
        const V least = V{} + 1e-12;
        variance = sse < least ? least : sse;
        over(variance, byNLess1);
    }
    double Of(double sY, double sYY, double sTY) const {
        double scale, variance;
        Fit(sY, sYY, sTY, scale, variance);
        return direction * scale / std::sqrt(variance);
    }

    // out[j] = Of(sY[j], sYY[j], sTY[j]) for j < m, lanes points at a time.
    void Tile(const double* sY, const double* sYY, const double* sTY, int64_t m, double* out,
              int lanes = WidestLanes()) const;
    // The same for the windows of n samples x[first + j ..] (first > 0), their
    // sums slid on from sY and sYY (those of the window at first - 1, left
    // those of the last window) as SlideWindowSums does; sTY[j] is the
    // template's correlation with window j.
    void TileOnSamples(const int16_t* x, int64_t first, int64_t m, double& sY, double& sYY, const double* sTY,
                       double* out, int lanes = WidestLanes()) const;
};

}  // namespace vess
