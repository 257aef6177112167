#include "detection/block_baseline.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "detection/sorted_window.h"
#include "detection/vector_code.h"

namespace vess {
namespace {

// Two doubles handled by one vector instruction, each lane doing the
// operations of one point in the same order as a point computed alone.
using Pair = VectorOf<double, 2>;
using PairMask = VectorOf<int64_t, 2>;

Pair Load(const double* p) {
    Pair v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

void Store(double* p, Pair v) { std::memcpy(p, &v, sizeof v); }

// floor(a / b) for b > 0, also for negative a.
int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

// means[m] = the mean of x[m B .. m B + B - 1], each sum taken in order.
// Eight blocks are summed side by side, so that each block's chain of
// additions overlaps the others' instead of waiting on its own.
void BlockMeans(const double* x, int64_t B, double* means, std::size_t count) {
    std::size_t m = 0;
    for (; m + 8 <= count; m += 8) {
        const double* p = x + int64_t(m) * B;
        double s0 = 0, s1 = 0, s2 = 0, s3 = 0, s4 = 0, s5 = 0, s6 = 0, s7 = 0;
        for (int64_t j = 0; j < B; ++j) {
            s0 += p[j];
            s1 += p[j + B];
            s2 += p[j + 2 * B];
            s3 += p[j + 3 * B];
            s4 += p[j + 4 * B];
            s5 += p[j + 5 * B];
            s6 += p[j + 6 * B];
            s7 += p[j + 7 * B];
        }
        const double sums[8] = {s0, s1, s2, s3, s4, s5, s6, s7};
        for (std::size_t b = 0; b < 8; ++b) means[m + b] = sums[b] / double(B);
    }
    for (; m < count; ++m) {
        double sum = 0;
        for (int64_t j = 0; j < B; ++j) sum += x[int64_t(m) * B + j];
        means[m] = sum / double(B);
    }
}

// Points a .. end - 1 of one block, between the same two block centres,
// where the level at point p is level0 + step × (p - start).
struct LevelPiece {
    int64_t a, end, block;
    double level0, step, start;
};

// The level runs straight from medians[k] at the centre of block
// firstBlock + k to medians[k + 1] at the next centre; Next gives the pieces
// of the points of [from, to), in order, while there are any.
class Pieces {
public:
    Pieces(int64_t B, int64_t firstBlock, const double* medians, int64_t from, int64_t to)
        : B_(B), firstBlock_(firstBlock), medians_(medians), a_(from), to_(to), block_(FloorDiv(from - B / 2, B)) {}

    bool Next(LevelPiece& p) {
        const int64_t half = B_ / 2;  // the first point at or after a block's centre
        for (; a_ < to_; ++block_) {
            const int64_t next = (block_ + 1) * B_, end = std::min(next + half, to_);
            if (a_ >= end) continue;
            const std::size_t k = std::size_t(block_ - firstBlock_);
            const double start = double(block_ * B_) + double(B_ - 1) / 2;
            const double step = (medians_[k + 1] - medians_[k]) / double(B_);
            const int64_t stop = a_ < next ? std::min(next, end) : end;
            p = LevelPiece{a_, stop, a_ < next ? block_ : block_ + 1, medians_[k], step, start};
            a_ = stop;
            return true;
        }
        return false;
    }

private:
    int64_t B_, firstBlock_;
    const double* medians_;
    int64_t a_, to_, block_;
};

// The points of [from, to) from the centre of block to the next centre
// (B / 2 is the first point at or after a centre), levelled as Pieces level them.
[[gnu::always_inline]] inline LevelPiece CentreToCentre(int64_t B, int64_t firstBlock, const double* medians,
                                                        int64_t block, int64_t from, int64_t to) {
    const std::size_t k = std::size_t(block - firstBlock);
    return {std::max(block * B + B / 2, from), std::min((block + 1) * B + B / 2, to), block, medians[k],
            (medians[k + 1] - medians[k]) / double(B), double(block * B) + double(B - 1) / 2};
}

// v = direction × (f less the level) at the points of the piece (f[i] is
// point p.a + i), written to out[i] when Put; whether v rises above limit at
// one of them.
template <bool Put>
bool Levelled(const LevelPiece& p, const double* f, double direction, double limit, double* out) {
    const int64_t a = p.a, n = p.end - p.a;
    int64_t i = 0;
    Pair at = {double(a), double(a + 1)};
    PairMask above = {0, 0};
    for (; i + 2 <= n; i += 2, at += 2) {
        const Pair v = direction * (Load(f + i) - (p.level0 + p.step * (at - p.start)));
        if (Put) Store(out + i, v);
        above |= v > limit;
    }
    bool any = above[0] || above[1];
    for (; i < n; ++i) {
        const double v = direction * (f[i] - (p.level0 + p.step * (double(a + i) - p.start)));
        if (Put) out[i] = v;
        any |= v > limit;
    }
    return any;
}

#if defined(__x86_64__)
// The same eight points at a time (the last few masked), and what is
// written taken in units: (v - centre) / sd.
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) void PutLevelledEights(
    const LevelPiece& p, const double* f, double direction, double centre, double sd, double* out) {
    const int64_t n = p.end - p.a;
    const __m512d level0 = _mm512_set1_pd(p.level0), step = _mm512_set1_pd(p.step), start = _mm512_set1_pd(p.start);
    const __m512d sign = _mm512_set1_pd(direction), middle = _mm512_set1_pd(centre), unit = _mm512_set1_pd(sd);
    __m512d at = _mm512_add_pd(_mm512_set1_pd(double(p.a)), _mm512_set_pd(7, 6, 5, 4, 3, 2, 1, 0));
    int64_t i = 0;
    for (; i + 8 <= n; i += 8, at = _mm512_add_pd(at, _mm512_set1_pd(8))) {
        const __m512d level = _mm512_add_pd(level0, _mm512_mul_pd(step, _mm512_sub_pd(at, start)));
        const __m512d v = _mm512_mul_pd(sign, _mm512_sub_pd(_mm512_loadu_pd(f + i), level));
        _mm512_storeu_pd(out + i, _mm512_div_pd(_mm512_sub_pd(v, middle), unit));
    }
    if (i < n) {
        const __mmask8 lanes = __mmask8((1u << (n - i)) - 1);
        const __m512d level = _mm512_add_pd(level0, _mm512_mul_pd(step, _mm512_sub_pd(at, start)));
        const __m512d v = _mm512_mul_pd(sign, _mm512_sub_pd(_mm512_maskz_loadu_pd(lanes, f + i), level));
        _mm512_mask_storeu_pd(out + i, lanes, _mm512_div_pd(_mm512_sub_pd(v, middle), unit));
    }
}

// The pieces of [from, to) levelled in units into out (f and out begin at
// point from), and the blocks that rise above limit flagged in leftOut
// (leftOut[0] is block flagFrom), each in one function, so that the pieces'
// loop is compiled for eight lanes too.
__attribute__((target("avx512f"))) void PutEights(int64_t B, int64_t firstBlock, const double* medians, int64_t from,
                                                  int64_t to, const double* f, double direction, double centre,
                                                  double sd, double* out) {
    // Written from centre to centre: one piece where the level is one line,
    // whole vectors but at the stretch's ends.
    for (int64_t block = FloorDiv(from - B / 2, B); block * B + B / 2 < to; ++block) {
        const LevelPiece p = CentreToCentre(B, firstBlock, medians, block, from, to);
        PutLevelledEights(p, f + (p.a - from), direction, centre, sd, out + (p.a - from));
    }
}

// Whether a point of the piece rises above limit: bit 0 for those before its
// point split, bit 1 for those from it on.
[[gnu::always_inline]] inline __attribute__((target("avx512f"))) unsigned AboveEights(
    const LevelPiece& p, const double* f, double direction, double limit, int64_t split) {
    const int64_t n = p.end - p.a;
    const __m512d level0 = _mm512_set1_pd(p.level0), step = _mm512_set1_pd(p.step), start = _mm512_set1_pd(p.start);
    const __m512d sign = _mm512_set1_pd(direction), over = _mm512_set1_pd(limit);
    __m512d at = _mm512_add_pd(_mm512_set1_pd(double(p.a)), _mm512_set_pd(7, 6, 5, 4, 3, 2, 1, 0));
    unsigned before = 0, after = 0;
    for (int64_t i = 0; i < n; i += 8, at = _mm512_add_pd(at, _mm512_set1_pd(8))) {
        const __mmask8 lanes = n - i >= 8 ? __mmask8(0xff) : __mmask8((1u << (n - i)) - 1);
        const __m512d level = _mm512_add_pd(level0, _mm512_mul_pd(step, _mm512_sub_pd(at, start)));
        const __m512d v = _mm512_mul_pd(sign, _mm512_sub_pd(_mm512_maskz_loadu_pd(lanes, f + i), level));
        const unsigned above = _mm512_mask_cmp_pd_mask(lanes, v, over, _CMP_GT_OQ);
        const int64_t s = split - i;
        const unsigned first = s >= 8 ? 0xffu : s <= 0 ? 0u : (1u << s) - 1;
        before |= above & first;
        after |= above & ~first;
    }
    return unsigned(before != 0) | unsigned(after != 0) << 1;
}

__attribute__((target("avx512f"))) void FlagEights(int64_t B, int64_t firstBlock, const double* medians,
                                                   int64_t from, int64_t to, const double* f, double direction,
                                                   double limit, char* leftOut, int64_t flagFrom) {
    // Centre to centre, as PutEights: each piece ends in the block after
    // its own.
    for (int64_t block = FloorDiv(from - B / 2, B); block * B + B / 2 < to; ++block) {
        const LevelPiece p = CentreToCentre(B, firstBlock, medians, block, from, to);
        const unsigned above = AboveEights(p, f + (p.a - from), direction, limit, (block + 1) * B - p.a);
        if (above & 1) leftOut[block - flagFrom] = 1;
        if (above & 2) leftOut[block + 1 - flagFrom] = 1;
    }
}
#endif

// Kept from call to call on this thread, so that their pages stay in.
struct BaselineScratch {
    std::vector<double> means, medians, keptMedians;
    std::vector<char> leftOut;
};

// LessBlockBaseline of one stretch.
void LessBaselineOf(const BlockBaseline& baseline, const double* filtered, int64_t origin, int64_t first,
                    int64_t count, double* out, bool nanNearLeftOut, const StreamedBlockMeans* known) {
    thread_local BaselineScratch s;
    const int64_t B = baseline.blockPoints, K = baseline.blocksAside;
    const double direction = baseline.direction;
    // Medians at the centres of blocks firstBlock .. lastBlock, which bracket
    // every point of the stretch.
    const int64_t firstBlock = FloorDiv(first, B) - 1;
    const int64_t lastBlock = FloorDiv(first + count, B) + 1;
    const bool leaving = std::isfinite(baseline.leaveOutAbove);
    // Leaving out needs the criterion of blocks firstBlock - K .. lastBlock + K
    // first, from the medians of all around them.
    const int64_t reach = leaving ? K + 1 : 0;
    const int64_t meansFrom = firstBlock - reach - K;
    const std::size_t means = std::size_t(lastBlock + reach + K - meansFrom + 1);
    const double* blockMeans = nullptr;
    if (known) {
        blockMeans = known->Means() + (meansFrom - known->FirstBlock());
    } else {
        s.means.resize(means);
        BlockMeans(filtered + (meansFrom * B - origin), B, s.means.data(), means);
        blockMeans = s.means.data();
    }
    s.medians.resize(means - std::size_t(2 * K));  // blocks firstBlock - reach ..
    RunningMedians(blockMeans, means, std::size_t(2 * K + 1), s.medians.data(), baseline.lanes);
#if defined(__x86_64__)
    const bool eights = baseline.lanes >= 8;
#else
    const bool eights = false;
#endif
    // The level's pieces written out, in units where eight lanes fold them
    // in, else in a pass of their own afterwards.
    const auto put = [&](const double* medians) {
#if defined(__x86_64__)
        if (eights) {
            PutEights(B, firstBlock, medians, first, first + count, filtered + (first - origin), direction,
                      baseline.centre, baseline.sd, out);
            return;
        }
#endif
        Pieces pieces(B, firstBlock, medians, first, first + count);
        for (LevelPiece p; pieces.Next(p);)
            Levelled<true>(p, filtered + (p.a - origin), direction, INFINITY, out + (p.a - first));
        // (v - 0) / 1 is v to the bit.
        if (baseline.centre != 0 || baseline.sd != 1)
            Standardise(out, count, baseline.centre, baseline.sd, baseline.lanes);
    };
    if (!leaving) {
        put(s.medians.data());
        return;
    }
    // blockMeans[j] is block meansFrom + j; a block is left out when a point of
    // it rises above the level.
    s.leftOut.assign(means, 0);
    const int64_t flagFrom = firstBlock - K, flagTo = lastBlock + K + 1;
#if defined(__x86_64__)
    if (eights)
        FlagEights(B, firstBlock - reach, s.medians.data(), flagFrom * B, flagTo * B,
                   filtered + (flagFrom * B - origin), direction, baseline.leaveOutAbove,
                   s.leftOut.data() + (flagFrom - meansFrom), flagFrom);
    else
#endif
    {
        Pieces pieces(B, firstBlock - reach, s.medians.data(), flagFrom * B, flagTo * B);
        for (LevelPiece p; pieces.Next(p);)
            if (Levelled<false>(p, filtered + (p.a - origin), direction, baseline.leaveOutAbove, nullptr))
                s.leftOut[std::size_t(p.block - meansFrom)] = 1;
    }
    s.keptMedians.resize(means - std::size_t(2 * (reach + K)));
    RunningMediansOfKept(blockMeans + reach, s.leftOut.data() + reach, means - std::size_t(2 * reach),
                         std::size_t(2 * K + 1), s.medians.data() + reach, s.keptMedians.data(), baseline.lanes);
    put(s.keptMedians.data());
    if (!nanNearLeftOut) return;
    for (int64_t block = FloorDiv(first, B); block * B < first + count; ++block) {
        const std::size_t j = std::size_t(block - meansFrom);
        if (!(s.leftOut[j - 1] || s.leftOut[j] || s.leftOut[j + 1])) continue;
        const int64_t a = std::max(block * B, first), end = std::min((block + 1) * B, first + count);
        std::fill(out + (a - first), out + (end - first), NAN);
    }
}

}  // namespace

void StreamedBlockMeans::Start(int64_t blockPoints, int64_t origin, int64_t points) {
    blockPoints_ = blockPoints;
    firstBlock_ = FloorDiv(origin + blockPoints - 1, blockPoints);
    skip_ = firstBlock_ * blockPoints - origin;
    filled_ = 0;
    partial_ = 0;
    means_.clear();
    means_.reserve(std::size_t(std::max<int64_t>(points / blockPoints, 0)) + 1);
}

void StreamedBlockMeans::Add(const double* values, int64_t count) {
    const int64_t B = blockPoints_;
    int64_t i = std::min(skip_, count);
    skip_ -= i;
    if (filled_ > 0) {
        // The block begun in an earlier piece.
        for (; i < count && filled_ < B; ++i, ++filled_) partial_ += values[i];
        if (filled_ < B) return;
        means_.push_back(partial_ / double(B));
        filled_ = 0;
        partial_ = 0;
    }
    const int64_t whole = (count - i) / B;
    const std::size_t at = means_.size();
    means_.resize(at + std::size_t(whole));
    BlockMeans(values + i, B, means_.data() + at, std::size_t(whole));
    for (i += whole * B; i < count; ++i, ++filled_) partial_ += values[i];
}

void LessBlockBaseline(const BlockBaseline& baseline, const double* filtered, int64_t origin, int64_t first,
                       int64_t count, double* out, bool nanNearLeftOut, const StreamedBlockMeans* known) {
    // Each point's value depends only on the points around it: a long
    // stretch is taken in pieces whose points stay in the cache from the
    // block means to the levelled output.
    constexpr int64_t kCached = int64_t(1) << 15;
    for (int64_t from = first; from < first + count; from += kCached)
        LessBaselineOf(baseline, filtered, origin, from, std::min(kCached, first + count - from), out + (from - first),
                       nanNearLeftOut, known);
}

}  // namespace vess
