// What the time-domain window does, without the window: "Start Analysis"
// over the open recording's beats, the rows of its two grids, and saving a
// grid as text.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "hrv/analysis.h"
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

// "Start Analysis": the events in time order (asked for when not), then the
// measures with the window's options, filed into grids. Nothing when the
// user keeps the events out of order or there are no events.
std::optional<HrvAnalysis> StartAnalysisCommand(Workspace& ws, Dialogs& dialogs, const HrvOptions& options,
                                                TimeDomainGrids& grids);

// menu_TimeDomain and menu_SegmentResults: "ASCII File (*.txt)"; an existing
// file is refused ("File Exist").
enum class TimeDomainGrid { Results, Segments };
bool SaveGridCommand(Dialogs& dialogs, const TimeDomainGrids& grids, TimeDomainGrid which);
std::string GridAsText(const TimeDomainGrids& grids, TimeDomainGrid which);

}  // namespace vess::hrv
