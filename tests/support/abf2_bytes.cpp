#include "support/abf2_bytes.h"

#include <span>

#include "recording/abf2_layout.h"
#include "recording/le_bytes.h"

namespace vess::test {

namespace {

void PutSection(std::span<uint8_t> b, abf2::Section s, uint32_t block, uint32_t bytes,
                int64_t entries) {
    const std::size_t at = abf2::SectionAt(s);
    le::Put<uint32_t>(b, at + abf2::kSectionBlockIndex, block);
    le::Put<uint32_t>(b, at + abf2::kSectionBytes, bytes);
    le::Put<int64_t>(b, at + abf2::kSectionEntries, entries);
}

}  // namespace

std::vector<uint8_t> Abf2Bytes(const Abf2Layout& abfLayout, const std::vector<int16_t>& interleaved) {
    using namespace abf2;
    constexpr std::size_t kAdcEntry = 128;
    const std::size_t nch = abfLayout.channels.size();
    std::vector<uint8_t> out(kAbf2DataBlock * kBlockBytes + interleaved.size() * 2, 0);
    std::span<uint8_t> b(out);

    le::PutText(b, kFileSignature, 4, "ABF2");
    const uint8_t version[4] = {0, 0, 9, 2};  // build, bugfix, minor, major: 2.9.0.0
    for (std::size_t k = 0; k < 4; ++k) b[kFileVersionNumber + k] = version[k];
    le::Put<uint32_t>(b, kFileInfoSize, uint32_t(kHeaderBytes));
    le::Put<uint32_t>(b, kActualEpisodes, abfLayout.sweeps);
    le::Put<uint32_t>(b, kFileStartDate, 20240102);
    le::Put<uint32_t>(b, kFileStartTimeMS, 3'600'500);
    le::Put<int16_t>(b, kFileType, 1);
    le::Put<uint32_t>(b, kCreatorNameIndex, 1);

    // Strings: the creator, then each channel's name and unit.
    std::string strings = std::string("Test writer") + '\0';
    for (const Abf2Channel& c : abfLayout.channels) strings += c.name + '\0' + c.units + '\0';
    const std::size_t stringsAt = kAbf2StringsBlock * kBlockBytes;
    for (std::size_t i = 0; i < strings.size(); ++i) b[stringsAt + kStringsStart + i] = uint8_t(strings[i]);

    PutSection(b, Section::Protocol, kAbf2ProtocolBlock, uint32_t(kBlockBytes), 1);
    PutSection(b, Section::ADC, kAbf2AdcBlock, kAdcEntry, int64_t(nch));
    PutSection(b, Section::Strings, kAbf2StringsBlock, uint32_t(kStringsStart + strings.size()),
               int64_t(1 + 2 * nch));
    PutSection(b, Section::Data, kAbf2DataBlock, 2, int64_t(interleaved.size()));

    const std::size_t p = kAbf2ProtocolBlock * kBlockBytes;
    le::Put<int16_t>(b, p + kOperationMode, abfLayout.operationMode);
    le::Put<float>(b, p + kADCSequenceInterval, abfLayout.intervalUs);
    le::Put<int32_t>(b, p + kNumSamplesPerEpisode, abfLayout.samplesPerSweep);
    le::Put<int32_t>(b, p + kEpisodesPerRun, int32_t(abfLayout.sweeps));
    le::Put<float>(b, p + kADCRange, abfLayout.adcRange);
    le::Put<int32_t>(b, p + kADCResolution, abfLayout.adcResolution);

    for (std::size_t c = 0; c < nch; ++c) {
        const Abf2Channel& ch = abfLayout.channels[c];
        const std::size_t e = kAbf2AdcBlock * kBlockBytes + c * kAdcEntry;
        le::Put<int16_t>(b, e + kADCNum, ch.adcNum);
        le::Put<int16_t>(b, e + kTelegraphEnable, ch.telegraphEnable);
        le::Put<float>(b, e + kTelegraphAdditGain, ch.telegraphAdditGain);
        le::Put<float>(b, e + kADCProgrammableGain, ch.programmableGain);
        le::Put<float>(b, e + kInstrumentScaleFactor, ch.instrumentScaleFactor);
        le::Put<float>(b, e + kInstrumentOffset, ch.instrumentOffset);
        le::Put<float>(b, e + kSignalGain, ch.signalGain);
        le::Put<float>(b, e + kSignalOffset, ch.signalOffset);
        le::Put<int32_t>(b, e + kADCChannelNameIndex, int32_t(2 + 2 * c));
        le::Put<int32_t>(b, e + kADCUnitsIndex, int32_t(3 + 2 * c));
    }
    for (std::size_t i = 0; i < interleaved.size(); ++i)
        le::Put<int16_t>(b, kAbf2DataBlock * kBlockBytes + 2 * i, interleaved[i]);
    return out;
}

}  // namespace vess::test
