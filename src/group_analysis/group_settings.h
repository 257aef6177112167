// The settings of the group analysis window: the sections "GroupAnalysis",
// "Fitting", "RandomWalk" and "NonStationary" of "Vessanto.ini" and of
// custom settings files (*.SET). List texts are kept as the lists show them.
#pragma once

#include <filesystem>
#include <string>

#include "recording/dialogs.h"
#include "recording/ini_file.h"

namespace vess::group {

struct GroupAnalysisSettings {
    // GroupAnalysis
    bool DisplayGroup = true;               // "Group #" when true, else "Episodes"
    std::string DisplayGain = "1";
    std::string DisplayOffset = "0";
    int GroupNumber = 1;
    std::string AnalysisType = "Average";
    std::string PeakAlignment = "Peak";
    std::string BlocktoAnalyze = "1";
    int DisplayEveryPoint = 1;
    bool BaselineAdjust = false;
    // Fitting
    std::string FitRange = "Peak to End";
    int MaxIteration = 1000;
    double Tolerance = 0.001;
    int NumberExponential = 2;
    bool IncludeOffset = false;
    bool FixAmplitude = false;
    bool UseGuess = false;
    double tau1 = 5, tau2 = 100, tau3 = 1000;
    double A1 = 100, A2 = 50, A3 = 25;
    int Rise = 0;                           // 0 "10-90%", 1 "20-80%", 2 "30-70%"
    std::string WidthAboveThreshold = "20";
    std::string Ym = "5", Yt = "2";
    bool UseThresholdBaseline = false;
    std::string AmperoRise = "50-90% Rise";
    std::string Electrons = "2";
    std::string DecayPercent = "90-37%";
    std::string Method = "Least Squares";   // key FitMethod: "Least Squares" or "Simplex"
    bool RestartSearch = true;              // "Restart the search until it settles" (simplex)
    // RandomWalk
    std::string WalkType = "Amperometry in Slice";
    std::string Edge = "Diffusing";
    std::string Vmax = "3.500", Km = "0.240", Release = "2.000";
    std::string DeadRadius = "4.000", TotalRadius = "25.000", BinSize = "1.000";
    std::string DiffusionCoeff = "2.7e-6";
    int WalkMaxIter = 500;
    double WalkTolerance = 0.001;
    // NonStationary
    int AmplitudeBin = 100;
    int AverageTrace = 5;
    bool SubtractBaseVar = false;
    bool NonStationaryOffset = false;

    bool operator==(const GroupAnalysisSettings&) const = default;
};

// Every key with its default when the key is missing or not a number where
// one is needed.
GroupAnalysisSettings GroupSettingsFromIni(const IniFile& ini);
void GroupSettingsToIni(const GroupAnalysisSettings& settings, IniFile& ini);
GroupAnalysisSettings LoadGroupSettings(const std::filesystem::path& path);
// Writes the keys into the file, keeping its other sections; empty on success.
std::string SaveGroupSettings(const std::filesystem::path& path,
                              const GroupAnalysisSettings& settings);

// "Save Settings": into the settings file, then says so.
bool SaveGroupSettingsCommand(const std::filesystem::path& iniPath,
                              const GroupAnalysisSettings& settings, Dialogs& dialogs);
// menu_SaveAsCustomSetup / menu_LoadSettings with a custom settings file.
bool SaveGroupCustomSettingsCommand(const GroupAnalysisSettings& settings, Dialogs& dialogs);
bool LoadGroupCustomSettingsCommand(GroupAnalysisSettings& settings, Dialogs& dialogs);

}  // namespace vess::group
