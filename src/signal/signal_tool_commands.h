// Main-window commands of the noise and trace tools over the displayed
// screen, or the stretch between the two cursors when both are placed.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "graphs/plot_data.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "signal/noise_measures.h"

namespace vess {

struct Workspace;

// The displayed screen of ws, or the stretch between the cursors.
TraceStretch ShownStretch(const Workspace& ws, std::optional<CursorSpan> cursors);

// The noise measures in a message; cancelled without a recording, failed
// for a stretch too short to measure (as every command here).
Outcome<NoiseMeasures> NoiseMeasuresCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors);
// What a noise spectrum works on: a copy of the stretch and the answers.
struct NoiseSpectrumRequest {
    TraceStretch stretch;
    int segmentPoints = 0;
    double lineHz = 50;
    std::string title;
};
// The stretch and the segment length prompt; failed when the length is
// refused, cancelled when the question was.
Outcome<NoiseSpectrumRequest> PrepareNoiseSpectrum(Workspace& ws, Dialogs& dialogs,
                                                   std::optional<CursorSpan> cursors);
// The Welch spectrum with the line frequency marked (a job's work).
PlotData NoiseSpectrumPlot(const NoiseSpectrumRequest& request);
// Both at once.
Outcome<PlotData> NoiseSpectrumCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors);
Outcome<PlotData> DifferenceTraceCommand(Workspace& ws, std::optional<CursorSpan> cursors);
// Window prompt, then the variance-mean plot.
Outcome<PlotData> VarianceMeanCommand(Workspace& ws, Dialogs& dialogs, std::optional<CursorSpan> cursors);

// Draws screen (1-based) of the recording into a picture file; false when
// it could not be saved.
using ScreenPainter = std::function<bool(int32_t screen, const std::filesystem::path& file)>;
// From, to and step prompts, a save dialog whose folder receives the
// pictures, then one picture per screen. The number written; failed for a
// range of screens the recording does not have.
Outcome<int> PictureSeriesCommand(Workspace& ws, Dialogs& dialogs, const ScreenPainter& paint);

}  // namespace vess
