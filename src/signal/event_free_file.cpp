#include "signal/event_free_file.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "detection/method_filter.h"
#include "recording/file_io.h"
#include "recording/detection_inputs.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
#include "recording/rounding.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "signal/event_free.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"
#include "signal/tool_texts.h"
#include "statistics/prompts.h"

namespace vess {

namespace {

std::string S(std::string_view v) { return std::string(v); }

}  // namespace

AbfWriteLayout EventFreeWriteLayout(const Recording& rec) {
    AbfWriteLayout abfLayout = ChannelWriteLayout(rec);
    abfLayout.comment = "Event-free: " + rec.FileName();
    return abfLayout;
}

int64_t MarginPoints(const Recording& rec, double marginMs) {
    // Counted in double and bounded by the recording before any integer
    // conversion: a margin longer than the recording covers all of it.
    const double points = marginMs * 1000.0 / rec.IntervalUs();
    if (!(points > 0)) return 0;
    return RoundEven(std::min(points, double(rec.PointsPerChannel())));
}

std::string EventFreeMarginProblem(const Recording& rec, double marginMs) {
    const double lengthMs = double(rec.PointsPerChannel()) * rec.IntervalUs() / 1000.0;
    if (!std::isfinite(marginMs) || marginMs < 0 || marginMs >= lengthMs)
        return fmt::format("the margin must be a number of ms from 0 to less than the recording's length "
                           "({:g} ms)", lengthMs);
    return {};
}

double ChannelNoiseCounts(const Recording& rec) {
    constexpr std::size_t kBlock = 256;
    std::vector<double> residuals, sorted;
    std::vector<int16_t> block(kBlock);
    for (const auto& [first, count] : NoiseStretches(rec)) {
        for (int64_t at = first; at + int64_t(kBlock) <= first + count; at += int64_t(kBlock)) {
            rec.ReadSamples(at, block);
            sorted.assign(block.begin(), block.end());
            std::nth_element(sorted.begin(), sorted.begin() + kBlock / 2, sorted.end());
            for (int16_t v : block) residuals.push_back(double(v) - sorted[kBlock / 2]);
        }
    }
    if (residuals.size() < kBlock) return 0;
    return RobustNoise(std::move(residuals)).sd;
}

CommandResult WriteEventFreeInto(AtomicFile& file, const Recording& rec, const EventTable& events, double marginMs,
                                 int64_t levelPoints, double noiseCounts, const WriteProgress& progress) {
    const int64_t points = rec.PointsPerChannel();
    if (points > int64_t(INT32_MAX)) return CommandResult::Failed("Too many samples for an ABF 1.x file.");
    if (!file.Error().empty()) return CommandResult::Failed(file.Error());
    if (!file.Write(BuildAbfHeader(EventFreeWriteLayout(rec), points))) return CommandResult::Failed(file.Error());
    const SampleReader read = [&rec](int64_t first, std::span<int16_t> out) { rec.ReadSamples(first, out); };
    const DecayTail tail{read, noiseCounts, std::max<int64_t>(levelPoints, 1), points};
    const auto stretches = EventStretches(events, MarginPoints(rec, marginMs), points, tail);
    std::vector<uint8_t> bytes;
    int64_t written = 0;
    bool stopped = false;
    const SampleSink sink = [&](std::span<const int16_t> samples) {
        bytes.resize(samples.size() * 2);
        for (std::size_t i = 0; i < samples.size(); ++i) le::Put<int16_t>(bytes, 2 * i, samples[i]);
        written += int64_t(samples.size());
        stopped = progress && !progress(double(written) / double(points));
        return !stopped && file.Write(bytes);
    };
    EventFreeOptions options;
    options.noiseCounts = noiseCounts;
    options.levelPoints = tail.windowPoints;
    options.trendHalfPoints = 10 * tail.windowPoints;
    if (!EliminateStretches(points, stretches, read, sink, options))
        return stopped ? CommandResult::Cancelled() : CommandResult::Failed(file.Error());
    return CommandResult::FromError(rec.ReadFault());
}

std::string WriteEventFreeAbf(const Recording& rec, const EventTable& events, double marginMs,
                              int64_t levelPoints, const std::filesystem::path& path) {
    AtomicFile file(path);
    const CommandResult written =
        WriteEventFreeInto(file, rec, events, marginMs, levelPoints, ChannelNoiseCounts(rec), {});
    return written ? file.Finish() : written.message();
}

std::optional<int32_t> RedetectedEventCount(const Workspace& source, const std::filesystem::path& path,
                                            NoiseLevels noise) {
    Workspace ws;
    if (!DetectWithSettingsOf(source, path, 0, noise == NoiseLevels::OfSource, ws)) return std::nullopt;
    return ws.events.Count();
}

Outcome<EventFreeRequest> PrepareEventFree(const Workspace& ws, Dialogs& dialogs,
                                           const std::filesystem::path& templateFolder) {
    if (!ws.recording) return CommandResult::Cancelled();
    const auto templatePath = templateFolder / S(texts::kTemplateHeaderFileName);
    if (!ReadFileBytes(templatePath)) return CommandResult::Failed(S(texts::kErrorCaption), S(texts::kTemplateMissingText));
    if (ws.events.Empty()) return CommandResult::Failed(S(tool_texts::kEventFreeMenu), S(tool_texts::kNoEventsText));
    const auto margin = AskNumber(dialogs, S(tool_texts::kMarginCaption), S(tool_texts::kMarginPrompt),
                                  fmt::format("{:g}", kDefaultEventFreeMarginMs));
    if (!margin) return CommandResult::Cancelled();
    if (const std::string problem = EventFreeMarginProblem(*ws.recording, *margin); !problem.empty())
        return CommandResult::Failed(S(tool_texts::kMarginCaption), "The event-free file is not written: " + problem + ".");
    const auto path = ChooseSavePath(
        dialogs, {S(texts::kSaveAsAbf), S(texts::kAbfFileFilter), S(texts::kAbfFileExtension), {}},
        ExistingFile::AskReplace);
    if (!path) return path.status();
    const Recording& rec = *ws.recording;
    return EventFreeRequest{rec.Path(),
                            rec.Channel(),
                            ws.settings,
                            ws.events,
                            ws.measuredOnce,
                            rec.ReadsFiltered(),
                            *margin,
                            EventFreeLevelPoints(ws),
                            *path};
}

int64_t EventFreeLevelPoints(const Workspace& ws) {
    return RoundEven(ws.params().PeriodBaselineAverage / ws.recording->IntervalUs());
}

Outcome<EventFreeWritten> WriteEventFree(const EventFreeRequest& request, const JobProgress& progress) {
    Workspace ws;
    if (CommandResult opened = OpenRecordingOnChannel(request.recording, request.channel, ws); !opened) return opened;
    // As the window held them, whatever opening suggests for a new recording.
    ws.settings = request.settings;
    ws.events = request.events;
    ws.measuredOnce = request.measuredOnce;
    if (request.readsFiltered) {
        const FilterProgress filtering = [&](double done) {
            return !progress || progress(done, "filtering the recording");
        };
        const CommandResult filtered = ApplyFilter(*ws.recording, FilterChoiceFromSettings(ws.settings), filtering);
        if (!filtered) return filtered;
        SetDetectOnFiltered(ws, true);
    }
    return WriteEventFreeCopy(ws, request.marginMs, request.levelPoints, request.target, true, progress);
}

CommandResult EventFreeClosing(Dialogs& dialogs, const std::filesystem::path& target,
                               const Outcome<EventFreeWritten>& written) {
    if (written.cancelled()) return written.status();
    if (!written) return WriteResult(written.message());
    std::string text = S(tool_texts::kEventFreeSaved) + target.filename().string();
    if (const std::string hidden = HiddenEventsText(written->HiddenRemoved()); !hidden.empty()) text += "\n" + hidden;
    dialogs.Message(S(tool_texts::kEventFreeMenu), text);
    return CommandResult::Ok();
}

CommandResult EventFreeCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder) {
    const Outcome<EventFreeRequest> request = PrepareEventFree(ws, dialogs, templateFolder);
    if (!request) return request.status();
    return EventFreeClosing(dialogs, request->target, WriteEventFree(request.value(), {}));
}

}  // namespace vess
