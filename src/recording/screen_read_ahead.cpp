#include "recording/screen_read_ahead.h"

#include <algorithm>
#include <span>

namespace vess {
namespace {

// Samples a read brings in beyond the two screens either side, at most
// (4 MB), unless one screen is longer.
constexpr int64_t kMostSamplesAhead = int64_t(1) << 21;

std::size_t BufferSamples(int32_t screensPerRead, int64_t windowLen) {
    const int64_t screens = std::clamp<int64_t>(screensPerRead, 1, std::max<int64_t>(kMostSamplesAhead / windowLen, 1));
    return std::size_t(screens + 2) * std::size_t(windowLen);
}

}  // namespace

ScreenReadAhead::ScreenReadAhead(const Recording& recording, int32_t blocksPerScreen,
                                 int32_t screensPerRead)
    : recording_(recording),
      samplesVersion_(recording.SamplesVersion()),
      readsFiltered_(recording.ReadsFiltered()),
      blocksPerScreen_(std::max<int32_t>(blocksPerScreen, 1)),
      windowLen_(int64_t(blocksPerScreen_) * kBlockPoints),
      bufferSize_(BufferSamples(screensPerRead, windowLen_)),
      buffer_(std::make_shared_for_overwrite<int16_t[]>(bufferSize_)) {}

bool ScreenReadAhead::Serves(const Recording& recording, int32_t blocksPerScreen) const {
    return &recording == &recording_ && recording.SamplesVersion() == samplesVersion_ &&
           recording.ReadsFiltered() == readsFiltered_ && std::max<int32_t>(blocksPerScreen, 1) == blocksPerScreen_;
}

Screen ScreenReadAhead::At(int32_t startBlock) {
    const int64_t first = int64_t(startBlock) * kBlockPoints - windowLen_;
    const int64_t needed = 3 * windowLen_;
    if (first < bufferFirst_ || first + needed > bufferFirst_ + bufferHeld_) {
        // Read from the previous screen on, as far as the buffer holds but no
        // further than one screen past the data (the last screen's next one).
        const int64_t end = std::max(first + needed, recording_.PointsPerChannel() + windowLen_);
        const int64_t count = std::min<int64_t>(int64_t(bufferSize_), end - first);
        // Screens handed out before still show the samples they were given.
        if (buffer_.use_count() > 1) buffer_ = std::make_shared_for_overwrite<int16_t[]>(bufferSize_);
        bufferFirst_ = first;
        bufferHeld_ = 0;
        if (!recording_.ReadSamples(first, std::span<int16_t>(buffer_.get(), std::size_t(count))))
            return Screen(recording_, startBlock, blocksPerScreen_);
        bufferHeld_ = count;
    }
    return Screen(recording_, startBlock, blocksPerScreen_, buffer_.get() + (first - bufferFirst_), buffer_);
}

}  // namespace vess
