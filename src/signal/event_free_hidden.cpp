#include "signal/event_free_hidden.h"

#include <algorithm>

#include <fmt/format.h>

#include "detection/method_commands.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/rounding.h"
#include "recording/scripted_dialogs.h"
#include "signal/event_free_file.h"

namespace vess {

std::vector<EventRecord> EventsNotIn(const std::vector<EventRecord>& found, const std::vector<EventRecord>& known,
                                     int64_t withinPoints) {
    std::vector<int64_t> peaks;
    for (const EventRecord& r : known) peaks.push_back(r.sampleIndex);
    std::sort(peaks.begin(), peaks.end());
    std::vector<EventRecord> out;
    for (const EventRecord& r : found) {
        const auto near = std::lower_bound(peaks.begin(), peaks.end(), int64_t(r.sampleIndex) - withinPoints);
        if (near == peaks.end() || *near > int64_t(r.sampleIndex) + withinPoints) out.push_back(r);
    }
    return out;
}

bool DetectWithSettingsOf(const Workspace& from, const std::filesystem::path& path, int channel, bool carryNoise,
                          Workspace& ws) {
    ws.settings = from.settings;
    if (!OpenRecordingOnChannel(path, channel, ws)) return false;
    if (carryNoise && from.recording) CarryNoiseLevels(from, ws);
    ScriptedDialogs quiet;
    return !DetectWholeFile(ws, quiet).improperParameters;
}

Outcome<EventFreeWritten> WriteEventFreeCopy(const Workspace& ws, double marginMs, int64_t levelPoints,
                                             const std::filesystem::path& path, bool removeHidden) {
    const Recording& rec = *ws.recording;
    EventTable removed = ws.events;
    EventFreeWritten written{ws.events.Count(), {}};
    if (const std::string problem = WriteEventFreeAbf(rec, removed, marginMs, levelPoints, path); !problem.empty())
        return CommandResult::Failed(problem);
    if (!removeHidden) return written;
    Workspace source;
    if (!DetectWithSettingsOf(ws, rec.Path(), rec.Channel(), true, source)) return written;
    const int64_t within = RoundEven(kSameEventMs * 1000.0 / rec.IntervalUs());
    for (int round = 0; round < kHiddenEventRounds; ++round) {
        Workspace copy;
        if (!DetectWithSettingsOf(source, path, 0, true, copy))
            return CommandResult::Failed(fmt::format("{} could not be detected on again.", path.string()));
        // Found on the copy, neither on the recording nor removed already.
        const std::vector<EventRecord> hidden =
            EventsNotIn(EventsNotIn(copy.events.Records(), source.events.Records(), within), removed.Records(), within);
        if (hidden.empty()) break;
        for (const EventRecord& r : hidden) {
            removed.Append(r);
            written.hidden.push_back(r);
        }
        if (const std::string problem = WriteEventFreeAbf(rec, removed, marginMs, levelPoints, path); !problem.empty())
            return CommandResult::Failed(problem);
    }
    return written;
}

std::string HiddenEventsText(int32_t hiddenRemoved) {
    if (hiddenRemoved <= 0) return {};
    return fmt::format("{} more {} found on the copy {} removed (small events beside removed ones, which "
                       "detection on this recording did not find).",
                       hiddenRemoved, hiddenRemoved == 1 ? "event" : "events", hiddenRemoved == 1 ? "was" : "were");
}

}  // namespace vess
