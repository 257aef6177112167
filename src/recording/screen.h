// One screen of the chosen channel: blocksPerScreen 256-point blocks starting
// at a block, together with the screens just before and after it, so that
// GetSampleValue serves indices from -WindowLen to 2*WindowLen-1 without
// touching the file. Indices further out are read from the recording.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "recording/recording.h"

namespace vess {

class Screen {
public:
    Screen() = default;
    Screen(const Recording& recording, int32_t startBlock, int32_t blocksPerScreen);
    // A screen over samples read elsewhere: threeScreens holds the previous,
    // this and the next screen (3 x WindowLen samples, read with the
    // recording's edge rule) and must outlive the screen and its copies,
    // unless keep owns them: the screen and its copies then keep them.
    Screen(const Recording& recording, int32_t startBlock, int32_t blocksPerScreen,
           const int16_t* threeScreens, std::shared_ptr<const void> keep = nullptr);
    // A copy of an owning screen owns its own copy of the samples.
    Screen(const Screen& other);
    Screen& operator=(const Screen& other);
    Screen(Screen&&) noexcept = default;  // the moved buffer keeps its address
    Screen& operator=(Screen&&) noexcept = default;

    bool Valid() const { return recording_ != nullptr; }
    // False when part of the three screens could not be read from the file
    // (see Recording::ReadFault); the missing samples are 0.
    bool Complete() const { return complete_; }
    // Whether the samples came from the recording's filtered copy.
    bool Filtered() const { return filtered_; }
    const Recording& Rec() const { return *recording_; }
    int32_t StartBlock() const { return startBlock_; }
    int32_t BlocksPerScreen() const { return blocksPerScreen_; }
    int32_t WindowLen() const { return windowLen_; }
    // Point index (from the start of the data) of window index i.
    int64_t AbsoluteIndex(int64_t i) const { return int64_t(startBlock_) * kBlockPoints + i; }

    int16_t GetSampleValue(int64_t i) const {
        const int64_t k = i + windowLen_;
        if (k >= 0 && k < held_) return data_[k];
        return recording_->Sample(AbsoluteIndex(i));
    }
    // The buffered samples of window indices i .. i+n-1, or nullptr when that
    // range reaches beyond the three screens held in memory.
    const int16_t* Samples(int64_t i, int64_t n) const {
        const int64_t k = i + windowLen_;
        if (k < 0 || n < 0 || k + n > held_) return nullptr;
        return data_ + k;
    }
    // Time in ms of window index i from the start of the data, as a float.
    float CalculateTime(int64_t i) const;

private:
    const Recording* recording_ = nullptr;
    int32_t startBlock_ = 0;
    int32_t blocksPerScreen_ = 4;
    int32_t windowLen_ = 1024;
    std::vector<int16_t> buffer_;  // previous, current and next screen, when owned
    std::shared_ptr<const void> keep_;  // what holds the samples read elsewhere, when shared
    const int16_t* data_ = nullptr;  // the three screens: buffer_ or samples read elsewhere
    int64_t held_ = 0;               // samples at data_
    bool complete_ = true;
    bool filtered_ = false;
};

struct Workspace;
// The screen the workspace shows (ws.recording must be open).
Screen ShownScreen(const Workspace& ws);

}  // namespace vess
