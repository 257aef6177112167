#include "recording/event_record.h"

#include <algorithm>

#include "recording/le_bytes.h"

namespace vess {

using namespace event_offsets;

namespace {

// Every field with its offset, in record order; one table serves the reader
// and the writer.
template <class Record, class F>
void ForEachField(Record& r, F&& f) {
    f(kTime, r.time);
    f(kAmplitude, r.amplitude);
    f(kNoise, r.noise);
    f(kRiseTime, r.riseTime);
    f(kDecayTime, r.decayTime);
    f(kBaseline, r.baseline);
    f(kArea, r.area);
    f(kGroup, r.group);
    f(kChannel, r.channel);
    f(kBaseOffset, r.baseOffset);
    f(kRise1090, r.rise1090);
    f(kHalfWidth, r.halfWidth);
    f(kRise50, r.rise50);
    f(kPeakDirection, r.peakDirection);
    f(kBurstNumber, r.burstNumber);
    f(kBurstEventNumber, r.burstEventNumber);
    f(kSlope1090, r.slope1090);
    f(kReserved, r.reserved);
    f(kRelativeTime, r.relativeTime);
    f(kSampleIndex, r.sampleIndex);
}

template <class T>
void Load(std::span<const uint8_t> b, std::size_t at, T& value) {
    value = le::Get<T>(b, at);
}
template <std::size_t N>
void Load(std::span<const uint8_t> b, std::size_t at, std::array<uint8_t, N>& bytes) {
    std::copy_n(b.begin() + std::ptrdiff_t(at), N, bytes.begin());
}
template <class T>
void Store(std::span<uint8_t> b, std::size_t at, T value) {
    le::Put(b, at, value);
}
template <std::size_t N>
void Store(std::span<uint8_t> b, std::size_t at, const std::array<uint8_t, N>& bytes) {
    std::copy(bytes.begin(), bytes.end(), b.begin() + std::ptrdiff_t(at));
}

}  // namespace

EventRecord ReadEventRecord(std::span<const uint8_t> b) {
    EventRecord r;
    ForEachField(r, [&](std::size_t at, auto& field) { Load(b, at, field); });
    return r;
}

void WriteEventRecord(const EventRecord& r, std::span<uint8_t> b) {
    ForEachField(r, [&](std::size_t at, const auto& field) { Store(b, at, field); });
}

bool EventRecord::operator==(const EventRecord& other) const {
    std::array<uint8_t, kEventRecordBytes> a{}, b{};
    WriteEventRecord(*this, a);
    WriteEventRecord(other, b);
    return a == b;
}

}  // namespace vess
