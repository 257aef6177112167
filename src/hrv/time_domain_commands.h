// What the time-domain window does, without the window: "Start Analysis"
// over the open recording's beats, the rows of its two grids, and saving a
// grid as text.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "hrv/analysis.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

// The result grid: one row per analysed file (analysing a file again
// replaces its row); the segment grid shows the last analysis.
struct TimeDomainGrids {
    std::vector<std::vector<std::string>> results;
    std::vector<std::vector<std::string>> segments;
};

// "Start Analysis", in three steps so that the analysis can run as a job:
// what it reads, copied out of the workspace after the events are put in
// time order (cancelled when the user keeps them out of order or there are no
// events); the measures with the window's options; and filing them into the
// grids, or failing because no interval lies within the bounds.
struct TimeDomainRequest {
    std::vector<double> beatTimesMs;
    double lengthMs = 0, segmentMs = 0;
    HrvOptions options;
    std::string fileName;
};
Outcome<TimeDomainRequest> PrepareTimeDomain(Workspace& ws, Dialogs& dialogs, const HrvOptions& options);
HrvAnalysis AnalyseTimeDomain(const TimeDomainRequest& request);
CommandResult FileTimeDomain(const TimeDomainRequest& request, const HrvAnalysis& a, TimeDomainGrids& grids);

// menu_TimeDomain and menu_SegmentResults: "ASCII File (*.txt)"; an existing
// file is refused ("File Exist").
enum class TimeDomainGrid { Results, Segments };
CommandResult SaveGridCommand(Dialogs& dialogs, const TimeDomainGrids& grids, TimeDomainGrid which);
std::string GridAsText(const TimeDomainGrids& grids, TimeDomainGrid which);

}  // namespace vess::hrv
