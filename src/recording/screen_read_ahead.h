// Screens of one recording visited in order, one screen on each time (the
// non-stop analysis over a whole file, Analyze next window pressed again and
// again). Each Screen of its own reads its previous, own and next screen:
// three reads of every sample and a fresh buffer per screen. Here the
// screens are views into one buffer of many screens, so every sample is read
// about once and nothing is allocated per screen; the samples are those a
// Screen of its own would read. A screen kept past the next read keeps its
// buffer: that read goes to a new one.
#pragma once

#include <cstdint>
#include <memory>

#include "recording/recording.h"
#include "recording/screen.h"

namespace vess {

class ScreenReadAhead {
public:
    // screensPerRead: how many screens one read brings in (memory is about
    // that many screens, whatever the recording's length), fewer where that
    // would hold more than about two million samples (long screens), and at
    // least one.
    ScreenReadAhead(const Recording& recording, int32_t blocksPerScreen,
                    int32_t screensPerRead = 256);

    // The screen starting at startBlock: a view into the buffer, which it
    // and its copies keep. A read that failed gives an owning Screen instead,
    // which reads (and reports) its own samples.
    Screen At(int32_t startBlock);

    // Whether the samples held are still what this recording would read for
    // screens of this length: the same recording, channel and filtered copy,
    // read from the same source.
    bool Serves(const Recording& recording, int32_t blocksPerScreen) const;

private:
    const Recording& recording_;
    uint64_t samplesVersion_;
    bool readsFiltered_;
    int32_t blocksPerScreen_;
    int64_t windowLen_;
    std::size_t bufferSize_;
    std::shared_ptr<int16_t[]> buffer_;
    int64_t bufferFirst_ = 0;  // point index of buffer_[0]
    int64_t bufferHeld_ = 0;   // samples read into buffer_
};

}  // namespace vess
