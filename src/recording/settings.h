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

// Every key of the sections "Program", "Display" and "Analysis".
struct Settings {
    // Program
    std::string DataDir = "c:\\";
    bool SoundOn = false;
    bool DisplayTooltips = true;
    // Display
    bool LockBase = false;
    std::string FractionWindow = "0.25";
    bool DisplayTrace = true;
    std::string DisplayGain = "1";
    int32_t DisplayOffset = 0;
    int32_t DisplayTotalNumberBlockPerScreen = 4;
    int32_t GroupNavigate = 1;
    int32_t JumpInterval = 1000;
    // The digital filter: FilterType is its kind (1 Butterworth, 2 Chebyshev,
    // 3 inverse Chebyshev, 4 elliptic, 5 Bessel, 6 Gaussian), FilterFreq its cut-off in Hz,
    // FilterPass 0 for low-pass and 1 for high-pass; ripple and attenuation
    // in dB. DetectOnFiltered makes detection and measurement read the
    // filtered trace while a filter is applied.
    int32_t FilterType = 4;
    std::string FilterFreq = "1000";
    int32_t FilterPass = 0;
    int32_t FilterOrder = 4;
    std::string FilterRipple = "0.5";
    std::string FilterAttenuation = "60";
    bool FilterZeroPhase = false;
    bool DetectOnFiltered = false;
    int32_t LineFrequency = 50;              // Hz, marked on noise spectra (ours)
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
