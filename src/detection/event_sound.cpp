#include "detection/event_sound.h"

namespace vess {

bool EventSoundPacer::ShouldSound(int32_t eventsStored, Clock::time_point now) {
    if (eventsStored <= 0) return false;
    if (sounded_ && now - last_ < minGap_) return false;
    sounded_ = true;
    last_ = now;
    return true;
}

}  // namespace vess
