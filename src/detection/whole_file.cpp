#include "detection/whole_file.h"

#include "detection/method_commands.h"

namespace vess {

WholeFileResult DetectWholeFile(Workspace& ws, Dialogs& dialogs, const ProgressCallback& progress) {
    WholeFileResult result;
    if (!ws.recording) return result;
    if (UsesFilteringMethod(ws)) return DetectWholeFileByMethod(ws, dialogs, progress);
    ws.screenStartBlock = 0;
    const AnalyzeWindowResult first = AnalyzeCurrentScreen(ws, dialogs);
    if (first.improperParameters) {
        result.improperParameters = true;
        return result;
    }
    result.screens = 1;
    result.eventsAdded = first.eventsAdded;
    NonStopAnalysis run(ws, dialogs);
    run.ReadAhead();
    while (run.Step()) {
        if (progress && !progress(run.GetProgress())) run.Stop();
    }
    if (progress) progress(run.GetProgress());
    result.screens += run.GetProgress().screensDone;
    result.eventsAdded += run.GetProgress().eventsFound;
    result.improperParameters = run.LastAnalysis().improperParameters;
    return result;
}

}  // namespace vess
