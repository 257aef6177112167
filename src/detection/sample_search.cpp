#include "detection/sample_search.h"

#include <algorithm>
#include <cstring>

#include "detection/vector_code.h"

namespace vess {
namespace {

// Vectors of 16-bit samples: 8 lanes on every x86-64 processor, 16 with AVX2,
// 32 with AVX-512BW, the widest chosen at run time.
template <int32_t Lanes>
using Vec = VectorOf<int16_t, Lanes>;

// The helpers below pass wide vectors by value but are always inlined into a
// function built for their width: no call ever passes one.
#pragma GCC diagnostic ignored "-Wpsabi"

template <int32_t Lanes>
[[gnu::always_inline]] inline Vec<Lanes> Load(const int16_t* p) {
    Vec<Lanes> v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <bool kGreatest, typename V>
[[gnu::always_inline]] inline V Beyond(V a, V b) {
    return kGreatest ? (a > b ? a : b) : (a < b ? a : b);
}

// The lanes' extreme gathered into 8 lanes: halves against halves.
template <bool kGreatest, int32_t Lanes>
[[gnu::always_inline]] inline Vec<8> Narrowed(Vec<Lanes> v) {
    if constexpr (Lanes == 8) {
        return v;
    } else {
        Vec<Lanes / 2> low, high;
        std::memcpy(&low, &v, sizeof low);
        std::memcpy(&high, reinterpret_cast<const char*>(&v) + sizeof low, sizeof high);
        return Narrowed<kGreatest, Lanes / 2>(Beyond<kGreatest>(low, high));
    }
}

#if defined(__x86_64__)
// The least of 8 lanes taken as unsigned, by the one instruction SSE4.1 has
// for it (every processor with AVX2 has SSE4.1). Not inlined on its own:
// the wide searches are flattened into functions built for their width.
__attribute__((target("sse4.1"))) inline uint16_t LeastUnsigned(Vec<8> v) {
    __m128i m;
    std::memcpy(&m, &v, sizeof m);
    return uint16_t(_mm_cvtsi128_si32(_mm_minpos_epu16(m)));
}
#endif

// The extreme of the lanes of a vector.
template <bool kGreatest, int32_t Lanes>
[[gnu::always_inline]] inline int16_t LanesExtreme(Vec<Lanes> v) {
    Vec<8> eight = Narrowed<kGreatest, Lanes>(v);
#if defined(__x86_64__)
    if constexpr (Lanes > 8) {
        // Signed order turned into unsigned order, reversed for the greatest.
        const int16_t flip = kGreatest ? int16_t(0x7FFF) : int16_t(-0x8000);
        return int16_t(LeastUnsigned(eight ^ flip) ^ uint16_t(flip));
    }
#endif
    eight = Beyond<kGreatest>(eight, __builtin_shufflevector(eight, eight, 4, 5, 6, 7, 0, 1, 2, 3));
    eight = Beyond<kGreatest>(eight, __builtin_shufflevector(eight, eight, 2, 3, 0, 1, 6, 7, 4, 5));
    eight = Beyond<kGreatest>(eight, __builtin_shufflevector(eight, eight, 1, 0, 3, 2, 5, 4, 7, 6));
    return eight[0];
}

// Runs short enough for every offset to fit a 16-bit lane are searched in
// one pass, with no branch on where the extreme lies: each lane keeps its
// most extreme sample and the offset where it first saw it (a later sample
// replaces it only when strictly beyond); the answer is the least offset of
// the lanes holding the extreme.
constexpr int32_t kOnePassMost = 32767;

template <bool kGreatest, int32_t Lanes>
[[gnu::always_inline]] inline FirstExtreme OnePass(const int16_t* p, int32_t n) {
    if constexpr (Lanes > 8) {
        if (n < Lanes) return OnePass<kGreatest, Lanes / 2>(p, n);
    } else if (n < Lanes) {
        FirstExtreme r{0, p[0]};
        for (int32_t i = 1; i < n; ++i)
            if (kGreatest ? p[i] > r.value : p[i] < r.value) r = {i, p[i]};
        return r;
    }
    static constexpr int16_t kLaneOffsets[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                                 22, 23, 24, 25, 26, 27, 28, 29, 30, 31};
    const Vec<Lanes> lanes = Load<Lanes>(kLaneOffsets);
    Vec<Lanes> best = Load<Lanes>(p), at = lanes;
    auto take = [&](const Vec<Lanes> v, const Vec<Lanes> offsets) __attribute__((always_inline)) {
        const Vec<Lanes> beyond = kGreatest ? v > best : v < best;
        best = Beyond<kGreatest>(v, best);
        at = beyond ? offsets : at;
    };
    int32_t i = Lanes;
    for (; i + Lanes <= n; i += Lanes) take(Load<Lanes>(p + i), lanes + int16_t(i));
    // The last lanes overlap lanes already seen; each lane's samples are still
    // taken in order, so its first extreme stays first.
    if (i < n) take(Load<Lanes>(p + n - Lanes), lanes + int16_t(n - Lanes));
    const int16_t extreme = LanesExtreme<kGreatest, Lanes>(best);
    const Vec<Lanes> holding = best == extreme;
    const Vec<Lanes> none = lanes * 0 + int16_t(kOnePassMost);
    return {LanesExtreme<false, Lanes>(holding ? at : none), extreme};
}

// Longer runs in pieces of kOnePassMost samples: a later piece wins only
// when strictly beyond.
template <bool kGreatest, int32_t Lanes>
[[gnu::always_inline]] inline FirstExtreme InPieces(const int16_t* p, int32_t n) {
    FirstExtreme best = OnePass<kGreatest, Lanes>(p, std::min(n, kOnePassMost));
    for (int32_t from = kOnePassMost; from < n; from += kOnePassMost) {
        const FirstExtreme piece = OnePass<kGreatest, Lanes>(p + from, std::min(n - from, kOnePassMost));
        if (kGreatest ? piece.value > best.value : piece.value < best.value)
            best = {from + piece.offset, piece.value};
    }
    return best;
}

#if defined(__x86_64__)
__attribute__((target("avx512bw"), flatten)) FirstExtreme Search32(const int16_t* p, int32_t n, bool greatest) {
    return greatest ? InPieces<true, 32>(p, n) : InPieces<false, 32>(p, n);
}
__attribute__((target("avx2"), flatten)) FirstExtreme Search16(const int16_t* p, int32_t n, bool greatest) {
    return greatest ? InPieces<true, 16>(p, n) : InPieces<false, 16>(p, n);
}
#endif
FirstExtreme Search8(const int16_t* p, int32_t n, bool greatest) {
    return greatest ? InPieces<true, 8>(p, n) : InPieces<false, 8>(p, n);
}

using Search = FirstExtreme (*)(const int16_t*, int32_t, bool);

Search SearchOfWidth(int32_t lanes) {
#if defined(__x86_64__)
    if (lanes == 32) return Search32;
    if (lanes == 16) return Search16;
#endif
    return Search8;
}

}  // namespace

std::vector<int32_t> SampleSearchWidths() {
    std::vector<int32_t> widths;
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512bw")) widths.push_back(32);
    if (__builtin_cpu_supports("avx2")) widths.push_back(16);
#endif
    widths.push_back(8);
    return widths;
}

FirstExtreme FirstExtremeOfAtWidth(const int16_t* p, int32_t n, bool greatest, int32_t lanes) {
    return SearchOfWidth(lanes)(p, n, greatest);
}

FirstExtreme FirstExtremeOf(const int16_t* p, int32_t n, bool greatest) {
    static const std::vector<int32_t> widths = SampleSearchWidths();
    static const Search widest = SearchOfWidth(widths.front());
    // Short runs (the troughs of the earlier-peak search) in half as wide
    // vectors: fewer steps to gather the lanes.
    static const Search narrower = SearchOfWidth(widths.size() > 1 ? widths[1] : widths.front());
    return (n < 64 ? narrower : widest)(p, n, greatest);
}

}  // namespace vess
