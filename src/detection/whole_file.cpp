#include "detection/whole_file.h"

#include "detection/method_commands.h"

namespace vess {

WholeFileResult DetectWholeFile(Workspace& ws, const ProgressCallback& progress) {
    WholeFileResult result;
    if (!ws.recording) return result;
    if (UsesFilteringMethod(ws)) return DetectWholeFileByMethod(ws, progress);
    ws.screenStartBlock = 0;
    const AnalyzeWindowResult first = AnalyzeCurrentScreen(ws);
    if (!first.status) {
        result.status = first.status;
        return result;
    }
    result.screens = 1;
    result.eventsAdded = first.eventsAdded;
    NonStopAnalysis run(ws);
    run.ReadAhead();
    while (run.Step()) {
        if (progress && !progress(run.GetProgress())) run.Stop();
    }
    if (progress) progress(run.GetProgress());
    result.screens += run.GetProgress().screensDone;
    result.eventsAdded += run.GetProgress().eventsFound;
    result.status = run.LastAnalysis().status;
    return result;
}

}  // namespace vess
