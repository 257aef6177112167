// The template detector's criterion at each point: the least-squares scale
// of the template on the window there, over the standard error of that fit,
// in the event direction, from the window's sums.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vess {

// sT and sTT are the template's sum and sum of squares, denom is
// sTT - sT sT / n, n its length. Pairs of points go through vector
// instructions doing the operations of one point in the same order, so every
// value is the one a point computed alone gets.
struct TemplateCriterion {
    double sT, sTT, denom, n, nLess1, direction;

    template <class V>
    V Of(V sY, V sYY, V sTY) const {
        const V scale = (sTY - sT * sY / n) / denom;
        const V offset = (sY - scale * sT) / n;
        const V sse = sYY + scale * scale * sTT + n * offset * offset -
                      2 * (scale * sTY + offset * sY - scale * offset * sT);
        return direction * scale / Se(sse);
    }
    double Se(double sse) const { return std::sqrt(std::max(sse, 1e-12) / nLess1); }
    template <class V>
    V Se(V sse) const {
        const V least = V{} + 1e-12;
        V v = (sse < least ? least : sse) / nLess1;  // std::max(sse, 1e-12), lane by lane
        for (std::size_t k = 0; k < sizeof(V) / sizeof(double); ++k) v[k] = std::sqrt(double(v[k]));
        return v;
    }

    void Tile(const double* sY, const double* sYY, const double* sTY, int64_t m, double* out) const {
        typedef double Pair __attribute__((vector_size(2 * sizeof(double))));
        int64_t j = 0;
        for (; j + 2 <= m; j += 2) {
            Pair y, yy, ty;
            std::memcpy(&y, sY + j, sizeof y);
            std::memcpy(&yy, sYY + j, sizeof yy);
            std::memcpy(&ty, sTY + j, sizeof ty);
            const Pair c = Of(y, yy, ty);
            std::memcpy(out + j, &c, sizeof c);
        }
        for (; j < m; ++j) out[j] = Of(sY[j], sYY[j], sTY[j]);
    }
};

}  // namespace vess
