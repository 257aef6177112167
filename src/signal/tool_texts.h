// Captions, prompts and labels of the noise and trace tools, the event-free
// recording, the synch array and the picture series.
#pragma once

#include <string_view>

namespace vess::tool_texts {

// Noise measures.
inline constexpr std::string_view kNoiseMenu = "Noise Measures";
inline constexpr std::string_view kNoiseOfScreen = "Displayed screen";
inline constexpr std::string_view kNoiseOfCursors = "Between the cursors";
inline constexpr std::string_view kPointsLabel = "Points: ";
inline constexpr std::string_view kMeanLabel = "Mean: ";
inline constexpr std::string_view kMedianLabel = "Median (baseline): ";
inline constexpr std::string_view kSdLabel = "SD: ";
inline constexpr std::string_view kRmsLabel = "RMS about the median: ";
inline constexpr std::string_view kPeakToPeakLabel = "Peak-to-peak: ";
inline constexpr std::string_view kCoastlineLabel = "Coastline length: ";
inline constexpr std::string_view kTooShortText = "The stretch holds fewer than two samples.";

// Noise spectrum.
inline constexpr std::string_view kSpectrumMenu = "Noise Power Spectrum";
inline constexpr std::string_view kSegmentCaption = "Segment Length";
inline constexpr std::string_view kSegmentPrompt =
    "Please enter the length of each spectrum segment in points (a power of 2).";
inline constexpr std::string_view kSegmentRefused =
    "The segment length must be a power of 2 from 16 up to the number of points in the stretch.";
inline constexpr std::string_view kFrequencyAxis = "Frequency (Hz)";
inline constexpr std::string_view kPsdAxisPrefix = "PSD (";
inline constexpr std::string_view kPsdAxisSuffix = "^2/Hz)";
inline constexpr std::string_view kLineFrequencyMenu = "Line Frequency 60 Hz";

// Difference and variance-mean traces.
inline constexpr std::string_view kDifferenceMenu = "Difference Trace";
inline constexpr std::string_view kTimeAxis = "Time (ms)";
inline constexpr std::string_view kPerMsSuffix = "/ms";
inline constexpr std::string_view kVarianceMeanMenu = "Variance-Mean Trace";
inline constexpr std::string_view kWindowCaption = "Window";
inline constexpr std::string_view kWindowPrompt =
    "Please enter the number of points of the running window (2 or more).";
inline constexpr std::string_view kWindowRefused =
    "The window must hold 2 or more points and no more than the stretch.";
inline constexpr std::string_view kMeanAxis = "Running mean";
inline constexpr std::string_view kVarianceAxis = "Running variance";

// Event-free recording.
inline constexpr std::string_view kEventFreeMenu = "Eliminate events into an event-free ABF file";
inline constexpr std::string_view kMarginCaption = "Margin";
inline constexpr std::string_view kMarginPrompt =
    "Please enter the margin in msec added before the start and after the decay point of each "
    "event.";
inline constexpr std::string_view kNoEventsText = "There are no events to eliminate.";
inline constexpr std::string_view kEventFreeSaved = "The event-free recording is saved as ";

// Synch array.
inline constexpr std::string_view kSynchMenu = "Sweep Start Times into Array";
inline constexpr std::string_view kSynchCaption = "Synch Array";
inline constexpr std::string_view kSynchArrayPrompt =
    "Please enter the array (1 or 2) to receive the start time of each sweep in msec.";
inline constexpr std::string_view kNotEpisodicText =
    "This recording has a single sweep: there are no sweep start times to extract.";
inline constexpr std::string_view kSynchDone = " sweep start times (ms) are put into Array #";

// Picture series.
inline constexpr std::string_view kPictureMenu = "Picture Series of Screens";
inline constexpr std::string_view kPictureCaption = "Picture Series";
inline constexpr std::string_view kFromPrompt = "Please enter the first screen number.";
inline constexpr std::string_view kToPrompt = "Please enter the last screen number.";
inline constexpr std::string_view kStepPrompt = "Please enter the step between screens.";
inline constexpr std::string_view kFolderCaption = "Folder for the Pictures (name the first picture)";
inline constexpr std::string_view kPngFilter = "PNG Image (*.png)";
inline constexpr std::string_view kPngExtension = "png";
inline constexpr std::string_view kPicturesSaved = " pictures are saved in ";
inline constexpr std::string_view kScreenRangeRefused =
    "The screens must lie between 1 and the number of screens, the first not after the last, "
    "and the step must be 1 or more.";

}  // namespace vess::tool_texts
