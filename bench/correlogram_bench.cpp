// Auto- and cross-correlograms of 100,000 event times (a Poisson train of
// 100 events/s, so about 100 neighbours within the 1 s range of 1000 bins of
// 1 ms), against sorting the same array once; and the pairwise definition
// on 10,000 times for scale.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "statistics/correlogram.h"

namespace {

std::vector<double> PoissonTimesMs(std::size_t n, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::exponential_distribution<double> gap(0.1);  // mean 10 ms
    std::vector<double> t(n);
    double now = 0;
    for (double& v : t) v = now += gap(rng);
    std::shuffle(t.begin(), t.end(), rng);  // the arrays need not come sorted
    return t;
}

void BM_SortOnce(benchmark::State& state) {
    const auto times = PoissonTimesMs(std::size_t(state.range(0)), 1);
    for (auto _ : state) {
        auto copy = times;
        std::sort(copy.begin(), copy.end());
        benchmark::DoNotOptimize(copy.data());
    }
}
BENCHMARK(BM_SortOnce)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_AutoCorrelogram(benchmark::State& state) {
    const auto times = PoissonTimesMs(std::size_t(state.range(0)), 1);
    for (auto _ : state) benchmark::DoNotOptimize(vess::AutoCorrelogram(times, 1.0, 1000).counts.data());
}
BENCHMARK(BM_AutoCorrelogram)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_CrossCorrelogram(benchmark::State& state) {
    const auto a = PoissonTimesMs(std::size_t(state.range(0)), 1);
    const auto b = PoissonTimesMs(std::size_t(state.range(0)), 2);
    for (auto _ : state) benchmark::DoNotOptimize(vess::CrossCorrelogram(a, b, 1.0, 1000).counts.data());
}
BENCHMARK(BM_CrossCorrelogram)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_AutoCorrelogramPairwise(benchmark::State& state) {
    const auto times = PoissonTimesMs(std::size_t(state.range(0)), 1);
    for (auto _ : state) benchmark::DoNotOptimize(vess::AutoCorrelogramPairwise(times, 1.0, 1000).counts.data());
}
BENCHMARK(BM_AutoCorrelogramPairwise)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
