// Reads the header of an ABF 2 file: the section map, the protocol, ADC,
// strings and synch-array sections, field by field at the offsets of
// abf2_layout.h, into the fields Recording uses for ABF 1.x files.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "recording/abf2_layout.h"
#include "recording/abf_layout.h"
#include "recording/abf_parse.h"
#include "recording/abf_writer.h"
#include "recording/channel_labels.h"
#include "recording/le_bytes.h"

namespace vess {

namespace {

using abf2::Section;

struct SectionRef {
    uint32_t blockIndex = 0;
    uint32_t entryBytes = 0;
    int64_t entries = 0;
    uint64_t Offset() const { return uint64_t(blockIndex) * abf2::kBlockBytes; }
};

SectionRef ReadSection(std::span<const uint8_t> header, Section s) {
    const std::size_t at = abf2::SectionAt(s);
    return {le::Get<uint32_t>(header, at + abf2::kSectionBlockIndex),
            le::Get<uint32_t>(header, at + abf2::kSectionBytes),
            le::Get<int64_t>(header, at + abf2::kSectionEntries)};
}

// Whether `entries` entries of `entryBytes` bytes at the section's block lie
// after the file header and inside the file.
bool Inside(const SectionRef& s, uint64_t entryBytes, int64_t entries, uint64_t fileSize) {
    if (s.blockIndex == 0 || entries < 0 || s.Offset() > fileSize) return false;
    const uint64_t room = fileSize - s.Offset();
    return entryBytes == 0 || uint64_t(entries) <= room / entryBytes;
}

std::string Where(const SectionRef& s, uint64_t fileSize) {
    return fmt::format("{} entries of {} bytes at byte {}, in a file of {} bytes", s.entries,
                       s.entryBytes, s.Offset(), fileSize);
}

ParsedHeader Refuse(AbfError kind, std::string why) {
    ParsedHeader p;
    p.error = kind;
    p.detail = std::move(why);
    return p;
}

// Exactly count bytes at offset; bytes the reader could not supply (the file
// changed while it was read, which the reader notes) stay 0, so that fields
// are never read past the end of what came back.
std::vector<uint8_t> ReadBytes(const ByteReader& read, uint64_t offset, std::size_t count) {
    std::vector<uint8_t> out(count, 0);
    read(offset, out);
    return out;
}

// The NUL-terminated strings of the strings section, in order (index 1 first).
std::vector<std::string> SplitStrings(std::span<const uint8_t> section) {
    std::vector<std::string> out;
    std::string current;
    for (std::size_t i = abf2::kStringsStart; i < section.size(); ++i) {
        if (section[i] == 0) {
            out.push_back(std::move(current));
            current.clear();
        } else {
            current.push_back(char(section[i]));
        }
    }
    if (!current.empty()) out.push_back(std::move(current));
    return out;
}

// String `index` (1-based); index 0 means none. Empty when out of range.
std::optional<std::string> StringAt(const std::vector<std::string>& strings, int64_t index) {
    if (index == 0) return std::string();
    if (index < 0 || index > int64_t(strings.size())) return std::nullopt;
    return strings[std::size_t(index - 1)];
}

Abf2Info ReadFileHeader(std::span<const uint8_t> h) {
    using namespace abf2;
    Abf2Info info;
    for (std::size_t k = 0; k < 4; ++k) info.version[k] = h[kFileVersionNumber + 3 - k];
    info.fileInfoSize = le::Get<uint32_t>(h, kFileInfoSize);
    info.actualEpisodes = le::Get<uint32_t>(h, kActualEpisodes);
    info.fileStartDate = le::Get<uint32_t>(h, kFileStartDate);
    info.fileStartTimeMs = le::Get<uint32_t>(h, kFileStartTimeMS);
    info.stopwatchTime = le::Get<uint32_t>(h, kStopwatchTime);
    info.fileType = le::Get<int16_t>(h, kFileType);
    info.creatorVersion = le::Get<uint32_t>(h, kCreatorVersion);
    return info;
}

void ReadProtocol(std::span<const uint8_t> p, Abf2Info& info, AbfHeader& h) {
    using namespace abf2;
    info.operationMode = le::Get<int16_t>(p, kOperationMode);
    info.adcSequenceInterval = le::Get<float>(p, kADCSequenceInterval);
    info.synchTimeUnit = le::Get<float>(p, kSynchTimeUnit);
    info.numSamplesPerEpisode = le::Get<int32_t>(p, kNumSamplesPerEpisode);
    info.episodesPerRun = le::Get<int32_t>(p, kEpisodesPerRun);
    h.adcRange = le::Get<float>(p, kADCRange);
    h.adcResolution = le::Get<int32_t>(p, kADCResolution);
}

// One ADC entry into the channel and the per-ADC arrays of h. The caller has
// checked that the ADC number lies in 0..15.
void StoreChannel(std::span<const uint8_t> e, const Abf2Channel& ch, AbfHeader& h) {
    using namespace abf2;
    const auto adc = std::size_t(ch.adcNum);
    h.adcUnits[adc] = ch.units;
    h.adcProgrammableGain[adc] = le::Get<float>(e, kADCProgrammableGain);
    h.instrumentScaleFactor[adc] = le::Get<float>(e, kInstrumentScaleFactor);
    h.instrumentOffset[adc] = le::Get<float>(e, kInstrumentOffset);
    h.signalGain[adc] = le::Get<float>(e, kSignalGain);
    h.signalOffset[adc] = le::Get<float>(e, kSignalOffset);
    // The additional gain counts only where the telegraph is enabled; 0
    // keeps it out of the channel's gain.
    h.telegraphAdditGain[adc] = ch.telegraphEnable != 0 ? ch.telegraphAdditGain : 0.0f;
}

// The ABF 1.x header that event and parameter files carry for this recording.
std::vector<uint8_t> HeaderCopy(const AbfHeader& h, const Abf2Info& info) {
    AbfWriteLayout abfLayout;
    abfLayout.intervalUs = info.adcSequenceInterval;
    abfLayout.adcRange = h.adcRange;
    abfLayout.adcResolution = h.adcResolution;
    abfLayout.creator = info.creatorName;
    abfLayout.comment = h.fileComment;
    abfLayout.fileStartDate = int32_t(info.fileStartDate);
    abfLayout.fileStartTimeS = int32_t(info.fileStartTimeMs / 1000);
    abfLayout.channels.clear();
    for (const Abf2Channel& ch : info.channels) {
        const auto adc = std::size_t(ch.adcNum);
        AbfChannelLayout c;
        c.name = ch.name;
        c.units = ch.units;
        c.programmableGain = h.adcProgrammableGain[adc];
        c.instrumentScaleFactor = h.instrumentScaleFactor[adc];
        c.signalGain = h.signalGain[adc];
        c.instrumentOffset = h.instrumentOffset[adc];
        c.signalOffset = h.signalOffset[adc];
        c.telegraphAdditGain = h.telegraphAdditGain[adc];
        abfLayout.channels.push_back(c);
    }
    const int64_t frames = int64_t(h.actualAcqLength) / int64_t(info.channels.size());
    return BuildAbfHeader(abfLayout, frames);
}

}  // namespace

std::string Abf2Info::VersionText() const {
    return fmt::format("{}.{}.{}.{}", version[0], version[1], version[2], version[3]);
}

// The channels of a floating-point file, read as if its samples were
// 16-bit integers (the data format 0, the data section of 2-byte entries);
// empty when the rest of the header does not hold together.
static std::string FloatChannelList(const ByteReader& read, uint64_t fileSize) {
    const std::size_t entryBytesAt = abf2::SectionAt(abf2::Section::Data) + abf2::kSectionBytes;
    const ByteReader asIntegers = [&read, entryBytesAt](uint64_t offset, std::span<uint8_t> out) {
        const std::size_t got = read(offset, out);
        const auto patch = [&](uint64_t at, uint8_t value) {
            if (at >= offset && at < offset + got) out[std::size_t(at - offset)] = value;
        };
        patch(abf2::kDataFormat, 0);
        patch(abf2::kDataFormat + 1, 0);
        for (std::size_t k = 0; k < 4; ++k) patch(entryBytesAt + k, k == 0 ? 2 : 0);
        return got;
    };
    const ParsedHeader p = ParseAbf2Header(asIntegers, fileSize);
    if (!p.abf2) return {};
    std::vector<ChannelLabel> labels;
    for (const Abf2Channel& ch : p.abf2->channels) labels.push_back({ch.name, ch.units});
    return ChannelListText(labels);
}

ParsedHeader ParseAbf2Header(const ByteReader& read, uint64_t fileSize) {
    using namespace abf2;
    std::vector<uint8_t> header(kHeaderBytes, 0);
    header.resize(read(0, header));
    // Floating-point samples are refused for that reason, whatever else the
    // file holds, as for ABF 1.x.
    if (header.size() >= kDataFormat + 2 && le::Get<int16_t>(header, kDataFormat) == 1)
        return Refuse(AbfError::FloatingPoint, FloatChannelList(read, fileSize));
    if (header.size() < kHeaderBytes)
        return Refuse(AbfError::TooShort,
                      fmt::format("the file holds {} bytes, fewer than the {}-byte ABF 2 header",
                                  header.size(), kHeaderBytes));

    ParsedHeader p;
    p.abf2 = ReadFileHeader(header);
    Abf2Info& info = *p.abf2;
    AbfHeader& h = p.header;
    h.fileSignature = le::GetText(header, kFileSignature, 4);
    h.fileVersionNumber = float(info.version[0] + info.version[1] / 10.0 +
                                info.version[2] / 100.0 + info.version[3] / 1000.0);
    h.dataFormat = le::Get<int16_t>(header, kDataFormat);

    const SectionRef protocol = ReadSection(header, Section::Protocol);
    if (protocol.entryBytes < kProtocolMinBytes || protocol.entries < 1 ||
        !Inside(protocol, protocol.entryBytes, 1, fileSize))
        return Refuse(AbfError::BadProtocolSection, "protocol section: " + Where(protocol, fileSize));
    ReadProtocol(ReadBytes(read, protocol.Offset(), kProtocolMinBytes), info, h);

    const SectionRef adcs = ReadSection(header, Section::ADC);
    if (adcs.entries < 1 || adcs.entries > kMaxChannels)
        return Refuse(AbfError::BadChannelCount,
                      fmt::format("the ADC section holds {} channels (1 to {} are possible)",
                                  adcs.entries, kMaxChannels));
    if (adcs.entryBytes < kADCMinBytes || !Inside(adcs, adcs.entryBytes, adcs.entries, fileSize))
        return Refuse(AbfError::BadAdcSection, "ADC section: " + Where(adcs, fileSize));

    const SectionRef strings = ReadSection(header, Section::Strings);
    std::vector<std::string> texts;
    if (strings.entryBytes > 0) {
        if (!Inside(strings, strings.entryBytes, 1, fileSize))
            return Refuse(AbfError::BadStringsSection, "strings section: " + Where(strings, fileSize));
        texts = SplitStrings(ReadBytes(read, strings.Offset(), strings.entryBytes));
    }
    info.creatorName = StringAt(texts, le::Get<uint32_t>(header, kCreatorNameIndex)).value_or("");
    info.protocolPath = StringAt(texts, le::Get<uint32_t>(header, kProtocolPathIndex)).value_or("");
    h.creatorInfo = info.creatorName;

    h.adcNumChannels = int16_t(adcs.entries);
    h.adcSamplingSeq.fill(-1);
    std::array<int, abf::kAdcCount> channelOfAdc;
    channelOfAdc.fill(-1);
    for (int c = 0; c < h.adcNumChannels; ++c) {
        const auto e = ReadBytes(read, adcs.Offset() + uint64_t(c) * adcs.entryBytes, kADCMinBytes);
        Abf2Channel ch;
        ch.adcNum = le::Get<int16_t>(e, kADCNum);
        if (ch.adcNum < 0 || ch.adcNum >= abf::kAdcCount)
            return Refuse(AbfError::BadSamplingSequence,
                          fmt::format("channel {} is sampled from ADC {}, outside 0 to 15", c,
                                      ch.adcNum));
        int& owner = channelOfAdc[std::size_t(ch.adcNum)];
        if (owner >= 0)
            return Refuse(AbfError::DuplicateAdc, fmt::format("channels {} and {} both sample ADC {}",
                                                              owner, c, ch.adcNum));
        owner = c;
        ch.telegraphEnable = le::Get<int16_t>(e, kTelegraphEnable);
        ch.telegraphAdditGain = le::Get<float>(e, kTelegraphAdditGain);
        const auto nameIndex = le::Get<int32_t>(e, kADCChannelNameIndex);
        const auto unitIndex = le::Get<int32_t>(e, kADCUnitsIndex);
        const auto name = StringAt(texts, nameIndex);
        const auto units = StringAt(texts, unitIndex);
        if (!name || !units)
            return Refuse(AbfError::BadStringIndex,
                          fmt::format("channel {} names string {} and its unit string {}; the "
                                      "strings section holds {}",
                                      c, nameIndex, unitIndex, texts.size()));
        ch.name = *name;
        ch.units = *units;
        h.adcSamplingSeq[std::size_t(c)] = ch.adcNum;
        StoreChannel(e, ch, h);
        info.channels.push_back(std::move(ch));
    }
    // Every channel's additional gain is its own, as in the extended ABF 1.x header.
    h.hasExtendedHeader = true;
    h.autosampleEnable = 1;

    const SectionRef data = ReadSection(header, Section::Data);
    if (data.entries > 0 && data.entryBytes != 2)
        return Refuse(AbfError::BadDataPointer,
                      fmt::format("the data section holds {}-byte samples, not 16-bit integers",
                                  data.entryBytes));
    if (data.entries > INT32_MAX)
        return Refuse(AbfError::BadAcqLength,
                      fmt::format("the data section states {} samples, more than {} can be read",
                                  data.entries, INT32_MAX));
    h.dataSectionPtr = int32_t(std::min<uint32_t>(data.blockIndex, INT32_MAX));
    h.actualAcqLength = int32_t(std::max<int64_t>(data.entries, 0));
    h.adcSampleInterval = float(double(info.adcSequenceInterval) / h.adcNumChannels);

    const SectionRef tags = ReadSection(header, Section::Tag);
    if (tags.entries > 0 && tags.entryBytes != abf::kTagBytes)
        return Refuse(AbfError::BadTagPointer,
                      fmt::format("tags of {} bytes, not {}", tags.entryBytes, abf::kTagBytes));
    h.tagSectionPtr = int32_t(std::min<uint32_t>(tags.blockIndex, INT32_MAX));
    h.numTagEntries = int32_t(std::clamp<int64_t>(tags.entries, -1, INT32_MAX));

    p.sweeps.operationMode = info.operationMode;
    p.sweeps.samplesPerSweep = info.numSamplesPerEpisode;
    p.sweeps.sweeps = info.actualEpisodes;
    const SectionRef synch = ReadSection(header, Section::SynchArray);
    if (info.operationMode == kVariableLength && synch.entries > 0) {
        if (synch.entryBytes < kSynchMinBytes || synch.entries > int64_t(info.actualEpisodes) + 1 ||
            !Inside(synch, synch.entryBytes, synch.entries, fileSize))
            return Refuse(AbfError::BadSynchSection, "synch array: " + Where(synch, fileSize));
        for (int64_t k = 0; k < synch.entries; ++k) {
            const auto e = ReadBytes(read, synch.Offset() + uint64_t(k) * synch.entryBytes,
                                     kSynchMinBytes);
            p.sweeps.sweepSamples.push_back(le::Get<int32_t>(e, kSynchLength));
            p.sweeps.sweepTimes.push_back(le::Get<int32_t>(e, kSynchStart));
        }
    }

    p.sweeps.synchTimeUnitUs = info.synchTimeUnit;
    p.sweeps.sampleIntervalUs = h.adcSampleInterval;

    p.headerEnd = int64_t(kHeaderBytes);
    p.dataOffset = int64_t(data.Offset());
    p.intervalUs = double(info.adcSequenceInterval);
    p.headerCopy = HeaderCopy(h, info);
    return p;
}

}  // namespace vess
