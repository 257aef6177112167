// A small recording and a hand-made event for the export and statistics
// tests: 2 counts a unit, an instrument offset of 3 units (so levels with
// offset and differences without come out apart), 50 us a point.
#pragma once

#include <memory>
#include <vector>

#include "recording/abf_writer.h"
#include "recording/event_record.h"
#include "support/test_recording.h"

namespace vess::test {

inline std::unique_ptr<Recording> OffsetRecording(const TempDir& dir, std::vector<int16_t> samples = {}) {
    auto abfLayout = MakeAbfLayout(50, 2.0f);
    abfLayout.channels[0].instrumentOffset = 3.0f;
    if (samples.empty()) samples.assign(4096, 0);
    const auto path = dir / "rec.abf";
    if (!WriteAbf(path, abfLayout, samples).empty()) return nullptr;
    AbfError error{};
    return Recording::Open(path, &error);
}

inline EventRecord MakeEvent(float timeMs, int32_t amplitude, uint8_t group = 0) {
    return {.time = timeMs, .amplitude = amplitude, .noise = 4, .riseTime = 4, .decayTime = 20, .baseline = 100,
            .area = -7.25f, .group = group, .rise1090 = 0.15f, .halfWidth = 1.5f, .rise50 = 2, .peakDirection = -1,
            .slope1090 = -33.5f, .relativeTime = 1000};
}

}  // namespace vess::test
