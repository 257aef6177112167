// Captions, column titles and messages of batch runs, kept once.
#pragma once

#include <array>
#include <string_view>

namespace vess::batch_texts {

// Summary columns, in order, for the window's table and the CSV header.
inline constexpr std::array<std::string_view, 11> kSummaryColumns{
    "File", "Channel", "Duration (s)", "Events", "Frequency (Hz)", "Median Amplitude", "Units",
    "Rise 10-90 (ms)", "Half-width (ms)", "Decay (ms)", "Errors"};

inline constexpr std::string_view kStopped = "not analysed: the batch was stopped";
inline constexpr std::string_view kStoppedPartway =
    "stopped before the end of the file; no event file written";
inline constexpr std::string_view kImproperParameters =
    "the detection parameters do not suit this recording; no event file written";
inline constexpr std::string_view kKeptEventFile = "kept: event file exists";
inline constexpr std::string_view kReadFaultSuffix = "; no event file written";

// The window.
inline constexpr std::string_view kWindowTitle = "Batch Analysis";
inline constexpr std::string_view kMenuAction = "&Batch Analysis...";
inline constexpr std::string_view kAddFiles = "Add Files...";
inline constexpr std::string_view kAddFolder = "Add Folder...";
inline constexpr std::string_view kClear = "Clear";
inline constexpr std::string_view kChannel = "Channel";
inline constexpr std::string_view kSettings = "Settings";
inline constexpr std::string_view kCurrentSettings = "Current settings";
inline constexpr std::string_view kSettingsFile = "Settings file (.SET)";
inline constexpr std::string_view kParameterFile = "Parameter file (.PAR)";
inline constexpr std::string_view kChoose = "Choose...";
inline constexpr std::string_view kMethod = "Method";
inline constexpr std::string_view kOutputFolder = "Event files";
inline constexpr std::string_view kBesideRecordings = "(beside each recording)";
inline constexpr std::string_view kJobs = "Workers";
inline constexpr std::string_view kOverwrite = "Replace existing event files";
inline constexpr std::string_view kRun = "Run";
inline constexpr std::string_view kStop = "Stop";
inline constexpr std::string_view kSaveSummary = "Save Summary";
inline constexpr std::string_view kProgress = "Progress";
inline constexpr std::string_view kSummaryFilter = "CSV File (*.csv)";
inline constexpr std::string_view kSummaryExtension = "csv";
inline constexpr std::string_view kNoFilesCaption = "Batch Analysis";
inline constexpr std::string_view kNoFilesText = "Add recordings to the list first.";

}  // namespace vess::batch_texts
