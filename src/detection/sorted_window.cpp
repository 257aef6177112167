#include "detection/sorted_window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "detection/vector_code.h"

#if VESS_VECTORS && !defined(__clang__)
// GCC 12 also warns of the intrinsics' undefined vectors under this name.
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

namespace vess {
namespace {

// Two doubles handled by one vector instruction.
using Pair = VectorOf<double, 2>;
using PairMask = VectorOf<int64_t, 2>;

void ReplacePairs(double* values, std::size_t capacity, double gone, double in) {
    const Pair goneBoth = {gone, gone}, inBoth = {in, in};
    PairMask below = {0, 0}, notAbove = {0, 0};
    for (std::size_t i = 0; i < capacity; i += 2) {
        Pair w;
        std::memcpy(&w, values + i, sizeof w);
        below -= w < goneBoth;
        notAbove -= w <= inBoth;
    }
    // out: the place of the first value not below gone; at: the place of in
    // among the values without that one. The values being sorted, the one at
    // out is not above in exactly when more than below of them are not.
    const std::size_t out = std::size_t(below[0] + below[1]), notAboveIn = std::size_t(notAbove[0] + notAbove[1]);
    const std::size_t at = notAboveIn - (notAboveIn > out);
    double carry = in;
    if (at >= out)
        for (std::size_t i = at + 1; i-- > out;) std::swap(carry, values[i]);
    else
        for (std::size_t i = at; i <= out; ++i) std::swap(carry, values[i]);
}

#if VESS_VECTORS
// One step on eight places, each from its own tests, with no count: the
// values a being sorted, those below gone are the places before the one gone
// goes from, so without it place j holds b = a (below gone) or the next
// place's value (after). Those of b not above in are the places before the
// one in goes to, and the others take the value before them or in, the
// greater: a value before them not above in marks in's place, as -infinity
// before the first place does. lastB: b of the eight before (-infinity for
// the first).
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) __m512d StepEight(__m512d a, __m512d after,
                                                                                   __m512d lastB, __m512d gone,
                                                                                   __m512d in, __m512d& b) {
    b = _mm512_mask_blend_pd(_mm512_cmp_pd_mask(a, gone, _CMP_LT_OQ), after, a);
    const __m512d before =
        _mm512_castsi512_pd(_mm512_alignr_epi64(_mm512_castpd_si512(b), _mm512_castpd_si512(lastB), 7));
    // max(x, y) is x where x > y, else y.
    return _mm512_mask_blend_pd(_mm512_cmp_pd_mask(b, in, _CMP_LE_OQ), _mm512_max_pd(before, in), b);
}

// The value one place on: a's next eight begin with next's first.
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) __m512d NextPlace(__m512d a, __m512d next) {
    return _mm512_castsi512_pd(_mm512_alignr_epi64(_mm512_castpd_si512(next), _mm512_castpd_si512(a), 1));
}

// The value at place `middle` of a window held in registers.
template <int Eights>
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) double PlaceInRegisters(const __m512d* v,
                                                                                       std::size_t middle) {
    const std::size_t eight = middle / 8;
    __m512d holding = v[0];
#pragma GCC unroll 8
    for (int e = 1; e < Eights; ++e)
        holding = _mm512_mask_mov_pd(holding, __mmask8(std::size_t(e) == eight ? 0xff : 0), v[e]);
    const __m512i lane = _mm512_set1_epi64(int64_t(middle % 8));
    return _mm_cvtsd_f64(_mm512_castpd512_pd128(_mm512_permutexvar_pd(lane, holding)));
}

// One step of a window held in registers (v[Eights] is +infinity): gone
// goes out and in comes in, in every lane.
template <int Eights>
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) void StepInRegisters(__m512d* v, __m512d gone,
                                                                                    __m512d in) {
    __m512d lastB = _mm512_set1_pd(-INFINITY);
#pragma GCC unroll 8
    for (int e = 0; e < Eights; ++e) {
        __m512d b;
        v[e] = StepEight(v[e], NextPlace(v[e], v[e + 1]), lastB, gone, in, b);
        lastB = b;
    }
}

// A step on capacity places (a multiple of eight) read from values and
// written to next.
__attribute__((target("avx512f"))) void ReplaceEights(const double* values, double* next, std::size_t capacity,
                                                      double gone, double in) {
    const __m512d goneAll = _mm512_set1_pd(gone), inAll = _mm512_set1_pd(in), none = _mm512_set1_pd(INFINITY);
    __m512d lastB = _mm512_set1_pd(-INFINITY), a = _mm512_loadu_pd(values);
    for (std::size_t j = 0; j < capacity; j += 8) {
        const __m512d coming = j + 8 < capacity ? _mm512_loadu_pd(values + j + 8) : none;
        __m512d b;
        _mm512_storeu_pd(next + j, StepEight(a, NextPlace(a, coming), lastB, goneAll, inAll, b));
        lastB = b;
        a = coming;
    }
}

// RunningMedians with a window of up to 8 Eights places held in registers
// throughout; sorted holds the first window, sorted, then +infinity.
template <int Eights>
__attribute__((target("avx512f"))) void MediansInRegisters(const double* values, std::size_t count,
                                                             std::size_t width, const double* sorted,
                                                             double* medians) {
    __m512d v[Eights + 1];
    v[Eights] = _mm512_set1_pd(INFINITY);
#pragma GCC unroll 8
    for (int e = 0; e < Eights; ++e) v[e] = _mm512_loadu_pd(sorted + 8 * e);
    const std::size_t middle = (width - 1) / 2;
    for (std::size_t k = 0;; ++k) {
        medians[k] = PlaceInRegisters<Eights>(v, middle);
        if (k + width == count) break;
        StepInRegisters<Eights>(v, _mm512_set1_pd(values[k]), _mm512_set1_pd(values[k + width]));
    }
}

// RunningMediansOfKept the same way: the means left out go out and come in
// as +infinity (none), and the window is stepped throughout; sorted holds
// the first window's size kept values, sorted, then +infinity.
template <int Eights>
__attribute__((target("avx512f"))) void KeptMediansInRegisters(const double* values, const char* leftOut,
                                                                 std::size_t count, std::size_t width,
                                                                 const double* ofAll, const double* sorted,
                                                                 std::size_t size, double* medians) {
    __m512d v[Eights + 1];
    v[Eights] = _mm512_set1_pd(INFINITY);
#pragma GCC unroll 8
    for (int e = 0; e < Eights; ++e) v[e] = _mm512_loadu_pd(sorted + 8 * e);
    const __m512d none = _mm512_set1_pd(INFINITY);
    for (std::size_t k = 0;; ++k) {
        medians[k] = size == width || size == 0 ? ofAll[k] : PlaceInRegisters<Eights>(v, (size - 1) / 2);
        if (k + width == count) break;
        const bool goes = !leftOut[k], comes = !leftOut[k + width];
        const __m512d gone = goes ? _mm512_set1_pd(values[k]) : none;
        const __m512d in = comes ? _mm512_set1_pd(values[k + width]) : none;
        size = size + comes - goes;
        StepInRegisters<Eights>(v, gone, in);
    }
}

using MediansRun = void (*)(const double*, std::size_t, std::size_t, const double*, double*);
using KeptMediansRun = void (*)(const double*, const char*, std::size_t, std::size_t, const double*,
                                const double*, std::size_t, double*);

// The medians in registers for a capacity of up to 64 places; none beyond.
template <int Eights = 1>
std::pair<MediansRun, KeptMediansRun> InRegisters(std::size_t capacity) {
    if constexpr (Eights > 8) {
        return {nullptr, nullptr};
    } else {
        if (capacity == 8 * Eights) return {MediansInRegisters<Eights>, KeptMediansInRegisters<Eights>};
        return InRegisters<Eights + 1>(capacity);
    }
}
#endif

}  // namespace

SortedWindow::SortedWindow(std::size_t most, int lanes)
#if VESS_VECTORS
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
#if VESS_VECTORS
    if (eight_) {
        ReplaceEights(current_, other_, capacity_, gone, in);
        std::swap(current_, other_);
        return;
    }
#endif
    ReplacePairs(current_, capacity_, gone, in);
}

void RunningMedians(const double* values, std::size_t count, std::size_t width, double* medians, int lanes) {
    SortedWindow window(width, lanes);
    window.Fill(values, width);
#if VESS_VECTORS
    if (window.eight_)
        if (const MediansRun inRegisters = InRegisters(window.capacity_).first) {
            inRegisters(values, count, width, window.current_, medians);
            return;
        }
#endif
    for (std::size_t k = 0;; ++k) {
        medians[k] = window[(width - 1) / 2];
        if (k + width == count) break;
        window.Replace(values[k], values[k + width]);
    }
}

void RunningMediansOfKept(const double* values, const char* leftOut, std::size_t count, std::size_t width,
                          const double* ofAll, double* medians, int lanes) {
    SortedWindow window(width, lanes);
    std::vector<double> kept;
    const auto fill = [&](std::size_t k) {  // the kept values of window k
        kept.clear();
        for (std::size_t j = k; j < k + width; ++j)
            if (!leftOut[j]) kept.push_back(values[j]);
        window.Fill(kept.data(), kept.size());
        return kept.size();
    };
#if VESS_VECTORS
    if (window.eight_)
        if (const KeptMediansRun inRegisters = InRegisters(window.capacity_).second) {
            const std::size_t size = fill(0);
            inRegisters(values, leftOut, count, width, ofAll, window.current_, size, medians);
            return;
        }
#endif
    // Stepping a window costs more than sorting one afresh here: it is kept
    // only where a value of it is left out, and filled where the first is (a
    // mean is never -0, the sum of a block beginning at +0, so sorted means
    // are the same sequence however they were put in).
    std::size_t size = 0, outside = 0;  // values of the window kept, and left out
    for (std::size_t j = 0; j < width; ++j) outside += std::size_t(leftOut[j]);
    bool held = false;  // whether window holds the kept values of window k
    for (std::size_t k = 0;; ++k) {
        if (outside == 0) {
            held = false;
            medians[k] = ofAll[k];
        } else {
            if (!held) {
                size = fill(k);
                held = true;
            }
            medians[k] = size == 0 ? ofAll[k] : window[(size - 1) / 2];
        }
        if (k + width == count) break;
        const bool goes = !leftOut[k], comes = !leftOut[k + width];
        outside = outside + !comes - !goes;
        if (held && (goes || comes)) {
            window.Replace(goes ? values[k] : INFINITY, comes ? values[k + width] : INFINITY);
            size = size + comes - goes;
        }
    }
}

}  // namespace vess
