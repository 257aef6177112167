// Traces for the detection tests: events put in by formula on flat or noisy
// baselines, written as one-channel recordings at 50 us.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "detection/analyze_window.h"
#include "detection/event_kernel.h"
#include "recording/parameter_file.h"
#include "recording/recording.h"
#include "recording/rounding.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess::test {

// K (exp(-t/decay) - exp(-t/rise)) scaled to peak at peakCounts; t in samples.
struct DoubleExp {
    double riseTau, decayTau, peakCounts;
    double PeakTime() const { return riseTau * decayTau / (decayTau - riseTau) * std::log(decayTau / riseTau); }
    double Scale() const {
        const double tp = PeakTime();
        return peakCounts / (std::exp(-tp / decayTau) - std::exp(-tp / riseTau));
    }
    double operator()(double t) const {
        return t < 0 ? 0.0 : Scale() * (std::exp(-t / decayTau) - std::exp(-t / riseTau));
    }
};

inline void AddEvent(std::vector<int16_t>& trace, int64_t onset, const DoubleExp& shape, int direction = 1) {
    for (int64_t i = onset; i < int64_t(trace.size()); ++i)
        trace[std::size_t(i)] = Clamp16(trace[std::size_t(i)] + RoundEven(direction * shape(double(i - onset))));
}

// A flat trace of zeros with the events at their onsets.
inline std::vector<int16_t> EventTrace(std::size_t points, std::initializer_list<std::pair<int64_t, DoubleExp>> events,
                                       int direction = 1) {
    std::vector<int16_t> trace(points, 0);
    for (const auto& [onset, shape] : events) AddEvent(trace, onset, shape, direction);
    return trace;
}

// first, first + step, .. below end.
inline std::vector<int64_t> Every(int64_t first, int64_t end, int64_t step) {
    std::vector<int64_t> v;
    for (int64_t o = first; o < end; o += step) v.push_back(o);
    return v;
}

// White Gaussian noise of SD noiseCounts around -2000 counts, downward events
// of amplitudeCounts with the kernel's shape at the onsets, and a linear drift
// of driftCounts over the whole trace; 50 us samples.
inline std::vector<int16_t> KernelTrace(int64_t points, const std::vector<int64_t>& onsets,
                                        double amplitudeCounts, double noiseCounts,
                                        const EventKernel& kernel, double driftCounts = 0,
                                        uint64_t seed = 3) {
    std::mt19937_64 rng(seed);
    auto uniform = [&] { return (double(rng() >> 11) + 0.5) * (1.0 / 9007199254740992.0); };
    std::vector<double> x(static_cast<std::size_t>(points));
    for (int64_t i = 0; i < points; ++i) {
        const double g = std::sqrt(-2 * std::log(uniform())) * std::cos(2 * M_PI * uniform());
        x[std::size_t(i)] = -2000 + noiseCounts * g + driftCounts * double(i) / double(points);
    }
    const std::vector<double> shape = KernelSamples(kernel, 50, 3000);
    for (int64_t o : onsets)
        for (int64_t i = 0; i < 3000 && o + i < points; ++i)
            x[std::size_t(o + i)] -= amplitudeCounts * shape[std::size_t(i)];
    std::vector<int16_t> out;
    for (double v : x) out.push_back(int16_t(std::lround(v)));
    return out;
}

// Detection parameters in samples of 50 us: search 200, base offset 120,
// baseline 40, decay 400; thresholds low enough for the test events.
inline AnalysisParameters TestParams(int16_t direction = 1) {
    return {.PeakDirection = direction, .ThresholdAmplitude = 5, .PeriodToSearchMax = 10000,
            .PeriodStartBaseline = 6000, .PeriodFindDecayTime = 20000, .DecayPercent = 0.32f,
            .PeriodBaselineAverage = 2000, .AreaThreshold = 1, .ComplexPeak = false, .NumberPointsPeak = 1};
}

// A recording of the given samples, kept with its folder.
struct TraceFile {
    TempDir dir;
    std::unique_ptr<Recording> rec;
    explicit TraceFile(const std::vector<int16_t>& samples, float countsPerUnit = 1.0f, double intervalUs = 50)
        : rec(MakeRecording(dir / "trace.abf", samples, intervalUs, countsPerUnit)) {}
};

// The events one analysis of the screen at startBlock finds.
inline EventTable AnalyzeScreen(const Recording& rec, int32_t startBlock, const AnalysisParameters& params,
                                int32_t blocks = 4) {
    EventTable events;
    AnalyzeWindow(Screen(rec, startBlock, blocks), params, events);
    return events;
}

// A workspace on its own recording of the given samples, with the test parameters.
struct TraceWorkspace {
    TraceFile file;
    Workspace ws;
    ScriptedDialogs dialogs;
    explicit TraceWorkspace(const std::vector<int16_t>& samples, float countsPerUnit = 1.0f)
        : file(samples, countsPerUnit) {
        ws.recording = Recording::Open(file.rec->Path(), nullptr);
        ws.params() = TestParams();
    }
};

// A workspace on the file with Suggest Analysis Parameters entry 1.
inline std::unique_ptr<Workspace> Suggested(const std::filesystem::path& path) {
    auto ws = std::make_unique<Workspace>();
    ws->recording = Recording::Open(path, nullptr);
    if (!ws->recording) throw std::runtime_error("cannot open " + path.string());
    ScriptedDialogs dialogs;
    SuggestParameters(*ws, dialogs, 1, [] { return true; });
    return ws;
}

}  // namespace vess::test
