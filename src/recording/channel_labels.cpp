#include "recording/channel_labels.h"

#include "recording/abf_layout.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"

namespace vess {
namespace {

std::string Trimmed(std::string s) {
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    const auto last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

}  // namespace

std::vector<ChannelLabel> ChannelLabelsFromHeader(std::span<const uint8_t> header, int channels) {
    using namespace abf;
    std::vector<ChannelLabel> labels;
    if (header.size() < kHeaderBytes || channels < 1 || channels > kAdcCount) return labels;
    for (int position = 0; position < channels; ++position) {
        const int adc = le::Get<int16_t>(header, kADCSamplingSeq + std::size_t(position) * 2);
        if (adc < 0 || adc >= kAdcCount) return {};
        const auto a = std::size_t(adc);
        labels.push_back(
            {Trimmed(le::GetText(header, kADCChannelName + a * kADCChannelNameChars, kADCChannelNameChars)),
             Trimmed(le::GetText(header, kADCUnits + a * kADCUnitsChars, kADCUnitsChars))});
    }
    return labels;
}

std::vector<ChannelLabel> ChannelLabels(const Recording& rec) {
    std::vector<ChannelLabel> labels = ChannelLabelsFromHeader(rec.HeaderBytes(), rec.ChannelCount());
    labels.resize(std::size_t(rec.ChannelCount()));  // a header without them still lists each channel
    return labels;
}

std::string ChannelLabelText(int position, const ChannelLabel& label) {
    std::string text = std::to_string(position) + ": ";
    text += label.name.empty() ? "channel " + std::to_string(position) : label.name;
    if (!label.units.empty()) text += " (" + label.units + ")";
    return text;
}

std::string ChannelListText(const std::vector<ChannelLabel>& labels) {
    std::string text;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (i > 0) text += ", ";
        text += ChannelLabelText(int(i), labels[i]);
    }
    return text;
}

}  // namespace vess
