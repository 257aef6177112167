// Auto- and cross-correlograms of the work arrays. Pairs are counted through
// sorted copies and a moving window, which gives the counts of the pairwise
// definition in O(n log n + pairs counted).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "graphs/plot_data.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

struct Workspace;

struct Correlogram {
    bool tooManyBins = false;
    int64_t firstBin = 0;          // bin number of counts[0]
    std::vector<double> counts;    // pair counts (or counts / n when normalised)
};

// Pairs i < j with 0 <= x[j] - x[i] <= maxBins * binSize, binned by
// Int(d / binSize): bins 0..maxBins.
Correlogram AutoCorrelogram(std::span<const double> x, double binSize, int64_t maxBins);
// Every a of A and b of B with |b - a| <= maxBins * binSize, binned by
// Int((b - a) / binSize): bins -maxBins..maxBins.
Correlogram CrossCorrelogram(std::span<const double> a, std::span<const double> b, double binSize,
                             int64_t maxBins);
// The same counts straight from the definition, O(n^2); for checking.
Correlogram AutoCorrelogramPairwise(std::span<const double> x, double binSize, int64_t maxBins);
Correlogram CrossCorrelogramPairwise(std::span<const double> a, std::span<const double> b,
                                     double binSize, int64_t maxBins);
// Divides every count by n.
void Normalize(Correlogram& c, std::size_t n);

// Bars at bin left edges with the title and axis texts.
PlotData AutoCorrelogramPlot(const Correlogram& c, int arrayNumber, double binSize, const std::string& unit);
PlotData CrossCorrelogramPlot(const Correlogram& c, int firstArray, double binSize, const std::string& unit);

// menu_AutoCorrelogram item k-1 and menu_CrossCorrelogram (firstArray 1:
// "Array #1 against Array #2", 2: the reverse): unit, bin size, maximum bins
// and normalise questions. Cancelled for an empty array, a cancelled or
// unreadable answer; failed for too many bins.
Outcome<PlotData> AutoCorrelogramCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber);
Outcome<PlotData> CrossCorrelogramCommand(Workspace& ws, Dialogs& dialogs, int firstArray);

// The same in three steps, for a job over large arrays: the questions and a
// copy of the arrays, the count, then the normalise question and the plot.
struct CorrelogramRequest {
    std::vector<double> from, to;  // to is empty for an auto-correlogram
    bool cross = false;
    int arrayNumber = 1;           // the array, or the first of a cross-correlogram
    std::string unit;
    double binSize = 0;
    int64_t maxBins = 0;
    std::string note;              // values left out, precision lost
};
Outcome<CorrelogramRequest> PrepareAutoCorrelogram(Workspace& ws, Dialogs& dialogs, int arrayNumber);
Outcome<CorrelogramRequest> PrepareCrossCorrelogram(Workspace& ws, Dialogs& dialogs, int firstArray);
Correlogram CountCorrelogram(const CorrelogramRequest& request);
PlotData FinishCorrelogram(Dialogs& dialogs, Correlogram c, const CorrelogramRequest& request);

}  // namespace vess
