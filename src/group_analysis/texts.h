// Every caption, message, prompt, filter and file tag of the group analysis
// window and its commands, kept once. Spelling and double spaces are as the
// users know them.
#pragma once

#include <string>
#include <string_view>

namespace vess::group::texts {

inline constexpr std::string_view kWindowCaption = "Group Analysis and Curve Fitting";

// Trace set and navigation.
inline constexpr std::string_view kSourceEpisodes = "Episodes";
inline constexpr std::string_view kSourceGroup = "Group #";
inline std::string TraceLabel(int k, int n) {
    return (k == 0 ? std::string("Trace:  0") : "Trace: " + std::to_string(k)) + " of " +
           std::to_string(n);
}
inline constexpr std::string_view kJumpCaption = "Jump to Trace";
inline std::string JumpPrompt(int n) {
    return "Please specify the trace number to jump to (Trace 0 is the average trace).  Range: 0 to " +
           std::to_string(n) + ".";
}
inline constexpr std::string_view kAverageTraceCaption = "Average Trace";
inline constexpr std::string_view kCannotRemoveAverage = "Cannot remove the averaged trace.";
inline constexpr std::string_view kCannotRegroupAverage = "Cannot regroup the averaged trace.";
inline constexpr std::string_view kGroupNumberCaption = "Group Number";
inline constexpr std::string_view kRegroupPrompt = "Please enter the group number to regroup this trace.";
inline constexpr std::string_view kOnlyIndividualOrAverage =
    "This function will only work when trace is shown as individual or average.";
inline constexpr std::string_view kNotAvailableCaption = "Not Available";
inline constexpr std::string_view kTryAgainCaption = "Try Again";
inline constexpr std::string_view kManualOnlyIndividual =
    "Manual detection only works with individual traces.  Please change the display settings and try again.";
inline constexpr std::string_view kFieldPotentials = "Field Potentials";
inline constexpr std::string_view kSynapticCurrents = "Synaptic Currents";
inline constexpr std::string_view kSlopeFitted = "Slope";
inline constexpr std::string_view kSlopeChord = "10-90% Chord";
inline constexpr std::string_view kAvailableInFuture = "This function will be available in future";

// Trace and curve data out.
inline constexpr std::string_view kCopyTraceCaption = "Copy Trace Data";
inline std::string CopyTracePrompt(int n) {
    return "Please specify the trace number to copy (Trace 0 is the average trace).  Range: 0 to " +
           std::to_string(n);
}
inline constexpr std::string_view kNormalizeCaption = "Normalize Trace";
inline constexpr std::string_view kNormalizePrompt =
    "Please enter normalization factor to divide the trace by.  This will normalize the trace to 100.  (Entering 1 will bypass the normalization).";
inline constexpr std::string_view kGroupAnalysisHeader = "Group Analysis: ";
inline constexpr std::string_view kGroupHeader = " Group # ";
inline constexpr std::string_view kTraceHeader = " Trace # ";
inline constexpr std::string_view kCurveFitHeader = "Curve Fit";
inline constexpr std::string_view kCurveDataCaption = "Curve Data";
inline constexpr std::string_view kNoResultCurve =
    "There is no curve to put out yet.  Extract a trace or fit one first.";
// The line above a printed picture: "Group # " g, "Type: " type.
inline constexpr std::string_view kPrintGroup = "Group # ";
inline constexpr std::string_view kPrintType = "Type: ";
inline constexpr std::string_view kScaleBarsCaption = "Scale Bars";
inline constexpr std::string_view kScaleBarsPrompt = "Would you like to add scale bars to the metafile?";
inline constexpr std::string_view kPreviewCaption = "Fitting Results Print Preview";
inline constexpr std::string_view kTimeColumn = "Time (ms) ";

// Results table.
inline constexpr std::string_view kAsciiFitFilter = "ASCII File (*.Fit)";
inline constexpr std::string_view kAsciiFitExtension = "Fit";
inline constexpr std::string_view kColumnStatCaption = "Group Analysis Results";
inline constexpr std::string_view kResultsFileFilter = "Results File (*.RSL)";
inline constexpr std::string_view kResultsFileExtension = "RSL";
inline constexpr std::string_view kResultsFileTag = "Vessantorium Results File.";
inline constexpr std::string_view kReplaceCaption = "Replace";
inline constexpr std::string_view kReplaceText = "File already exist.  Do you want to replace?";
inline constexpr std::string_view kClearResultsCaption = "Clear results?";
inline std::string ClearResultsPrompt(int count) {
    return "There are " + std::to_string(count) +
           " previous results.  Would you like to clear the previous results before loading?";
}
inline std::string ClearArrayPrompt(int array) {
    return "Would you like to clear the array #" + std::to_string(array) +
           " before adding? (Answering 'No' will append the new data to the previous data)";
}
// Says Array #1 for both arrays.
inline constexpr std::string_view kDoneFillingCaption = "Done Filling Array #1";
inline constexpr std::string_view kNotMeasured = "not measured";  // ours
inline constexpr std::string_view kNoResultsToPutText =  // ours
    "There are no results to put into the array: fit or measure a trace first.";
inline std::string DoneFillingText(int count) {
    return "All of " + std::to_string(count) +
           " results are safely put into Array #1 for further statistical data analysis.";
}

// Settings.

// Fitting.
inline constexpr std::string_view kStartFitting = "Start Fitting";
inline constexpr std::string_view kInterruptFitting = "Interrupt Fitting";
inline constexpr std::string_view kFitRangePeakToEnd = "Peak to End";
inline constexpr std::string_view kFitRange1090 = "Decay 10%-90%";
inline constexpr std::string_view kFitRange2080 = "Decay 20%-80%";
inline constexpr std::string_view kFitRangeCustom = "Custom Range";
inline constexpr std::string_view kSetRangeCaption = "Set Range";
inline constexpr std::string_view kSetRangeText = "Please set the two green cursors for the decay fitting range.";
inline constexpr std::string_view kFitMethodLeastSquares = "Least Squares";
inline constexpr std::string_view kFitMethodSimplex = "Simplex";
inline constexpr std::string_view kTooManyExponentials =
    "Too many exponentials for the data: a component collapsed (a time constant below one sampling interval, beyond ten times the fit range or equal to another, or an amplitude of zero).  Fit fewer exponentials.";
inline constexpr std::string_view kFitFailed =
    "The fit failed: a time constant is not above zero or a value is not finite.  No result is given.";
inline constexpr std::string_view kRise1090 = "10-90%";
inline constexpr std::string_view kRise2080 = "20-80%";
inline constexpr std::string_view kRise3070 = "30-70%";
inline constexpr std::string_view kProgressTrace = "Trace#=";
inline constexpr std::string_view kProgressIteration = "  # of Iteration=";
inline constexpr std::string_view kProgressStdev = "stdev=";
inline constexpr std::string_view kProgressTolerance = " Tolerance=";
inline constexpr std::string_view kAutoRejectCaption = "Auto-rejection";
inline std::string AutoRejectPrompt(int count, const std::string& list) {
    return "Found " + std::to_string(count) +
           " events that qualify the automatic rejection criterion.  The following is the list of events:" +
           list +
           ".  Would you like to remove these events from this group?  After events are rejected, you need to display the group again in Display tab to refresh the group display.";
}
inline constexpr std::string_view kCompareFitsCaption = "Compare Fits";
inline constexpr std::string_view kCompareFitsText =
    "This function performs decay fitting with 1 exponential and 2 exponential functions to compare the R-sqr values.  If the R-sqr value of 2 exponential fit differs by selected percentage or more, then the program reports the decay taus from the 2 exponential fit.  If not, it reports the decay tau from the 1 exponential fit.";
inline constexpr std::string_view kRegroupCaption = "Regroup";
inline std::string CompareRegroupText(int count, int group) {
    return "Found " + std::to_string(count) +
           " event(s) that fits better with sum of two exponential function.  These events are regrouped as Group #" +
           std::to_string(group) +
           ".  You will need to display the group again in Display tab to refresh the group display.";
}

// Plots of a results column.
inline constexpr std::string_view kBinSizeCaption = "Bin Size";
inline std::string BinSizePrompt(const std::string& column) {
    return "Please enter the bin size for " + column;
}
inline std::string TooManyBinsText(double min, double max, double bin) {
    return "Too many bins!  Data range from " + std::to_string(min) + " to " + std::to_string(max) +
           " in " + std::to_string(bin) + ".  Please readjust the bin size and try again.";
}
// menu_Plot's entries and the series they plot.
inline std::string DataArrayName(int array) { return "Data Array #" + std::to_string(array); }
inline constexpr std::string_view kNormalizeFirstCaption = "Number of points to normalize";
inline constexpr std::string_view kNormalizeFirstPrompt =
    "Please enter number of first points to normalize.  Entering 0 will generate non-normalized plot.";
inline constexpr std::string_view kFrequencyHistogram = "Frequency Histogram";
inline constexpr std::string_view kCumulativeFraction = "Cumulative Fraction";
inline constexpr std::string_view kNormalizedSuffix = " (Normalized)";
inline constexpr std::string_view kEventNumber = "Event #";
inline constexpr std::string_view kScatterTitle = "X-Y Scatter Plot : Group Analysis";
inline constexpr std::string_view kScatter3dTitle = "X-Y-Z 3D Scatter Plot : Group Analysis";
inline constexpr std::string_view kVarianceMeanTitle = "Non-stationary Fluctuation Analysis";

}  // namespace vess::group::texts
