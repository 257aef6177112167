// An event's time at full precision. The stored time is a 32-bit float in
// ms, which after about ten minutes at 20 kHz no longer resolves one sample;
// the record's sample index is exact.
#pragma once

#include <cmath>

#include "recording/event_record.h"

namespace vess {

// The time (ms) of the record's sample index when it carries one that agrees
// with its stored time (an index 0 with a later time was never set, and an
// edited time wins over a stale index); otherwise the stored time. A stored
// time that is not a number stays one: it was not measured.
inline double ExactEventTimeMs(const EventRecord& r, double intervalUs) {
    const double stored = r.time;
    if (!(intervalUs > 0) || r.sampleIndex <= 0 || !std::isfinite(stored)) return stored;
    const double exact = double(r.sampleIndex) * intervalUs / 1000.0;
    // A float holds the time to half a unit in its last place; allow one
    // sample on top for a time measured between samples.
    const double tolerance = intervalUs / 1000.0 + std::fabs(stored) * 6.0e-8;
    return std::fabs(exact - stored) <= tolerance ? exact : stored;
}

}  // namespace vess
