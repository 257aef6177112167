// Random event records with every field set, detection parameters with
// every field an event file holds off its default, and event files of older
// versions, for format and sort tests.
#pragma once

#include <random>
#include <string_view>
#include <vector>

#include "recording/event_record.h"
#include "recording/le_bytes.h"
#include "recording/settings.h"

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

inline std::vector<EventRecord> RandomRecords(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<EventRecord> v;
    for (std::size_t k = 0; k < n; ++k) v.push_back(RandomRecord(rng, 30000));
    return v;
}

// An event file the way older versions wrote it, with 24-byte records.
inline std::vector<uint8_t> OldEventFile(std::string_view creator, const std::vector<std::array<uint8_t, 24>>& recs,
                                         int16_t peakDirection, int16_t numberPointsPeak) {
    std::vector<uint8_t> b(2048, 0);
    le::PutText(b, 294, 16, creator);
    le::Put(b, 1958, peakDirection);
    le::Put(b, 1960, numberPointsPeak);
    le::Put(b, 1986, int32_t(recs.size()));
    le::PutText(b, 2014, 34, "old.abf");
    for (const auto& r : recs) b.insert(b.end(), r.begin(), r.end());
    return b;
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
