// Detection parameters and program settings, and their files: the settings
// file "Vessanto.ini" (and custom .SET copies of it) and parameter files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "recording/method_settings.h"

namespace vess {

struct AnalysisParameters {
    int16_t PeakDirection = -1;
    float ThresholdAmplitude = 5;
    int32_t PeriodToSearchMax = 10000;       // us
    int32_t PeriodStartBaseline = 6000;      // us
    int32_t PeriodFindDecayTime = 20000;     // us
    float DecayPercent = 0.32f;
    int32_t PeriodBaselineAverage = 2000;    // us
    float AreaThreshold = 50;
    bool ComplexPeak = false;
    int16_t NumberPointsPeak = 1;

    bool operator==(const AnalysisParameters&) const = default;
};

// Every setting kept in the sections "Program", "Display" and "Analysis" of
// the settings file; settings_file.cpp maps them to their keys.
struct Settings {
    // Program
    std::string dataFolder = "c:\\";
    bool soundOn = false;
    bool showToolTips = true;
    // Display
    bool lockBaseline = false;
    double windowFraction = 0.25;       // kept for the file; not used
    bool drawTrace = true;
    double displayGain = 1;
    int32_t displayOffsetCounts = 0;
    int32_t blocksPerScreen = 4;
    int32_t navigationGroup = 1;
    int32_t jumpIntervalMs = 1000;
    // The digital filter: filterKind is its kind (1 Butterworth, 2 Chebyshev,
    // 3 inverse Chebyshev, 4 elliptic, 5 Bessel, 6 Gaussian), filterCutoffHz its cut-off in Hz,
    // filterPass 0 for low-pass and 1 for high-pass; ripple and attenuation
    // in dB. detectOnFiltered makes detection and measurement read the
    // filtered trace while a filter is applied.
    int32_t filterKind = 4;
    double filterCutoffHz = 1000;
    int32_t filterPass = 0;
    int32_t filterOrder = 4;
    double filterRippleDb = 0.5;
    double filterAttenuationDb = 60;
    bool filterZeroPhase = false;
    bool detectOnFiltered = false;
    int32_t lineFrequencyHz = 50;              // Hz, marked on noise spectra (ours)
    // Not in the file: the desktop program started without a settings file
    // takes the screen length from each recording's rate until the user
    // sets one (the command line keeps its screens of the default length).
    bool lengthsFollowRate = false;
    // Analysis
    AnalysisParameters analysis;
    MethodParameters method;

    bool operator==(const Settings&) const = default;
};

}  // namespace vess
