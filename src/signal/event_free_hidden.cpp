#include "signal/event_free_hidden.h"

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "detection/method_commands.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/file_io.h"
#include "recording/rounding.h"
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
                          Workspace& ws, const ProgressCallback& progress) {
    ws.settings = from.settings;
    if (!OpenRecordingOnChannel(path, channel, ws)) return false;
    if (carryNoise && from.recording) CarryNoiseLevels(from, ws);
    return DetectWholeFile(ws, progress).status.ok();
}

namespace {

// The work's steps in equal shares of the progress: the first write, the
// detection on the recording, and in each round a detection on the copy and
// a write. Once the callback has answered false every report answers false.
class Steps {
public:
    Steps(const JobProgress& progress, int count) : progress_(progress), count_(count) {}
    bool Report(double within, const std::string& note) {
        const double done = (double(done_) + std::clamp(within, 0.0, 1.0)) / count_;
        if (progress_ && !stopped_) stopped_ = !progress_(done, note);
        return !stopped_;
    }
    void Next() { done_ = std::min(done_ + 1, count_); }
    // The steps a round without hidden events leaves out count as done.
    bool Done() {
        done_ = count_;
        return Report(0.0, {});
    }
    bool Stopped() const { return stopped_; }
    WriteProgress Writing() {
        return [this](double within) { return Report(within, "writing the copy"); };
    }
    ProgressCallback Detecting(std::string note) {
        return [this, note = std::move(note)](const NonStopAnalysis::Progress& p) {
            return Report(p.screensTotal > 0 ? double(p.screensDone) / double(p.screensTotal) : 0.0, note);
        };
    }

private:
    const JobProgress& progress_;
    int count_;
    int done_ = 0;
    bool stopped_ = false;
};

}  // namespace

Outcome<EventFreeWritten> WriteEventFreeCopy(const Workspace& ws, double marginMs, int64_t levelPoints,
                                             const std::filesystem::path& path, bool removeHidden,
                                             const JobProgress& progress) {
    const Recording& rec = *ws.recording;
    EventTable removed = ws.events;
    EventFreeWritten written{ws.events.Count(), {}};
    Steps steps(progress, removeHidden ? 2 + 2 * kHiddenEventRounds : 1);
    // Every copy is made of the same recording, so its noise is measured once.
    const double noiseCounts = ChannelNoiseCounts(rec);
    // The copy being made, beside path until it is the last one.
    std::unique_ptr<AtomicFile> copyFile;
    const auto writeCopy = [&]() {
        copyFile = std::make_unique<AtomicFile>(path);
        const CommandResult done =
            WriteEventFreeInto(*copyFile, rec, removed, marginMs, levelPoints, noiseCounts, steps.Writing());
        steps.Next();
        return done;
    };
    const auto finish = [&]() -> Outcome<EventFreeWritten> {
        if (!steps.Done()) return CommandResult::Cancelled();
        if (const std::string problem = copyFile->Finish(); !problem.empty()) return CommandResult::Failed(problem);
        return written;
    };
    if (CommandResult done = writeCopy(); !done) return done;
    if (!removeHidden) return finish();
    Workspace source;
    const bool detected = DetectWithSettingsOf(ws, rec.Path(), rec.Channel(), true, source,
                                               steps.Detecting("detecting on the recording"));
    if (steps.Stopped()) return CommandResult::Cancelled();
    if (!detected) return finish();
    steps.Next();
    const int64_t within = RoundEven(kSameEventMs * 1000.0 / rec.IntervalUs());
    for (int round = 0; round < kHiddenEventRounds; ++round) {
        Workspace copy;
        const bool again = DetectWithSettingsOf(source, copyFile->PendingPath(), 0, true, copy,
                                                steps.Detecting("detecting on the copy"));
        if (steps.Stopped()) return CommandResult::Cancelled();
        if (!again) return CommandResult::Failed(fmt::format("{} could not be detected on again.", path.string()));
        steps.Next();
        // Found on the copy, neither on the recording nor removed already.
        const std::vector<EventRecord> hidden =
            EventsNotIn(EventsNotIn(copy.events.Records(), source.events.Records(), within), removed.Records(), within);
        if (hidden.empty()) break;
        for (const EventRecord& r : hidden) {
            removed.Append(r);
            written.hidden.push_back(r);
        }
        if (CommandResult done = writeCopy(); !done) return done;
    }
    return finish();
}

std::string HiddenEventsText(int32_t hiddenRemoved) {
    if (hiddenRemoved <= 0) return {};
    return fmt::format("{} more {} found on the copy {} removed (small events beside removed ones, which "
                       "detection on this recording did not find).",
                       hiddenRemoved, hiddenRemoved == 1 ? "event" : "events", hiddenRemoved == 1 ? "was" : "were");
}

}  // namespace vess
