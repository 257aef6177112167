// The value of a given rank among many, as std::nth_element finds it, for
// series of millions of values where nth_element spends most of its time
// mispredicting branches.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace vess {

// The value of rank `rank` (0-based) among the numbers value(i), i < n, as
// std::nth_element finds it (but for the sign of a zero): a sample of the values brackets it, one pass
// counts the values below the bracket and keeps those inside, and
// nth_element runs on those alone (on all of them in the rare case the
// bracket misses, and on all of a short series).
template <class Value>
double ValueOfRank(std::size_t n, std::size_t rank, Value&& value) {
    std::vector<double> kept;
    const auto nthOfAll = [&] {
        kept.resize(n);
        for (std::size_t i = 0; i < n; ++i) kept[i] = value(i);
        std::nth_element(kept.begin(), kept.begin() + std::ptrdiff_t(rank), kept.end());
        return kept[rank];
    };
    constexpr std::size_t kSampleStep = 32, kShortest = 1 << 16;
    if (n < kShortest) return nthOfAll();
    std::vector<double> sample;
    sample.reserve(n / kSampleStep + 1);
    for (std::size_t i = 0; i < n; i += kSampleStep) sample.push_back(value(i));
    // The rank's place in the sample, four of its SDs either side.
    const double at = (double(rank) + 0.5) / double(n) * double(sample.size());
    const double reach = 4 * std::sqrt(double(sample.size())) + 1;
    const auto nth = [&](double r) {
        const auto place = sample.begin() + std::ptrdiff_t(std::clamp(r, 0.0, double(sample.size() - 1)));
        std::nth_element(sample.begin(), place, sample.end());
        return *place;
    };
    const double low = nth(at - reach), high = nth(at + reach);
    // Counted and kept without a branch on each value (half of them lie on
    // either side), a chunk at a time.
    std::size_t below = 0;
    constexpr std::size_t kChunk = 256;
    double chunk[kChunk];
    for (std::size_t from = 0; from < n; from += kChunk) {
        const std::size_t to = std::min(n, from + kChunk);
        std::size_t inside = 0;
        for (std::size_t i = from; i < to; ++i) {
            const double x = value(i);
            const int under = x < low, over = high < x;
            below += std::size_t(under);
            chunk[inside] = x;
            inside += std::size_t(1 - (under | over));
        }
        kept.insert(kept.end(), chunk, chunk + inside);
    }
    if (rank < below || rank - below >= kept.size()) return nthOfAll();
    std::nth_element(kept.begin(), kept.begin() + std::ptrdiff_t(rank - below), kept.end());
    return kept[rank - below];
}

}  // namespace vess
