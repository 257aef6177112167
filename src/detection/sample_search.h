// Searches over a run of raw samples held in memory, written so that the
// compiler turns them into vector instructions: the first sample holding the
// greatest or least value, and the sum. Detection asks these questions of
// every search range and of every candidate peak, so they set its speed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vess {

struct FirstExtreme {
    int32_t offset = 0;  // from the start of the run
    int16_t value = 0;
};

// The greatest (greatest true) or least value of p[0] .. p[n-1] and the first
// offset that holds it: a later sample wins only when strictly beyond. n >= 1.
// Searched in vectors as wide as the processor has.
FirstExtreme FirstExtremeOf(const int16_t* p, int32_t n, bool greatest);

// The vector widths, in samples, this processor can search in: widest first,
// 8 on every one.
std::vector<int32_t> SampleSearchWidths();
// FirstExtremeOf searching lanes samples at a time, one of SampleSearchWidths().
FirstExtreme FirstExtremeOfAtWidth(const int16_t* p, int32_t n, bool greatest, int32_t lanes);

// p[0] + ... + p[n-1]; 0 for n <= 0. Inline: every baseline is such a sum,
// mostly of a few dozen samples.
inline int64_t SumOf(const int16_t* p, int64_t n) {
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
            acc = _mm_add_epi32(acc, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i)), ones));
        int32_t lanes[4];
        std::memcpy(lanes, &acc, sizeof lanes);
        for (int32_t lane : lanes) sum += lane;
    }
#endif
    for (; i < n; ++i) sum += p[i];
    return sum;
}

}  // namespace vess
