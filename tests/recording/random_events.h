// Random event records with every field set, and detection parameters with
// every field an event file holds off its default, for format and sort tests.
#pragma once

#include <random>

#include "recording/settings.h"
#include "recording/event_record.h"

namespace vess {

inline EventRecord RandomRecord(std::mt19937& rng, int spread) {
    std::uniform_int_distribution<int> d(-spread, spread);
    std::uniform_int_distribution<int> byte(0, 255);
    EventRecord r;
    r.time = float(d(rng)) * 0.5f;
    r.amplitude = d(rng) * 1000;
    r.noise = int16_t(d(rng));
    r.riseTime = int16_t(d(rng));
    r.decayTime = int16_t(d(rng));
    r.baseline = int16_t(d(rng));
    r.area = float(d(rng)) / 4;
    r.group = uint8_t(byte(rng));
    r.channel = uint8_t(byte(rng));
    r.baseOffset = int16_t(d(rng));
    r.rise1090 = float(d(rng)) / 8;
    r.halfWidth = float(d(rng)) / 3;
    r.rise50 = int16_t(d(rng));
    r.peakDirection = int16_t(d(rng));
    r.burstNumber = int16_t(d(rng));
    r.burstEventNumber = int16_t(d(rng));
    r.slope1090 = float(d(rng)) * 1.5f;
    for (auto& b : r.reserved) b = uint8_t(byte(rng));
    r.relativeTime = d(rng) * 70000;
    r.sampleIndex = d(rng);
    return r;
}

inline AnalysisParameters SomeParams() {
    AnalysisParameters p;
    p.PeakDirection = 1;
    p.ThresholdAmplitude = 7.5f;
    p.PeriodToSearchMax = 12345;
    p.PeriodStartBaseline = 4321;
    p.PeriodFindDecayTime = 30000;
    p.DecayPercent = 0.37f;
    p.PeriodBaselineAverage = 500;
    p.AreaThreshold = 21.25f;
    p.NumberPointsPeak = 3;
    return p;
}

}  // namespace vess
