#include "recording/recording.h"

#include "recording/channel_labels.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "recording/abf_layout.h"
#include "recording/abf_parse.h"
#include "recording/le_bytes.h"
#include "recording/data_file.h"
#include "recording/rounding.h"
#include "recording/texts.h"
#include "recording/value_ranges.h"

namespace vess {

namespace {

// Text fields are kept as stored; for display they lose trailing blanks and NULs.
std::string TrimRight(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
    return s;
}

std::unique_ptr<Recording> Fail(AbfError* error, std::string* detail, AbfError kind,
                                std::string why) {
    if (error) *error = kind;
    if (detail) *detail = std::move(why);
    return nullptr;
}

template <class T, std::size_t N>
void ReadArray(std::span<const uint8_t> b, std::size_t offset, std::array<T, N>& out) {
    for (std::size_t i = 0; i < N; ++i) out[i] = le::Get<T>(b, offset + i * sizeof(T));
}

// The fields of the basic header; b holds at least abf::kHeaderBytes bytes.
AbfHeader ParseHeader(std::span<const uint8_t> b) {
    using namespace abf;
    AbfHeader h;
    h.fileSignature = le::GetText(b, kFileSignature, 4);
    h.fileVersionNumber = le::Get<float>(b, kFileVersionNumber);
    h.actualAcqLength = le::Get<int32_t>(b, kActualAcqLength);
    h.dataSectionPtr = le::Get<int32_t>(b, kDataSectionPtr);
    h.tagSectionPtr = le::Get<int32_t>(b, kTagSectionPtr);
    h.numTagEntries = le::Get<int32_t>(b, kNumTagEntries);
    h.dataFormat = le::Get<int16_t>(b, kDataFormat);
    h.adcNumChannels = le::Get<int16_t>(b, kADCNumChannels);
    h.adcSampleInterval = le::Get<float>(b, kADCSampleInterval);
    h.adcRange = le::Get<float>(b, kADCRange);
    h.adcResolution = le::Get<int32_t>(b, kADCResolution);
    h.autosampleEnable = le::Get<int16_t>(b, kAutosampleEnable);
    h.autosampleAdcNum = le::Get<int16_t>(b, kAutosampleADCNum);
    h.autosampleAdditGain = le::Get<float>(b, kAutosampleAdditGain);
    h.creatorInfo = le::GetText(b, kCreatorInfo, kCreatorInfoChars);
    h.fileComment = le::GetText(b, kFileComment, kFileCommentChars);
    ReadArray(b, kADCSamplingSeq, h.adcSamplingSeq);
    for (std::size_t i = 0; i < h.adcUnits.size(); ++i)
        h.adcUnits[i] = le::GetText(b, kADCUnits + i * kADCUnitsChars, kADCUnitsChars);
    ReadArray(b, kADCProgrammableGain, h.adcProgrammableGain);
    ReadArray(b, kInstrumentScaleFactor, h.instrumentScaleFactor);
    ReadArray(b, kInstrumentOffset, h.instrumentOffset);
    ReadArray(b, kSignalGain, h.signalGain);
    ReadArray(b, kSignalOffset, h.signalOffset);
    return h;
}

// ABF 1.x: the header from the first bytes of the file, kept whole.
ParsedHeader ParseAbf1Header(std::span<const uint8_t> bytes) {
    using namespace abf;
    ParsedHeader p;
    const std::size_t fileSize = bytes.size();
    // The signature and the data format come first: a file that is not ABF,
    // or is in floating point, is refused for that reason whatever else it
    // holds, even when it is too short to be a whole header.
    if (le::GetText(bytes, kFileSignature, std::min<std::size_t>(4, fileSize)) != "ABF ") {
        p.error = AbfError::NotAbf;
        p.detail = "the file does not begin with \"ABF \" or \"ABF2\"";
        return p;
    }
    if (fileSize >= kDataFormat + 2 && le::Get<int16_t>(bytes, kDataFormat) == 1) {
        p.error = AbfError::FloatingPoint;
        // What the file holds, so that the user knows what to save again.
        p.detail = ChannelListText(
            ChannelLabelsFromHeader(bytes, fileSize >= kHeaderBytes ? le::Get<int16_t>(bytes, kADCNumChannels) : 0));
        return p;
    }
    if (fileSize < kHeaderBytes) {
        p.error = AbfError::TooShort;
        p.detail = fmt::format("the file holds {} bytes, fewer than the {}-byte header", fileSize,
                               kHeaderBytes);
        return p;
    }
    AbfHeader& h = p.header;
    h = ParseHeader(bytes);
    p.headerEnd = int64_t(kHeaderBytes);
    p.dataOffset = int64_t(h.dataSectionPtr) * int64_t(kBlockBytes);
    p.intervalUs = double(h.adcNumChannels) * double(h.adcSampleInterval);
    // Version 1.65 and later files carry one telegraph gain per ADC in the
    // extended header; it is only there when the header area is that long.
    h.hasExtendedHeader = h.fileVersionNumber >= kExtendedVersion &&
                          p.dataOffset >= int64_t(kExtendedHeaderBytes) &&
                          fileSize >= kExtendedHeaderBytes;
    if (h.hasExtendedHeader) ReadArray(bytes, kTelegraphAdditGain, h.telegraphAdditGain);
    const std::size_t keep = h.hasExtendedHeader ? kExtendedHeaderBytes : kHeaderBytes;
    p.headerCopy.assign(bytes.begin(), bytes.begin() + std::ptrdiff_t(keep));
    p.sweeps.operationMode = le::Get<int16_t>(bytes, kOperationMode);
    p.sweeps.samplesPerSweep = le::Get<int32_t>(bytes, kNumSamplesPerEpisode);
    p.sweeps.sweeps = le::Get<int32_t>(bytes, kActualEpisodes);
    return p;
}

// The lengths of the variable-length sweeps of an ABF 1.x file, from its
// synch array. A file of another operation mode, or without the array, keeps
// an empty list.
AbfError ReadAbf1SweepLengths(const ByteReader& read, std::span<const uint8_t> head,
                              uint64_t fileSize, SweepLayout& sweeps, std::string* why) {
    using namespace abf;
    constexpr int16_t kVariableLength = 1;
    if (sweeps.operationMode != kVariableLength) return AbfError::None;
    const int64_t entries = le::Get<int32_t>(head, kSynchArraySize);
    if (entries == 0) return AbfError::None;
    const int64_t offset = int64_t(le::Get<int32_t>(head, kSynchArrayPtr)) * int64_t(kBlockBytes);
    const int64_t end = offset + entries * int64_t(kSynchEntryBytes);
    if (entries < 0 || entries > int64_t(sweeps.sweeps) + 1 || offset < int64_t(kHeaderBytes) ||
        end > int64_t(fileSize)) {
        *why = fmt::format("synch array: {} entries at byte {}, file of {} bytes", entries, offset,
                           fileSize);
        return AbfError::BadSynchSection;
    }
    std::vector<uint8_t> bytes(std::size_t(end - offset));
    read(uint64_t(offset), bytes);
    for (int64_t k = 0; k < entries; ++k) {
        const std::size_t at = std::size_t(k) * kSynchEntryBytes;
        sweeps.sweepSamples.push_back(le::Get<int32_t>(bytes, at + kSynchEntryLength));
        sweeps.sweepTimes.push_back(le::Get<int32_t>(bytes, at + kSynchEntryStart));
    }
    sweeps.synchTimeUnitUs = le::Get<float>(head, kSynchTimeUnit);
    sweeps.sampleIntervalUs = le::Get<float>(head, kADCSampleInterval);
    return AbfError::None;
}

// The gain and offset of the ADC numbered adc, with the additional gain
// where it applies (the telegraph gain of version 1.65+ files).
ChannelScaling ScalingOf(const AbfHeader& h, std::size_t adc) {
    float additGain = h.autosampleAdditGain;
    int additAdc = h.autosampleAdcNum;
    if (h.hasExtendedHeader) {
        additGain = h.telegraphAdditGain[adc];
        additAdc = int(adc);
    }
    double gain = double(h.adcProgrammableGain[adc]) * double(h.instrumentScaleFactor[adc]) *
                  double(h.signalGain[adc]);
    if (additGain > 0 && additAdc == int(adc) && h.autosampleEnable > 0) gain *= double(additGain);
    ChannelScaling s;
    s.gain = double(float(gain));
    s.offset = double(float(double(h.signalOffset[adc]) + double(h.instrumentOffset[adc])));
    s.adcRange = h.adcRange;
    s.adcResolution = h.adcResolution;
    return s;
}

// The checks that both versions share, on the fields in AbfHeader's terms.
AbfError CheckHeader(const ParsedHeader& p, std::size_t fileSize, std::string* why) {
    using namespace abf;
    const AbfHeader& h = p.header;
    if (h.adcNumChannels < 1 || h.adcNumChannels > kMaxChannels) {
        *why = fmt::format("the header gives {} channels (1 to {} are possible)", h.adcNumChannels,
                           kMaxChannels);
        return AbfError::BadChannelCount;
    }
    const int channels = h.adcNumChannels;
    for (int c = 0; c < channels; ++c) {
        const int adc = h.adcSamplingSeq[std::size_t(c)];
        if (adc < 0 || adc >= kAdcCount) {
            *why = fmt::format("channel {} is sampled from ADC {}, outside 0 to 15", c, adc);
            return AbfError::BadSamplingSequence;
        }
    }
    if (std::string problem = SampleIntervalProblem(p.intervalUs); !problem.empty()) {
        *why = std::move(problem);
        return AbfError::BadInterval;
    }
    // Every channel must convert counts to units, so that choosing any of
    // them later cannot give infinite or NaN values.
    for (int c = 0; c < channels; ++c) {
        const auto adc = std::size_t(h.adcSamplingSeq[std::size_t(c)]);
        if (std::string problem = ScalingProblem(ScalingOf(h, adc)); !problem.empty()) {
            *why = fmt::format("channel {} (ADC {}): {}", c, adc, problem);
            return AbfError::BadScaling;
        }
    }
    if (p.dataOffset < p.headerEnd || p.dataOffset > int64_t(fileSize)) {
        *why = fmt::format("the samples would start at byte {}, outside {}..{}", p.dataOffset,
                           p.headerEnd, fileSize);
        return AbfError::BadDataPointer;
    }
    const int64_t framesInFile = (int64_t(fileSize) - p.dataOffset) / 2 / channels;
    if (h.actualAcqLength < channels || framesInFile < 1) {
        *why = fmt::format("the data section holds no complete sample frame ({} samples stated, "
                           "{} frames in the file)",
                           h.actualAcqLength, framesInFile);
        return AbfError::BadAcqLength;
    }
    return AbfError::None;
}

// Why a read made while opening came back short.
std::string ShrankWhileRead(const DataFile& file) {
    return file.Error().empty() ? "the file became shorter while it was read" : file.Error();
}

}  // namespace

Recording::~Recording() = default;

std::unique_ptr<Recording> Recording::Open(const std::filesystem::path& path, AbfError* error,
                                           std::string* detail) {
    auto opened = DataFile::Open(path);
    if (!opened.file) return Fail(error, detail, AbfError::CannotOpen, opened.error);
    return Parse(std::move(opened.file), path, error, detail);
}

std::unique_ptr<Recording> Recording::FromBytes(std::vector<uint8_t> bytes,
                                                const std::filesystem::path& name,
                                                AbfError* error, std::string* detail) {
    return Parse(DataFile::FromBytes(std::move(bytes)), name, error, detail);
}

std::unique_ptr<Recording> Recording::Parse(std::unique_ptr<DataFile> file,
                                            const std::filesystem::path& path, AbfError* error,
                                            std::string* detail) {
    using namespace abf;
    const uint64_t fileSize64 = file->Size();
    const std::size_t fileSize = std::size_t(fileSize64);
    // Only the header is read here (for ABF 1.x the first bytes, basic or
    // extended; for ABF 2 each section it names, exactly the bytes needed),
    // and the tags below; samples are read from the file when needed.
    std::vector<uint8_t> head(std::min<uint64_t>(fileSize64, kExtendedHeaderBytes));
    if (file->ReadAt(0, head) != head.size())
        return Fail(error, detail, AbfError::CannotOpen, ShrankWhileRead(*file));
    // A read that comes back shorter than the file's size at opening means the
    // file changed while it was parsed.
    bool shrank = false;
    const ByteReader read = [&file, &shrank, fileSize64](uint64_t offset,
                                                         std::span<uint8_t> out) {
        const std::size_t got = file->ReadAt(offset, out);
        const uint64_t expected =
            offset >= fileSize64 ? 0 : std::min<uint64_t>(out.size(), fileSize64 - offset);
        if (got < expected) shrank = true;
        return got;
    };
    ParsedHeader parsed = IsAbf2Signature(head) ? ParseAbf2Header(read, fileSize64)
                                                : ParseAbf1Header(head);
    if (!parsed.abf2 && parsed.error == AbfError::None)
        parsed.error = ReadAbf1SweepLengths(read, head, fileSize64, parsed.sweeps, &parsed.detail);
    if (shrank) return Fail(error, detail, AbfError::CannotOpen, ShrankWhileRead(*file));
    if (parsed.error == AbfError::None) parsed.error = CheckHeader(parsed, fileSize, &parsed.detail);
    if (parsed.error != AbfError::None)
        return Fail(error, detail, parsed.error, std::move(parsed.detail));
    AbfHeader& h = parsed.header;
    const int channels = h.adcNumChannels;
    const int64_t dataOffset = parsed.dataOffset;
    const int64_t framesInFile = (int64_t(fileSize) - dataOffset) / 2 / channels;

    std::vector<AbfTag> tags;
    if (h.numTagEntries < 0)
        return Fail(error, detail, AbfError::BadTagPointer,
                    fmt::format("the header gives {} tags", h.numTagEntries));
    if (h.numTagEntries > 0) {
        const int64_t tagOffset = int64_t(h.tagSectionPtr) * int64_t(kBlockBytes);
        const int64_t tagEnd = tagOffset + int64_t(h.numTagEntries) * int64_t(kTagBytes);
        if (h.tagSectionPtr <= 0 || tagEnd > int64_t(fileSize))
            return Fail(error, detail, AbfError::BadTagPointer,
                        fmt::format("{} tags at byte {} run past the end of the file ({} bytes)",
                                    h.numTagEntries, tagOffset, fileSize));
        std::vector<uint8_t> tagBytes(std::size_t(tagEnd - tagOffset));
        if (file->ReadAt(uint64_t(tagOffset), tagBytes) != tagBytes.size())
            return Fail(error, detail, AbfError::CannotOpen, ShrankWhileRead(*file));
        tags.reserve(std::size_t(h.numTagEntries));
        for (int32_t i = 0; i < h.numTagEntries; ++i) {
            const std::size_t at = std::size_t(i) * kTagBytes;
            AbfTag tag;
            tag.time = le::Get<int32_t>(tagBytes, at + kTagTime);
            tag.comment = le::GetText(tagBytes, at + kTagComment, kTagCommentChars);
            tag.type = le::Get<int16_t>(tagBytes, at + kTagType);
            tag.voiceTag = le::Get<int16_t>(tagBytes, at + kTagVoiceTag);
            tags.push_back(std::move(tag));
        }
    }

    std::unique_ptr<Recording> rec(new Recording);
    rec->path_ = path;
    rec->header_ = std::move(h);
    rec->headerBytes_ = std::move(parsed.headerCopy);
    if (parsed.abf2) rec->abf2_ = std::make_unique<const Abf2Info>(std::move(*parsed.abf2));
    rec->tags_ = std::move(tags);
    rec->intervalUs_ = parsed.intervalUs;

    // A stated length that runs past the end of the file (an acquisition cut
    // short, a copy interrupted) is clipped to the whole frames present: the
    // user keeps what was recorded rather than losing the whole file.
    const int64_t statedFrames = int64_t(rec->header_.actualAcqLength) / channels;
    rec->frames_ = std::min(statedFrames, framesInFile);
    rec->pointsPerChannel_ = rec->frames_;
    const double blocks = statedFrames <= framesInFile
                              ? double(rec->header_.actualAcqLength) / channels / kBlockPoints
                              : double(rec->frames_) / kBlockPoints;
    rec->blocks_ = std::max<int32_t>(1, RoundClamp32(blocks));
    rec->sweepStarts_ = FindSweepStarts(parsed.sweeps, channels, rec->pointsPerChannel_);
    rec->sweepTimesMs_ = vess::SweepTimesMs(parsed.sweeps);
    rec->sweepTimesMs_.resize(std::min(rec->sweepTimesMs_.size(), rec->sweepStarts_.size()));

    rec->file_ = std::move(file);
    rec->dataOffset_ = uint64_t(dataOffset);
    rec->SetChannel(0);
    if (error) *error = AbfError::None;
    return rec;
}

int Recording::ChannelCount() const { return std::max<int>(1, header_.adcNumChannels); }

int Recording::AdcOfChannel(int channel) const {
    const int adc = header_.adcSamplingSeq[std::size_t(std::clamp(channel, 0, kMaxChannels - 1))];
    return std::clamp(adc, 0, kMaxChannels - 1);
}

void Recording::SetChannel(uint8_t channel) {
    channel_ = uint8_t(std::min<int>(channel, ChannelCount() - 1));
    const ChannelScaling scaling = ScalingOf(header_, std::size_t(AdcOfChannel(channel_)));
    gain_ = float(scaling.gain);
    offset_ = float(scaling.offset);
    DetachFiltered();
    if (frames_ > 0) {
        ReadRawFrames(0, std::span(&firstSample_, 1));
        int16_t last = 0;
        ReadRawFrames(frames_ - 1, std::span(&last, 1));
        lastSample_ = last;
    }
}

std::string Recording::Units() const {
    std::string u = header_.adcUnits[std::size_t(AdcOfChannel(channel_))];
    u = TrimRight(std::move(u));
    while (!u.empty() && u.front() == ' ') u.erase(u.begin());
    return u;
}

float Recording::Bit2pA2(int32_t counts) const {
    return float(double(counts) / double(gain_) * double(header_.adcRange) /
                 double(header_.adcResolution));
}

float Recording::Bit2pA(int32_t counts) const {
    return float(double(counts) / double(gain_) * double(header_.adcRange) /
                     double(header_.adcResolution) +
                 double(offset_));
}

int16_t Recording::pA2Bit(float units) const {
    return RoundClamp16((double(units) - double(offset_)) * double(header_.adcResolution) /
                        double(header_.adcRange) * double(gain_));
}

float Recording::Bit2msec(int32_t points) const {
    return float(double(points) * intervalUs_ / 1000.0);
}

std::filesystem::path Recording::Folder() const {
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(path_, ec);
    return (ec ? path_ : absolute).parent_path();
}

}  // namespace vess
