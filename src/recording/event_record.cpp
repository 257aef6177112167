#include "recording/event_record.h"

#include <algorithm>

#include "recording/le_bytes.h"

namespace vess {

using namespace event_offsets;

EventRecord ReadEventRecord(std::span<const uint8_t> b) {
    EventRecord r;
    r.time = le::Get<float>(b, kTime);
    r.amplitude = le::Get<int32_t>(b, kAmplitude);
    r.noise = le::Get<int16_t>(b, kNoise);
    r.riseTime = le::Get<int16_t>(b, kRiseTime);
    r.decayTime = le::Get<int16_t>(b, kDecayTime);
    r.baseline = le::Get<int16_t>(b, kBaseline);
    r.area = le::Get<float>(b, kArea);
    r.group = b[kGroup];
    r.channel = b[kChannel];
    r.baseOffset = le::Get<int16_t>(b, kBaseOffset);
    r.rise1090 = le::Get<float>(b, kRise1090);
    r.halfWidth = le::Get<float>(b, kHalfWidth);
    r.rise50 = le::Get<int16_t>(b, kRise50);
    r.peakDirection = le::Get<int16_t>(b, kPeakDirection);
    r.burstNumber = le::Get<int16_t>(b, kBurstNumber);
    r.burstEventNumber = le::Get<int16_t>(b, kBurstEventNumber);
    r.slope1090 = le::Get<float>(b, kSlope1090);
    std::copy_n(b.begin() + kReserved, r.reserved.size(), r.reserved.begin());
    r.relativeTime = le::Get<int32_t>(b, kRelativeTime);
    r.sampleIndex = le::Get<int32_t>(b, kSampleIndex);
    return r;
}

void WriteEventRecord(const EventRecord& r, std::span<uint8_t> b) {
    le::Put(b, kTime, r.time);
    le::Put(b, kAmplitude, r.amplitude);
    le::Put(b, kNoise, r.noise);
    le::Put(b, kRiseTime, r.riseTime);
    le::Put(b, kDecayTime, r.decayTime);
    le::Put(b, kBaseline, r.baseline);
    le::Put(b, kArea, r.area);
    b[kGroup] = r.group;
    b[kChannel] = r.channel;
    le::Put(b, kBaseOffset, r.baseOffset);
    le::Put(b, kRise1090, r.rise1090);
    le::Put(b, kHalfWidth, r.halfWidth);
    le::Put(b, kRise50, r.rise50);
    le::Put(b, kPeakDirection, r.peakDirection);
    le::Put(b, kBurstNumber, r.burstNumber);
    le::Put(b, kBurstEventNumber, r.burstEventNumber);
    le::Put(b, kSlope1090, r.slope1090);
    std::copy(r.reserved.begin(), r.reserved.end(), b.begin() + kReserved);
    le::Put(b, kRelativeTime, r.relativeTime);
    le::Put(b, kSampleIndex, r.sampleIndex);
}

bool EventRecord::operator==(const EventRecord& other) const {
    std::array<uint8_t, kEventRecordBytes> a{}, b{};
    WriteEventRecord(*this, a);
    WriteEventRecord(other, b);
    return a == b;
}

}  // namespace vess
