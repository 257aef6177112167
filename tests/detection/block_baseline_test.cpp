// The deconvolution criterion's baseline and the order statistics of its
// noise are kept fast by incremental windows and sampled brackets; each is
// checked here against the plain computation it stands for, value for value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "detection/block_baseline.h"
#include "detection/sorted_window.h"
#include "detection/value_of_rank.h"

namespace vess {
namespace {

int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

// The baseline as written down: each block's mean, the median of each window
// sorted afresh, the kept medians from the blocks whose points all stay at
// or below the level of all, and the level drawn between block centres.
std::vector<double> Reference(const BlockBaseline& b, const std::vector<double>& f, int64_t origin, int64_t first,
                              int64_t count, bool nanNear) {
    const int64_t B = b.blockPoints, K = b.blocksAside;
    const auto mean = [&](int64_t block) {
        double sum = 0;
        for (int64_t j = 0; j < B; ++j) sum += f[std::size_t(block * B + j - origin)];
        return sum / double(B);
    };
    // The median of the means of blocks block - K .. block + K that keep says to.
    const auto median = [&](int64_t block, auto keep) {
        std::vector<double> w;
        for (int64_t m = block - K; m <= block + K; ++m)
            if (keep(m)) w.push_back(mean(m));
        std::sort(w.begin(), w.end());
        return w.empty() ? NAN : w[(w.size() - 1) / 2];
    };
    const auto levelled = [&](int64_t a, auto medianAt) {
        const int64_t block = FloorDiv(a - B / 2, B);  // the centre at or before a
        const double start = double(block * B) + double(B - 1) / 2, m0 = medianAt(block);
        const double step = (medianAt(block + 1) - m0) / double(B);
        return b.direction * (f[std::size_t(a - origin)] - (m0 + step * (double(a) - start)));
    };
    const auto all = [&](int64_t block) { return median(block, [](int64_t) { return true; }); };
    const auto leftOut = [&](int64_t block) {
        bool above = false;
        for (int64_t a = block * B; a < (block + 1) * B; ++a) above |= levelled(a, all) > b.leaveOutAbove;
        return above;
    };
    const auto kept = [&](int64_t block) {
        const double m = median(block, [&](int64_t other) { return !leftOut(other); });
        return std::isnan(m) ? all(block) : m;
    };
    const bool leaving = std::isfinite(b.leaveOutAbove);
    std::vector<double> out;
    for (int64_t a = first; a < first + count; ++a) {
        const int64_t block = FloorDiv(a, B);
        const bool near = leaving && nanNear && (leftOut(block - 1) || leftOut(block) || leftOut(block + 1));
        out.push_back(near ? NAN : ((leaving ? levelled(a, kept) : levelled(a, all)) - b.centre) / b.sd);
    }
    return out;
}

TEST(BlockBaseline, IsTheRunningMedianOfBlockMeansWrittenDown) {
    struct Case {
        int64_t blockPoints, blocksAside;
        int direction;
        double leaveOutAbove;  // in noise SDs
        bool nanNear, wholeCounts;
        int64_t first;
    };
    // Even and odd blocks; a stretch before point 0; means that tie (whole
    // counts); a level that leaves out a few blocks, one that leaves out
    // most (every window holding some), none.
    for (const Case& c : {Case{4, 2, 1, 2.0, false, false, 1000}, Case{5, 3, -1, 1.5, true, false, -77},
                          Case{1, 1, 1, 2.5, true, true, 13}, Case{6, 4, -1, 0.3, false, true, 500},
                          Case{3, 2, 1, INFINITY, false, false, -10}}) {
        std::mt19937_64 rng(uint64_t(c.blockPoints * 100 + c.blocksAside));
        std::normal_distribution<double> noise(0, 1);
        const int64_t count = 300, apron = (2 * c.blocksAside + 4) * c.blockPoints, origin = c.first - apron;
        std::vector<double> f(std::size_t(count + 2 * apron));
        for (std::size_t i = 0; i < f.size(); ++i) {
            f[i] = noise(rng) + (i % 97 < 3 ? 6 * c.direction : 0);  // events every 97 points
            if (c.wholeCounts) f[i] = std::round(f[i]);
        }
        // In the units of a noise level, as the detectors take it.
        const BlockBaseline b{c.blockPoints, c.blocksAside, c.direction, c.leaveOutAbove, 0.25, 1.5};
        const std::vector<double> want = Reference(b, f, origin, c.first, count, c.nanNear);
        for (const int lanes : AvailableLanes()) {
            BlockBaseline atWidth = b;
            atWidth.lanes = lanes;
            std::vector<double> got(f.size() - std::size_t(2 * apron));
            LessBlockBaseline(atWidth, f.data(), origin, c.first, count, got.data(), c.nanNear);
            int nans = 0;
            for (std::size_t i = 0; i < got.size(); ++i) {
                nans += std::isnan(want[i]);
                if (std::isnan(want[i])) {
                    EXPECT_TRUE(std::isnan(got[i])) << c.blockPoints << " at " << i << ", " << lanes << " lanes";
                } else {
                    EXPECT_EQ(got[i], want[i]) << c.blockPoints << " at " << i << ", " << lanes << " lanes";
                }
            }
            // The NaN cases do leave out blocks near some points, not all.
            if (c.nanNear) {
                EXPECT_TRUE(nans > 0 && nans < count) << nans;
            }
        }
    }
}

TEST(BlockBaseline, ALongStretchIsItsPartsComputedApart) {
    // Long stretches are levelled a cached piece at a time; each point's value
    // is the same as from a short stretch around it, and as from block means
    // found while the stretch came in pieces.
    const BlockBaseline b{40, 13, -1, 3.0, 0.5, 2};
    const int64_t count = 100000, apron = (2 * b.blocksAside + 4) * b.blockPoints, first = 12345;
    std::mt19937_64 rng(4);
    std::normal_distribution<double> noise(0, 1);
    std::vector<double> f(std::size_t(count + 2 * apron));
    for (std::size_t i = 0; i < f.size(); ++i) f[i] = noise(rng) - (i % 997 < 20 ? 5 : 0);
    std::vector<double> whole(static_cast<std::size_t>(count)), parts(whole.size());
    LessBlockBaseline(b, f.data(), first - apron, first, count, whole.data(), true);
    for (int64_t from = 0; from < count; from += 7001)
        LessBlockBaseline(b, f.data(), first - apron, first + from, std::min<int64_t>(7001, count - from),
                          parts.data() + from, true);
    // And with the block means streamed in pieces that split blocks.
    StreamedBlockMeans streamed;
    streamed.Start(b.blockPoints, first - apron, int64_t(f.size()));
    for (std::size_t from = 0; from < f.size(); from += 997)
        streamed.Add(f.data() + from, int64_t(std::min<std::size_t>(997, f.size() - from)));
    std::vector<double> fromStreamed(whole.size());
    LessBlockBaseline(b, f.data(), first - apron, first, count, fromStreamed.data(), true, &streamed);
    int nans = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        nans += std::isnan(whole[i]);
        for (const double other : {parts[i], fromStreamed[i]}) {
            if (!(std::isnan(whole[i]) && std::isnan(other))) {
                ASSERT_EQ(whole[i], other) << i;
            }
        }
    }
    EXPECT_TRUE(nans > 0 && nans < count) << nans;
}

TEST(SortedWindow, StepsAsEraseAndInsertDoAtEveryWidth) {
    // Widths around the vector lengths; whole values tie; +infinity goes out
    // and comes in as "none" (a window that is not full). Running medians
    // are the middle of each window sorted.
    for (const int lanes : AvailableLanes()) {
        for (const std::size_t width : {1u, 3u, 8u, 27u, 63u, 73u}) {
            std::mt19937_64 rng(width);
            std::uniform_int_distribution<int> value(-6, 6), pick(0, 9);
            SortedWindow window(width, lanes);
            std::vector<double> want(width);
            for (double& v : want) v = value(rng);
            window.Fill(want.data(), width);
            std::sort(want.begin(), want.end());
            for (int step = 0; step < 400; ++step) {
                const auto size = std::size_t(
                    std::count_if(want.begin(), want.end(), [](double v) { return std::isfinite(v); }));
                const bool noneOut = size == 0 || (size < width && pick(rng) < 5);
                const bool noneIn = size > 0 && pick(rng) == 0;
                const double gone = noneOut ? INFINITY : want[std::size_t(rng() % size)];
                const double in = noneIn ? INFINITY : value(rng) + 0.5 * (pick(rng) == 0);
                want.erase(std::lower_bound(want.begin(), want.end(), gone));
                want.insert(std::upper_bound(want.begin(), want.end(), in), in);
                window.Replace(gone, in);
                for (std::size_t i = 0; i < width; ++i)
                    ASSERT_EQ(window[i], want[i]) << lanes << " lanes, width " << width << ", step " << step;
            }
            // Running medians (odd widths; in registers up to 64 places).
            if (width % 2 == 0) continue;
            std::vector<double> values(400), medians(values.size() - width + 1);
            for (double& v : values) v = value(rng) + 0.5 * (pick(rng) == 0);
            // Of the values kept: runs left out, none or all of a window at times.
            std::vector<char> leftOut(values.size());
            for (std::size_t j = 0; j < values.size(); ++j) leftOut[j] = (j / 17) % 3 == 0 && pick(rng) < 8;
            std::vector<double> kept(medians.size());
            RunningMedians(values.data(), values.size(), width, medians.data(), lanes);
            RunningMediansOfKept(values.data(), leftOut.data(), values.size(), width, medians.data(), kept.data(),
                                 lanes);
            for (std::size_t k = 0; k < medians.size(); ++k) {
                std::vector<double> w, k1;
                for (std::size_t j = k; j < k + width; ++j) {
                    w.push_back(values[j]);
                    if (!leftOut[j]) k1.push_back(values[j]);
                }
                std::sort(w.begin(), w.end());
                std::sort(k1.begin(), k1.end());
                ASSERT_EQ(medians[k], w[width / 2]) << lanes << " lanes, width " << width << ", at " << k;
                ASSERT_EQ(kept[k], k1.empty() ? w[width / 2] : k1[(k1.size() - 1) / 2]) << lanes << " lanes, width " << width << ", at " << k;
            }
        }
    }
}

TEST(ValueOfRank, IsTheValueNthElementFinds) {
    // Long enough to be bracketed by a sample; ordered so that the sample is
    // random, sorted, or blind (every 32nd value alike: the bracket misses);
    // the values and their distances from a centre, at every vector width.
    constexpr std::size_t n = 100000;
    std::mt19937_64 rng(9);
    std::normal_distribution<double> noise(3, 2);
    std::vector<double> random(n), sorted, blind(n), ties(n);
    for (std::size_t i = 0; i < n; ++i) {
        random[i] = noise(rng);
        blind[i] = i % 32 == 0 ? -50 : noise(rng);
        ties[i] = std::round(noise(rng));
    }
    sorted = random;
    std::sort(sorted.begin(), sorted.end());
    for (const std::vector<double>* v : {&random, &sorted, &blind, &ties}) {
        for (const double centre : {double(NAN), 2.5}) {
            std::vector<double> ranked(*v);
            if (!std::isnan(centre))
                for (double& x : ranked) x = std::abs(x - centre);
            for (const std::size_t rank : {std::size_t(0), n / 4, n / 2, n / 2 + 1, n - 1}) {
                std::vector<double> copy(ranked);
                std::nth_element(copy.begin(), copy.begin() + std::ptrdiff_t(rank), copy.end());
                for (const int lanes : AvailableLanes()) {
                    const double got = std::isnan(centre) ? ValueOfRank(v->data(), n, rank, lanes)
                                                          : DistanceOfRank(v->data(), n, rank, centre, lanes);
                    EXPECT_EQ(got, copy[rank]) << rank << ", " << lanes << " lanes";
                }
            }
        }
    }
}

TEST(CountInBins, CountsWhatThePlainLoopCounts) {
    // Values on the bins' edges, outside them either side, and not a number.
    std::vector<double> values;
    for (int i = -40; i < 1300; ++i) values.push_back(0.25 * i + (i % 7 == 0 ? 0.1 : 0));
    values.push_back(NAN);
    values.push_back(INFINITY);
    const double low = -1.5, width = 0.75;
    constexpr std::size_t kBins = 101;
    std::vector<double> want(kBins, 0);
    for (const double v : values) {
        const double b = (v - low) / width;
        if (b >= 0 && b < double(kBins)) want[std::size_t(b)] += 1;
    }
    for (const int lanes : AvailableLanes()) {
        std::vector<double> got(kBins, -1);
        CountInBins(values.data(), values.size(), low, width, kBins, got.data(), lanes);
        EXPECT_EQ(got, want) << lanes << " lanes";
    }
}

}  // namespace
}  // namespace vess
