// Main-window commands of the noise and trace tools over the displayed
// screen, or the stretch between the two cursors when both are placed.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "graphs/plot_data.h"
#include "recording/dialogs.h"
#include "signal/noise_measures.h"

namespace vess {

struct Workspace;

// The displayed screen of ws, or the stretch between the cursors.
TraceStretch ShownStretch(const Workspace& ws, std::optional<CursorSpan> cursors);

// The noise measures in a message; nothing without a recording.
std::optional<NoiseMeasures> NoiseMeasuresCommand(Workspace& ws, Dialogs& dialogs,
                                                  std::optional<CursorSpan> cursors);
// Segment length prompt, then the Welch spectrum with the line frequency of
// the settings marked.
std::optional<PlotData> NoiseSpectrumCommand(Workspace& ws, Dialogs& dialogs,
                                             std::optional<CursorSpan> cursors);
std::optional<PlotData> DifferenceTraceCommand(Workspace& ws, Dialogs& dialogs,
                                               std::optional<CursorSpan> cursors);
// Window prompt, then the variance-mean plot.
std::optional<PlotData> VarianceMeanCommand(Workspace& ws, Dialogs& dialogs,
                                            std::optional<CursorSpan> cursors);

// Draws screen (1-based) of the recording into a picture file; false when
// it could not be saved.
using ScreenPainter = std::function<bool(int32_t screen, const std::filesystem::path& file)>;
// From, to and step prompts, a save dialog whose folder receives the
// pictures, then one picture per screen. Returns the number written.
int PictureSeriesCommand(Workspace& ws, Dialogs& dialogs, const ScreenPainter& paint);

}  // namespace vess
