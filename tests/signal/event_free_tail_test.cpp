#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "signal/event_free.h"

namespace vess {
namespace {

// A downward event at 1000 on a baseline of 0: -1000 counts with a fast
// (tau 20 points, 70 %) and a slow (tau 300 points, 30 %) decay. Detection's
// 32 % decay point lies 48 points after the peak, where the slow part still
// holds about 255 counts; with a noise SD of 20 the slow part reaches 20
// counts 300 ln(15) = 812 points after the peak.
std::vector<int16_t> TwoExponentialEvent() {
    std::vector<int16_t> trace(6000, 0);
    for (int i = 0; i < 5000; ++i)
        trace[std::size_t(1000 + i)] = int16_t(std::lround(-700 * std::exp(-i / 20.0) - 300 * std::exp(-i / 300.0)));
    return trace;
}

TEST(EventFreeTail, DecayIsFollowedIntoTheNoiseAndNoFurtherThanTheCap) {
    const std::vector<int16_t> trace = TwoExponentialEvent();
    const SampleReader read = [&](int64_t first, std::span<int16_t> out) {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = trace[std::size_t(first) + k];
    };
    EventRecord event;
    event.sampleIndex = 1000;
    event.riseTime = 10;
    event.decayTime = 48;
    event.amplitude = 1000;
    event.peakDirection = -1;
    const DecayTail tail{read, 20, 20, int64_t(trace.size())};
    const int64_t end = DecayEndPoints(event, tail);
    EXPECT_GE(end, 790);  // 20-point windows from the decay point: the first below 20 counts
    EXPECT_LE(end, 830);

    // Upward events are followed the other way: none here, so the decay point stays.
    EventRecord up = event;
    up.peakDirection = 1;
    EXPECT_EQ(DecayEndPoints(up, tail), 48);
    // A decay point cut short (by a following event) still reaches the tail's end:
    // the walk may go kLeastReachWindows windows even when 20 decay lengths are fewer.
    EventRecord shortDecay = event;
    shortDecay.decayTime = 10;
    EXPECT_GE(DecayEndPoints(shortDecay, tail), 790);
    // Without a reader or a noise figure: the decay point.
    EXPECT_EQ(DecayEndPoints(event, DecayTail{}), 48);
    EXPECT_EQ(DecayEndPoints(event, DecayTail{read, 0, 20, int64_t(trace.size())}), 48);

    // The stretch runs from the start to the end of the decay, widened by the margin.
    EventTable events;
    events.Append(event);
    const auto stretches = EventStretches(events, 5, int64_t(trace.size()), tail);
    ASSERT_EQ(stretches.size(), 1u);
    EXPECT_EQ(stretches[0].first, 1000 - 10 - 5);
    EXPECT_EQ(stretches[0].last, 1000 + end + 5);
}

}  // namespace
}  // namespace vess
