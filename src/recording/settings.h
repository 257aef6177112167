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
    int32_t FilterType = 4;
    std::string FilterFreq = "1000";
    int32_t LineFrequency = 50;              // Hz, marked on noise spectra (ours)
    // Analysis
    AnalysisParameters analysis;
    MethodParameters method;

    bool operator==(const Settings&) const = default;
};

}  // namespace vess
