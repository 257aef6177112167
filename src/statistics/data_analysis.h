// The data analysis window's tests and the column statistics, as commands
// over the work arrays: the checks with their messages, and the grid rows
// (labels and number formats as the grid shows them) with the graph.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "graphs/plot_data.h"
#include "recording/data_array.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "statistics/result_table.h"

namespace vess {

struct Workspace;

enum class StatTest { TTestPaired, TTestUnequalVar, TTestEqualVar, FTest, LinearRegression, KsTest };
std::string_view StatTestMenuCaption(StatTest test);

// One sample of the t- and F-tests: a work array, or a summary typed in.
struct TestSample {
    bool fromArray = true;       // option "Data Array " (else "Mean")
    int arrayNumber = 1;         // "Data Array#1" / "Data Array#2"
    double mean = 0;             // summary option: "Mean", "Std. Dev", count
    double stdDev = 0;
    double count = 0;
};

struct TestRequest {
    StatTest test = StatTest::TTestEqualVar;
    TestSample sample1{true, 1};
    TestSample sample2{true, 2};
    double alpha = 0.05;         // significance level, shown beside the result
};

struct TestOutcome {
    ResultTable table;           // rows for Grid1
    std::optional<PlotData> plot;  // K-S curves, regression pairs and line
    double alpha = 0.05;
    double pTwoTailed = 0;       // the test's two-tailed p
    bool Significant() const { return pTwoTailed < alpha; }
};

// The checks ("Empty Data Array", "Inappropriate Values"), then the test.
// The paired test, the regression and K-S read both arrays whatever the
// sample options say. Failed with the check's message.
Outcome<TestOutcome> RunTestCommand(const Workspace& ws, const TestRequest& request);

// The same on two series, for the command line and other windows.
Outcome<TestOutcome> RunTest(StatTest test, std::span<const double> a, std::span<const double> b,
                             double alpha = 0.05);

// "Column Statistics": rows "Average" .. "Maximum", columns "Array #1" and
// "Array #2", cells "##0.000"; an empty array's column is blank.
ResultTable ColumnStatistics(const DataArray& a1, const DataArray& a2);
// The same rows for any number of series (column titles given).
ResultTable DescriptiveTable(std::span<const std::span<const double>> series,
                             std::span<const std::string> columnTitles);

}  // namespace vess
