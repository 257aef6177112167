#include "detection/kernel_command.h"

#include <fmt/format.h>

#include "detection/method_filter.h"
#include "detection/method_texts.h"

namespace vess {

LearnedKernel LearnKernelIntoSettings(Workspace& ws, const EventTable& events) {
    if (!ws.recording) return {false, method_texts::kNoRecording};
    const KernelFit fit = LearnKernel(*ws.recording, events);
    if (!fit.ok)
        return {false, fit.eventsUsed < 3 ? method_texts::kKernelTooFewEvents
                                          : method_texts::kKernelFitFailed};
    ws.settings.method.riseTauMs = fit.kernel.riseTauMs;
    ws.settings.method.decayTauMs = fit.kernel.decayTauMs;
    ws.settings.method.lowPassMs = SmoothingMsForKernel(fit.kernel);
    return {true, fmt::format("Kernel learned from {} accepted events: rise {:.3g} ms, decay "
                              "{:.3g} ms; smoothing {:.3g} ms.",
                              fit.eventsUsed, fit.kernel.riseTauMs, fit.kernel.decayTauMs,
                              ws.settings.method.lowPassMs)};
}

bool LearnKernelCommand(Workspace& ws, Dialogs& dialogs) {
    const LearnedKernel learned = LearnKernelIntoSettings(ws, ws.events);
    dialogs.Message(method_texts::kLearnKernelCaption, learned.text);
    return learned.ok;
}

}  // namespace vess
