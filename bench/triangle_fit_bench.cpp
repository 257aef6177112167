// The triangle fit of an RR histogram by its number of bins: 600 bins (an
// hour at 1 ms bins of 300..900 ms) up to the 60,000 bins the binning
// allows. Counts are a noisy bell over the middle third, so that both feet
// have many candidates.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "hrv/geometric.h"

namespace {

vess::hrv::Histogram NoisyBell(int bins) {
    std::mt19937 rng(7);
    std::poisson_distribution<int> noise(2);
    vess::hrv::Histogram h{1, 300, std::vector<int32_t>(std::size_t(bins))};
    for (int i = 0; i < bins; ++i) {
        const double z = (i - bins / 2.0) / (bins / 6.0);
        h.counts[std::size_t(i)] = int32_t(1000 * std::exp(-z * z)) + noise(rng);
    }
    return h;
}

void BM_FitTriangle(benchmark::State& state) {
    const auto h = NoisyBell(int(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(vess::hrv::FitTriangle(h));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_FitTriangle)->Arg(600)->Arg(6000)->Arg(60000)->Complexity()->Unit(benchmark::kMicrosecond);

}  // namespace
