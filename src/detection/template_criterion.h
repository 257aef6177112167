// The template detector's criterion at each point: the least-squares scale
// of the template on the window there, over the standard error of that fit,
// in the event direction, from the window's sums.
#pragma once

#include <cmath>
#include <cstdint>

#include "detection/point_loops.h"

namespace vess {

// sT and sTT are the template's sum and sum of squares, denom is
// sTT - sT sT / n, n its length. The vector loops of Tile (point_loops.cpp)
// take the same steps in the same order, so every point gets the value it
// gets alone.
struct TemplateCriterion {
    double sT, sTT, denom, n, nLess1, direction;

    // The fitted scale, and the variance of the fit's residual (at least
    // 1e-12 / nLess1), whose square root is the scale's standard error. Vectors
    // go by reference: a function compiled for wider vectors than this one
    // may call it (always inlined).
    template <class V>
    [[gnu::always_inline]] void Fit(const V& sY, const V& sYY, const V& sTY, V& scale, V& variance) const {
        scale = (sTY - sT * sY / n) / denom;
        const V offset = (sY - scale * sT) / n;
        const V sse = sYY + scale * scale * sTT + n * offset * offset -
                      2 * (scale * sTY + offset * sY - scale * offset * sT);
        const V least = V{} + 1e-12;
        variance = (sse < least ? least : sse) / nLess1;
    }
    double Of(double sY, double sYY, double sTY) const {
        double scale, variance;
        Fit(sY, sYY, sTY, scale, variance);
        return direction * scale / std::sqrt(variance);
    }

    // out[j] = Of(sY[j], sYY[j], sTY[j]) for j < m, lanes points at a time.
    void Tile(const double* sY, const double* sYY, const double* sTY, int64_t m, double* out,
              int lanes = WidestLanes()) const;
};

}  // namespace vess
