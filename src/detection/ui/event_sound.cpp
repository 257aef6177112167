#include "detection/ui/event_sound.h"

#include <QApplication>

namespace vess {

EventSound::EventSound() : beep_([] { QApplication::beep(); }) {}

void EventSound::Stored(int32_t events, bool soundOn) {
    if (soundOn && pacer_.ShouldSound(events, EventSoundPacer::Clock::now())) beep_();
}

}  // namespace vess
