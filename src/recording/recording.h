// The open ABF 1.x recording and its chosen channel: the header kept whole,
// the fields the program uses, derived values, unit conversions, and sample
// access by 256-point blocks of one channel through a memory map.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vess {

inline constexpr int kBlockPoints = 256;
inline constexpr int kMaxChannels = 16;

struct AbfTag {
    int32_t time = 0;
    std::string comment;  // 56 characters as stored
    int16_t type = 0;
    int16_t voiceTag = 0;
};

// The header fields the program reads, at their published ABF 1.x offsets.
struct AbfHeader {
    std::string fileSignature;        // 4 characters at 0
    float fileVersionNumber = 0;      // 4
    int32_t actualAcqLength = 0;      // 10
    int32_t dataSectionPtr = 0;       // 40 (x 512 bytes)
    int32_t tagSectionPtr = 0;        // 44
    int32_t numTagEntries = 0;        // 48
    int16_t dataFormat = 0;           // 100
    int16_t adcNumChannels = 0;       // 120
    float adcSampleInterval = 0;      // 122, us of the interleaved stream
    float adcRange = 0;               // 244
    int32_t adcResolution = 0;        // 252
    int16_t autosampleEnable = 0;     // 262
    int16_t autosampleAdcNum = 0;     // 264
    float autosampleAdditGain = 0;    // 268
    std::string creatorInfo;          // 16 characters at 294
    std::string fileComment;          // 56 characters at 310
    std::array<int16_t, 16> adcSamplingSeq{};     // 410
    std::array<std::string, 16> adcUnits;         // 602, 8 characters each
    std::array<float, 16> adcProgrammableGain{};  // 730
    std::array<float, 16> instrumentScaleFactor{};// 922
    std::array<float, 16> instrumentOffset{};     // 986
    std::array<float, 16> signalGain{};           // 1050
    std::array<float, 16> signalOffset{};         // 1114
    std::array<float, 16> telegraphAdditGain{};   // 4576, extended header (1.65+)
    bool hasExtendedHeader = false;
};

// Why an open failed; the message texts live with the opening command.
enum class AbfError {
    None, CannotOpen, NotAbf, FloatingPoint, TooShort, BadChannelCount, BadInterval,
    BadDataPointer, BadAcqLength, BadTagPointer,
    BadSamplingSequence,  // an ADC number of the sampling sequence outside 0..15
    BadScaling,           // ADC range, resolution or a channel's gain cannot scale counts
    // ABF 2 only: a section outside the file, a string index past the
    // strings, two channels on one ADC.
    BadProtocolSection, BadAdcSection, BadStringsSection, BadSynchSection, BadStringIndex,
    DuplicateAdc
};

class DataFile;
struct Abf2Info;
struct ParsedHeader;

class Recording {
public:
    // Maps the file and parses its header. On failure returns nullptr and sets
    // *error (and *detail to a human-readable reason). Never throws for a
    // malformed file.
    static std::unique_ptr<Recording> Open(const std::filesystem::path& path, AbfError* error,
                                           std::string* detail = nullptr);
    // Parses a whole file's bytes held in memory, under the given name; the
    // same checks as Open.
    static std::unique_ptr<Recording> FromBytes(std::vector<uint8_t> bytes,
                                                const std::filesystem::path& name, AbfError* error,
                                                std::string* detail = nullptr);
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string FileName() const { return path_.filename().string(); }
    // The folder the recording was opened from, made absolute: where file
    // pickers start while it is open.
    std::filesystem::path Folder() const;
    const AbfHeader& Header() const { return header_; }
    // The ABF 1.x header that event and parameter files copy: the bytes as
    // read (2048, or 6144 for an extended header), or for an ABF 2 file one
    // made by our writer from the recording's values.
    const std::vector<uint8_t>& HeaderBytes() const { return headerBytes_; }
    // The fields of an ABF 2 file that AbfHeader has no place for; null for
    // ABF 1.x.
    const Abf2Info* Abf2() const { return abf2_.get(); }
    // The first point of each sweep (per channel, from 0), in recording
    // order; {0} for gap-free data.
    const std::vector<int64_t>& SweepStarts() const { return sweepStarts_; }
    // When the sweeps are of their own lengths, the time each began in the
    // acquisition (ms, from the file's synch array; there are gaps between
    // them that the samples do not hold); otherwise empty.
    const std::vector<double>& SweepTimesMs() const { return sweepTimesMs_; }
    int ChannelCount() const;              // at least 1
    uint8_t Channel() const { return channel_; }
    // Selects the 0-based channel position and recomputes gain and offset.
    // A filtered copy of the previous channel is dropped.
    void SetChannel(uint8_t channel);

    // A filtered copy of the chosen channel: PointsPerChannel() little-endian
    // 16-bit counts from the start of counts (a file written once per filter
    // change, so the copy costs disk, not memory). While ReadFiltered(true)
    // is in force, Sample and ReadSamples serve the copy, with the same edge
    // rule, so that every reader (screens, detection, measurements) sees the
    // filtered trace without knowing it.
    void AttachFiltered(std::unique_ptr<DataFile> counts);
    void DetachFiltered();
    bool HasFiltered() const { return filtered_ != nullptr; }
    void ReadFiltered(bool on);
    bool ReadsFiltered() const { return readFiltered_ && filtered_; }
    // A number that changes whenever the samples of either source may change
    // (another channel, a filtered copy attached or dropped), and that no
    // other recording of this process ever has: samples read under one
    // number and one ReadsFiltered() are what a read would give while both
    // stay the same.
    uint64_t SamplesVersion() const { return samplesVersion_; }

    double IntervalUs() const { return intervalUs_; }  // per channel
    int32_t BlockCount() const { return blocks_; }     // 256-point blocks, at least 1
    int64_t PointsPerChannel() const { return pointsPerChannel_; }
    float Gain() const { return gain_; }
    float Offset() const { return offset_; }
    std::string Units() const;             // units of the chosen channel, trimmed
    const std::vector<AbfTag>& Tags() const { return tags_; }

    // Conversions of the chosen channel.
    float Bit2pA2(int32_t counts) const;   // difference, no offset
    float Bit2pA(int32_t counts) const;    // absolute level, with offset
    int16_t pA2Bit(float units) const;     // absolute level to counts
    float Bit2msec(int32_t points) const;

    // Raw sample of the chosen channel at a point index from the start of the
    // data (0-based). Indices outside the recorded points repeat the nearest
    // recorded sample, so edges never produce artificial steps.
    int16_t Sample(int64_t index) const;
    // Copies count samples starting at index into out (same edge rule).
    // Safe from several threads at once (detection reads stretches on
    // workers while the calling thread measures); Sample() is not.
    // Returns false when part of them could not be read from the file (it
    // was cut short or failed on disk since it was opened): those samples
    // are 0 and ReadFault() says what happened.
    bool ReadSamples(int64_t index, std::span<int16_t> out) const;
    // The same from the recorded samples, whatever ReadFiltered says.
    bool ReadRawSamples(int64_t index, std::span<int16_t> out) const;
    // The filtered copy when filtered is true and one is attached, else the
    // recorded samples, whatever ReadFiltered says.
    bool ReadTraceSamples(bool filtered, int64_t index, std::span<int16_t> out) const;
    // The first read that failed, as a sentence naming the file; "" while
    // every read has succeeded. It stays set for the life of the recording.
    const std::string& ReadFault() const { return readFault_; }
    // Whether the fault has been shown to the user (it is shown once).
    bool ReadFaultReported() const { return readFaultReported_; }
    void MarkReadFaultReported() { readFaultReported_ = true; }
    // count bytes of the data section (all channels interleaved) from
    // byte position on; bytes outside the recorded frames, or that could not
    // be read, are 0.
    std::vector<uint8_t> ReadDataBytes(int64_t position, std::size_t count) const;

    // File-information report (menu_DatInfo).
    std::string InfoReport() const;

private:
    Recording() = default;
    std::filesystem::path path_;
    AbfHeader header_;
    std::vector<uint8_t> headerBytes_;
    std::vector<AbfTag> tags_;
    std::unique_ptr<const Abf2Info> abf2_;
    std::vector<int64_t> sweepStarts_{0};
    std::vector<double> sweepTimesMs_;
    uint8_t channel_ = 0;
    double intervalUs_ = 0;
    int32_t blocks_ = 1;
    int64_t pointsPerChannel_ = 0;
    float gain_ = 1, offset_ = 0;
    static std::unique_ptr<Recording> Parse(std::unique_ptr<DataFile> file,
                                            const std::filesystem::path& path, AbfError* error,
                                            std::string* detail);
    int AdcOfChannel(int channel) const;
    // Reads the chosen channel's samples of frames [first, first + out.size()),
    // which lie inside the data; false (and the fault noted) on a short read.
    bool ReadFrames(int64_t first, std::span<int16_t> out) const;
    bool ReadRawFrames(int64_t first, std::span<int16_t> out) const;
    bool ReadFilteredFrames(int64_t first, std::span<int16_t> out) const;
    bool ReadSamplesFrom(bool filtered, int64_t index, std::span<int16_t> out) const;
    bool NoteShortRead(const DataFile& file, uint64_t endByte) const;
    // The samples served change: the single-sample cache is dropped and the
    // version moves on.
    void SamplesChanged();
    std::unique_ptr<DataFile> file_;
    uint64_t dataOffset_ = 0;         // byte of the first sample
    int64_t frames_ = 0;              // interleaved frames available in the file
    int16_t firstSample_ = 0;                   // of the chosen channel, for the edges
    mutable std::atomic<int16_t> lastSample_ = 0;  // 0 once the file is found cut short
    mutable std::vector<int16_t> chunk_;        // samples around the last Sample()
    mutable int64_t chunkStart_ = -1;
    static uint64_t NextSamplesVersion();
    uint64_t samplesVersion_ = NextSamplesVersion();
    mutable std::string readFault_;
    mutable std::mutex faultMutex_;             // guards readFault_ against reading threads
    bool readFaultReported_ = false;
    std::unique_ptr<DataFile> filtered_;
    int16_t filteredFirst_ = 0, filteredLast_ = 0;
    bool readFiltered_ = false;
    friend class RecordingTestAccess;
};

}  // namespace vess
