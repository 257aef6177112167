// Menu entries and window texts of the statistics windows that the core's
// texts do not hold. Texts marked "ours" have no established wording.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace vess::stats_ui_texts {

// A text of the program as Qt shows it.
inline QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }

// Top-level menus and their sub-menus.
inline constexpr std::string_view kDataArraysMenu = "&Data Arrays";        // ours
inline constexpr std::string_view kHistogramsMenu = "&Histograms";         // ours
inline constexpr std::string_view kStatisticsMenu = "&Statistics";         // ours
inline constexpr std::string_view kFreqHistoMenu = "Frequency Histogram";  // ours
inline constexpr std::string_view kCumulBinMenu = "Cumulative Histogram with Bins";        // ours
inline constexpr std::string_view kCumulNoBinMenu = "Cumulative Histogram without Bins";   // ours
inline constexpr std::string_view kInverseMenu = "Inverse Cumulative Curve";               // ours
inline constexpr std::string_view kRunningAverageMenu = "Running Average Plot";            // ours
inline constexpr std::string_view kAutoCorrelogramMenu = "Auto-correlogram";               // ours
inline constexpr std::string_view kCrossCorrelogramMenu = "Cross-correlogram";             // ours
inline constexpr std::string_view kCoastlineMenu = "Coastline Time Course";                // ours
inline constexpr std::string_view kNoiseHistogramMenu = "Noise Amplitude Histogram";       // ours
inline constexpr std::string_view kNoiseCursorsCaption = "Noise Amplitude Histogram";      // ours
inline constexpr std::string_view kNoiseCursorsText =                                      // ours
    "Place both cursors first (View, Cursors): the first follows the mouse, a middle click sets "
    "the second.  The vertical cursors bound the stretch of baseline, the horizontal cursors the "
    "amplitude range.";
inline std::string FreqHistoArrayMenu(int k) {
    return "Frequency Histogram of Array#" + std::to_string(k);
}
inline std::string CumulBinArrayMenu(int k) {
    return "Cumulative Histogram of Array#" + std::to_string(k) + " with Bins";
}
inline std::string CumulNoBinArrayMenu(int k) {
    return "Cumulative Histogram of Array#" + std::to_string(k) + " without Bins";
}
inline std::string InverseArrayMenu(int k) {  // ours
    return "Inverse Cumulative Curve of Array#" + std::to_string(k);
}

// Mathematical Operation window: the headings over its selectors.
inline constexpr std::string_view kMathHeadings[4] = {"First operand", "Operation", "Second operand",
                                                      "Result into"};  // ours

// Data analysis window.
inline constexpr std::string_view kDataAnalysisTitle = "Data Analysis";     // ours
inline constexpr std::string_view kSignificance = "Significance";           // ours
inline constexpr std::string_view kCount = "Count";                         // ours
inline constexpr std::string_view kViewArrayMenu = "View Data Arrays";      // ours
inline constexpr std::string_view kEditArrayMenu = "Enter or Edit Data";    // ours
inline constexpr std::string_view kCopyResultMenu = "Copy Results";         // ours
inline constexpr std::string_view kPrintResultMenu = "Print Results...";    // ours
inline constexpr std::string_view kCustomizeGraphMenu = "Customize Graph..."; // ours
inline constexpr std::string_view kBadSummaryCaption = "Data Input";        // the frame's name
inline constexpr std::string_view kBadSummaryText =
    "Please enter numbers for the mean, the standard deviation, the count and the significance "
    "level.";                                                               // ours
inline constexpr std::string_view kHelpText =
    "Choose the two samples (a data array, or for the t- and F-tests a mean, standard deviation "
    "and count), then press Test.  The paired t-test, the regression and the Kolmogorov-Smirnov "
    "test read Array #1 and Array #2.  View or Enter Data shows both arrays in the grid.";  // ours

}  // namespace vess::stats_ui_texts
