// Every caption, message, prompt, filter and file tag that the recording
// subsystem shows or writes, kept once. Blocks are grouped by area; add to
// the end of a block, never change a text (spelling and double spaces are
// as the users know them).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vess::texts {

// ---- Events, event files, exports, settings and parameter files ----------

// Tags written into files.
inline constexpr std::string_view kProductTag = "Vessantorium";
inline constexpr std::string_view kEventFileCreator = "Vessantorium 5.0   ";
inline constexpr std::string_view kParameterFileCreator = "Vessantorium 3.0   ";
inline constexpr std::string_view kCurrentVersionTag = "5.0";
inline constexpr std::string_view kVersion3Tag = "3.0";

// Grid captions, in column order 1..17.
inline constexpr std::string_view kColTime = "Time";
inline constexpr std::string_view kColAmplitude = "Amplitude";
inline constexpr std::string_view kColRiseTime = "Time to Rise";
inline constexpr std::string_view kColDecayTime = "Time to Decay";
inline constexpr std::string_view kColArea = "Area";
inline constexpr std::string_view kColBaseline = "Baseline";
inline constexpr std::string_view kColNoise = "Noise";
inline constexpr std::string_view kColGroup = "Group";
inline constexpr std::string_view kColChannel = "Channel";
inline constexpr std::string_view kColRise1090 = "Rise10-90";
inline constexpr std::string_view kColHalfWidth = "Half-width";
inline constexpr std::string_view kColRise50 = "Rise 50";
inline constexpr std::string_view kColPeakDirection = "Peak Direction";
inline constexpr std::string_view kColBurstNumber = "Burst #";
inline constexpr std::string_view kColBurstEventNumber = "Burst Event#";
inline constexpr std::string_view kColSlope1090 = "Slope10-90";
inline constexpr std::string_view kColRelativeTime = "Relative Time";
inline constexpr std::string_view kAreaFcLabel = "Area (fC)";
inline constexpr std::string_view kPerMsecSuffix = "/msec";

// Shared file-dialog answers.
inline constexpr std::string_view kReplaceFileCaption = "Replace File";
inline constexpr std::string_view kReplaceFileText =
    "File already exist.  Do you want to replace this file?";
inline constexpr std::string_view kFileExistCaption = "File Exist";
inline constexpr std::string_view kFileExistText =
    "File already exist.  Try again with different file name.";

// Event files.
inline constexpr std::string_view kEventFileFilter = "Event File (*.EVT)";
inline constexpr std::string_view kEventFileExtension = "EVT";
inline constexpr std::string_view kSaveEventCaption = "Save Event File";   // dialog title, ours
inline constexpr std::string_view kOpenEventCaption = "Open Event File";   // dialog title, ours
inline constexpr std::string_view kSavePreviousEventsCaption = "Save Previous Event Data";
inline std::string SavePreviousEventsText(int count, const std::string& dataFileName) {
    return "There are " + std::to_string(count) + " events analysed for " + dataFileName +
           ".  Do you want to save the event data?";
}
inline constexpr std::string_view kNotEventFileCaption = "Not an Event File";
inline constexpr std::string_view kNotEventFileText =
    "This file is not an event file.  Please check the file and try again.";
inline constexpr std::string_view kFileNotMatchingCaption = "File Not Matching";
inline std::string FileNotMatchingText(const std::string& storedName, const std::string& openName) {
    return "This event file was analysed from " + storedName + " and does not match " + openName +
           ".  Please find the appropriate event file.";
}
inline constexpr std::string_view kMissingDataFileCaption = "File Not Found";  // ours
inline std::string MissingDataFileText(const std::string& name) {
    return "The original data file " + name +
           " does not exist in this directory.  Please make sure the event file and the original "
           "data file are present in the same directory.";
}
inline constexpr std::string_view kOlderVersionCaption = "Older Version Event File";
inline constexpr std::string_view kOlderVersionText =
    "This Event file was saved as a previous version.  Would you like to convert to newer "
    "version?";
inline constexpr std::string_view kSaveAndResetCaption = "Save and Reset";
inline std::string SaveAndResetText(int count) {
    return "There are " + std::to_string(count) +
           " events analysed.  You have to reset all the event data from previous settings.  "
           "Would you like to save and reset the event data?";
}
// Our own texts for files that cannot be read or written.
inline constexpr std::string_view kDamagedFileCaption = "Damaged File";
inline constexpr std::string_view kFileErrorCaption = "File Error";

// Text exports.
inline constexpr std::string_view kTextFileFilter = "Text File (*.txt)";
inline constexpr std::string_view kTextFileExtension = "txt";
inline constexpr std::string_view kCsvFileFilter = "CSV File (*.csv)";
inline constexpr std::string_view kCsvFileExtension = "csv";
inline constexpr std::string_view kSaveGridCsvCaption = "Export Event Grid as CSV";
inline constexpr std::string_view kAsciiFileFilter = "ASCII File (*.ASC)";
inline constexpr std::string_view kAsciiFileExtension = "ASC";
inline constexpr std::string_view kAtfTag = "ATF";
inline constexpr std::string_view kAtfVersion = "1.0";
inline constexpr std::string_view kTimeMsTitle = "Time(ms)";
inline std::string AmplitudeTitle(const std::string& unit) { return "Amplitude(" + unit + ")"; }
inline constexpr std::string_view kSaveDataCaption = "Save Data";             // dialog title, ours
inline constexpr std::string_view kSaveAsciiCaption = "Save as ASCII File";   // dialog title, ours

// Settings.
inline constexpr std::string_view kIniFileName = "Vessanto.ini";
inline constexpr std::string_view kSettingsSavedCaption = "Settings Saved";
inline constexpr std::string_view kSettingsSavedText = "The settings are saved into Vessanto.ini file.";
inline constexpr std::string_view kSaveSettingsCaption = "Save Settings";
inline constexpr std::string_view kSaveSettingsOnExitText = "Would you like to save settings before exit?";
inline constexpr std::string_view kCustomSettingsFilter = "Custom Settings File (*.SET)";
inline constexpr std::string_view kCustomSettingsOpenFilter = "Custom Settings File (*.SET)|*.SET";
inline constexpr std::string_view kCustomSettingsExtension = "SET";
inline constexpr std::string_view kCustomSettingsPattern = "*.SET";

// Parameter files.
inline constexpr std::string_view kParameterFileExtension = "PAR";
inline constexpr std::string_view kParameterFilePattern = "*.PAR";
inline constexpr std::string_view kParameterOpenFilter =
    "Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT";
inline constexpr std::string_view kNotParameterFileCaption = "Not a Parameter File";
inline constexpr std::string_view kNotParameterFileText =
    "This file is not a parameter or an event file.  Please check the file and try again.";
inline constexpr std::string_view kSuggestParametersCaption = "Suggest Analysis Parameters";
inline constexpr std::string_view kSuggestParametersText =
    "The analysis parameters are set according to the typical waveform kinetics.  After "
    "detecting several peaks, please readjust the amplitude threshold and area threshold as well "
    "as other paramters as needed.  Also, please make sure the direction of peak is "
    "appropriately set.";

// Dialog titles of our own for the settings and parameter files.
inline constexpr std::string_view kSaveCustomSettingsCaption = "Save Custom Settings";
inline constexpr std::string_view kLoadCustomSettingsCaption = "Load Custom Settings";
inline constexpr std::string_view kParameterFileFilter = "Parameter File (*.PAR)";
inline constexpr std::string_view kSaveParameterCaption = "Save Parameters";
inline constexpr std::string_view kLoadParameterCaption = "Load Parameters";
// The entries of Suggest Analysis Parameters, numbered 1 to 3.
inline constexpr std::string_view kSuggestEntry1 = "1 Fast synaptic currents";
inline constexpr std::string_view kSuggestEntry2 = "2 Slow synaptic currents";
inline constexpr std::string_view kSuggestEntry3 = "3 Large fast events";

// ---- end of events, files and settings block ------------------------------

// ---- ABF data files: opening, channel choice, file information ------------
// (append only)

inline constexpr std::string_view kAbfFileFilter = "ABF File (*.ABF)";
inline constexpr std::string_view kAbfFileExtension = "ABF";
inline constexpr std::string_view kNotAbfCaption = "Not ABF File";
inline constexpr std::string_view kNotAbfText = "This is not an Axon Binary File.  Try another file.";
inline constexpr std::string_view kNotIntegerCaption = "Not in Integer Format";
inline constexpr std::string_view kNotIntegerText =
    "This ABF file is saved in floating-point format.  Vessantorium recognizes only the integer "
    "format.  Please open this file in Axoscope or Clampfit and save as integer format.  Then try "
    "again.";
// The refusal of a floating-point file, naming its channels when they are
// known ("0: IN 0 (pA), 1: IN 1 (mV)").
inline std::string NotIntegerText(const std::string& channels) {
    std::string text(kNotIntegerText);
    if (!channels.empty()) text += "\n\nThe file holds these channels: " + channels + ".";
    return text;
}
inline constexpr std::string_view kChannelCaption = "Enter Channel Number";
inline std::string ChannelPrompt(int channels) {
    return "This file has " + std::to_string(channels) +
           " input channels, starting from channel 0.  Please enter the channel number to open.";
}
// Our own texts, in the style of the ones above.
inline constexpr std::string_view kInvalidChannelCaption = "Invalid Channel Number";
inline std::string InvalidChannelText(const std::string& answer, int channels) {
    return "\"" + answer + "\" is not a channel of this file.  Please enter a channel number from 0 to " +
           std::to_string(channels - 1) + ".";
}
inline constexpr std::string_view kDamagedAbfCaption = "Damaged ABF File";
inline constexpr std::string_view kCannotOpenCaption = "Cannot Open File";
inline std::string CannotOpenText(const std::string& name, const std::string& reason) {
    return "The file " + name + " cannot be opened (" + reason + ").  Try another file.";
}
inline constexpr std::string_view kTooShortText =
    "This file is shorter than an ABF header.  It may be damaged or incompletely copied.  Try "
    "another file.";
inline constexpr std::string_view kBadChannelCountText =
    "The header of this file gives an impossible number of input channels (1 to 16 are "
    "possible).  The file may be damaged.  Try another file.";
inline constexpr std::string_view kBadSamplingSequenceText =
    "The header of this file names an ADC input outside 0 to 15 for one of its channels.  The "
    "file may be damaged.  Try another file.";
inline constexpr std::string_view kBadIntervalText =
    "The header of this file gives no valid sample interval.  The file may be damaged.  Try "
    "another file.";
inline constexpr std::string_view kBadScalingText =
    "The header of this file gives no valid ADC range, resolution or channel gain, so its "
    "samples cannot be converted to units.  The file may be damaged.  Try another file.";
inline constexpr std::string_view kBadDataPointerText =
    "The data section of this file lies outside the file.  The file may be damaged or "
    "incompletely copied.  Try another file.";
inline constexpr std::string_view kBadAcqLengthText =
    "This file holds no complete sample of its channels.  The file may be damaged or empty.  Try "
    "another file.";
inline constexpr std::string_view kBadTagPointerText =
    "The tag section of this file lies outside the file.  The file may be damaged or incompletely "
    "copied.  Try another file.";
inline constexpr std::string_view kBadProtocolSectionText =
    "The protocol section of this ABF 2 file lies outside the file or is too short to hold the "
    "sample interval and ADC range.  The file may be damaged or incompletely copied.  Try another "
    "file.";
inline constexpr std::string_view kBadAdcSectionText =
    "The ADC section of this ABF 2 file lies outside the file or is too short to hold its "
    "channels' scaling.  The file may be damaged or incompletely copied.  Try another file.";
inline constexpr std::string_view kBadStringsSectionText =
    "The strings section of this ABF 2 file, which holds the channel names and units, lies "
    "outside the file.  The file may be damaged or incompletely copied.  Try another file.";
inline constexpr std::string_view kBadSynchSectionText =
    "The sweep table of this ABF file lies outside the file or does not fit its samples.  The "
    "file may be damaged or incompletely copied.  Try another file.";
inline constexpr std::string_view kBadStringIndexText =
    "The header of this file names a channel name or unit that its strings section does not "
    "hold.  The file may be damaged.  Try another file.";
inline constexpr std::string_view kDuplicateAdcText =
    "The header of this file gives the same ADC input to two channels.  The file may be "
    "damaged.  Try another file.";
// A refusal's text followed by the file and the exact reason.
inline std::string WithReason(std::string_view text, const std::string& name,
                              const std::string& reason) {
    return std::string(text) + "\n\n" + name + ": " + reason + ".";
}
// The samples of the open recording could not all be read.
inline constexpr std::string_view kReadFaultCaption = "Data File Changed";
inline std::string ReadFaultText(const std::string& name, const std::string& why) {
    return "Part of the data file " + name + " can no longer be read (" + why +
           ").  It has been changed or cut short since it was opened; the trace shows "
           "zero where samples are missing.";
}
inline std::string ReadFaultKeepEventsText(const std::string& fault, int32_t count) {
    return fault + "  The " + std::to_string(count) +
           " events analysed are kept.  Do you want to save the event data?";
}

inline constexpr std::string_view kBadParametersText =
    "The detection parameters in this file lie outside what a recording can use.  The file may "
    "be damaged; nothing is loaded.";
// A custom settings file that cannot be used.
inline constexpr std::string_view kSettingsNotLoadedCaption = "Settings Not Loaded";
inline constexpr std::string_view kNoSettingsSections =
    "it has none of the sections [Program], [Display] and [Analysis]";
inline std::string SettingsNotLoadedText(const std::string& path, std::string_view why) {
    return "The settings file " + path + " cannot be used (" + std::string(why) +
           ").  The current settings are kept.";
}

// File information report (menu_DatInfo) labels, in report order.
inline constexpr std::string_view kInfoTitle = "DAT File Info:  ";
inline constexpr std::string_view kInfoFileSignature = "FileSignature";
inline constexpr std::string_view kInfoFileVersionNumber = "FileVersionNumber ";
inline constexpr std::string_view kInfoHeaderVersionNumber = "HeaderVersionNumber ";
inline constexpr std::string_view kInfoFileType = "FileType ";
inline constexpr std::string_view kInfoCreatorInfo = "CreatorInfo    ";
inline constexpr std::string_view kInfoMSBinFormat = "MSBinFormat ";
inline constexpr std::string_view kInfoDataFormat = "DataFormat ";
inline constexpr std::string_view kInfoFileStartDate = "FileStartDate ";
inline constexpr std::string_view kInfoFileStartTime = "FileStartTime ";
inline constexpr std::string_view kInfoStopwatchTime = "StopwatchTime ";
inline constexpr std::string_view kInfoOperationMode = "OperationMode ";
inline constexpr std::string_view kInfoActualAcqLength = "ActualAcqLength (Actual # of ADC samples)";
inline constexpr std::string_view kInfoNumPointsIgnored = "NumPointsIgnored ";
inline constexpr std::string_view kInfoActualEpisodes = "ActualEpisodes ";
inline constexpr std::string_view kInfoEpisodesPerRun = "EpisodesPerRun ";
inline constexpr std::string_view kInfoNumSamplesPerEpisode = "NumSamplesPerEpisode ";
inline constexpr std::string_view kInfoEpisodeStartToStart = "EpisodeStartToStart ";
inline constexpr std::string_view kInfoRunsPerTrial = "RunsPerTrial ";
inline constexpr std::string_view kInfoRunStartToStart = "RunStartToStart ";
inline constexpr std::string_view kInfoSecondsPerRun = "SecondsPerRun ";
inline constexpr std::string_view kInfoNumberOfTrials = "NumberOfTrials ";
inline constexpr std::string_view kInfoTrialStartToStart = "TrialStartToStart ";
inline constexpr std::string_view kInfoADCSampleInterval = "ADCSampleInterval ";
inline constexpr std::string_view kInfoADCNumChannels = "ADCNumChannels ";
inline constexpr std::string_view kInfoADCRange = "ADCRange ";
inline constexpr std::string_view kInfoADCResolution = "ADCResolution ";
inline constexpr std::string_view kInfoAutosampleAdditGain = "AutosampleAdditGain ";
inline constexpr std::string_view kInfoAutosampleEnable = "AutosampleEnable    ";
inline constexpr std::string_view kInfoAutosampleADCNum = "AutosampleADCNum       ";
inline constexpr std::string_view kInfoADCSamplingSeq = "ADCSamplingSeq (";
inline constexpr std::string_view kInfoADCUnits = "ADCUnits (";
inline constexpr std::string_view kInfoADCProgrammableGain = "ADCProgrammableGain (";
inline constexpr std::string_view kInfoInstrumentScaleFactor = "InstrumentScaleFactor(";
inline constexpr std::string_view kInfoInstrumentOffset = "InstrumentOffset(";
inline constexpr std::string_view kInfoSignalGain = "SignalGain(";
inline constexpr std::string_view kInfoSignalOffset = "SignalOffset (";
inline constexpr std::string_view kInfoFileComment = "File Comment";
// Labels of the ABF 2 fields that have no ABF 1.x namesake in the report.
inline constexpr std::string_view kInfoFileInfoSize = "FileInfoSize ";
inline constexpr std::string_view kInfoFileStartTimeMS = "FileStartTimeMS ";
inline constexpr std::string_view kInfoCreatorName = "CreatorName ";
inline constexpr std::string_view kInfoCreatorVersion = "CreatorVersion ";
inline constexpr std::string_view kInfoProtocolPath = "ProtocolPath ";
inline constexpr std::string_view kInfoADCSequenceInterval = "ADCSequenceInterval ";
inline constexpr std::string_view kInfoSweepCount = "Sweeps ";
inline constexpr std::string_view kInfoADCNum = "ADCNum (";
inline constexpr std::string_view kInfoADCChannelName = "ADCChannelName (";
inline constexpr std::string_view kInfoTelegraphEnable = "TelegraphEnable (";
inline constexpr std::string_view kInfoTelegraphAdditGain = "TelegraphAdditGain (";

// Template header for the ABF files the program writes.
inline constexpr std::string_view kTemplateHeaderFileName = "SamplABF.dat";
inline constexpr std::string_view kErrorCaption = "Error";
inline constexpr std::string_view kTemplateMissingText =
    "The file SamplABF.dat does not exist.  The program cannot continue without this file.  "
    "Please contact technical support to obtain a new copy of it.";
inline constexpr std::string_view kSaveAsAbf = "Save as ABF File";

// ---- end of ABF data files block -------------------------------------------

}  // namespace vess::texts
