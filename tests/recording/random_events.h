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
    // Braced initialisers run in order: the draws are the same on every compiler.
    EventRecord r{.time = float(d(rng)) * 0.5f, .amplitude = d(rng) * 1000, .noise = int16_t(d(rng)),
                  .riseTime = int16_t(d(rng)), .decayTime = int16_t(d(rng)), .baseline = int16_t(d(rng)),
                  .area = float(d(rng)) / 4, .group = uint8_t(byte(rng)), .channel = uint8_t(byte(rng)),
                  .baseOffset = int16_t(d(rng)), .rise1090 = float(d(rng)) / 8, .halfWidth = float(d(rng)) / 3,
                  .rise50 = int16_t(d(rng)), .peakDirection = int16_t(d(rng)), .burstNumber = int16_t(d(rng)),
                  .burstEventNumber = int16_t(d(rng)), .slope1090 = float(d(rng)) * 1.5f, .reserved = {}};
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
    return {.PeakDirection = 1, .ThresholdAmplitude = 7.5f, .PeriodToSearchMax = 12345, .PeriodStartBaseline = 4321,
            .PeriodFindDecayTime = 30000, .DecayPercent = 0.37f, .PeriodBaselineAverage = 500, .AreaThreshold = 21.25f,
            .NumberPointsPeak = 3};
}

}  // namespace vess
