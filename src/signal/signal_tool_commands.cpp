#include "signal/signal_tool_commands.h"

#include <fmt/format.h>

#include <cmath>

#include "recording/save_path.h"
#include "signal/filter_commands.h"
#include "recording/workspace.h"
#include "signal/synch_array.h"
#include "signal/tool_texts.h"
#include "signal/trace_tools.h"
#include "signal/welch_spectrum.h"
#include "statistics/prompts.h"

namespace vess {

namespace {

std::string S(std::string_view v) { return std::string(v); }

// The stretch; failed under caption when it is too short to measure.
Outcome<TraceStretch> MeasurableStretch(const Workspace& ws, std::optional<CursorSpan> cursors,
                                        std::string_view caption) {
    if (!ws.recording) return CommandResult::Cancelled();
    TraceStretch s = ShownStretch(ws, cursors);
    if (s.values.size() < 2) return CommandResult::Failed(S(caption), S(tool_texts::kTooShortText));
    return s;
}

// Where the stretch lies, and the filter when the filtered trace is shown.
std::string StretchName(std::optional<CursorSpan> cursors, const TraceStretch& s) {
    const std::string where = S(cursors ? tool_texts::kNoiseOfCursors : tool_texts::kNoiseOfScreen);
    return s.source.empty() ? where : where + ", " + s.source;
}

std::optional<int> AskWhole(Dialogs& dialogs, std::string_view caption, std::string_view prompt,
                            const std::string& initial) {
    const auto v = AskNumber(dialogs, S(caption), S(prompt), initial);
    if (!v || *v != std::floor(*v) || std::abs(*v) > 1e9) return std::nullopt;
    return int(*v);
}

}  // namespace

TraceStretch ShownStretch(const Workspace& ws, std::optional<CursorSpan> cursors) {
    TraceStretch s = ScreenStretch(*ws.recording, ws.showFiltered, ws.screenStartBlock, ws.BlocksPerScreen(), cursors);
    s.source = ShownTraceName(ws);
    return s;
}

Outcome<NoiseMeasures> NoiseMeasuresCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors) {
    const auto s = MeasurableStretch(ws, cursors, tool_texts::kNoiseMenu);
    if (!s) return s.status();
    const auto m = MeasureNoise(s->values, s->intervalMs);
    dialogs.Message(S(tool_texts::kNoiseMenu),
                    StretchName(cursors, *s) + "\n" + NoiseReportText(*m, s->units));
    return *m;
}

Outcome<NoiseSpectrumRequest> PrepareNoiseSpectrum(Workspace& ws, Dialogs& dialogs,
                                                   std::optional<CursorSpan> cursors) {
    auto s = MeasurableStretch(ws, cursors, tool_texts::kSpectrumMenu);
    if (!s) return s.status();
    const auto length = AskWhole(dialogs, tool_texts::kSegmentCaption, tool_texts::kSegmentPrompt,
                                 fmt::format("{}", DefaultSegmentLength(s->values.size())));
    if (!length) return CommandResult::Cancelled();
    if (!ValidSegmentLength(*length, s->values.size()))
        return CommandResult::Failed(S(tool_texts::kSegmentCaption), S(tool_texts::kSegmentRefused));
    std::string title = fmt::format("{}  {}  segment={} points", tool_texts::kSpectrumMenu,
                                    StretchName(cursors, *s), *length);
    return NoiseSpectrumRequest{std::move(s.value()), *length, double(ws.settings.lineFrequencyHz), std::move(title)};
}

PlotData NoiseSpectrumPlot(const NoiseSpectrumRequest& r) {
    const PowerSpectrum psd = WelchSpectrum(r.stretch.values, 1000.0 / r.stretch.intervalMs, r.segmentPoints);
    return SpectrumPlot(psd, r.stretch.units, r.lineHz, r.title);
}

Outcome<PlotData> NoiseSpectrumCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors) {
    const auto request = PrepareNoiseSpectrum(ws, dialogs, cursors);
    if (!request) return request.status();
    return NoiseSpectrumPlot(*request);
}

Outcome<PlotData> DifferenceTraceCommand(Workspace& ws, std::optional<CursorSpan> cursors) {
    const auto s = MeasurableStretch(ws, cursors, tool_texts::kDifferenceMenu);
    if (!s) return s.status();
    return DifferencePlot(*s);
}

Outcome<PlotData> VarianceMeanCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors) {
    const auto s = MeasurableStretch(ws, cursors, tool_texts::kVarianceMeanMenu);
    if (!s) return s.status();
    const auto window = AskWhole(dialogs, tool_texts::kWindowCaption, tool_texts::kWindowPrompt, "20");
    if (!window) return CommandResult::Cancelled();
    if (*window < 2 || std::size_t(*window) > s->values.size())
        return CommandResult::Failed(S(tool_texts::kWindowCaption), S(tool_texts::kWindowRefused));
    return VarianceMeanPlot(*s, *window);
}

Outcome<int> PictureSeriesCommand(Workspace& ws, Dialogs& dialogs, const ScreenPainter& paint) {
    if (!ws.recording) return CommandResult::Cancelled();
    const int32_t blocks = ws.BlocksPerScreen();
    const int32_t count = (ws.recording->BlockCount() + blocks - 1) / blocks;
    const std::string current = fmt::format("{}", ws.screenStartBlock / blocks + 1);
    const auto from = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kFromPrompt, current);
    if (!from) return CommandResult::Cancelled();
    const auto to = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kToPrompt,
                             fmt::format("{}", std::min(*from + 9, count)));
    if (!to) return CommandResult::Cancelled();
    const auto step = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kStepPrompt, "1");
    if (!step) return CommandResult::Cancelled();
    const auto screens = ScreenSeries(*from, *to, *step, count);
    if (!screens) return CommandResult::Failed(S(tool_texts::kPictureCaption), S(tool_texts::kScreenRangeRefused));
    const auto first = dialogs.SaveFile({S(tool_texts::kFolderCaption), S(tool_texts::kPngFilter),
                                         S(tool_texts::kPngExtension), PictureName(*from, count)});
    if (!first) return CommandResult::Cancelled();
    const std::filesystem::path folder = std::filesystem::path(*first).parent_path();
    const int32_t shownBlock = ws.screenStartBlock;
    int written = 0;
    for (int32_t screen : *screens) {
        ws.screenStartBlock = (screen - 1) * blocks;
        if (!paint(screen, folder / PictureName(screen, count))) break;
        ++written;
    }
    ws.screenStartBlock = shownBlock;
    dialogs.Message(S(tool_texts::kPictureCaption),
                    fmt::format("{}{}{}", written, tool_texts::kPicturesSaved, folder.string()));
    return written;
}

}  // namespace vess
