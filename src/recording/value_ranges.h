// The ranges within which values read from files (ABF headers, event and
// parameter files, settings files) and from the command line can mean
// something for a recording. Values outside them are refused where they are
// read, with a message, rather than clamped: a sample interval of 1e-30 us or
// a search period of hours is a damaged file, not a setting.
#pragma once

#include <cstdint>
#include <string>

#include "recording/settings.h"

namespace vess {

// Interval between successive samples of the interleaved stream, us.
inline constexpr double kMinSampleIntervalUs = 0.5;      // 2 MHz
inline constexpr double kMaxSampleIntervalUs = 1.0e6;    // 1 Hz
// The detection periods (search, baseline start and length, decay), us.
inline constexpr int32_t kMaxPeriodUs = 1'000'000;       // one second
inline constexpr int16_t kMaxNumberPointsPeak = 255;
// Thresholds, in the channel's units (pA, mV) or units x ms.
inline constexpr double kMaxThresholdMagnitude = 1.0e6;
// 256-point blocks on one screen: three screens of the largest stay a few MB.
inline constexpr int32_t kMaxBlocksPerScreen = 4096;

// The digital filter's kind (FilterType) and order.
inline constexpr int32_t kMinFilterType = 1;
inline constexpr int32_t kMaxFilterType = 6;
inline constexpr int32_t kMaxFilterOrder = 16;

// The values that turn one channel's ADC counts into its units.
struct ChannelScaling {
    double gain = 0;          // programmable x instrument scale x signal (x additional)
    double offset = 0;        // signal offset + instrument offset
    double adcRange = 0;      // volts for full scale
    double adcResolution = 0; // counts for full scale
};

// Why these values cannot convert counts to units (zero, negative or
// non-finite range or resolution, zero or non-finite gain, non-finite
// offset, or a product that overflows), or "" when they can.
std::string ScalingProblem(const ChannelScaling& scaling);

// Why the per-channel sample interval cannot be a recording's, or "".
std::string SampleIntervalProblem(double intervalUs);

// The first parameter outside its range, named and explained ("" when all
// are usable). NumberPointsPeak of 0 is allowed (it is read as 1).
std::string ParameterProblem(const AnalysisParameters& params);

}  // namespace vess
