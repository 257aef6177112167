// Every caption, message, prompt, menu text, grid label and file tag of the
// work arrays, histograms, correlograms and tests, kept once. Texts marked
// "ours" have no established wording; every other text is as the users know
// it (spelling and double spaces included).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vess::stats_texts {

inline std::string ArrayTag(int k) { return "#" + std::to_string(k); }

// ---- Values that were not measured (ours) ---------------------------------

inline constexpr std::string_view kOneLeftOutText = "1 value that was not measured was left out";
inline std::string LeftOutText(std::size_t n) {
    return std::to_string(n) + " values that were not measured were left out";
}
inline constexpr std::string_view kLostPrecisionText =
    "Values above 16,777,216 have lost precision in the 32-bit work array";
inline constexpr std::string_view kNothingMeasuredCaption = "Not measured";
inline constexpr std::string_view kNothingMeasuredText =
    "None of the values was measured: there is nothing to analyse.";

// ---- Work arrays -----------------------------------------------------------

inline std::string ArrayName(int k) { return "Array " + ArrayTag(k); }  // "Array #1"

// Event fields that the fill menus offer, by item index 0..16.
inline constexpr std::string_view kFieldCaptions[17] = {
    "Amplitude", "Noise", "Time to Rise", "Time to Decay", "Area", "Time", "Baseline",
    "Group", "Channel", "Rise10-90", "Half-width", "Rise 50", "Peak Direction", "Burst #",
    "Burst Event #", "Slope10-90", "Relative Time"};

// Menus of the main form.
inline std::string PutEventDataMenu(int k) { return "Put Event Data into Array " + ArrayTag(k); }
inline std::string PutHighlightedMenu(int k) {
    return "Put Highlighted Event Data into Array " + ArrayTag(k);
}
inline constexpr std::string_view kInterEventMenu = "Calculate Inter-event Intervals";
inline std::string PutIntoArrayMenu(int k) { return "Put into Array " + ArrayTag(k); }
inline std::string ClearArrayMenu(int k) { return "Clear Array " + ArrayTag(k); }
inline constexpr std::string_view kManualDataEntryMenu = "View or Enter Data into Array";
inline constexpr std::string_view kMathMenu = "Mathematical Operation";
inline constexpr std::string_view kArrayCopyMenu = "Copy Array Data into Clipboard";
inline std::string PasteArrayMenu(int k) { return "Paste into Array " + ArrayTag(k); }
inline constexpr std::string_view kArrayAsciiMenu = "Save Array Data as ASCII";
inline constexpr std::string_view kImportAsciiMenu = "Open ASCII to import data into Arrays";

// Filling from events.
inline constexpr std::string_view kClearOrAppendCaption = "Append data or clear Data before adding";
inline std::string ClearOrAppendText(int k) {
    return "Would you like to clear the array " + ArrayTag(k) +
           " before adding? (Answering 'No' will append the new data to the previous data)";
}
inline constexpr std::string_view kAddGroupCaption = "Add Grouped Events";
inline constexpr std::string_view kAddGroupText =
    "Please enter the group number you would like to add.  (Entering 0 will add all the events.)";
inline constexpr std::string_view kAddConstantCaption = "Add a constant";
inline constexpr std::string_view kAddConstantText =
    "For the event time data, you have an option to add a constant time to the whole data set.  "
    "Please enter a value in msec to add to each event time data.";
inline std::string DoneFillingCaption(int k) { return "Done Filling Array " + ArrayTag(k); }
inline std::string DoneFillingText(int count, int k) {
    return "All of " + std::to_string(count) + " event data are safely put into Array " +
           ArrayTag(k) + " for further statistical data analysis.";
}
inline constexpr std::string_view kIntervalGroupCaption = "Calculate Grouped Events";
inline constexpr std::string_view kIntervalGroupText =
    "Please enter the group number you would like to calculate for.  (Entering 0 will calculate "
    "for all the events.)";
inline constexpr std::string_view kNotEnoughEventsText = "Not enough events to add.";
inline std::string DoneIntervalsText(int count, int k) {
    return "All of " + std::to_string(count) + " inter-event intervals are safely put into Array " +
           ArrayTag(k) + " for further statistical data analysis.";
}

// Clipboard.
inline constexpr std::string_view kClearBeforePasteCaption = "Clear Data Array?";
inline std::string ClearBeforePasteText(int n, int k) {
    return "There are " + std::to_string(n) +
           " numbers extracted from the clipboard.  Would you like to clear the Array#" +
           std::to_string(k) + " before pasting?";
}

// Array text files.
inline constexpr std::string_view kArrayImportFilter = "*.txt";
inline constexpr std::string_view kSaveArraysCaption = "Save Array Data";        // dialog title, ours
inline constexpr std::string_view kImportArraysCaption = "Import Array Data";    // dialog title, ours
inline constexpr std::string_view kArrayFileShape = "3\t2";
inline constexpr std::string_view kArrayDataTag = "Array Data : ";
inline constexpr std::string_view kArrayDataProbe = "Array Data";
inline constexpr std::string_view kMaxArray1Tag = "MaxArray1 : ";
inline constexpr std::string_view kMaxArray2Tag = "MaxArray2 : ";
inline constexpr std::string_view kNotValidArrayCaption = "Not a Valid Data Array";
inline constexpr std::string_view kNotValidArrayText =
    "This file does not contain valid array data.  Please check the file and try again.";

// Array view of the data analysis window.
inline std::string DataArrayColumn(int k) { return "Data Array " + ArrayTag(k); }  // "Data Array #1"
inline constexpr std::string_view kManualDataEntryHelp = "20.  Manual Data Entry";

// Mathematical Operation window.
inline constexpr std::string_view kOperandCaptions[17] = {
    "Amplitude", "Time", "Rise-time", "Decay-time", "Area", "Noise", "Baseline", "Group",
    "Channel", "Rise 10-90", "Half-width", "Rise 50", "Direction", "Inter-event Interval",
    "Array #1", "Array #2", "Constant"};
inline constexpr std::string_view kOperationCaptions[6] = {
    "Addition", "Subtraction", "Muliply", "Divide", "Squared", "Square root"};
inline constexpr std::string_view kCalculateButton = "Caculate";
inline constexpr std::string_view kCancelButton = "Cancel";
inline constexpr std::string_view kMathFinishedCaption = "Mathematical Operation Finished";
inline std::string MathFinishedText(int k) {
    return "Calculations are done and the results are put into array #" + std::to_string(k);
}
inline std::string MathNotNumbersText(int n) {  // ours
    return std::to_string(n) +
           " of the results are not finite numbers (a value that was not measured, a division by "
           "zero or the square root of a negative value); they are stored as not measured and "
           "left out of statistics.";
}

// ---- Histograms and correlograms -----------------------------------------

// Series names by histogram source 1..15 (index 0 unused).
inline constexpr std::string_view kSourceNames[16] = {
    "", "Amplitude", "Time", "Rise-time", "Decay-time", "Area", "Noise", "Baseline",
    "Rise 10-90", "Half-width", "Rise 50", "Slope10-90", "Relative Time", "Inter-event Interval",
    "Data Array#1", "Data Array#2"};
inline constexpr std::string_view kUnitSec = "sec";
inline constexpr std::string_view kUnitMsec = "msec";
inline constexpr std::string_view kPerMsec = "/msec";
inline constexpr std::string_view kAxisUnitCaption = "x-axis unit";
inline constexpr std::string_view kAxisUnitText = "Please enter the unit of the x-axis.";  // ours

inline constexpr std::string_view kGroupNumberCaption = "Group Number";
inline constexpr std::string_view kGroupNumberText =
    "Please enter group number to plot grouped events only.  Entering zero will plot all events.";
inline constexpr std::string_view kNoGroupEventsCaption = "No Events";  // ours
inline std::string NoGroupEventsText(int g) {
    return "There is no events with group number " + std::to_string(g) + ".  Try another group.";
}

inline constexpr std::string_view kBinSizeCaption = "Bin Size";
inline std::string BinSizeText(const std::string& series, const std::string& unit) {
    return "Please enter the bin size for " + series + " in " + unit + ".";
}
inline constexpr std::string_view kTooManyBinsCaption = "Too many bins";
inline constexpr std::string_view kTooManyBinsText =
    "Too many bins!  Please readjust the bin size and try again.";

inline constexpr std::string_view kNumberOfEvents = "Number of Events";
inline constexpr std::string_view kCumulativeFraction = "Cumulative Fraction";
inline constexpr std::string_view kFraction = "Fraction";
inline constexpr std::string_view kFrequencyTitlePrefix = " Frequency Histogram  ";
inline constexpr std::string_view kBinSizeTag = " bin size=";
inline constexpr std::size_t kFrequencyTitleMax = 80;
inline constexpr std::string_view kCumulativePrefix = "Cumulative ";
inline constexpr std::string_view kHistogramSuffix = " Histogram";
inline constexpr std::string_view kInversePrefix = "Inverse Cumulative ";

inline constexpr std::string_view kEqualCountsCaption = "Try Again";
inline constexpr std::string_view kEqualCountsText =
    "Data Array #1 and #2 should have the equal number of values.  Please make sure you put time "
    "data for Array #1 and corresponding values for Array #2";
inline constexpr std::string_view kRunningBinCaption = "Bin Size for running average plot.";
inline constexpr std::string_view kRunningBinText = "Please enter the bin size for Time in second.";
inline constexpr std::string_view kTimeSecAxis = "Time (sec)";
inline constexpr std::string_view kRunningTitlePrefix = " Running Average Plot  ";
inline constexpr std::string_view kRunningYAxis = "Average";  // ours

inline constexpr std::string_view kIntervalSeries = "Interval";
inline constexpr std::string_view kMaxBinsCaption = "Maximum Number of Bin";
inline constexpr std::string_view kMaxBinsDefault = "1000";
inline constexpr std::string_view kAutoMaxBinsText =
    "Please enter the maximum number of bins.  This value determines the upper range of the "
    "x-axis.  For example, 1000 bins of bin size 1 ms sets the x range as 0 < x < +1000 ms.";
inline constexpr std::string_view kCrossMaxBinsText =
    "Please enter the maximum number of bins.  This value determines the upper and lower range "
    "of the x-axis.  For example, 1000 bins of bin size 1 ms sets the x range as -1000 ms < x < "
    "+1000 ms.";
inline constexpr std::string_view kNormalizeCaption = "Normalize";
inline constexpr std::string_view kNormalizeText =
    "Do you want to normalize by the total number of events?";
inline constexpr std::string_view kAutoCorrelation = "Auto-correlation";
inline constexpr std::string_view kCrossCorrelation = "Cross-correlation";
inline std::string AutoCorrelogramTitle(int k) {
    return " Auto-correlogram of Array#" + std::to_string(k) + " ";
}
inline std::string CrossCorrelogramTitle(int first) {
    return first == 1 ? " Cross-correlogram of Array#1 against Array #2 "
                      : " Cross-correlogram of Array#2 against Array #1 ";
}
inline constexpr std::string_view kCorrelogramMenuAuto[2] = {"Array #1", "Array #2"};
inline constexpr std::string_view kCorrelogramMenuCross[2] = {"Array #1 against Array #2",
                                                              "Array #2 against Array #1"};

inline constexpr std::string_view kCoastlineCaption = "Coastline";  // ours
inline constexpr std::string_view kCoastlineText =
    "The coastline length of the trace in this display window is ";
inline constexpr std::string_view kTimeBinCaption = "Time Bin";
inline constexpr std::string_view kTimeBinText = "Please enter the length of time for each bin in msec.";
inline constexpr std::string_view kTimeBinDefault = "1000";
inline constexpr std::string_view kTimeSAxis = "Time (s)";
inline constexpr std::string_view kCoastlineTitlePrefix = " Coastline Time Course  ";
inline constexpr std::string_view kCoastlineYAxis = "Coastline Length";  // ours

inline constexpr std::string_view kNoiseSeries = "Noise Amplitude";
inline constexpr std::string_view kNoiseBinTextPrefix =
    "This function will generate an amplitude frequency histogram from the displayed trace.  Set "
    "the area of baseline with the two vertical cursors and set the amplitude range with the two "
    "horizontal cursors.  ";

// ---- Tests and descriptive statistics ------------------------------------

inline constexpr std::string_view kStatisticsMenu = "Statistical Data Analysis";
inline constexpr std::string_view kTTestPairedMenu = "T-test: 2-sample Paired";
inline constexpr std::string_view kTTestUnequalMenu = "T-test: 2-sample unequal variances";
inline constexpr std::string_view kTTestEqualMenu = "T-test: 2-sample equal variances";
inline constexpr std::string_view kFTestMenu = "F-test: 2-sample for variances";
inline constexpr std::string_view kRegressionMenu = "Linear Regression";
inline constexpr std::string_view kKsMenu = "Kolmogorov-Smirnov 2 sample test";
inline constexpr std::string_view kColumnStatisticsMenu = "Column Statistics";

// Data analysis window.
inline constexpr std::string_view kOptionMean = "Mean";
inline constexpr std::string_view kOptionStdDev = "Std. Dev";
inline constexpr std::string_view kOptionDataArray = "Data Array ";
inline constexpr std::string_view kChoiceArray[2] = {"Data Array#1", "Data Array#2"};
inline constexpr std::string_view kSample1Frame = "Sample 1";
inline constexpr std::string_view kSample2Frame = "Sample 2";
inline constexpr std::string_view kAlphaDefault = "0.05";
inline constexpr std::string_view kDataInputFrame = "Data Input";
inline constexpr std::string_view kTestButton = "Test";
inline constexpr std::string_view kHelpButton = "Help";
inline constexpr std::string_view kResultDisplayFrame = "Result Display";

inline constexpr std::string_view kEmptyArrayCaption = "Empty Data Array";
inline constexpr std::string_view kEmptyArrayText =
    "One of the Data Array is empty.  Please fill the array with data and try again.";
inline std::string EmptyOneArrayCaption(int k) { return "Empty Data Array " + ArrayTag(k); }
inline std::string EmptyOneArrayText(int k) {
    return "The Data Array " + ArrayTag(k) + " is empty.  Please fill the array with data and try again.";
}
inline constexpr std::string_view kUnequalCountsCaption = "Inappropriate Values";
inline constexpr std::string_view kUnequalCountsText =
    "The number of two samples should be equal.  Please check the values and try again.";

// Result grid labels.
inline constexpr std::string_view kRowMean = "Mean";
inline constexpr std::string_view kRowVariance = "Variance";
inline constexpr std::string_view kRowPooledVariance = "Pooled Variance";
inline constexpr std::string_view kRowDegreesOfFreedom = "Degree of Freedom";
inline constexpr std::string_view kRowTStat = "t Stat";
inline constexpr std::string_view kRowFStat = "F Stat";
inline constexpr std::string_view kRowPOneTail = "P value: one-tail";
inline constexpr std::string_view kRowPTwoTail = "P value: two-tail";
inline constexpr std::string_view kRowMaxAbsDiff = "Max. Abs(Difference)";
inline constexpr std::string_view kRowMaxPlusDiff = "Max. (+) Difference";
inline constexpr std::string_view kRowMaxMinusDiff = "Max. (-) Difference";
inline constexpr std::string_view kRowKsZ = "K-S Z";
inline constexpr std::string_view kRowKsP = "2-tailed P";
inline constexpr std::string_view kRowKsExactP = "Exact 2-tailed P";  // ours
inline constexpr std::string_view kRowEquation = "The Equation is";
inline constexpr std::string_view kEquationY = "Y = ";
inline constexpr std::string_view kEquationPlus = " + ";
inline constexpr std::string_view kEquationX = "X";
inline constexpr std::string_view kRowCorrelation = "Coeff Correl (r)";
inline constexpr std::string_view kRowRSquared = "r-squared";
inline constexpr std::string_view kRowN = "n";
inline constexpr std::string_view kRowRegressionP = "p (2-tailed):";

inline constexpr std::string_view kKsTitle = "Cumulative Histograms of Array#1 and Array#2";
inline constexpr std::string_view kXAxis = "X Axis";
inline constexpr std::string_view kYAxis = "Y Axis";
inline constexpr std::string_view kRegressionCaptionPrefix = "Array #1 vs. Array #2: n=";

// Descriptive statistics window.
inline constexpr std::string_view kDescriptiveTitle = "Data Array Statistics";
inline constexpr std::string_view kDescriptiveRows[11] = {
    "Average", "Stdev", "Std Error", "Coeff of Var", "1/CV^2", "Variance", "Skewness",
    "Kurtosis", "Median", "Minimum", "Maximum"};

}  // namespace vess::stats_texts
