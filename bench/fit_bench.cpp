// One 256-point fit of three exponentials: the least-squares fit against the
// simplex search with its restarts.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "group_analysis/least_squares_fit.h"

namespace {

struct Decay {
    std::vector<double> x, y;
};

// -60 e^(-t/0.4) - 30 e^(-t/3) - 10 e^(-t/15) pA at 0.1 ms, noise SD 1 pA.
Decay ThreeExponentials() {
    Decay d;
    std::mt19937 rng(5);
    std::normal_distribution<double> noise(0, 1);
    for (int i = 0; i < 256; ++i) {
        const double t = 0.1 * i;
        d.x.push_back(t);
        d.y.push_back(-60 * std::exp(-t / 0.4) - 30 * std::exp(-t / 3) - 10 * std::exp(-t / 15) + noise(rng));
    }
    return d;
}

void BM_LeastSquaresThreeExponentials256(benchmark::State& state) {
    const Decay d = ThreeExponentials();
    for (auto _ : state) {
        const auto r = vess::group::FitExponentialsLeastSquares({3, false}, {}, d.x, d.y,
                                                                 {.startFromGuess = false});
        benchmark::DoNotOptimize(r.quality.rss);
    }
}
BENCHMARK(BM_LeastSquaresThreeExponentials256)->Unit(benchmark::kMillisecond);

void BM_SimplexThreeExponentials256(benchmark::State& state) {
    const Decay d = ThreeExponentials();
    for (auto _ : state) {
        const auto r = vess::group::FitExponentials({3, false}, {0.5, -50, 2.5, -25, 12.5, -10, 0}, d.x, d.y, {});
        benchmark::DoNotOptimize(r.quality.rss);
    }
}
BENCHMARK(BM_SimplexThreeExponentials256)->Unit(benchmark::kMillisecond);

}  // namespace
