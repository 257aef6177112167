#include "hrv/time_domain_commands.h"

#include <algorithm>

#include "hrv/texts.h"
#include "recording/file_io.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess::hrv {

Outcome<TimeDomainRequest> PrepareTimeDomain(Workspace& ws, Dialogs& dialogs, const HrvOptions& options) {
    if (ws.events.Empty()) return CommandResult::Cancelled();
    if (CommandResult sorted = EnsureTimeOrder(ws, dialogs); !sorted) return sorted;
    const RecordingSpan span = SpanOf(ws);
    return TimeDomainRequest{WorkspaceBeatTimesMs(ws), span.lengthMs, options.SegmentMs(span.intervalUs), options,
                             ws.recording ? ws.recording->FileName() : std::string()};
}

HrvAnalysis AnalyseTimeDomain(const TimeDomainRequest& r) {
    return AnalyseBeats(r.beatTimesMs, r.lengthMs, r.segmentMs, r.options);
}

CommandResult FileTimeDomain(const TimeDomainRequest& r, const HrvAnalysis& a, TimeDomainGrids& grids) {
    if (a.rr.rrMs.empty() && a.rr.outsideBounds > 0)
        return CommandResult::Failed(texts::kNoIntervalInBoundsCaption,
                                     texts::NoIntervalInBoundsText(a.rr.outsideBounds, r.options.lowerBoundMs,
                                                                   r.options.upperBoundMs));
    std::vector<std::string> row = ResultRow(r.fileName, a.timeDomain);
    auto same = std::find_if(grids.results.begin(), grids.results.end(),
                             [&](const auto& x) { return !x.empty() && x[0] == r.fileName; });
    if (same != grids.results.end()) *same = std::move(row);
    else grids.results.push_back(std::move(row));
    grids.segments = SegmentRows(a.timeDomain);
    return CommandResult::Ok();
}

std::string GridAsText(const TimeDomainGrids& grids, TimeDomainGrid which) {
    return which == TimeDomainGrid::Results ? GridText(ResultTitles(), grids.results)
                                            : GridText(SegmentTitles(), grids.segments);
}

CommandResult SaveGridCommand(Dialogs& dialogs, const TimeDomainGrids& grids, TimeDomainGrid which) {
    const std::string caption(which == TimeDomainGrid::Results ? texts::kTimeDomainCaption
                                                               : texts::kSegmentResults);
    const auto path = ChooseSavePath(
        dialogs, {caption, std::string(vess::texts::kTextFileFilter), std::string(vess::texts::kTextFileExtension), {}},
        ExistingFile::Refuse);
    if (!path) return path.status();
    return WriteResult(WriteFileAtomic(*path, GridAsText(grids, which)));
}

}  // namespace vess::hrv
