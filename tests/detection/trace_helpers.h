// Hand-built traces for the detection tests: flat baselines with events put
// in by formula, written as one-channel recordings.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "recording/recording.h"
#include "recording/rounding.h"
#include "recording/settings.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess::test {

// Double exponential K (exp(-t/decay) - exp(-t/rise)) scaled so that the
// continuous curve peaks at peakCounts; t in samples from the onset.
struct DoubleExp {
    double riseTau;
    double decayTau;
    double peakCounts;
    double PeakTime() const { return riseTau * decayTau / (decayTau - riseTau) * std::log(decayTau / riseTau); }
    double Scale() const {
        const double tp = PeakTime();
        return peakCounts / (std::exp(-tp / decayTau) - std::exp(-tp / riseTau));
    }
    double operator()(double t) const {
        return t < 0 ? 0.0 : Scale() * (std::exp(-t / decayTau) - std::exp(-t / riseTau));
    }
};

// Adds direction x shape(i - onset) to every sample from onset on.
inline void AddEvent(std::vector<int16_t>& trace, int64_t onset, const DoubleExp& shape,
                     int direction = 1) {
    for (int64_t i = onset; i < int64_t(trace.size()); ++i)
        trace[std::size_t(i)] = Clamp16(trace[std::size_t(i)] +
                                        RoundEven(direction * shape(double(i - onset))));
}

// Detection parameters in samples of 50 us: search 200, base offset 120,
// baseline 40, decay 400; thresholds low enough for the test events.
inline AnalysisParameters TestParams(int16_t direction = 1) {
    AnalysisParameters p;
    p.PeakDirection = direction;
    p.ThresholdAmplitude = 5;
    p.PeriodToSearchMax = 10000;
    p.PeriodStartBaseline = 6000;
    p.PeriodBaselineAverage = 2000;
    p.PeriodFindDecayTime = 20000;
    p.DecayPercent = 0.32f;
    p.AreaThreshold = 1;
    p.NumberPointsPeak = 1;
    p.ComplexPeak = false;
    return p;
}

// A recording of the given samples at 50 us, one count per unit, kept with
// its folder.
struct TraceFile {
    TempDir dir;
    std::unique_ptr<Recording> rec;
    explicit TraceFile(const std::vector<int16_t>& samples, float countsPerUnit = 1.0f,
                       double intervalUs = 50)
        : rec(MakeRecording(dir / "trace.abf", samples, intervalUs, countsPerUnit)) {}
};

// A workspace on its own recording of the given samples, with the test
// parameters.
struct TraceWorkspace {
    TraceFile file;
    Workspace ws;
    explicit TraceWorkspace(const std::vector<int16_t>& samples, float countsPerUnit = 1.0f)
        : file(samples, countsPerUnit) {
        ws.recording = Recording::Open(file.rec->Path(), nullptr);
        ws.params() = TestParams();
    }
};

}  // namespace vess::test
