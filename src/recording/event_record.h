// One event: a packed 76-byte little-endian record on disk. In memory it is a
// plain struct; ReadEventRecord/WriteEventRecord move it field by field.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vess {

struct EventRecord {
    float time = 0;                 // ms from the start of the recording
    int32_t amplitude = 0;          // peak minus baseline, ADC counts
    int16_t noise = 0;              // ADC counts
    int16_t riseTime = 0;           // sample points
    int16_t decayTime = 0;          // sample points
    int16_t baseline = 0;           // absolute level, ADC counts
    float area = 0;                 // units x ms
    uint8_t group = 0;              // 0 none, 1..254 user, 253 missing beat, 255 rejected
    uint8_t channel = 0;
    int16_t baseOffset = 0;         // baseline window start to peak, samples
    float rise1090 = 0;             // ms
    float halfWidth = 0;            // ms
    int16_t rise50 = 0;             // sample points
    int16_t peakDirection = 0;
    int16_t burstNumber = 0;
    int16_t burstEventNumber = 0;
    float slope1090 = 0;            // units per ms
    std::array<uint8_t, 24> reserved{};  // kept byte for byte
    int32_t relativeTime = 0;       // peak index within its screen, points
    int32_t sampleIndex = 0;        // peak index from the first data block

    // Two records are equal when their stored bytes are: a measurement kept
    // as not a number equals its copy, as it does on disk.
    bool operator==(const EventRecord& other) const;
};

inline constexpr std::size_t kEventRecordBytes = 76;
inline constexpr std::size_t kGroupRejected = 255;
inline constexpr std::size_t kGroupMissingBeat = 253;
// Group numbers run from 0 (none) to kLastGroup (rejected).
inline constexpr int kLastGroup = 255;
static_assert(kLastGroup == int(kGroupRejected));
inline constexpr bool IsGroupNumber(double group) { return group >= 0 && group <= kLastGroup; }

// The events that a statistics, work-array or heart-rate source takes for a
// group answer: 0 is every event the user has not rejected, any other number
// that group alone (255 picks the rejected events themselves).
inline bool InSourceGroup(const EventRecord& r, int group) {
    return group == 0 ? r.group != kGroupRejected : r.group == group;
}

// Byte offsets of the on-disk record.
namespace event_offsets {
inline constexpr std::size_t kTime = 0, kAmplitude = 4, kNoise = 8, kRiseTime = 10,
                             kDecayTime = 12, kBaseline = 14, kArea = 16, kGroup = 20,
                             kChannel = 21, kBaseOffset = 22, kRise1090 = 24, kHalfWidth = 28,
                             kRise50 = 32, kPeakDirection = 34, kBurstNumber = 36,
                             kBurstEventNumber = 38, kSlope1090 = 40, kReserved = 44,
                             kRelativeTime = 68, kSampleIndex = 72;
static_assert(kSampleIndex + 4 == kEventRecordBytes);
static_assert(kRelativeTime - kReserved == 24);
}  // namespace event_offsets

// bytes.size() must be at least kEventRecordBytes.
EventRecord ReadEventRecord(std::span<const uint8_t> bytes);
void WriteEventRecord(const EventRecord& record, std::span<uint8_t> bytes);

// The seventeen sortable fields, in grid column order (column 1..17).
enum class EventField {
    Time, Amplitude, RiseTime, DecayTime, Area, Baseline, Noise, Group, Channel, Rise1090,
    HalfWidth, Rise50, PeakDirection, BurstNumber, BurstEventNumber, Slope1090, RelativeTime
};
inline constexpr int kEventFieldCount = 17;

// Calls f with the pointer to the member that holds field, so that one
// generic routine serves every field with the field's own type.
template <class F>
decltype(auto) WithEventField(EventField field, F&& f) {
    switch (field) {
        case EventField::Time: return f(&EventRecord::time);
        case EventField::Amplitude: return f(&EventRecord::amplitude);
        case EventField::RiseTime: return f(&EventRecord::riseTime);
        case EventField::DecayTime: return f(&EventRecord::decayTime);
        case EventField::Area: return f(&EventRecord::area);
        case EventField::Baseline: return f(&EventRecord::baseline);
        case EventField::Noise: return f(&EventRecord::noise);
        case EventField::Group: return f(&EventRecord::group);
        case EventField::Channel: return f(&EventRecord::channel);
        case EventField::Rise1090: return f(&EventRecord::rise1090);
        case EventField::HalfWidth: return f(&EventRecord::halfWidth);
        case EventField::Rise50: return f(&EventRecord::rise50);
        case EventField::PeakDirection: return f(&EventRecord::peakDirection);
        case EventField::BurstNumber: return f(&EventRecord::burstNumber);
        case EventField::BurstEventNumber: return f(&EventRecord::burstEventNumber);
        case EventField::Slope1090: return f(&EventRecord::slope1090);
        case EventField::RelativeTime: break;
    }
    return f(&EventRecord::relativeTime);
}

}  // namespace vess
