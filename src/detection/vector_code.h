// What the files of vector loops share: the compiler's own vectors of any
// width, and on x86-64 the intrinsics and the attributes that build a
// function for a wider instruction set than the rest of the program (the
// width is chosen at run time: AvailableLanes in point_loops.h).
#pragma once

#if defined(__x86_64__)
#if !defined(__clang__)
// GCC 12 takes the intrinsics' deliberately undefined vectors for
// uninitialised ones.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#define VESS_VECTORS 1
#define VESS_AVX2 __attribute__((target("avx2")))
#define VESS_AVX512 __attribute__((target("avx512f")))
#endif

namespace vess {

// N values of T with element-wise operators.
template <class T, int N>
struct VectorType {
    typedef T Type __attribute__((vector_size(N * sizeof(T))));
};
template <class T, int N>
using VectorOf = typename VectorType<T, N>::Type;

}  // namespace vess
