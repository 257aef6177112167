// Whole-file detection of a 60-minute, 20 kHz single-channel recording with
// the default parameters, against reading the same file once.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "detection/overview.h"
#include "detection/whole_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"

namespace {

// Synthesised once per process into the temporary folder.
const std::filesystem::path& LongRecordingPath() {
    static const std::filesystem::path path = [] {
        const auto p = std::filesystem::temp_directory_path() / "vess-bench-60min.abf";
        if (!std::filesystem::exists(p)) {
            vess::SynthOptions o;
            o.seconds = 3600;
            o.sampleRateHz = 20000;
            o.seed = 5;
            vess::WriteSynthetic(p, vess::Synthesise(o));
        }
        return p;
    }();
    return path;
}

std::unique_ptr<vess::Recording> OpenLong() {
    vess::AbfError error = vess::AbfError::None;
    return vess::Recording::Open(LongRecordingPath(), &error);
}

void BM_ReadWholeFile(benchmark::State& state) {
    auto rec = OpenLong();
    std::vector<int16_t> block(1 << 16);
    int64_t sum = 0;
    for (auto _ : state) {
        for (int64_t i = 0; i < rec->PointsPerChannel(); i += int64_t(block.size())) {
            rec->ReadSamples(i, block);
            sum += block[0];
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["samples_per_s"] = benchmark::Counter(
        double(rec->PointsPerChannel()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_DetectWholeFile(benchmark::State& state) {
    int32_t events = 0;
    int64_t points = 0;
    for (auto _ : state) {
        vess::Workspace ws;
        ws.recording = OpenLong();
        points = ws.recording->PointsPerChannel();
        vess::ScriptedDialogs dialogs;
        events = vess::DetectWholeFile(ws, dialogs).eventsAdded;
        benchmark::DoNotOptimize(events);
    }
    state.counters["samples_per_s"] =
        benchmark::Counter(double(points) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["events"] = double(events);
}

// The overview strip's one pass: every 256-point block's extremes, then the
// columns of a 1200-pixel strip.
void BM_OverviewOfWholeFile(benchmark::State& state) {
    auto rec = OpenLong();
    std::size_t columns = 0;
    for (auto _ : state) {
        columns = vess::OverviewColumns(vess::RecordingBlockExtremes(*rec), 1200).size();
        benchmark::DoNotOptimize(columns);
    }
    state.counters["samples_per_s"] = benchmark::Counter(
        double(rec->PointsPerChannel()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_ReadWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_OverviewOfWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_DetectWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
