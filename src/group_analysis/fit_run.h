// Start Fitting and Compare Fits over the traces of a set, as a job runs
// them: the work holds a set of its own (Start Display may build a new one
// meanwhile), reports the search through the job's callback and stops when
// it answers false; its result goes into the results and the picture after.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "group_analysis/decay_fit.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/trace_set.h"
#include "recording/job.h"

namespace vess {
class ResultsTable;
}

namespace vess::group {

struct FitRunInput {
    TraceSet set;
    std::vector<int32_t> traces;  // TracesToFit of the set
    int peakDirection = 1;
    int group = 1;
    UnitScale scale;
    FitSettings settings;
    // Set: Compare Fits with this criterion (per cent of R-sqr).
    std::optional<double> compareCriterionPercent;
};

struct FitRunResult {
    // One per trace fitted, in order; after a stop, the fits made so far,
    // the interrupted one last.
    std::vector<TraceFit> fits;
    std::vector<int32_t> twoWon;  // Compare Fits: traces 1..N whose two exponentials won
    std::string report;           // Start Fitting: the fits' reports, CR LF between
    bool stopped = false;
};

// The line the running search shows: trace, iteration, stdev and spread.
std::string FitProgressNote(const SimplexProgress& p);

FitRunResult RunFits(const FitRunInput& input, const JobProgress& progress);

// Appends one row per fit.
void AppendFitRows(ResultsTable& results, const FitRunResult& run);

}  // namespace vess::group
