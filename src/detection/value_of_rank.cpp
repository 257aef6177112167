#include "detection/value_of_rank.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "detection/vector_code.h"

namespace vess {
namespace {

constexpr std::size_t kSampleStep = 64, kShortest = 1 << 16;

// The numbers ranked: the values, or their distances from centre.
template <bool Distance>
double Ranked(const double* values, std::size_t i, double centre) {
    return Distance ? std::abs(values[i] - centre) : values[i];
}

// The numbers of values[from .. n) inside [low, high] (and those not
// ordered against them) into kept, in order; their count. below counts those
// under low. Without a branch on each value: half of them lie on either side.
template <bool Distance>
std::size_t KeepInside(const double* values, std::size_t from, std::size_t n, double centre, double low,
                       double high, double* kept, std::size_t& below) {
    std::size_t inside = 0;
    for (std::size_t i = from; i < n; ++i) {
        const double x = Ranked<Distance>(values, i, centre);
        const int under = x < low, over = high < x;
        below += std::size_t(under);
        kept[inside] = x;
        inside += std::size_t(1 - (under | over));
    }
    return inside;
}

#if VESS_VECTORS
// The same eight at a time; kept has room for seven more than it takes.
template <bool Distance>
__attribute__((target("avx512f,popcnt"))) std::size_t KeepInsideEights(const double* values, std::size_t n,
                                                                       double centre, double low, double high,
                                                                       double* kept, std::size_t& below) {
    const __m512d c = _mm512_set1_pd(centre), lo = _mm512_set1_pd(low), hi = _mm512_set1_pd(high);
    std::size_t inside = 0, under = 0, i = 0;
    for (; i + 8 <= n; i += 8) {
        __m512d x = _mm512_loadu_pd(values + i);
        if (Distance) x = _mm512_abs_pd(_mm512_sub_pd(x, c));
        const __mmask8 u = _mm512_cmp_pd_mask(x, lo, _CMP_LT_OQ), o = _mm512_cmp_pd_mask(hi, x, _CMP_LT_OQ);
        const __mmask8 in = __mmask8(~(u | o));
        // Compressed in a register and stored whole: the next store writes
        // over what lies beyond the values kept.
        _mm512_storeu_pd(kept + inside, _mm512_maskz_compress_pd(in, x));
        under += std::size_t(__builtin_popcount(u));
        inside += std::size_t(__builtin_popcount(in));
    }
    below += under;
    return inside + KeepInside<Distance>(values, i, n, centre, low, high, kept + inside, below);
}
#endif

// The value of rank `rank` among values[0 .. n), all in [low, high] or not a
// number: counted into bins of equal width (a bin found by rounded
// arithmetic that keeps the values' order), the rank's bin is found from
// the counts and only its values are put in order.
double RankInBracket(double* values, std::size_t n, std::size_t rank, double low, double high) {
    constexpr std::size_t kBins = 4096;
    const double scale = double(kBins) / (high - low);
    const auto binOf = [&](double x) { return std::min(std::size_t((x - low) * scale), kBins - 1); };
    bool ordered = n >= kBins && std::isfinite(scale) && scale > 0;
    std::vector<uint32_t> counts(ordered ? kBins : 0, 0);
    for (std::size_t i = 0; ordered && i < n; ++i) {
        ordered = values[i] >= low && values[i] <= high;
        if (ordered) ++counts[binOf(values[i])];
    }
    if (!ordered) {
        std::nth_element(values, values + rank, values + n);
        return values[rank];
    }
    std::size_t bin = 0, before = 0;
    while (before + counts[bin] <= rank) before += counts[bin++];
    std::vector<double> inBin;
    inBin.reserve(counts[bin]);
    for (std::size_t i = 0; i < n; ++i)
        if (binOf(values[i]) == bin) inBin.push_back(values[i]);
    std::nth_element(inBin.begin(), inBin.begin() + std::ptrdiff_t(rank - before), inBin.end());
    return inBin[rank - before];
}

template <bool Distance>
double Select(const double* values, std::size_t n, std::size_t rank, double centre, [[maybe_unused]] int lanes) {
    std::vector<double> all;
    const auto nthOfAll = [&] {
        all.resize(n);
        for (std::size_t i = 0; i < n; ++i) all[i] = Ranked<Distance>(values, i, centre);
        std::nth_element(all.begin(), all.begin() + std::ptrdiff_t(rank), all.end());
        return all[rank];
    };
    if (n < kShortest) return nthOfAll();
    std::vector<double> sample;
    sample.reserve(n / kSampleStep + 1);
    for (std::size_t i = 0; i < n; i += kSampleStep) sample.push_back(Ranked<Distance>(values, i, centre));
    // The rank's place in the sample, four of its SDs either side.
    const double at = (double(rank) + 0.5) / double(n) * double(sample.size());
    const double reach = 4 * std::sqrt(double(sample.size())) + 1;
    const auto nth = [&](double r) {
        const auto place = sample.begin() + std::ptrdiff_t(std::clamp(r, 0.0, double(sample.size() - 1)));
        std::nth_element(sample.begin(), place, sample.end());
        return *place;
    };
    const double low = nth(at - reach), high = nth(at + reach);
    // Not zeroed: only the pages of the values kept are touched.
    const std::unique_ptr<double[]> kept(new double[n + 8]);
    std::size_t below = 0, inside = 0;
#if VESS_VECTORS
    if (lanes >= 8)
        inside = KeepInsideEights<Distance>(values, n, centre, low, high, kept.get(), below);
    else
#endif
        inside = KeepInside<Distance>(values, 0, n, centre, low, high, kept.get(), below);
    if (rank < below || rank - below >= inside) return nthOfAll();
    return RankInBracket(kept.get(), inside, rank - below, low, high);
}

// The bin of each value into bin[i - from], bins for none.
void BinsOf(const double* values, std::size_t from, std::size_t to, double low, double width, std::size_t bins,
            uint32_t* bin) {
    for (std::size_t i = from; i < to; ++i) {
        const double b = (values[i] - low) / width;
        bin[i - from] = b >= 0 && b < double(bins) ? uint32_t(b) : uint32_t(bins);
    }
}

#if VESS_VECTORS
__attribute__((target("avx512f"))) void BinsOfEights(const double* values, std::size_t from, std::size_t to,
                                                     double low, double width, std::size_t bins, uint32_t* bin) {
    const __m512d lo = _mm512_set1_pd(low), w = _mm512_set1_pd(width), zero = _mm512_setzero_pd(),
                  top = _mm512_set1_pd(double(bins));
    const __m256i none = _mm256_set1_epi32(int(bins));
    std::size_t i = from;
    for (; i + 8 <= to; i += 8) {
        const __m512d b = _mm512_div_pd(_mm512_sub_pd(_mm512_loadu_pd(values + i), lo), w);
        const __mmask8 in = _mm512_cmp_pd_mask(b, zero, _CMP_GE_OQ) & _mm512_cmp_pd_mask(b, top, _CMP_LT_OQ);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(bin + (i - from)),
                            _mm512_mask_cvttpd_epi32(none, in, b));
    }
    BinsOf(values, i, to, low, width, bins, bin + (i - from));
}
#endif

}  // namespace

void CountInBins(const double* values, std::size_t n, double low, double width, std::size_t bins, double* counts,
                 [[maybe_unused]] int lanes) {
    // Counted into four tallies in turn, so that a run of values in one bin
    // does not wait on its own count; the last place of each takes the
    // values in none.
    std::vector<uint64_t> tallies(4 * (bins + 1), 0);
    constexpr std::size_t kChunk = 512;
    uint32_t bin[kChunk];
    for (std::size_t from = 0; from < n; from += kChunk) {
        const std::size_t to = std::min(n, from + kChunk);
#if VESS_VECTORS
        if (lanes >= 8)
            BinsOfEights(values, from, to, low, width, bins, bin);
        else
#endif
            BinsOf(values, from, to, low, width, bins, bin);
        for (std::size_t j = 0; j < to - from; ++j) ++tallies[(j & 3) * (bins + 1) + bin[j]];
    }
    for (std::size_t k = 0; k < bins; ++k)
        counts[k] = double(tallies[k] + tallies[bins + 1 + k] + tallies[2 * (bins + 1) + k] +
                           tallies[3 * (bins + 1) + k]);
}

double ValueOfRank(const double* values, std::size_t n, std::size_t rank, int lanes) {
    return Select<false>(values, n, rank, 0, lanes);
}

double DistanceOfRank(const double* values, std::size_t n, std::size_t rank, double centre, int lanes) {
    return Select<true>(values, n, rank, centre, lanes);
}

}  // namespace vess
