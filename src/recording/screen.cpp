#include "recording/screen.h"

#include "recording/workspace.h"

namespace vess {

Screen::Screen(const Recording& recording, int32_t startBlock, int32_t blocksPerScreen)
    : recording_(&recording),
      startBlock_(startBlock),
      blocksPerScreen_(blocksPerScreen < 1 ? 1 : blocksPerScreen),
      windowLen_(blocksPerScreen_ * kBlockPoints),
      buffer_(std::size_t(3) * std::size_t(windowLen_)),
      filtered_(recording.ReadsFiltered()) {
    complete_ = recording.ReadSamples(AbsoluteIndex(-windowLen_), buffer_);
    data_ = buffer_.data();
    held_ = int64_t(buffer_.size());
}

Screen::Screen(const Recording& recording, int32_t startBlock, int32_t blocksPerScreen,
               const int16_t* threeScreens, std::shared_ptr<const void> keep)
    : recording_(&recording),
      startBlock_(startBlock),
      blocksPerScreen_(blocksPerScreen < 1 ? 1 : blocksPerScreen),
      windowLen_(blocksPerScreen_ * kBlockPoints),
      keep_(std::move(keep)),
      data_(threeScreens),
      held_(3 * int64_t(windowLen_)),
      filtered_(recording.ReadsFiltered()) {}

Screen::Screen(const Screen& other)
    : recording_(other.recording_),
      startBlock_(other.startBlock_),
      blocksPerScreen_(other.blocksPerScreen_),
      windowLen_(other.windowLen_),
      buffer_(other.buffer_),
      keep_(other.keep_),
      data_(other.buffer_.empty() ? other.data_ : buffer_.data()),
      held_(other.held_),
      complete_(other.complete_),
      filtered_(other.filtered_) {}

Screen& Screen::operator=(const Screen& other) {
    if (this != &other) *this = Screen(other);
    return *this;
}

float Screen::CalculateTime(int64_t i) const {
    return static_cast<float>(double(AbsoluteIndex(i)) * recording_->IntervalUs() / 1000.0);
}

Screen ShownScreen(const Workspace& ws) {
    return Screen(*ws.recording, ws.screenStartBlock, ws.BlocksPerScreen());
}

}  // namespace vess
