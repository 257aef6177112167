// The display frame of one screen (its robust range and median level), as
// the trace window computes it on every step to the next window, for
// screens of 1024 and 4096 points and for the overview's 2-hour strip of
// block extremes (28,125 blocks of 256 points at 20 kHz).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "detection/decimate.h"
#include "detection/display_fit.h"

namespace vess {
namespace {

std::vector<int16_t> Noise(std::size_t n) {
    std::vector<int16_t> v(n);
    uint32_t state = 11;  // fixed-seed LCG noise around -400 counts
    for (std::size_t i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        v[i] = int16_t(-400 + int(state >> 25) - 64);
    }
    return v;
}

void BM_FitFrame(benchmark::State& state) {
    const std::vector<int16_t> screen = Noise(std::size_t(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(FitFrame(screen, -1));
}
BENCHMARK(BM_FitFrame)->Arg(1024)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_RobustRange(benchmark::State& state) {
    const std::vector<int16_t> values = Noise(std::size_t(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(RobustRange(values, 0.005));
}
BENCHMARK(BM_RobustRange)->Arg(1024)->Arg(28125)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vess
