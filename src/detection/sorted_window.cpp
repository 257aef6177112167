#include "detection/sorted_window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#if !defined(__clang__)
// GCC 12 takes the intrinsics' deliberately undefined vectors for
// uninitialised ones.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#define VESS_WIDE_WINDOW 1
#endif

namespace vess {
namespace {

// Two doubles handled by one vector instruction.
typedef double Pair __attribute__((vector_size(2 * sizeof(double))));
typedef int64_t PairMask __attribute__((vector_size(2 * sizeof(int64_t))));

// out: the place of the first value not below gone (below of them are);
// at: the place of in among the values without that one (notAbove of them
// are not above in). The values being sorted, the one at out is not above in
// exactly when more than below of them are not: the counts decide it without
// reading back a value the step before may just have stored.
std::pair<std::size_t, std::size_t> Places(std::size_t below, std::size_t notAbove) {
    return {below, notAbove - (notAbove > below)};
}

void ReplacePairs(double* values, std::size_t capacity, double gone, double in) {
    const Pair goneBoth = {gone, gone}, inBoth = {in, in};
    PairMask below = {0, 0}, notAbove = {0, 0};
    for (std::size_t i = 0; i < capacity; i += 2) {
        Pair w;
        std::memcpy(&w, values + i, sizeof w);
        below -= w < goneBoth;
        notAbove -= w <= inBoth;
    }
    const auto [out, at] = Places(std::size_t(below[0] + below[1]), std::size_t(notAbove[0] + notAbove[1]));
    double carry = in;
    if (at >= out)
        for (std::size_t i = at + 1; i-- > out;) std::swap(carry, values[i]);
    else
        for (std::size_t i = at; i <= out; ++i) std::swap(carry, values[i]);
}

#if VESS_WIDE_WINDOW
// New place j holds: before at, old j (before out) or j + 1 (from out on);
// at at, in; after at, old j - 1 (up to out) or j.
__attribute__((target("avx512f,popcnt"))) void ReplaceEights(const double* values, double* next,
                                                               std::size_t capacity, double gone, double in) {
    const __m512d goneAll = _mm512_set1_pd(gone), inAll = _mm512_set1_pd(in);
    std::size_t below = 0, notAbove = 0;
    for (std::size_t j = 0; j < capacity; j += 8) {
        const __m512d v = _mm512_loadu_pd(values + j);
        below += std::size_t(__builtin_popcount(_mm512_cmp_pd_mask(v, goneAll, _CMP_LT_OQ)));
        notAbove += std::size_t(__builtin_popcount(_mm512_cmp_pd_mask(v, inAll, _CMP_LE_OQ)));
    }
    const auto [out, at] = Places(below, notAbove);
    // The places of the eight lanes, against those of out and at.
    __m512i lane = _mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0);
    const __m512i eight = _mm512_set1_epi64(8), outPlace = _mm512_set1_epi64(int64_t(out)),
                  atPlace = _mm512_set1_epi64(int64_t(at));
    // Each eight is loaded once, whole, as the step before stored it; its
    // neighbours' places come from the eights either side.
    const __m512d none = _mm512_set1_pd(INFINITY);
    __m512d last = none, same = _mm512_loadu_pd(values);
    for (std::size_t j = 0; j < capacity; j += 8, lane = _mm512_add_epi64(lane, eight)) {
        const __m512d coming = j + 8 < capacity ? _mm512_loadu_pd(values + j + 8) : none;
        const __m512d before = _mm512_castsi512_pd(
            _mm512_alignr_epi64(_mm512_castpd_si512(same), _mm512_castpd_si512(last), 7));
        const __m512d after = _mm512_castsi512_pd(
            _mm512_alignr_epi64(_mm512_castpd_si512(coming), _mm512_castpd_si512(same), 1));
        const __m512d taken = _mm512_mask_blend_pd(_mm512_cmplt_epi64_mask(lane, outPlace), after, same);
        const __m512d moved = _mm512_mask_blend_pd(_mm512_cmple_epi64_mask(lane, outPlace), same, before);
        const __m512d w = _mm512_mask_blend_pd(_mm512_cmplt_epi64_mask(lane, atPlace), moved, taken);
        _mm512_storeu_pd(next + j, _mm512_mask_mov_pd(w, _mm512_cmpeq_epi64_mask(lane, atPlace), inAll));
        last = same;
        same = coming;
    }
}
#endif

}  // namespace

SortedWindow::SortedWindow(std::size_t most, int lanes)
#if VESS_WIDE_WINDOW
    : eight_(lanes >= 8)
#else
    : eight_(false)
#endif
{
    capacity_ = eight_ ? (most + 7) / 8 * 8 : (most + 1) / 2 * 2;
    store_.assign(2 * (capacity_ + 2), INFINITY);
    current_ = store_.data() + 1;
    other_ = current_ + capacity_ + 2;
}

void SortedWindow::Fill(const double* values, std::size_t count) {
    std::copy(values, values + count, current_);
    std::fill(current_ + count, current_ + capacity_, INFINITY);
    std::sort(current_, current_ + count);
}

void SortedWindow::Replace(double gone, double in) {
#if VESS_WIDE_WINDOW
    if (eight_) {
        ReplaceEights(current_, other_, capacity_, gone, in);
        std::swap(current_, other_);
        return;
    }
#endif
    ReplacePairs(current_, capacity_, gone, in);
}

}  // namespace vess
