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
}

float Screen::CalculateTime(int64_t i) const {
    return static_cast<float>(double(AbsoluteIndex(i)) * recording_->IntervalUs() / 1000.0);
}

Screen ShownScreen(const Workspace& ws) {
    return Screen(*ws.recording, ws.screenStartBlock, ws.BlocksPerScreen());
}

}  // namespace vess
