#include "detection/point_loops.h"

#include <algorithm>

#include "detection/template_criterion.h"
#include "detection/vector_code.h"

namespace vess {

std::vector<int> AvailableLanes() {
    std::vector<int> lanes{1};
#if VESS_VECTORS
    __builtin_cpu_init();
    lanes.push_back(2);  // every x86-64 processor has two-lane vectors
    if (__builtin_cpu_supports("avx2")) lanes.push_back(4);
    if (__builtin_cpu_supports("avx512f")) lanes.push_back(8);
#endif
    return lanes;
}

int WidestLanes() {
    static const int widest = AvailableLanes().back();
    return widest;
}

namespace {

// Below 2^22 points, every window sum of squares is below 2^53, and so is
// every partial sum of the vector loops.
constexpr int64_t kExactWindows = int64_t(1) << 22;

// Each loop below returns the index it stopped at; the plain loop does the
// rest.
#if VESS_VECTORS

// The criterion V's width of points at a time; root takes the square roots
// of a vector in place, by the width's own instruction.
template <class V, class Root, class Over = Divided>
[[gnu::always_inline]] inline int64_t TileWith(const TemplateCriterion& c, const double* sY, const double* sYY,
                                               const double* sTY, int64_t m, double* out, Root root,
                                               Over over = {}) {
    constexpr int64_t kLanes = int64_t(sizeof(V) / sizeof(double));
    int64_t j = 0;
    for (; j + kLanes <= m; j += kLanes) {
        V y, yy, ty, scale, variance;
        __builtin_memcpy(&y, sY + j, sizeof y);
        __builtin_memcpy(&yy, sYY + j, sizeof yy);
        __builtin_memcpy(&ty, sTY + j, sizeof ty);
        c.Fit(y, yy, ty, scale, variance, over);
        root(variance);
        const V value = c.direction * scale / variance;
        __builtin_memcpy(out + j, &value, sizeof value);
    }
    return j;
}

int64_t Tile2(const TemplateCriterion& c, const double* sY, const double* sYY, const double* sTY, int64_t m,
              double* out) {
    return TileWith<__m128d>(c, sY, sYY, sTY, m, out, [](__m128d& v) { v = _mm_sqrt_pd(v); });
}
VESS_AVX2 int64_t Tile4(const TemplateCriterion& c, const double* sY, const double* sYY, const double* sTY,
                        int64_t m, double* out) {
    return TileWith<__m256d>(c, sY, sYY, sTY, m, out, [](__m256d& v) VESS_AVX2 { v = _mm256_sqrt_pd(v); });
}
// Division by an exact reciprocal (template_criterion.h): a product and a
// fused multiply-add, which keep the divider free for the divisions left.
struct Multiplied8 {
    VESS_AVX512 void operator()(__m512d& a, const ExactReciprocal& over) const {
        a = _mm512_fmadd_pd(a, _mm512_set1_pd(over.hi), a * over.lo);
    }
};
bool Multipliable(const TemplateCriterion& c) { return c.byN.exact && c.byNLess1.exact; }

VESS_AVX512 int64_t Tile8(const TemplateCriterion& c, const double* sY, const double* sYY, const double* sTY,
                          int64_t m, double* out) {
    const auto root = [](__m512d& v) VESS_AVX512 { v = _mm512_sqrt_pd(v); };
    if (Multipliable(c)) return TileWith<__m512d>(c, sY, sYY, sTY, m, out, root, Multiplied8{});
    return TileWith<__m512d>(c, sY, sYY, sTY, m, out, root);
}

VESS_AVX2 int64_t SamplesToDoubles4(const int16_t* from, int64_t count, double* to) {
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + i));
        _mm256_storeu_pd(to + i, _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(v)));
    }
    return i;
}
VESS_AVX512 int64_t SamplesToDoubles8(const int16_t* from, int64_t count, double* to) {
    int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
        _mm512_storeu_pd(to + i, _mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(v)));
    }
    return i;
}

template <class V>
[[gnu::always_inline]] inline int64_t StandardiseWith(double* z, int64_t n, double centre, double sd) {
    int64_t i = 0;
    for (; i + int64_t(sizeof(V) / sizeof(double)) <= n; i += int64_t(sizeof(V) / sizeof(double))) {
        V v;
        __builtin_memcpy(&v, z + i, sizeof v);
        v = (v - centre) / sd;
        __builtin_memcpy(z + i, &v, sizeof v);
    }
    return i;
}

int64_t Standardise2(double* z, int64_t n, double centre, double sd) {
    return StandardiseWith<__m128d>(z, n, centre, sd);
}
VESS_AVX2 int64_t Standardise4(double* z, int64_t n, double centre, double sd) {
    return StandardiseWith<__m256d>(z, n, centre, sd);
}
VESS_AVX512 int64_t Standardise8(double* z, int64_t n, double centre, double sd) {
    return StandardiseWith<__m512d>(z, n, centre, sd);
}

// (x + iy)(c + id) = (xc - yd) + i(yc + xd): the products of the spectrum
// and the filter's real parts, less and plus those of the swapped spectrum
// and the imaginary parts, lane by lane; each part of the filter is copied
// into both lanes of its value.
VESS_AVX2 int64_t MultiplySpectrum4(double* s, const double* f, int64_t values) {
    int64_t k = 0;
    for (; k + 4 <= values; k += 4) {
        const __m256d a = _mm256_loadu_pd(s + k), filter = _mm256_loadu_pd(f + k);
        const __m256d real = a * _mm256_movedup_pd(filter);
        const __m256d swapped = _mm256_permute_pd(a, 0b0101) * _mm256_permute_pd(filter, 0b1111);
        _mm256_storeu_pd(s + k, _mm256_addsub_pd(real, swapped));
    }
    return k;
}

VESS_AVX512 int64_t MultiplySpectrum8(double* s, const double* f, int64_t values) {
    int64_t k = 0;
    for (; k + 8 <= values; k += 8) {
        const __m512d a = _mm512_loadu_pd(s + k), filter = _mm512_loadu_pd(f + k);
        const __m512d real = a * _mm512_movedup_pd(filter);
        const __m512d swapped = _mm512_permute_pd(a, 0x55) * _mm512_permute_pd(filter, 0xFF);
        _mm512_storeu_pd(s + k, _mm512_mask_sub_pd(real + swapped, 0x55, real, swapped));
    }
    return k;
}

// Whole blocks of lanes from i on with no point above the threshold: each
// lowers below (the dip, or minus infinity when it is not tracked) to its
// least point under it, at the first point holding that value, as a walk
// point by point does. Stops at the first block holding a point above.
[[gnu::always_inline]] inline void LowerWithin(const double* z, int64_t i, int lanes, double& below,
                                               int64_t& at) {
    for (int64_t k = i; k < i + lanes; ++k) {
        if (z[k] < below) {
            below = z[k];
            at = k;
        }
    }
}
int64_t PassBelow2(const double* z, int64_t i, int64_t n, double threshold, double& below, int64_t& at) {
    const __m128d t = _mm_set1_pd(threshold);
    for (; i + 2 <= n; i += 2) {
        const __m128d v = _mm_loadu_pd(z + i);
        if (_mm_movemask_pd(_mm_cmpgt_pd(v, t))) break;
        if (_mm_movemask_pd(_mm_cmplt_pd(v, _mm_set1_pd(below)))) LowerWithin(z, i, 2, below, at);
    }
    return i;
}
VESS_AVX2 int64_t PassBelow4(const double* z, int64_t i, int64_t n, double threshold, double& below,
                             int64_t& at) {
    const __m256d t = _mm256_set1_pd(threshold);
    for (; i + 4 <= n; i += 4) {
        const __m256d v = _mm256_loadu_pd(z + i);
        if (_mm256_movemask_pd(_mm256_cmp_pd(v, t, _CMP_GT_OQ))) break;
        if (_mm256_movemask_pd(_mm256_cmp_pd(v, _mm256_set1_pd(below), _CMP_LT_OQ))) LowerWithin(z, i, 4, below, at);
    }
    return i;
}
VESS_AVX512 int64_t PassBelow8(const double* z, int64_t i, int64_t n, double threshold, double& below,
                               int64_t& at) {
    const __m512d t = _mm512_set1_pd(threshold);
    __m512d under = _mm512_set1_pd(below);
    int64_t where = at;
    for (; i + 8 <= n; i += 8) {
        const __m512d v = _mm512_loadu_pd(z + i);
        if (_mm512_cmp_pd_mask(v, t, _CMP_GT_OQ)) break;
        const __mmask8 lower = _mm512_cmp_pd_mask(v, under, _CMP_LT_OQ);
        if (!lower) continue;
        // The least of the lanes under it (no NaN among them), and the first
        // lane equal to that.
        under = _mm512_set1_pd(_mm512_mask_reduce_min_pd(lower, v));
        where = i + __builtin_ctz(_mm512_cmp_pd_mask(v, under, _CMP_EQ_OQ));
    }
    if (where != at) {
        at = where;
        below = z[at];
    }
    return i;
}

// The running window sums of SlideWindowSums, eight points at a time: the
// changes of eight steps (as 32-bit integers, exact), their running totals
// within the eight in three shifted additions, then the sums so far added,
// which take the eight's total (so that one addition a block waits on the
// one before).
struct WindowSums8 {
    __m512d carryY, carryYY;

    VESS_AVX512 WindowSums8(double sY, double sYY) : carryY(_mm512_set1_pd(sY)), carryYY(_mm512_set1_pd(sYY)) {}
    // The sums of the windows x[i .. i + n - 1] to x[i + 7 .. i + n + 6].
    [[gnu::always_inline]] VESS_AVX512 void Next(const int16_t* x, int64_t n, int64_t i, __m512d& y, __m512d& yy) {
        const __m256i come = _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i + n - 1)));
        const __m256i gone = _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i - 1)));
        const __m512d dY = _mm512_cvtepi32_pd(_mm256_sub_epi32(come, gone));
        const __m512d dYY = _mm512_cvtepi32_pd(
            _mm256_sub_epi32(_mm256_mullo_epi32(come, come), _mm256_mullo_epi32(gone, gone)));
        const __m512d totalsY = RunningTotals(dY), totalsYY = RunningTotals(dYY);
        y = carryY + totalsY;
        yy = carryYY + totalsYY;
        const __m512i last = _mm512_set1_epi64(7);
        carryY += _mm512_permutexvar_pd(last, totalsY);
        carryYY += _mm512_permutexvar_pd(last, totalsYY);
    }
    [[gnu::always_inline]] VESS_AVX512 static __m512d RunningTotals(__m512d v) {
        const __m512i zero = _mm512_setzero_si512();
        v += _mm512_castsi512_pd(_mm512_alignr_epi64(_mm512_castpd_si512(v), zero, 7));
        v += _mm512_castsi512_pd(_mm512_alignr_epi64(_mm512_castpd_si512(v), zero, 6));
        return v + _mm512_castsi512_pd(_mm512_alignr_epi64(_mm512_castpd_si512(v), zero, 4));
    }
    VESS_AVX512 void Leave(double& sY, double& sYY) const {
        sY = carryY[0];
        sYY = carryYY[0];
    }
};

VESS_AVX512 int64_t SlideWindowSums8(const int16_t* x, int64_t n, int64_t first, int64_t end, double& sY,
                                     double& sYY, double* y, double* yy) {
    WindowSums8 sums(sY, sYY);
    int64_t i = first;
    for (; i + 8 <= end; i += 8) {
        __m512d windowY, windowYY;
        sums.Next(x, n, i, windowY, windowYY);
        _mm512_storeu_pd(y + (i - first), windowY);
        _mm512_storeu_pd(yy + (i - first), windowYY);
    }
    sums.Leave(sY, sYY);
    return i;
}

// Tile8 with the window sums slid on in the same loop: the criterion's
// divisions keep the divider busy while the other units take the sums.
template <class Over>
[[gnu::always_inline]] VESS_AVX512 inline int64_t TileOnSamples8With(const TemplateCriterion& c, const int16_t* x,
                                                                     int64_t n, int64_t first, int64_t m,
                                                                     double& sY, double& sYY, const double* sTY,
                                                                     double* out, Over over) {
    WindowSums8 sums(sY, sYY);
    int64_t j = 0;
    for (; j + 8 <= m; j += 8) {
        __m512d y, yy, scale, variance;
        sums.Next(x, n, first + j, y, yy);
        const __m512d ty = _mm512_loadu_pd(sTY + j);
        c.Fit(y, yy, ty, scale, variance, over);
        _mm512_storeu_pd(out + j, c.direction * scale / _mm512_sqrt_pd(variance));
    }
    sums.Leave(sY, sYY);
    return j;
}
VESS_AVX512 int64_t TileOnSamples8(const TemplateCriterion& c, const int16_t* x, int64_t n, int64_t first,
                                   int64_t m, double& sY, double& sYY, const double* sTY, double* out) {
    if (Multipliable(c)) return TileOnSamples8With(c, x, n, first, m, sY, sYY, sTY, out, Multiplied8{});
    return TileOnSamples8With(c, x, n, first, m, sY, sYY, sTY, out, Divided{});
}

#endif

}  // namespace

void TemplateCriterion::Tile(const double* sY, const double* sYY, const double* sTY, int64_t m, double* out,
                             int lanes) const {
    int64_t j = 0;
#if VESS_VECTORS
    if (lanes == 8) j = Tile8(*this, sY, sYY, sTY, m, out);
    else if (lanes == 4) j = Tile4(*this, sY, sYY, sTY, m, out);
    else if (lanes == 2) j = Tile2(*this, sY, sYY, sTY, m, out);
#endif
    for (; j < m; ++j) out[j] = Of(sY[j], sYY[j], sTY[j]);
}

void TemplateCriterion::TileOnSamples(const int16_t* x, int64_t first, int64_t m, double& sY, double& sYY,
                                      const double* sTY, double* out, int lanes) const {
    const int64_t points = int64_t(n);
    int64_t j = 0;
#if VESS_VECTORS
    if (lanes == 8 && points < kExactWindows) j = TileOnSamples8(*this, x, points, first, m, sY, sYY, sTY, out);
#endif
    constexpr int64_t kTile = 512;
    double y[kTile], yy[kTile];
    for (; j < m; j += kTile) {
        const int64_t count = std::min(kTile, m - j);
        SlideWindowSums(x, points, first + j, count, sY, sYY, y, yy, lanes);
        Tile(y, yy, sTY + j, count, out + j, lanes);
    }
}

void SlideWindowSums(const int16_t* x, int64_t n, int64_t first, int64_t m, double& sY, double& sYY, double* y,
                     double* yy, int lanes) {
    int64_t i = first;
#if VESS_VECTORS
    if (lanes == 8 && n < kExactWindows) i = SlideWindowSums8(x, n, i, first + m, sY, sYY, y, yy);
#endif
    for (; i < first + m; ++i) {
        const double gone = x[i - 1], come = x[i + n - 1];
        sY += come - gone;
        sYY += come * come - gone * gone;
        y[i - first] = sY;
        yy[i - first] = sYY;
    }
}

void SamplesToDoubles(const int16_t* from, int64_t count, double* to, int lanes) {
    int64_t i = 0;
#if VESS_VECTORS
    if (lanes == 8) i = SamplesToDoubles8(from, count, to);
    else if (lanes == 4) i = SamplesToDoubles4(from, count, to);
#endif
    for (; i < count; ++i) to[i] = from[i];
}

void Standardise(double* z, int64_t n, double centre, double sd, int lanes) {
    int64_t i = 0;
#if VESS_VECTORS
    if (lanes == 8) i = Standardise8(z, n, centre, sd);
    else if (lanes == 4) i = Standardise4(z, n, centre, sd);
    else if (lanes == 2) i = Standardise2(z, n, centre, sd);
#endif
    for (; i < n; ++i) z[i] = (z[i] - centre) / sd;
}

void MultiplySpectrum(std::complex<double>* spectrum, const std::complex<double>* filter, int64_t bins,
                      int lanes) {
    // std::complex<double> is laid out as two doubles, real part first.
    double* s = reinterpret_cast<double*>(spectrum);
    const double* f = reinterpret_cast<const double*>(filter);
    int64_t k = 0;
#if VESS_VECTORS
    if (lanes == 8) k = MultiplySpectrum8(s, f, 2 * bins);
    else if (lanes == 4) k = MultiplySpectrum4(s, f, 2 * bins);
#endif
    for (; k < 2 * bins; k += 2) {
        const double x = s[k], y = s[k + 1], c = f[k], d = f[k + 1];
        s[k] = x * c - y * d;
        s[k + 1] = x * d + y * c;
    }
}

int64_t NextAbove(const double* z, int64_t from, int64_t n, double threshold, bool track, double& dip,
                  int64_t& dipIndex, int lanes) {
    double below = track ? dip : -HUGE_VAL;
    int64_t at = dipIndex;
    int64_t i = from;
    // Blocks with no point above the threshold are passed whole; the one
    // holding the next point above is walked up to it.
    for (;;) {
#if VESS_VECTORS
        if (lanes == 8) i = PassBelow8(z, i, n, threshold, below, at);
        else if (lanes == 4) i = PassBelow4(z, i, n, threshold, below, at);
        else if (lanes == 2) i = PassBelow2(z, i, n, threshold, below, at);
#endif
        for (const int64_t end = std::min<int64_t>(i + std::max(lanes, 1), n); i < end && !(z[i] > threshold); ++i) {
            if (z[i] < below) {
                below = z[i];
                at = i;
            }
        }
        if (i == n || z[i] > threshold) break;
    }
    if (track) {
        dip = below;
        dipIndex = at;
    }
    return i;
}

}  // namespace vess
