// Options of the heart-rate windows, kept in section "HRV" of the settings
// file, and the presets for human and mouse recordings.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/ini_file.h"

namespace vess::hrv {

struct HrvOptions {
    // The stored defaults suit small rodents: RR intervals of 10 to 100 ms.
    double upperBoundMs = 100;          // RRUBound
    double lowerBoundMs = 10;           // RRLBound
    int32_t pointsPerSegment = 30000;   // NPointsSeg
    double thresholdMs = 50;            // ThreshdeltaRR
    bool includeZeroSegments = false;   // IncludeZero
    bool excludeLastSegment = false;    // ExcludeLastSeg
    double rrBinMs = 1;                 // RRBinSize
    double deltaRRBinMs = 1;            // DeltaRRBinSize

    // The segment length for a recording sampled every intervalUs.
    double SegmentMs(double intervalUs) const { return pointsPerSegment * intervalUs / 1000.0; }
    bool operator==(const HrvOptions&) const = default;
};

// Every key read with its default when missing or not a number.
HrvOptions HrvOptionsFromIni(const IniFile& ini);
HrvOptions LoadHrvOptions(const std::filesystem::path& iniPath);
// The six keys of the time-domain window.
void TimeDomainOptionsToIni(const HrvOptions& options, IniFile& ini);
// The four keys of the geometric window (bin sizes and bounds).
void GeometricOptionsToIni(const HrvOptions& options, IniFile& ini);
// "Save Options": writes the window's keys into the settings file, keeping
// everything else, and says so ("Settings Saved"). Fails under "File Error"
// when writing failed.
enum class HrvWindow { TimeDomain, Geometric };
CommandResult SaveHrvOptionsCommand(const std::filesystem::path& iniPath, const HrvOptions& options,
                                    HrvWindow window, Dialogs& dialogs);

// Presets: bounds and segment length for a species. The segment length is a
// time, turned into sample points for the recording's interval.
enum class Preset { Stored, Human, Mouse, Custom };
HrvOptions ApplyPreset(HrvOptions options, Preset preset, double intervalUs);
// Which preset the bounds and segment length match (Custom when none does).
Preset PresetInForce(const HrvOptions& options, double intervalUs);
std::string_view PresetName(Preset preset);

}  // namespace vess::hrv
