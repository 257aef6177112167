// Screens of one recording visited in order, one screen on each time (the
// non-stop analysis over a whole file). Each Screen of its own reads its
// previous, own and next screen: three reads of every sample and a fresh
// buffer per screen. Here the screens are views into one buffer of many
// screens, so every sample is read about once and nothing is allocated per
// screen; the samples are those a Screen of its own would read.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/recording.h"
#include "recording/screen.h"

namespace vess {

class ScreenReadAhead {
public:
    // screensPerRead: how many screens one read brings in (memory is about
    // that many screens, whatever the recording's length).
    ScreenReadAhead(const Recording& recording, int32_t blocksPerScreen,
                    int32_t screensPerRead = 256);

    // The screen starting at startBlock. A view into the buffer, valid until
    // the next call; a read that failed gives an owning Screen instead, which
    // reads (and reports) its own samples.
    Screen At(int32_t startBlock);

private:
    const Recording& recording_;
    int32_t blocksPerScreen_;
    int64_t windowLen_;
    std::vector<int16_t> buffer_;
    int64_t bufferFirst_ = 0;  // point index of buffer_[0]
    int64_t bufferHeld_ = 0;   // samples read into buffer_
};

}  // namespace vess
