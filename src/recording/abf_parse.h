// What reading an ABF header hands to Recording, for ABF 1.x and ABF 2
// alike: the fields in AbfHeader's terms (per-ADC arrays indexed by the
// physical ADC number), the ABF 1.x header bytes that event and parameter
// files copy, where the samples start, and how they divide into sweeps.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recording/recording.h"

namespace vess {

// Reads up to out.size() bytes at offset and returns how many it read.
using ByteReader = std::function<std::size_t(uint64_t offset, std::span<uint8_t> out)>;

// How the samples divide into sweeps, as the header states it.
struct SweepLayout {
    int16_t operationMode = 3;          // 3 = gap-free
    int64_t samplesPerSweep = 0;        // all channels together
    int64_t sweeps = 0;                 // sweeps recorded
    std::vector<int64_t> sweepSamples;  // per sweep, all channels (variable-length sweeps)
    std::vector<int64_t> sweepTimes;    // start of each of those sweeps, in synch time units
    double synchTimeUnitUs = 0;         // as the header gives it; 0: one sample interval
    double sampleIntervalUs = 0;        // of one sample (of any channel)
};

// The acquisition start times of variable-length sweeps in ms, from their
// synch array; empty when the layout has none.
std::vector<double> SweepTimesMs(const SweepLayout& layout);

// The first point (per channel, from 0) of each sweep, in order: {0} for a
// gap-free recording or one whose sweep layout does not fit its points.
std::vector<int64_t> FindSweepStarts(const SweepLayout& layout, int channels, int64_t points);

// One channel of an ABF 2 file as its ADC section gives it.
struct Abf2Channel {
    int16_t adcNum = 0;
    std::string name;
    std::string units;
    int16_t telegraphEnable = 0;
    float telegraphAdditGain = 0;
};

// The ABF 2 fields that have no place in AbfHeader, for the information report.
struct Abf2Info {
    std::array<uint8_t, 4> version{};   // major, minor, bugfix, build
    uint32_t fileInfoSize = 0;
    uint32_t actualEpisodes = 0;
    uint32_t fileStartDate = 0;         // yyyymmdd
    uint32_t fileStartTimeMs = 0;
    uint32_t stopwatchTime = 0;
    int16_t fileType = 0;
    uint32_t creatorVersion = 0;
    std::string creatorName;
    std::string protocolPath;
    int16_t operationMode = 0;
    int32_t numSamplesPerEpisode = 0;
    int32_t episodesPerRun = 0;
    float adcSequenceInterval = 0;      // us per channel
    float synchTimeUnit = 0;            // us; 0: one sample interval
    std::vector<Abf2Channel> channels;  // in sampling order
    std::string VersionText() const;    // "2.9.0.0"
};

struct ParsedHeader {
    AbfHeader header;
    std::vector<uint8_t> headerCopy;    // ABF 1.x header for event and parameter files
    int64_t headerEnd = 0;              // the samples cannot start before this byte
    int64_t dataOffset = 0;             // byte of the first sample
    double intervalUs = 0;              // per channel
    SweepLayout sweeps;
    std::optional<Abf2Info> abf2;
    AbfError error = AbfError::None;
    std::string detail;                 // why, when error is set
};

inline bool IsAbf2Signature(std::span<const uint8_t> firstBytes) {
    return firstBytes.size() >= 4 && firstBytes[0] == 'A' && firstBytes[1] == 'B' &&
           firstBytes[2] == 'F' && firstBytes[3] == '2';
}

// Reads an ABF 2 header: refuses floating-point data and damaged sections
// (error and detail set), and otherwise fills every field of ParsedHeader.
// The checks common to both versions (channel count, interval, scaling, data
// and tag extents) are left to the caller.
ParsedHeader ParseAbf2Header(const ByteReader& read, uint64_t fileSize);

}  // namespace vess
