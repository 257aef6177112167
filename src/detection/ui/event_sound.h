// The beep for stored events (ckSoundOn): one for each command or non-stop
// slice that stored events, paced so that a non-stop run ticks rather than
// buzzes.
#pragma once

#include <cstdint>
#include <functional>

#include "detection/event_sound.h"

namespace vess {

class EventSound {
public:
    EventSound();
    // events were just stored; beeps when soundOn and the pacer allows.
    void Stored(int32_t events, bool soundOn);
    // The sound itself (QApplication::beep); tests count it instead.
    void SetBeep(std::function<void()> beep) { beep_ = std::move(beep); }

private:
    EventSoundPacer pacer_;
    std::function<void()> beep_;
};

}  // namespace vess
