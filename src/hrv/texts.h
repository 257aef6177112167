// Every caption, label, message, column title and definition that the
// heart-rate windows and commands show or write, kept once. Spelling and
// double spaces are as the users know them: never change a text.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vess::hrv::texts {

// A bound as typed: "100", "0.5".
inline std::string FormatBound(double ms) {
    std::string t = std::to_string(ms);
    t.erase(t.find_last_not_of('0') + 1);
    if (!t.empty() && t.back() == '.') t.pop_back();
    return t;
}

// Events in time order.
inline constexpr std::string_view kSortEventsCaption = "Sort Events";
inline constexpr std::string_view kSortEventsText =
    "This function requires that the events are sorted by time.  Would you like to sort the "
    "events now?";

// No interval within the bounds (ours).
inline constexpr std::string_view kNoIntervalInBoundsCaption = "No RR Interval within the Bounds";
inline std::string NoIntervalInBoundsText(std::size_t intervals, double lowerMs, double upperMs) {
    return "None of the " + std::to_string(intervals) +
           " RR intervals lies within the bounds: the analysis leaves out intervals smaller than " +
           FormatBound(lowerMs) + " ms and greater than " + FormatBound(upperMs) +
           " ms.  Please set the bounds to suit the recording and try again.";
}
inline std::string NotMeasuredIntervalsText(std::size_t n) {
    return std::to_string(n) + " RR intervals next to a beat whose time was not measured were left out";
}

// Settings section and keys.
inline constexpr std::string_view kSection = "HRV";
inline constexpr std::string_view kKeyUpperBound = "RRUBound";
inline constexpr std::string_view kKeyLowerBound = "RRLBound";
inline constexpr std::string_view kKeyPointsPerSegment = "NPointsSeg";
inline constexpr std::string_view kKeyThreshold = "ThreshdeltaRR";
inline constexpr std::string_view kKeyIncludeZero = "IncludeZero";
inline constexpr std::string_view kKeyExcludeLast = "ExcludeLastSeg";
inline constexpr std::string_view kKeyRRBinSize = "RRBinSize";
inline constexpr std::string_view kKeyDeltaRRBinSize = "DeltaRRBinSize";

// Time-domain window.
inline constexpr std::string_view kTimeDomainCaption =
    "Heart Rate Variability Analysis: Time Domain Measurements";
inline constexpr std::string_view kUpperBoundLabel = "Do not use RR intervals greater than ";
inline constexpr std::string_view kLowerBoundLabel = "and smaller than";
inline constexpr std::string_view kMsecLabel = "msec.";
inline constexpr std::string_view kSegmentPointsLabel =
    "Number of sample points to divide into even segments.";
inline constexpr std::string_view kSegmentPointsSuffix =
    "x  Sample Interval = total time period of segment";
inline constexpr std::string_view kThresholdLabel =
    "Threshold of delta RR for %NN and nNN calculations (msec)";
inline constexpr std::string_view kIncludeZeroLabel =
    "Include segments with no RR interval in calculations.";
inline constexpr std::string_view kExcludeLastLabel = "Exclude the last segment";
inline constexpr std::string_view kStartAnalysis = "Start Analysis";
inline constexpr std::string_view kSaveOptions = "Save Options";
inline constexpr std::string_view kSegmentResults = "Segment Results";
inline constexpr std::string_view kGridTip = "Click on column header to see the definition.";
inline constexpr std::string_view kCopyFinishedCaption = "Copy Finished";
inline constexpr std::string_view kCopyFinishedText = "Results are copied onto Clipboard.";

// Result grid: "File Name", then the measures in this order.
inline constexpr std::string_view kColFileName = "File Name";
inline constexpr std::array<std::string_view, 15> kMeasureColumns = {
    "n RR", "MRR", "SDRR", "CV%", "n dRR", "MdRR", "SDdRR", "rMSSD",
    "nNN", "%NN", "nSegment", "MANN", "SDANN", "MSDNN", "SDSDNN"};
// The definition shown on a click of each measure's column header.
inline constexpr std::array<std::string_view, 15> kMeasureDefinitions = {
    "n RR is the total number of RR-intervals used in this analysis.",
    "MRR is the mean of RR-intervals.",
    "SDRR is the standard deviation of RR-intervals.  It is also called cyclic length variation "
    "(CLV).",
    "CV% is the coefficient of variance in percentage.  CV%=SDRR/MRR*100.",
    "n dRR is the total number of delta RR-intervals (e.g. successive difference between "
    "adjoining RR-intervals) used in this analysis.",
    "MdRR is the mean of delta RR-intervals (e.g. successive difference between adjoining "
    "RR-intervals).",
    "SDdRR is the standard deviation of delta RR-intervals (e.g. successive difference between "
    "adjoining RR-intervals).",
    "rMSSD is the root mean square of delta RR-intervals, the square root of the mean of the sum "
    "of the squares of differences between adjoining RR-intervals.",
    "nNN is the number of times that a delta RR-interval is greater than the threshold indicated "
    "in the above option box.",
    "%NN is the percentage of delta RR-intervals that are greater than the threshold indicated "
    "in the above option box.",
    "nSegment is the total number of segments in 24 hr ECG recording.",
    "MANN is the mean of the mean of RR-intervals for each segment of the 24 hr ECG recording.",
    "SDANN is the standard deviation of the mean of RR-intervals for each segment of the 24 hr "
    "ECG recording.",
    "MSDNN is the mean of the standard deviation of RR-intervals for each segment of the 24 hr "
    "ECG recording.",
    "SDSDNN is the standard deviation of the standard deviation of RR-intervals for each segment "
    "of the 24 hr ECG recording."};
// Segment grid.
inline constexpr std::array<std::string_view, 4> kSegmentColumns = {"Seg #", "n RR ", "Mean RR",
                                                                    "Std RR"};

// Histograms, Lorenz plot, tachogram.
inline constexpr std::string_view kRRSeries = "RR Interval";
inline constexpr std::string_view kDeltaRRSeries = "Delta RR Interval";
inline constexpr std::string_view kMsecUnit = "msec";
inline constexpr std::string_view kRRHistogramYAxis = "Number of RR Intervals";
inline constexpr std::string_view kDeltaRRHistogramYAxis = "Number of Pairs of RR Intervals";
inline constexpr std::string_view kHistogramTitleSuffix = " Histogram ";
inline constexpr std::string_view kMsecTitleSuffix = " msec";
inline constexpr std::string_view kLorenzXAxis = "R(i)R(i+1) Interval (msec)";
inline constexpr std::string_view kLorenzYAxis = "R(i+1)R(i+2) Interval";
inline constexpr std::string_view kLorenzTitle = "Lorenz Plot ";
inline constexpr std::string_view kTachogramYAxis = "RR Interval";
inline constexpr std::string_view kTachogramXAxis = "Beat #";
inline constexpr std::string_view kTachogramTitle = "Tachogram ";
inline constexpr std::string_view kTachogramRecord = "Tachogram: ";
inline constexpr std::string_view kTachogramUnit = "(ms)";
inline constexpr std::string_view kTachogramSaved = "The Tachogram is saved as ";
inline constexpr std::string_view kTachogramMenu = "Tachogram";
inline constexpr std::string_view kGeneratePlot = "Generate Plot";
inline constexpr std::string_view kSaveAsAscii = "Save as ASCII";

// Scans.
inline constexpr std::string_view kMissingBeatsCaption = "Missing Beats";
inline constexpr std::string_view kMissingBeatsDefault = "100";
inline constexpr std::string_view kMissingBeatsPrompt =
    "This function scans and finds missing beats (area with undetected events).  The last event "
    "before missing beat will be marked as group #253.  Please enter the maximum interval to be "
    "considered as a missing beat in msec.";
inline constexpr std::string_view kSearchFinishedCaption = "Search Finished";
inline std::string MissingBeatsReport(int count) {
    return "There are " + std::to_string(count) +
           " areas with potential missing beats.  The events are marked as group #253.";
}
inline constexpr std::string_view kMaximumIntervalCaption = "Maximum Interval";
inline constexpr std::string_view kRejectPrompt =
    "This function scans every event and rejects RR-intervals that are too short.  Rejected "
    "events are marked as group #255 and can later be removed.  Please enter the maximum "
    "RR-interval to be rejected in msec.";
inline std::string RejectReport(int count) {
    return std::to_string(count) + " events are rejected and marked as group #255";
}

// Geometrical methods window.
inline constexpr std::string_view kGeometricCaption =
    "Heart Rate Variability: Geometrical Methods";
inline constexpr std::string_view kRRBinLabel = "Bin Size for RR Interval";
inline constexpr std::string_view kDeltaRRBinLabel = "Bin Size for Delta RR Interval";
inline constexpr std::string_view kGeneratePlots = "Generate Plots";
inline constexpr std::string_view kGeoLorenzX = "R1R2";
inline constexpr std::string_view kGeoLorenzY = "R2R3(ms)";
inline constexpr std::string_view kGeoTachogramX = "Beat#";
inline constexpr std::string_view kGeoTachogramY = "RR(ms)";

// Measures and plots beyond the time-domain grid.
inline constexpr std::string_view kTriangularIndex = "HRV triangular index";
inline constexpr std::string_view kTinn = "TINN";
inline constexpr std::string_view kSD1 = "SD1";
inline constexpr std::string_view kSD2 = "SD2";
inline constexpr std::string_view kSD1SD2 = "SD1/SD2";
inline constexpr std::string_view kEllipse = "SD1/SD2 ellipse";
inline constexpr std::string_view kIdentityLine = "Identity line";
inline constexpr std::string_view kTriangleFit = "Triangle fit";

// Spectral window.
inline constexpr std::string_view kSpectrumCaption = "Heart Rate Variability: Frequency Domain";
inline constexpr std::string_view kSpectrumTitle = "RR Interval Power Spectral Density ";
inline constexpr std::string_view kFrequencyAxis = "Frequency (Hz)";
inline constexpr std::string_view kDensityAxis = "PSD (ms^2/Hz)";
inline constexpr std::string_view kVLF = "VLF";
inline constexpr std::string_view kLF = "LF";
inline constexpr std::string_view kHF = "HF";
inline constexpr std::array<std::string_view, 7> kSpectrumColumns = {
    "Band", "From (Hz)", "To (Hz)", "Power (ms^2)", "Power (%)", "Power (n.u.)", "Peak (Hz)"};
inline constexpr std::string_view kLFHF = "LF/HF";
inline constexpr std::string_view kTotalPower = "Total";
inline constexpr std::string_view kWelchMethod = "Welch (cubic spline resampling)";
inline constexpr std::string_view kLombMethod = "Lomb-Scargle (uneven beats)";

}  // namespace vess::hrv::texts
