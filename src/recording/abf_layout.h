// Byte offsets of the ABF 1.x header fields we read and write, from the start
// of the file, all little-endian. One table shared by the reader, the writer
// and the information report, so a field's position is written down once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vess::abf {

inline constexpr std::size_t kBlockBytes = 512;           // unit of the section pointers
inline constexpr std::size_t kHeaderBytes = 2048;         // basic header
inline constexpr std::size_t kExtendedHeaderBytes = 6144; // header of version 1.6 and later
inline constexpr std::size_t kTagBytes = 64;
inline constexpr std::size_t kTagCommentChars = 56;
inline constexpr int kAdcCount = 16;                      // per-ADC arrays have 16 entries
inline constexpr float kExtendedVersion = 1.65f;          // telegraph gains from here on

// Group 1: file identification and sizes.
inline constexpr std::size_t kFileSignature = 0;          // 4 characters
inline constexpr std::size_t kFileVersionNumber = 4;      // float
inline constexpr std::size_t kOperationMode = 8;          // int16
inline constexpr std::size_t kActualAcqLength = 10;       // int32
inline constexpr std::size_t kNumPointsIgnored = 14;      // int16
inline constexpr std::size_t kActualEpisodes = 16;        // int32
inline constexpr std::size_t kFileStartDate = 20;         // int32, yyyymmdd
inline constexpr std::size_t kFileStartTime = 24;         // int32, seconds since midnight
inline constexpr std::size_t kStopwatchTime = 28;         // int32
inline constexpr std::size_t kHeaderVersionNumber = 32;   // float
inline constexpr std::size_t kFileType = 36;              // int16
inline constexpr std::size_t kMSBinFormat = 38;           // int16
// Group 2: file structure.
inline constexpr std::size_t kDataSectionPtr = 40;        // int32, in 512-byte blocks
inline constexpr std::size_t kTagSectionPtr = 44;         // int32, in 512-byte blocks
inline constexpr std::size_t kNumTagEntries = 48;         // int32
inline constexpr std::size_t kSynchArrayPtr = 92;         // int32, in 512-byte blocks
inline constexpr std::size_t kSynchArraySize = 96;        // int32, entries
inline constexpr std::size_t kDataFormat = 100;           // int16, 0 integer, 1 float
// Group 3: trial hierarchy.
inline constexpr std::size_t kADCNumChannels = 120;       // int16
inline constexpr std::size_t kADCSampleInterval = 122;    // float, us
inline constexpr std::size_t kSynchTimeUnit = 130;        // float, us; 0: one sample interval
inline constexpr std::size_t kSecondsPerRun = 134;        // float
inline constexpr std::size_t kNumSamplesPerEpisode = 138; // int32
inline constexpr std::size_t kEpisodesPerRun = 146;       // int32
inline constexpr std::size_t kRunsPerTrial = 150;         // int32
inline constexpr std::size_t kNumberOfTrials = 154;       // int32
inline constexpr std::size_t kEpisodeStartToStart = 178;  // float
inline constexpr std::size_t kRunStartToStart = 182;      // float
inline constexpr std::size_t kTrialStartToStart = 186;    // float
// Group 6: hardware and environment.
inline constexpr std::size_t kADCRange = 244;             // float, volts
inline constexpr std::size_t kDACRange = 248;             // float
inline constexpr std::size_t kADCResolution = 252;        // int32
inline constexpr std::size_t kDACResolution = 256;        // int32
inline constexpr std::size_t kAutosampleEnable = 262;     // int16
inline constexpr std::size_t kAutosampleADCNum = 264;     // int16
inline constexpr std::size_t kAutosampleAdditGain = 268;  // float
inline constexpr std::size_t kCreatorInfo = 294;          // 16 characters
inline constexpr std::size_t kCreatorInfoChars = 16;
inline constexpr std::size_t kFileComment = 310;          // 56 characters
inline constexpr std::size_t kFileCommentChars = 56;
// Group 7: multi-channel information, 16 entries each.
inline constexpr std::size_t kADCPtoLChannelMap = 378;    // int16
inline constexpr std::size_t kADCSamplingSeq = 410;       // int16
inline constexpr std::size_t kADCChannelName = 442;       // 10 characters each
inline constexpr std::size_t kADCChannelNameChars = 10;
inline constexpr std::size_t kADCUnits = 602;             // 8 characters each
inline constexpr std::size_t kADCUnitsChars = 8;
inline constexpr std::size_t kADCProgrammableGain = 730;  // float
inline constexpr std::size_t kADCDisplayAmplification = 794; // float
inline constexpr std::size_t kADCDisplayOffset = 858;     // float
inline constexpr std::size_t kInstrumentScaleFactor = 922;// float
inline constexpr std::size_t kInstrumentOffset = 986;     // float
inline constexpr std::size_t kSignalGain = 1050;          // float
inline constexpr std::size_t kSignalOffset = 1114;        // float
inline constexpr std::size_t kSignalLowpassFilter = 1178; // float
inline constexpr std::size_t kSignalHighpassFilter = 1242;// float
// Extended header (version 1.6 and later).
inline constexpr std::size_t kTelegraphEnable = 4512;     // int16 x 16
inline constexpr std::size_t kTelegraphAdditGain = 4576;  // float x 16

// Synch array entry (one per variable-length sweep), relative to its start:
// the sweep's start time and its length in samples of all channels.
inline constexpr std::size_t kSynchEntryBytes = 8;
inline constexpr std::size_t kSynchEntryStart = 0;        // int32, synch time units
inline constexpr std::size_t kSynchEntryLength = 4;       // int32

// Tag entry, relative to its start.
inline constexpr std::size_t kTagTime = 0;                // int32
inline constexpr std::size_t kTagComment = 4;             // 56 characters
inline constexpr std::size_t kTagType = 60;               // int16
inline constexpr std::size_t kTagVoiceTag = 62;           // int16

// The arrays must not run into the field after them.
static_assert(kADCSamplingSeq + kAdcCount * 2 == kADCChannelName);
static_assert(kADCChannelName + kAdcCount * kADCChannelNameChars == kADCUnits);
static_assert(kADCUnits + kAdcCount * kADCUnitsChars == kADCProgrammableGain);
static_assert(kADCProgrammableGain + kAdcCount * 4 == kADCDisplayAmplification);
static_assert(kInstrumentScaleFactor + kAdcCount * 4 == kInstrumentOffset);
static_assert(kInstrumentOffset + kAdcCount * 4 == kSignalGain);
static_assert(kSignalGain + kAdcCount * 4 == kSignalOffset);
static_assert(kSignalOffset + kAdcCount * 4 == kSignalLowpassFilter);
static_assert(kSignalHighpassFilter + kAdcCount * 4 <= kHeaderBytes);
static_assert(kCreatorInfo + kCreatorInfoChars == kFileComment);
static_assert(kTelegraphEnable + kAdcCount * 2 * 2 == kTelegraphAdditGain);
static_assert(kTelegraphAdditGain + kAdcCount * 4 <= kExtendedHeaderBytes);
static_assert(kTagVoiceTag + 2 == kTagBytes);
static_assert(kTagComment + kTagCommentChars == kTagType);

}  // namespace vess::abf
