// The level an event's stretch is measured against, stretches too close to
// join apart, and swings kept out of the noise a donor lends.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "signal/event_free.h"

namespace vess {
namespace {

SampleReader ReaderOf(const std::vector<int16_t>& trace) {
    return [&trace](int64_t first, std::span<int16_t> out) {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = trace[std::size_t(first) + k];
    };
}

TEST(EventFreeLevel, SmallerEventJustBeforeIsTakenInAndTheDecayFollowedToTheLevelBeforeBoth) {
    // Level 0; a small downward event (200, decay 200 points) from 940 that detection
    // passed over, then a detected one (1000, rise 10 to its peak at 1010, decay 50)
    // whose own baseline lies on the small one's decay.
    std::vector<int16_t> trace(3000, 0);
    for (int64_t i = 940; i < 3000; ++i) {
        double v = -200 * std::exp(-double(i - 940) / 200);
        if (i >= 1000) v -= 1000 * (i < 1010 ? double(i - 1000) / 10 : std::exp(-double(i - 1010) / 50));
        trace[std::size_t(i)] = int16_t(std::lround(v));
    }
    EventRecord event;
    event.sampleIndex = 1010;
    event.riseTime = 10;
    event.decayTime = 50;
    event.baseline = -150;
    event.peakDirection = -1;
    const DecayTail tail{ReaderOf(trace), 10, 20, 3000};
    EXPECT_NEAR(LevelBefore(event, tail), 0, 1);
    // Back to 940 in windows of 20 from the start at 1000.
    EXPECT_EQ(OnsetPoints(event, tail), 70);
    // The small event's tail is within 10 of 0 from 940 + 200 ln 20 = 1539 on: the
    // first window from the decay point (1060, in steps of 20) whose mean is there.
    EXPECT_EQ(DecayEndPoints(event, tail), 1540 - 1010);
}

TEST(EventFreeLevel, StretchesCloserThanTheGapAreOne) {
    // Flat trace: each stretch is the rise and decay. Windows of 20, so stretches
    // fewer than 4 x 20 points apart are merged when the tail is followed.
    const std::vector<int16_t> trace(2000, 0);
    EventTable events;
    for (int32_t peak : {500, 610, 760}) {  // stretches 490-530, 600-640, 750-790
        EventRecord r;
        r.sampleIndex = peak;
        r.riseTime = 10;
        r.decayTime = 30;
        r.peakDirection = -1;
        events.Append(r);
    }
    const std::vector<PointStretch> apart{{490, 530}, {600, 640}, {750, 790}};
    const std::vector<PointStretch> joined{{490, 640}, {750, 790}};
    EXPECT_EQ(EventStretches(events, 0, 2000), apart);
    EXPECT_EQ(EventStretches(events, 0, 2000, DecayTail{ReaderOf(trace), 10, 20, 2000}), joined);
}

TEST(EventFreeLevel, ASlowSwingBeforeTheStretchIsNotCopiedIntoIt) {
    // +-3 noise on 0 with a swing of 30 (three noise SDs, below the outlier clip of
    // four) over 70 points that end 30 before the stretch: mirrored at the join it
    // would come back 30 to 100 points into the stretch.
    std::vector<int16_t> source(3000);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = int16_t(i % 2 ? 3 : -3);
    for (std::size_t i = 1400; i < 1470; ++i) source[i] = int16_t(source[i] + 30);
    std::vector<int16_t> out;
    EventFreeOptions options;
    options.levelPoints = 20;
    options.trendHalfPoints = 400;
    options.noiseCounts = 10;
    const SampleSink sink = [&](std::span<const int16_t> s) {
        out.insert(out.end(), s.begin(), s.end());
        return true;
    };
    const std::vector<PointStretch> stretch{{1500, 1999}};
    ASSERT_TRUE(EliminateStretches(3000, stretch, ReaderOf(source), sink, options));
    for (std::size_t at = 1500; at + 20 <= 2000; at += 10) {
        double sum = 0;
        for (std::size_t i = at; i < at + 20; ++i) sum += out[i];
        EXPECT_LT(std::abs(sum / 20), 10) << at;
    }
}

}  // namespace
}  // namespace vess
