// Histograms of one series: frequency, cumulative with and without bins,
// inverse cumulative; the running-average plot, the coastline time course and
// the noise-amplitude histogram. Pure builders on plain series, and the menu
// commands that ask their questions through Dialogs.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "graphs/plot_data.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

struct Workspace;

// Histogram code = source + kind offset.
enum class HistogramKind { Frequency = 0, CumulativeBins = 20, CumulativeNoBins = 40, Inverse = 60 };
enum class HistogramSource {
    Amplitude = 1, Time, RiseTime, DecayTime, Area, Noise, Baseline, Rise1090, HalfWidth, Rise50,
    Slope1090, RelativeTime, InterEventInterval, DataArray1, DataArray2
};
struct HistogramCode {
    HistogramSource source;
    HistogramKind kind;
};
// Codes 1..15, 21..35, 41..55, 61..75; nothing otherwise.
std::optional<HistogramCode> DecodeHistogramCode(int code);
std::string_view HistogramSourceName(HistogramSource source);   // "Amplitude", "Data Array#1" ...
bool UsesBins(HistogramKind kind);

struct HistogramPlot {
    bool tooManyBins = false;  // refused by the bin rule: plot is empty
    PlotData plot;
};
// One histogram of values. binSize is used by Frequency and CumulativeBins
// only. series and unit make the titles and axis texts.
HistogramPlot MakeHistogram(HistogramKind kind, std::span<const double> values, double binSize,
                            const std::string& series, const std::string& unit);

// The series of an event source (1..13) for one group (0: all events), in
// the units the histogram shows (times in s, durations in ms, levels in the
// recording's unit); and that unit.
std::vector<double> EventSourceValues(const Workspace& ws, HistogramSource source, int group);
std::string EventSourceUnit(const Workspace& ws, HistogramSource source);

// Histogram(code): the group prompt (event sources) or the x-axis unit prompt
// (arrays), the bin question (binned kinds), the bin rule. Cancelled when the
// user cancels or there is nothing to count; failed for a group without
// events or too many bins.
Outcome<PlotData> HistogramCommand(Workspace& ws, Dialogs& dialogs, int code);

// Mean of values per time bin (times in s); empty bins are skipped.
HistogramPlot MakeRunningAverage(std::span<const double> timesSec, std::span<const double> values,
                                 double binSizeSec);
// Array #1 times, Array #2 values; the equal-count check and the bin prompt.
Outcome<PlotData> RunningAverageCommand(Workspace& ws, Dialogs& dialogs);

// Sum of |difference| of successive values.
double CoastlineLength(std::span<const double> values);
// Coastline length per time bin of a trace whose sample i lies at
// startMs + i * intervalMs, plotted against the bin's start in s. The step
// from sample i to i + 1 belongs to the bin of sample i.
HistogramPlot MakeCoastlineTimeCourse(std::span<const double> values, double intervalMs,
                                      double binMs, const std::string& unit, double startMs = 0);
// menu_CoastlineM: the length message, the time-bin prompt, the time course
// of the displayed screen.
Outcome<PlotData> CoastlineCommand(Workspace& ws, Dialogs& dialogs);

// Cursors of the trace view: window indices of the two vertical cursors and
// levels (recording units) of the two horizontal ones, in any order.
struct NoiseCursors {
    int64_t left = 0;
    int64_t right = 0;
    double level1 = 0;
    double level2 = 0;
};
// The displayed samples from the left to the right cursor (inclusive), in the
// recording's unit, whose level lies between the two horizontal cursors.
std::vector<double> NoiseAmplitudes(const Workspace& ws, const NoiseCursors& cursors);
// menu_NoiseHistogram: the bin question, then a frequency histogram.
Outcome<PlotData> NoiseHistogramCommand(Workspace& ws, Dialogs& dialogs, const NoiseCursors& cursors);

}  // namespace vess
