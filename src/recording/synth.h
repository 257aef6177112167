// Synthetic recordings with events at known times: coloured noise, 50 Hz
// line hum and double-exponential events of log-normal amplitude at Poisson
// times. Fully determined by the seed: the random numbers are drawn from
// std::mt19937_64 through our own transformations, not the library's
// (implementation-defined) distributions.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "recording/abf_writer.h"

namespace vess {

struct SynthOptions {
    double seconds = 60;
    double sampleRateHz = 20000;
    uint64_t seed = 7;
    double eventsPerSecond = 5;
    double medianAmplitudePa = 20;    // median of the log-normal amplitudes
    double amplitudeLogSigma = 0.35;  // sigma of ln(amplitude)
    double noiseRmsPa = 2;            // coloured noise, without the hum
    double humAmplitudePa = 0.6;      // peak amplitude of the line hum
    double humHz = 50;
    double riseTauMs = 0.5;
    double decayTauMs = 5;
    double minIntervalMs = 8;         // dead time between onsets
    int direction = -1;               // -1 inward (downward) events, +1 upward
    double baselinePa = 0;
    float countsPerPa = 10;           // 0.1 pA a count, +-3276.7 pA full scale
};

struct TrueEvent {
    double onsetMs = 0;
    double peakMs = 0;
    int64_t peakIndex = 0;   // sample nearest to the peak of the event alone
    double amplitudePa = 0;  // signed: direction x size
};

struct SynthRecording {
    std::vector<int16_t> samples;
    std::vector<TrueEvent> events;
    AbfWriteLayout abfLayout;
};

// Time from onset to peak of exp(-t/decay) - exp(-t/rise), in the unit of the taus.
double DoubleExponentialPeakTime(double riseTau, double decayTau);

// Empty string when the options make a recording, otherwise what is wrong.
std::string CheckSynthOptions(const SynthOptions& options);
SynthRecording Synthesise(const SynthOptions& options);

// Writes the recording with WriteAbf and, beside it, NAME_events.csv with
// the true events. Returns an empty string on success, else the reason.
std::string WriteSynthetic(const std::filesystem::path& abfPath, const SynthRecording& rec);
std::filesystem::path TrueEventsPath(const std::filesystem::path& abfPath);

}  // namespace vess
