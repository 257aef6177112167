// Plots and statistics of a results column: frequency and cumulative
// histograms, the time course over the rows, X-Y and X-Y-Z scatter, the
// variance-mean plot of fluctuation analysis, and the column statistics.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/fluctuation.h"
#include "group_analysis/result_row.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "statistics/descriptive.h"

namespace vess {
class DataArray;
}

namespace vess::group {

std::vector<double> ColumnValues(const ResultsTable& table, const ResultColumn& column);

// The window's Histogram procedure: asks the bin size for name and draws the
// values' frequency (or cumulative) histogram, its series called name;
// cancelled when there are no values or the question was cancelled, failed
// when the bin rule refuses the size.
Outcome<PlotData> ValuesHistogramCommand(const std::vector<double>& values, const std::string& name,
                                         bool cumulative, Dialogs& dialogs);
// The same for a results column.
Outcome<PlotData> ResultHistogramCommand(const ResultsTable& table, const ResultColumn& column,
                                         bool cumulative, Dialogs& dialogs);
// menu_Plot: the frequency histogram of work array 1 or 2 ("Data Array #1"
// or "#2"); an empty array fails with the statistics' empty-array message.
Outcome<PlotData> DataArrayHistogramCommand(const DataArray& array, int arrayNumber, Dialogs& dialogs);
// Asks how many first points to normalise to (0: none) and plots the column
// against "Event #", divided by the mean of those points.
Outcome<PlotData> TimeCourseCommand(const ResultsTable& table, const ResultColumn& column,
                                    Dialogs& dialogs);
PlotData ScatterPlot(const ResultsTable& table, const ResultColumn& x, const ResultColumn& y,
                     const std::optional<ResultColumn>& z = std::nullopt);
PlotData VarianceMeanPlot(const FluctuationResult& result, const std::string& units);

struct ColumnStatistics {
    std::string title;
    Descriptive stats;
};
std::vector<ColumnStatistics> ResultColumnStatistics(const ResultsTable& table);
// The statistics as text under "Group Analysis Results", values "##0.000".
std::string ColumnStatisticsText(const std::vector<ColumnStatistics>& columns);

}  // namespace vess::group
