// Filtering a 60-minute 20 kHz channel, causal and zero phase, against
// reading the same channel once in the same blocks. The file is written
// once to the temporary folder (144 MB) and removed at exit.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

#include "recording/abf_writer.h"
#include "recording/recording.h"
#include "signal/filter_channel.h"
#include "signal/sos_runner.h"

namespace vess {
namespace {

constexpr int64_t kPoints = 60LL * 60 * 20000;

struct HourFile {
    std::filesystem::path path = std::filesystem::temp_directory_path() / "vess-filter-bench.abf";
    std::unique_ptr<Recording> rec;
    HourFile() {
        std::vector<int16_t> samples(static_cast<std::size_t>(kPoints));
        uint32_t state = 7;  // fixed-seed LCG noise with slow steps
        for (std::size_t i = 0; i < samples.size(); ++i) {
            state = state * 1664525u + 1013904223u;
            samples[i] = int16_t(int(state >> 24) - 128 + int(i / 100000 % 2) * 500);
        }
        AbfWriteLayout choice;
        choice.intervalUs = 50;
        WriteAbf(path, choice, samples);
        AbfError error = AbfError::None;
        rec = Recording::Open(path, &error);
    }
    ~HourFile() { std::filesystem::remove(path); }
};

HourFile& File() {
    static HourFile file;
    return file;
}

void BM_ReadChannelOnce(benchmark::State& state) {
    const Recording& rec = *File().rec;
    std::vector<int16_t> block(1 << 16);
    for (auto _ : state) {
        int64_t sum = 0;
        for (int64_t at = 0; at < kPoints; at += int64_t(block.size())) {
            rec.ReadRawSamples(at, block);
            sum += block[0];
        }
        benchmark::DoNotOptimize(sum);
    }
}

void BM_FilterChannel(benchmark::State& state) {
    const Recording& rec = *File().rec;
    FilterChoice choice;
    choice.kind = FilterKind::Elliptic;
    choice.order = 8;
    choice.zeroPhase = state.range(0) != 0;
    for (auto _ : state) {
        FilteredChannel f = FilterChannel(rec, choice);
        benchmark::DoNotOptimize(f.counts);
    }
}

// The floor of the same design: the sections alone over as many samples,
// one 65,536-point block in memory filtered again and again, no reading,
// rounding or writing.
void BM_SectionsAlone(benchmark::State& state) {
    FilterChoice choice;
    choice.kind = FilterKind::Elliptic;
    choice.order = 8;
    SosRunner runner(DesignFilter(choice, 20000).sections);
    std::vector<double> block(1 << 16);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = double(int(i * 2654435761u >> 24) - 128);
    for (auto _ : state) {
        for (int64_t at = 0; at < kPoints; at += int64_t(block.size())) runner.Process(block);
        benchmark::DoNotOptimize(block.data());
    }
}

BENCHMARK(BM_SectionsAlone)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_ReadChannelOnce)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_FilterChannel)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
}  // namespace vess
