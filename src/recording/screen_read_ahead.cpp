#include "recording/screen_read_ahead.h"

#include <algorithm>
#include <span>

namespace vess {

ScreenReadAhead::ScreenReadAhead(const Recording& recording, int32_t blocksPerScreen,
                                 int32_t screensPerRead)
    : recording_(recording),
      blocksPerScreen_(std::max<int32_t>(blocksPerScreen, 1)),
      windowLen_(int64_t(blocksPerScreen_) * kBlockPoints),
      buffer_(std::size_t(std::max<int32_t>(screensPerRead, 1) + 2) * std::size_t(windowLen_)) {}

Screen ScreenReadAhead::At(int32_t startBlock) {
    const int64_t first = int64_t(startBlock) * kBlockPoints - windowLen_;
    const int64_t needed = 3 * windowLen_;
    if (first < bufferFirst_ || first + needed > bufferFirst_ + bufferHeld_) {
        // Read from the previous screen on, as far as the buffer holds but no
        // further than one screen past the data (the last screen's next one).
        const int64_t end = std::max(first + needed, recording_.PointsPerChannel() + windowLen_);
        const int64_t count = std::min<int64_t>(int64_t(buffer_.size()), end - first);
        bufferFirst_ = first;
        bufferHeld_ = 0;
        if (!recording_.ReadSamples(first, std::span<int16_t>(buffer_.data(), std::size_t(count))))
            return Screen(recording_, startBlock, blocksPerScreen_);
        bufferHeld_ = count;
    }
    return Screen(recording_, startBlock, blocksPerScreen_, buffer_.data() + (first - bufferFirst_));
}

}  // namespace vess
