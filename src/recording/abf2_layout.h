// Byte offsets of the ABF 2 fields we read, little-endian. The file begins
// with a 512-byte header holding a map of sections; each section is a run of
// fixed-size entries at a 512-byte block, and the offsets of an entry's
// fields are relative to the start of that entry.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vess::abf2 {

inline constexpr std::size_t kBlockBytes = 512;       // unit of the section block indices
inline constexpr std::size_t kHeaderBytes = 512;

// File header.
inline constexpr std::size_t kFileSignature = 0;      // "ABF2"
inline constexpr std::size_t kFileVersionNumber = 4;  // 4 bytes: build, bugfix, minor, major
inline constexpr std::size_t kFileInfoSize = 8;       // uint32
inline constexpr std::size_t kActualEpisodes = 12;    // uint32
inline constexpr std::size_t kFileStartDate = 16;     // uint32, yyyymmdd
inline constexpr std::size_t kFileStartTimeMS = 20;   // uint32, ms since midnight
inline constexpr std::size_t kStopwatchTime = 24;     // uint32, s
inline constexpr std::size_t kFileType = 28;          // int16
inline constexpr std::size_t kDataFormat = 30;        // int16, 0 integer, 1 float
inline constexpr std::size_t kCreatorVersion = 56;    // uint32
inline constexpr std::size_t kCreatorNameIndex = 60;  // uint32, 1-based string
inline constexpr std::size_t kModifierVersion = 64;   // uint32
inline constexpr std::size_t kModifierNameIndex = 68; // uint32
inline constexpr std::size_t kProtocolPathIndex = 72; // uint32

// Section map: from byte 76, one 16-byte entry per section in this order.
inline constexpr std::size_t kSectionMap = 76;
inline constexpr std::size_t kSectionEntryBytes = 16;
inline constexpr std::size_t kSectionBlockIndex = 0;  // uint32, x 512 bytes
inline constexpr std::size_t kSectionBytes = 4;       // uint32, bytes per entry
inline constexpr std::size_t kSectionEntries = 8;     // int64
enum class Section {
    Protocol = 0, ADC = 1, DAC = 2, Epoch = 3, ADCPerDAC = 4, EpochPerDAC = 5, UserList = 6,
    StatsRegion = 7, Math = 8, Strings = 9, Data = 10, Tag = 11, Scope = 12, Delta = 13,
    VoiceTag = 14, SynchArray = 15, Annotation = 16, Stats = 17
};
inline constexpr std::size_t SectionAt(Section s) {
    return kSectionMap + std::size_t(s) * kSectionEntryBytes;
}
static_assert(SectionAt(Section::Stats) + kSectionEntryBytes <= kHeaderBytes);

// Protocol section (one entry).
inline constexpr std::size_t kOperationMode = 0;         // int16
inline constexpr std::size_t kADCSequenceInterval = 2;   // float, us per channel
inline constexpr std::size_t kSynchTimeUnit = 14;        // float, us; 0: one sample interval
inline constexpr std::size_t kNumSamplesPerEpisode = 22; // int32, all channels
inline constexpr std::size_t kEpisodesPerRun = 30;       // int32
inline constexpr std::size_t kADCRange = 110;            // float, volts
inline constexpr std::size_t kADCResolution = 118;       // int32
inline constexpr std::size_t kProtocolMinBytes = kADCResolution + 4;

// ADC section: one entry per channel, in sampling order.
inline constexpr std::size_t kADCNum = 0;                // int16, physical ADC
inline constexpr std::size_t kTelegraphEnable = 2;       // int16
inline constexpr std::size_t kTelegraphAdditGain = 6;    // float
inline constexpr std::size_t kADCProgrammableGain = 28;  // float
inline constexpr std::size_t kInstrumentScaleFactor = 40;// float
inline constexpr std::size_t kInstrumentOffset = 44;     // float
inline constexpr std::size_t kSignalGain = 48;           // float
inline constexpr std::size_t kSignalOffset = 52;         // float
inline constexpr std::size_t kADCChannelNameIndex = 74;  // int32, 1-based string
inline constexpr std::size_t kADCUnitsIndex = 78;        // int32, 1-based string
inline constexpr std::size_t kADCMinBytes = kADCUnitsIndex + 4;
static_assert(kInstrumentScaleFactor + 4 == kInstrumentOffset);
static_assert(kSignalGain + 4 == kSignalOffset);

// Strings section: NUL-terminated strings after a fixed preamble.
inline constexpr std::size_t kStringsStart = 44;

// Synch array entry: the start (in synch time units) and length (samples of
// all channels) of one sweep.
inline constexpr std::size_t kSynchStart = 0;            // int32
inline constexpr std::size_t kSynchLength = 4;           // int32
inline constexpr std::size_t kSynchMinBytes = 8;

// Tag entries have the ABF 1.x layout (abf_layout.h).

// Operation modes.
inline constexpr int16_t kVariableLength = 1;
inline constexpr int16_t kGapFree = 3;

}  // namespace vess::abf2
