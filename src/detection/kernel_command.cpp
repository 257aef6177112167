#include "detection/kernel_command.h"

#include <fmt/format.h>

#include "detection/method_filter.h"
#include "detection/method_texts.h"

namespace vess {

Outcome<std::string> LearnKernelIntoSettings(Workspace& ws, const EventTable& events) {
    const std::string caption(method_texts::kLearnKernelCaption);
    if (!ws.recording) return CommandResult::Failed(caption, method_texts::kNoRecording);
    const KernelFit fit = LearnKernel(*ws.recording, events);
    if (!fit.ok)
        return CommandResult::Failed(
            caption, fit.eventsUsed < 3 ? method_texts::kKernelTooFewEvents : method_texts::kKernelFitFailed);
    ws.settings.method.riseTauMs = fit.kernel.riseTauMs;
    ws.settings.method.decayTauMs = fit.kernel.decayTauMs;
    ws.settings.method.lowPassMs = SmoothingMsForKernel(fit.kernel);
    return fmt::format("Kernel learned from {} accepted events: rise {:.3g} ms, decay "
                       "{:.3g} ms; smoothing {:.3g} ms.",
                       fit.eventsUsed, fit.kernel.riseTauMs, fit.kernel.decayTauMs,
                       ws.settings.method.lowPassMs);
}

CommandResult LearnKernelCommand(Workspace& ws, Dialogs& dialogs) {
    const Outcome<std::string> learned = LearnKernelIntoSettings(ws, ws.events);
    if (!learned) return learned.status();
    dialogs.Message(method_texts::kLearnKernelCaption, learned.value());
    return CommandResult::Ok();
}

}  // namespace vess
