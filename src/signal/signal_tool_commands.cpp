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

// The stretch, or a message and nothing when it is too short to measure.
std::optional<TraceStretch> StretchOrTell(const Workspace& ws, Dialogs& dialogs,
                                          std::optional<CursorSpan> cursors, std::string_view caption) {
    if (!ws.recording) return std::nullopt;
    TraceStretch s = ShownStretch(ws, cursors);
    if (s.values.size() < 2) {
        dialogs.Message(S(caption), S(tool_texts::kTooShortText));
        return std::nullopt;
    }
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

std::optional<NoiseMeasures> NoiseMeasuresCommand(Workspace& ws, Dialogs& dialogs,
                                                  std::optional<CursorSpan> cursors) {
    const auto s = StretchOrTell(ws, dialogs, cursors, tool_texts::kNoiseMenu);
    if (!s) return std::nullopt;
    const auto m = MeasureNoise(s->values, s->intervalMs);
    dialogs.Message(S(tool_texts::kNoiseMenu),
                    StretchName(cursors, *s) + "\n" + NoiseReportText(*m, s->units));
    return m;
}

std::optional<NoiseSpectrumRequest> PrepareNoiseSpectrum(Workspace& ws, Dialogs& dialogs,
                                                         std::optional<CursorSpan> cursors) {
    auto s = StretchOrTell(ws, dialogs, cursors, tool_texts::kSpectrumMenu);
    if (!s) return std::nullopt;
    const auto length = AskWhole(dialogs, tool_texts::kSegmentCaption, tool_texts::kSegmentPrompt,
                                 fmt::format("{}", DefaultSegmentLength(s->values.size())));
    if (!length) return std::nullopt;
    if (!ValidSegmentLength(*length, s->values.size())) {
        dialogs.Message(S(tool_texts::kSegmentCaption), S(tool_texts::kSegmentRefused));
        return std::nullopt;
    }
    std::string title = fmt::format("{}  {}  segment={} points", tool_texts::kSpectrumMenu,
                                    StretchName(cursors, *s), *length);
    return NoiseSpectrumRequest{std::move(*s), *length, double(ws.settings.lineFrequencyHz), std::move(title)};
}

PlotData NoiseSpectrumPlot(const NoiseSpectrumRequest& r) {
    const PowerSpectrum psd = WelchSpectrum(r.stretch.values, 1000.0 / r.stretch.intervalMs, r.segmentPoints);
    return SpectrumPlot(psd, r.stretch.units, r.lineHz, r.title);
}

std::optional<PlotData> NoiseSpectrumCommand(Workspace& ws, Dialogs& dialogs,
                                             std::optional<CursorSpan> cursors) {
    const auto request = PrepareNoiseSpectrum(ws, dialogs, cursors);
    if (!request) return std::nullopt;
    return NoiseSpectrumPlot(*request);
}

std::optional<PlotData> DifferenceTraceCommand(Workspace& ws, Dialogs& dialogs,
                                               std::optional<CursorSpan> cursors) {
    const auto s = StretchOrTell(ws, dialogs, cursors, tool_texts::kDifferenceMenu);
    if (!s) return std::nullopt;
    return DifferencePlot(*s);
}

std::optional<PlotData> VarianceMeanCommand(Workspace& ws, Dialogs& dialogs,
                                            std::optional<CursorSpan> cursors) {
    const auto s = StretchOrTell(ws, dialogs, cursors, tool_texts::kVarianceMeanMenu);
    if (!s) return std::nullopt;
    const auto window = AskWhole(dialogs, tool_texts::kWindowCaption, tool_texts::kWindowPrompt, "20");
    if (!window) return std::nullopt;
    if (*window < 2 || std::size_t(*window) > s->values.size()) {
        dialogs.Message(S(tool_texts::kWindowCaption), S(tool_texts::kWindowRefused));
        return std::nullopt;
    }
    return VarianceMeanPlot(*s, *window);
}

int PictureSeriesCommand(Workspace& ws, Dialogs& dialogs, const ScreenPainter& paint) {
    if (!ws.recording) return 0;
    const int32_t blocks = ws.BlocksPerScreen();
    const int32_t count = (ws.recording->BlockCount() + blocks - 1) / blocks;
    const std::string current = fmt::format("{}", ws.screenStartBlock / blocks + 1);
    const auto from = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kFromPrompt, current);
    if (!from) return 0;
    const auto to = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kToPrompt,
                             fmt::format("{}", std::min(*from + 9, count)));
    if (!to) return 0;
    const auto step = AskWhole(dialogs, tool_texts::kPictureCaption, tool_texts::kStepPrompt, "1");
    if (!step) return 0;
    const auto screens = ScreenSeries(*from, *to, *step, count);
    if (!screens) {
        dialogs.Message(S(tool_texts::kPictureCaption), S(tool_texts::kScreenRangeRefused));
        return 0;
    }
    const auto first = dialogs.SaveFile({S(tool_texts::kFolderCaption), S(tool_texts::kPngFilter),
                                         S(tool_texts::kPngExtension), PictureName(*from, count)});
    if (!first) return 0;
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
