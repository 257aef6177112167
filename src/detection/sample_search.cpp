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
typedef int16_t Lanes16x4 __attribute__((vector_size(4 * sizeof(int16_t))));
typedef int32_t Lanes32 __attribute__((vector_size(4 * sizeof(int32_t))));

Lanes16 Load(const int16_t* p) {
    Lanes16 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <bool kGreatest>
int16_t ExtremeValue(const int16_t* p, int32_t n) {
    auto beyond = [](int16_t a, int16_t b) { return kGreatest ? a > b : a < b; };
    int16_t best = p[0];
    int32_t i = 0;
    if (n >= kLanes) {
        Lanes16 acc = Load(p);
        for (i = kLanes; i + kLanes <= n; i += kLanes) {
            const Lanes16 v = Load(p + i);
            acc = kGreatest ? (v > acc ? v : acc) : (v < acc ? v : acc);
        }
        for (int32_t k = 0; k < kLanes; ++k)
            if (beyond(acc[k], best)) best = acc[k];
    }
    for (; i < n; ++i)
        if (beyond(p[i], best)) best = p[i];
    return best;
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
    // A stretch adds 2^13 samples of at most 2^15 into each 32-bit lane.
    constexpr int64_t kStretch = int64_t(1) << 15;
    while (n - i >= 4) {
        Lanes32 acc = {};
        const int64_t end = i + std::min<int64_t>((n - i) / 4 * 4, kStretch);
        for (; i < end; i += 4) {
            Lanes16x4 v;
            std::memcpy(&v, p + i, sizeof v);
            acc += __builtin_convertvector(v, Lanes32);
        }
        for (int32_t k = 0; k < 4; ++k) sum += acc[k];
    }
    for (; i < n; ++i) sum += p[i];
    return sum;
}

}  // namespace vess
