// Averaging 10,000 one-block events of a synthetic recording, and fitting
// two exponentials to each of the 1,000 traces of a superimposed type,
// against reading the same samples once.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>

#include "group_analysis/decay_fit.h"
#include "group_analysis/trace_set.h"
#include "recording/synth.h"

namespace {

const std::filesystem::path& RecordingPath() {
    static const std::filesystem::path path = [] {
        const auto p = std::filesystem::temp_directory_path() / "vess-bench-group-10min.abf";
        if (!std::filesystem::exists(p)) {
            vess::SynthOptions o;
            o.seconds = 600;
            o.sampleRateHz = 20000;
            o.seed = 9;
            vess::WriteSynthetic(p, vess::Synthesise(o));
        }
        return p;
    }();
    return path;
}

std::unique_ptr<vess::Recording> Open() {
    vess::AbfError error = vess::AbfError::None;
    return vess::Recording::Open(RecordingPath(), &error);
}

// count events of group 1 spread evenly over the recording.
vess::EventTable Events(const vess::Recording& rec, int count) {
    vess::EventTable t;
    const double spanMs = rec.Bit2msec(int32_t(rec.PointsPerChannel() - 512));
    for (int i = 0; i < count; ++i) {
        vess::EventRecord e;
        e.time = float(10 + spanMs * i / count);
        e.amplitude = -100;
        e.group = 1;
        t.Append(e);
    }
    return t;
}

void BM_ReadEventSamples(benchmark::State& state) {
    auto rec = Open();
    const vess::EventTable events = Events(*rec, 10000);
    std::vector<int16_t> buffer(256);
    int64_t sum = 0;
    for (auto _ : state) {
        for (const auto& e : events.Records()) {
            rec->ReadSamples(int64_t(e.time * 1000 / rec->IntervalUs()), buffer);
            sum += buffer[17];
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_ReadEventSamples)->Unit(benchmark::kMillisecond);

void BM_AverageTenThousandEvents(benchmark::State& state) {
    auto rec = Open();
    const vess::EventTable events = Events(*rec, 10000);
    for (auto _ : state) {
        const auto set = vess::group::BuildGroupTraceSet(*rec, events, {}, {.blocks = 1});
        benchmark::DoNotOptimize(set.points.data());
    }
}
BENCHMARK(BM_AverageTenThousandEvents)->Unit(benchmark::kMillisecond);

void BM_FitThousandSuperimposedTraces(benchmark::State& state) {
    auto rec = Open();
    const vess::EventTable events = Events(*rec, 1000);
    const auto set = vess::group::BuildGroupTraceSet(
        *rec, events, {}, {.type = vess::group::AnalysisType::Superimpose, .blocks = 1});
    const auto scale = vess::group::UnitScale::Of(*rec);
    vess::group::FitSettings fit;
    fit.model = {2, true};
    for (auto _ : state) {
        double sum = 0;
        for (int32_t t = 1; t <= set.count; ++t)
            sum += vess::group::FitTrace(set, t, -1, 1, scale, fit).fit.quality.rss;
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_FitThousandSuperimposedTraces)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
