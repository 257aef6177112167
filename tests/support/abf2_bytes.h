// Small ABF 2 files built byte by byte for tests: a header with its section
// map, one protocol entry, one ADC entry per channel, the strings and the
// interleaved samples, each section at its own 512-byte block.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/abf_writer.h"

namespace vess::test {

// The scaling fields as for ABF 1.x; telegraphAdditGain is stored as given
// and counts only where telegraphEnable is set.
struct Abf2Channel : AbfChannelLayout {
    int16_t adcNum = 0;
    int16_t telegraphEnable = 0;
};

struct Abf2Layout {
    float intervalUs = 50;            // per channel
    float adcRange = 10;
    int32_t adcResolution = 32768;
    int16_t operationMode = 3;        // gap-free
    int32_t samplesPerSweep = 0;      // all channels; episodic files only
    uint32_t sweeps = 0;
    std::vector<Abf2Channel> channels{Abf2Channel{}};
};

// Block numbers of the sections in the files built here.
inline constexpr uint32_t kAbf2ProtocolBlock = 1, kAbf2AdcBlock = 2, kAbf2StringsBlock = 3,
                          kAbf2DataBlock = 4;

// interleaved holds whole frames of abfLayout.channels.size() samples.
std::vector<uint8_t> Abf2Bytes(const Abf2Layout& abfLayout, const std::vector<int16_t>& interleaved);

}  // namespace vess::test
