#include "signal/event_free_file.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "detection/method_filter.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
#include "recording/rounding.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "signal/event_free.h"
#include "signal/event_free_hidden.h"
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

std::string WriteEventFreeAbf(const Recording& rec, const EventTable& events, double marginMs,
                              int64_t levelPoints, const std::filesystem::path& path) {
    const int64_t points = rec.PointsPerChannel();
    if (points > int64_t(INT32_MAX)) return "Too many samples for an ABF 1.x file.";
    AtomicFile file(path);
    if (!file.Error().empty()) return file.Error();
    if (!file.Write(BuildAbfHeader(EventFreeWriteLayout(rec), points))) return file.Error();
    const SampleReader read = [&rec](int64_t first, std::span<int16_t> out) { rec.ReadSamples(first, out); };
    const double noise = ChannelNoiseCounts(rec);
    const DecayTail tail{read, noise, std::max<int64_t>(levelPoints, 1), points};
    const auto stretches = EventStretches(events, MarginPoints(rec, marginMs), points, tail);
    std::vector<uint8_t> bytes;
    const SampleSink sink = [&](std::span<const int16_t> samples) {
        bytes.resize(samples.size() * 2);
        for (std::size_t i = 0; i < samples.size(); ++i) le::Put<int16_t>(bytes, 2 * i, samples[i]);
        return file.Write(bytes);
    };
    EventFreeOptions options;
    options.noiseCounts = noise;
    options.levelPoints = tail.windowPoints;
    options.trendHalfPoints = 10 * tail.windowPoints;
    if (!EliminateStretches(points, stretches, read, sink, options)) return file.Error();
    if (!rec.ReadFault().empty()) return rec.ReadFault();
    return file.Finish();
}

std::optional<int32_t> RedetectedEventCount(const Workspace& source, const std::filesystem::path& path,
                                            NoiseLevels noise) {
    Workspace ws;
    if (!DetectWithSettingsOf(source, path, 0, noise == NoiseLevels::OfSource, ws)) return std::nullopt;
    return ws.events.Count();
}

CommandResult EventFreeCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder) {
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
    const int64_t levelPoints = RoundEven(ws.params().PeriodBaselineAverage / rec.IntervalUs());
    const Outcome<EventFreeWritten> written = WriteEventFreeCopy(ws, *margin, levelPoints, *path, true);
    if (!written) return WriteResult(written.message());
    std::string text = S(tool_texts::kEventFreeSaved) + path->filename().string();
    if (const std::string hidden = HiddenEventsText(written->HiddenRemoved()); !hidden.empty()) text += "\n" + hidden;
    dialogs.Message(S(tool_texts::kEventFreeMenu), text);
    return CommandResult::Ok();
}

}  // namespace vess
