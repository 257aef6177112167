#include "hrv/scans.h"

#include <optional>
#include <string>

#include "hrv/rr_intervals.h"
#include "hrv/texts.h"
#include "recording/workspace.h"
#include "statistics/prompts.h"

namespace vess::hrv {

namespace {

std::string S(std::string_view v) { return std::string(v); }

// The limit typed by the user; nothing for an empty, zero or unreadable answer.
std::optional<double> AskLimit(Dialogs& dialogs, std::string_view caption, std::string_view prompt,
                               std::string_view initial) {
    const auto v = AskNumber(dialogs, S(caption), S(prompt), S(initial));
    if (!v || *v == 0) return std::nullopt;
    return v;
}

}  // namespace

int MarkMissingBeats(EventTable& events, double maxIntervalMs) {
    int marked = 0;
    for (int32_t i = 2; i <= events.Count(); ++i) {
        if (events[i].time - events[i - 1].time > maxIntervalMs) {
            events[i - 1].group = uint8_t(kGroupMissingBeat);
            ++marked;
        }
    }
    return marked;
}

int RejectShortIntervals(EventTable& events, double maxIntervalMs) {
    int rejected = 0;
    for (int32_t i = 2; i <= events.Count(); ++i) {
        if (events[i].time - events[i - 1].time < maxIntervalMs) {
            events[i].group = uint8_t(kGroupRejected);
            ++rejected;
        }
    }
    return rejected;
}

CommandResult ScanMissingBeatsCommand(Workspace& ws, Dialogs& dialogs) {
    if (CommandResult sorted = EnsureTimeOrder(ws, dialogs); !sorted) return sorted;
    const auto limit = AskLimit(dialogs, texts::kMissingBeatsCaption, texts::kMissingBeatsPrompt,
                                texts::kMissingBeatsDefault);
    if (!limit) return CommandResult::Cancelled();
    ws.history.Checkpoint(ws.events, "Scan for missing beats");
    const int count = MarkMissingBeats(ws.events, *limit);
    dialogs.Message(S(texts::kSearchFinishedCaption), texts::MissingBeatsReport(count));
    return CommandResult::Ok();
}

CommandResult ScanRejectRRIntervalsCommand(Workspace& ws, Dialogs& dialogs) {
    if (CommandResult sorted = EnsureTimeOrder(ws, dialogs); !sorted) return sorted;
    const auto limit = AskLimit(dialogs, texts::kMaximumIntervalCaption, texts::kRejectPrompt, {});
    if (!limit) return CommandResult::Cancelled();
    ws.history.Checkpoint(ws.events, "Reject short RR intervals");
    const int count = RejectShortIntervals(ws.events, *limit);
    dialogs.Message(S(texts::kSearchFinishedCaption), texts::RejectReport(count));
    return CommandResult::Ok();
}

}  // namespace vess::hrv
