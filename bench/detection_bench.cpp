// Whole-file detection of a 60-minute, 20 kHz single-channel recording with
// the default parameters of each method, and the deconvolved trace alone,
// against reading the same file once.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

#include "detection/method_filter.h"
#include "detection/overview.h"
#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/screen_read_ahead.h"
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

// Argument: 0 threshold, 1 deconvolution, 2 template (its noise measured and
// its run prepared inside the timing, as a command does).
void BM_DetectWholeFile(benchmark::State& state) {
    int32_t events = 0;
    int64_t points = 0;
    for (auto _ : state) {
        vess::Workspace ws;
        ws.settings.method.method = vess::DetectionMethod(state.range(0));
        ws.recording = OpenLong();
        points = ws.recording->PointsPerChannel();
        events = vess::DetectWholeFile(ws).eventsAdded;
        benchmark::DoNotOptimize(events);
    }
    state.counters["samples_per_s"] =
        benchmark::Counter(double(points) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["events"] = double(events);
}

// The deconvolved trace alone, block by block (FFT overlap-save), as the
// detection reads it: the filter's cost against reading the file once.
void BM_DeconvolveWholeFile(benchmark::State& state) {
    auto rec = OpenLong();
    const vess::MethodParameters params{.method = vess::DetectionMethod::Deconvolution};
    const vess::MethodFilter filter(params, rec->IntervalUs(), -1);
    constexpr int64_t kBlock = 1 << 16;
    double sum = 0;
    for (auto _ : state) {
        for (int64_t i = 0; i < rec->PointsPerChannel(); i += kBlock) {
            const std::vector<double> c =
                filter.Compute(*rec, i, std::min(kBlock, rec->PointsPerChannel() - i));
            sum += c[0];
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["samples_per_s"] = benchmark::Counter(
        double(rec->PointsPerChannel()) * double(state.iterations()), benchmark::Counter::kIsRate);
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

// Every screen of the file in turn, read on its own (its previous, own and
// next screen: argument 0) or handed out by the whole-file read-ahead (1).
void BM_ScreensOfWholeFile(benchmark::State& state) {
    auto rec = OpenLong();
    const bool ahead = state.range(0) != 0;
    int64_t sum = 0;
    for (auto _ : state) {
        vess::ScreenReadAhead readAhead(*rec, 4);
        for (int32_t block = 0; block < rec->BlockCount(); block += 4) {
            const vess::Screen screen = ahead ? readAhead.At(block) : vess::Screen(*rec, block, 4);
            sum += screen.GetSampleValue(0);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["samples_per_s"] = benchmark::Counter(
        double(rec->PointsPerChannel()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

// The threshold detection's non-stop run over the whole file, its screens
// read on their own (argument 0) or ahead (1): the same events either way.
void BM_ThresholdNonStop(benchmark::State& state) {
    int32_t events = 0;
    for (auto _ : state) {
        vess::Workspace ws;
        ws.recording = OpenLong();
        vess::NonStopAnalysis run(ws);
        if (state.range(0) != 0) run.ReadAhead();
        run.RunToEnd();
        events = ws.events.Count();
        benchmark::DoNotOptimize(events);
    }
    state.counters["events"] = double(events);
}

BENCHMARK(BM_ReadWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_OverviewOfWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_DeconvolveWholeFile)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_DetectWholeFile)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ScreensOfWholeFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ThresholdNonStop)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
