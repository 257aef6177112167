// The input channels of a file as the user knows them: the name and unit of
// each channel position in acquisition order, for the channel chooser and
// for the message that refuses a floating-point file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vess {

class Recording;

struct ChannelLabel {
    std::string name;   // trimmed; may be empty
    std::string units;  // trimmed; may be empty
};

// From the bytes of an ABF 1.x header (a file's, or the copy a recording
// keeps): one label per channel position, the ADC of each taken from the
// sampling sequence. Positions whose ADC lies outside 0..15, and headers too
// short to hold the names, give no labels.
std::vector<ChannelLabel> ChannelLabelsFromHeader(std::span<const uint8_t> header, int channels);
std::vector<ChannelLabel> ChannelLabels(const Recording& rec);

// "1: IN 1 (mV)"; a label without a name says "channel 1".
std::string ChannelLabelText(int position, const ChannelLabel& label);
// The labels joined with ", ".
std::string ChannelListText(const std::vector<ChannelLabel>& labels);

}  // namespace vess
