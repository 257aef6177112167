// The settings of the group analysis window: the sections "GroupAnalysis",
// "Fitting", "RandomWalk" and "NonStationary" of "Vessanto.ini" and of
// custom settings files (*.SET). List texts are kept as the lists show them;
// numbers are written as the window shows them (ShortestText, WalkText,
// CoefficientText), so a file the window wrote reads back byte for byte.
#pragma once

#include <filesystem>
#include <string>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/ini_file.h"

namespace vess::group {

struct GroupAnalysisSettings {
    // GroupAnalysis
    bool useGroups = true;               // "Group #" when true, else "Episodes"
    double displayGain = 1;
    double displayOffset = 0;
    int groupNumber = 1;
    std::string analysisType = "Average";
    std::string alignment = "Peak";
    double blocksToAnalyse = 1;             // 256-point blocks
    int displayEveryPoint = 1;
    bool adjustBaseline = false;
    // Fitting
    std::string fitRange = "Peak to End";
    int maxIterations = 1000;
    double tolerance = 0.001;
    int exponentials = 2;
    bool includeOffset = false;
    bool fixAmplitude = false;
    bool useGuess = false;
    double tau1 = 5, tau2 = 100, tau3 = 1000;
    double A1 = 100, A2 = 50, A3 = 25;
    int riseRange = 0;                           // 0 "10-90%", 1 "20-80%", 2 "30-70%"
    double widthAboveThreshold = 20;       // spike width measured this far above threshold
    double ym = 5, yt = 2;                 // spike train: least height and hysteresis
    bool useThresholdBaseline = false;
    std::string amperometryRise = "50-90% Rise";
    double electrons = 2;                  // per molecule (amperometry)
    std::string decayRange = "90-37%";
    std::string fitMethod = "Least Squares";   // key FitMethod: "Least Squares" or "Simplex"
    bool restartSearch = true;              // "Restart the search until it settles" (simplex)
    // RandomWalk
    std::string walkType = "Amperometry in Slice";
    std::string walkEdge = "Diffusing";
    double vmax = 3.5, km = 0.24, release = 2;   // uM/s, uM, uM
    double deadRadius = 4, totalRadius = 25, walkBinSize = 1;  // um
    double diffusionCoefficient = 2.7e-6;  // cm2/s
    int walkMaxIterations = 500;
    double walkTolerance = 0.001;
    // NonStationary
    int amplitudeBins = 100;
    int averageTraces = 5;
    bool subtractBaselineVariance = false;
    bool nonStationaryOffset = false;

    bool operator==(const GroupAnalysisSettings&) const = default;
};

// How the numbers are written and shown: the shortest exact form ("0.25");
// three decimals for the diffusion fields ("3.500"); the diffusion
// coefficient with a short exponent ("2.7e-6").
std::string ShortestText(double value);
std::string WalkText(double value);
std::string CoefficientText(double value);

// Every key with its default when the key is missing or not a number where
// one is needed.
GroupAnalysisSettings GroupSettingsFromIni(const IniFile& ini);
void GroupSettingsToIni(const GroupAnalysisSettings& settings, IniFile& ini);
GroupAnalysisSettings LoadGroupSettings(const std::filesystem::path& path);
// Writes the keys into the file, keeping its other sections; empty on success.
std::string SaveGroupSettings(const std::filesystem::path& path,
                              const GroupAnalysisSettings& settings);

// "Save Settings": into the settings file, then says so.
CommandResult SaveGroupSettingsCommand(const std::filesystem::path& iniPath,
                                       const GroupAnalysisSettings& settings, Dialogs& dialogs);
// menu_SaveAsCustomSetup / menu_LoadSettings with a custom settings file.
CommandResult SaveGroupCustomSettingsCommand(const GroupAnalysisSettings& settings, Dialogs& dialogs);
CommandResult LoadGroupCustomSettingsCommand(GroupAnalysisSettings& settings, Dialogs& dialogs);

}  // namespace vess::group
