#include "detection/screen_commands.h"

#include "detection/method_commands.h"
#include "detection/texts.h"
#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/screen_read_ahead.h"

namespace vess {
namespace {

// Detection only appends, so the state before the command is the first
// countBefore records: the checkpoint is taken afterwards, and only when the
// command added something, which keeps empty commands out of the undo list.
void CheckpointAppended(Workspace& ws, int32_t countBefore, const char* label) {
    if (ws.events.Count() <= countBefore) return;
    ws.history.CheckpointAppended(countBefore, label);
}

AnalyzeWindowResult AnalyzeShown(Workspace& ws, const Screen& screen) {
    // Samples that could not be read are zeros, not data: nothing is
    // detected on them (the caller tells the user about the fault).
    if (!screen.Complete()) return {};
    AnalyzeWindowResult result =
        UsesFilteringMethod(ws)
            ? AnalyzeWindowByMethod(screen, ws.params(), MethodRunFor(ws), ws.events)
            : AnalyzeWindow(screen, ws.params(), ws.events);
    if (result.status) ws.analysedBlocks.Add(ws.screenStartBlock, ws.BlocksPerScreen());
    return result;
}

// Whether an event of the table has its peak on the screen shown.
bool EventOnShownScreen(const Workspace& ws) {
    const int64_t first = int64_t(ws.screenStartBlock) * kBlockPoints;
    const int64_t end = first + int64_t(ws.BlocksPerScreen()) * kBlockPoints;
    const double intervalUs = ws.recording->IntervalUs();
    for (int32_t k = 1; k <= ws.events.Count(); ++k) {
        const EventRecord& r = ws.events[k];
        const int64_t peak = r.sampleIndex != 0 || r.time == 0
                                 ? r.sampleIndex
                                 : int64_t(RoundEven(double(r.time) * 1000.0 / intervalUs));
        if (peak >= first && peak < end) return true;
    }
    return false;
}

// The screen shown, from the screens read ahead. A read brings in 64
// screens (3 s at 20 kHz with 4-block screens): one call instead of 64, and
// little to wait for when the screen has just jumped elsewhere.
constexpr int32_t kScreensAhead = 64;
Screen ShownScreenAhead(Workspace& ws) {
    std::shared_ptr<ScreenReadAhead>& ahead = ws.screensAhead;
    if (!ahead || !ahead->Serves(*ws.recording, ws.BlocksPerScreen()))
        ahead = std::make_shared<ScreenReadAhead>(*ws.recording, ws.BlocksPerScreen(), kScreensAhead);
    return ahead->At(ws.screenStartBlock);
}

int64_t ScreensAfter(const Workspace& ws) {
    if (!ws.recording) return 0;
    const int64_t remainingBlocks = int64_t(ws.recording->BlockCount()) - ws.screenStartBlock;
    const int64_t bps = ws.BlocksPerScreen();
    // Screens whose first block lies before the end of the data.
    const int64_t screens = remainingBlocks <= 0 ? 0 : (remainingBlocks + bps - 1) / bps;
    return screens > 0 ? screens - 1 : 0;
}

}  // namespace

AnalyzeWindowResult AnalyzeCurrentScreen(Workspace& ws) {
    if (!ws.recording) return {};
    const int32_t before = ws.events.Count();
    AnalyzeWindowResult result = AnalyzeShown(ws, ShownScreen(ws));
    CheckpointAppended(ws, before, kUndoAnalyzeWindow);
    return result;
}

bool AdvanceScreen(Workspace& ws) {
    if (!ws.recording) return false;
    const int64_t next = int64_t(ws.screenStartBlock) + ws.BlocksPerScreen();
    // The data ends after block BlockCount() - 1; a screen that would start at
    // or after that end holds no recorded sample and is not shown.
    if (next >= ws.recording->BlockCount()) return false;
    ws.screenStartBlock = static_cast<int32_t>(next);
    return true;
}

NextWindowResult AnalyzeNextWindow(Workspace& ws) {
    NextWindowResult result;
    if (!AdvanceScreen(ws)) return result;
    result.moved = true;
    const int32_t before = ws.events.Count();
    result.screen = ShownScreenAhead(ws);
    result.analysis = AnalyzeShown(ws, result.screen);
    CheckpointAppended(ws, before, kUndoAnalyzeNext);
    return result;
}

NonStopAnalysis::NonStopAnalysis(Workspace& ws) : ws_(ws) {
    // A screen nobody has analysed yet (a freshly opened recording) is part
    // of the run, so that the run finds what a whole-file detection finds.
    analyseShownFirst_ = ws.recording != nullptr &&
                         !ws.analysedBlocks.AnyIn(ws.screenStartBlock, ws.BlocksPerScreen()) &&
                         !EventOnShownScreen(ws);
    progress_.screensTotal = ScreensAfter(ws) + (analyseShownFirst_ ? 1 : 0);
    running_ = ws.recording != nullptr && progress_.screensTotal > 0;
}

bool NonStopAnalysis::Step() {
    if (!running_) return false;
    if (analyseShownFirst_) {
        analyseShownFirst_ = false;
    } else if (!AdvanceScreen(ws_)) {
        running_ = false;
        return false;
    }
    const int32_t before = ws_.events.Count();
    last_ = AnalyzeShown(ws_, ShownScreenAhead(ws_));
    ++progress_.screensDone;
    if (!ws_.recording->ReadFault().empty()) {
        running_ = false;
        return false;
    }
    if (!last_.status) {
        running_ = false;
        return false;
    }
    progress_.eventsFound += last_.eventsAdded;
    if (!checkpointed_ && ws_.events.Count() > before) {
        CheckpointAppended(ws_, before, kUndoNonStop);
        checkpointed_ = true;
    }
    if (progress_.screensDone >= progress_.screensTotal) running_ = false;
    return running_;
}

void NonStopAnalysis::ReadAhead() {
    if (ws_.recording) ws_.screensAhead = std::make_shared<ScreenReadAhead>(*ws_.recording, ws_.BlocksPerScreen());
}

void NonStopAnalysis::RunToEnd() {
    while (Step()) {
    }
}

std::string ResetQuestion(int32_t count) {
    return detection_texts::kResetBefore + std::to_string(count) + detection_texts::kResetAfter;
}

CommandResult ResetEvents(Workspace& ws, Dialogs& dialogs, bool noConfirmation) {
    if (!ws.events.Empty()) {
        if (!noConfirmation &&
            !dialogs.AskOkCancel(detection_texts::kResetCaption, ResetQuestion(ws.events.Count())))
            return CommandResult::Cancelled();
        ws.history.Checkpoint(ws.events, kUndoReset);
    }
    ws.events.Clear();
    ws.selectedEvent = 0;
    return CommandResult::Ok();
}

}  // namespace vess
