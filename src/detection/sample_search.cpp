#include "detection/sample_search.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vess {
namespace {

constexpr int32_t kLanes = 8;
typedef int16_t Lanes16 __attribute__((vector_size(kLanes * sizeof(int16_t))));

Lanes16 Load(const int16_t* p) {
    Lanes16 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <bool kGreatest>
Lanes16 Beyond(Lanes16 a, Lanes16 b) {
    return kGreatest ? (a > b ? a : b) : (a < b ? a : b);
}

template <bool kGreatest>
int16_t ExtremeValue(const int16_t* p, int32_t n) {
    if (n < kLanes) {
        int16_t best = p[0];
        for (int32_t i = 1; i < n; ++i)
            if (kGreatest ? p[i] > best : p[i] < best) best = p[i];
        return best;
    }
    Lanes16 acc = Load(p);
    for (int32_t i = kLanes; i + kLanes <= n; i += kLanes) acc = Beyond<kGreatest>(acc, Load(p + i));
    // The last lanes, overlapping lanes already seen, which changes no extreme.
    acc = Beyond<kGreatest>(acc, Load(p + n - kLanes));
    // Across the lanes: halves, quarters, then neighbours.
    acc = Beyond<kGreatest>(acc, __builtin_shuffle(acc, Lanes16{4, 5, 6, 7, 0, 1, 2, 3}));
    acc = Beyond<kGreatest>(acc, __builtin_shuffle(acc, Lanes16{2, 3, 0, 1, 6, 7, 4, 5}));
    acc = Beyond<kGreatest>(acc, __builtin_shuffle(acc, Lanes16{1, 0, 3, 2, 5, 4, 7, 6}));
    return acc[0];
}

// The first offset holding x, which p[0..n) holds.
int32_t FirstOffsetOf(const int16_t* p, int32_t n, int16_t x) {
    int32_t i = 0;
#if defined(__SSE2__)
    const __m128i wanted = _mm_set1_epi16(x);
    for (; i + kLanes <= n; i += kLanes) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        // Two mask bits per equal 16-bit lane.
        const unsigned mask = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi16(v, wanted)));
        if (mask != 0) return i + __builtin_ctz(mask) / 2;
    }
#endif
    while (p[i] != x) ++i;
    return i;
}

}  // namespace

FirstExtreme FirstExtremeOf(const int16_t* p, int32_t n, bool greatest) {
    const int16_t best = greatest ? ExtremeValue<true>(p, n) : ExtremeValue<false>(p, n);
    return {FirstOffsetOf(p, n, best), best};
}

int64_t SumOf(const int16_t* p, int64_t n) {
    int64_t sum = 0;
    int64_t i = 0;
#if defined(__SSE2__)
    // Pairs of samples added into 32-bit lanes; a stretch adds at most 2^14
    // pairs of at most 2^16 in size into a lane.
    constexpr int64_t kStretch = int64_t(1) << 17;
    const __m128i ones = _mm_set1_epi16(1);
    while (n - i >= 8) {
        __m128i acc = _mm_setzero_si128();
        const int64_t end = i + std::min<int64_t>((n - i) / 8 * 8, kStretch);
        for (; i < end; i += 8)
            acc = _mm_add_epi32(acc, _mm_madd_epi16(
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i)), ones));
        int32_t lanes[4];
        std::memcpy(lanes, &acc, sizeof lanes);
        for (int32_t lane : lanes) sum += lane;
    }
#endif
    for (; i < n; ++i) sum += p[i];
    return sum;
}

}  // namespace vess
