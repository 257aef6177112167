// The sound made for stored events. Detection reports how many events each
// command or screen stored; the pacer decides whether that earns a sound now.
// One sound per stored event would, during a non-stop run over thousands of
// events, merge into a buzz, so sounds are kept at least minGap apart and
// the ones that fall inside the gap are dropped.
#pragma once

#include <chrono>
#include <cstdint>

namespace vess {

inline constexpr std::chrono::milliseconds kEventSoundGap{150};

class EventSoundPacer {
public:
    using Clock = std::chrono::steady_clock;
    explicit EventSoundPacer(Clock::duration minGap = kEventSoundGap) : minGap_(minGap) {}

    // Whether to sound now for eventsStored events just stored: never for
    // none, otherwise when no sound was made in the last minGap.
    bool ShouldSound(int32_t eventsStored, Clock::time_point now);

private:
    Clock::duration minGap_;
    bool sounded_ = false;
    Clock::time_point last_{};
};

}  // namespace vess
