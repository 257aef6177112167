// vess detect: whole-file detection with the desktop program's own code path
// (the first screen, then the non-stop analysis to the end).
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <vector>

#include "cli/command_failure.h"
#include "cli/commands.h"
#include "cli/detection_options.h"
#include "cli/stderr_dialogs.h"
#include "detection/event_summary.h"
#include "detection/suggest_from_recording.h"
#include "detection/whole_file.h"
#include "recording/event_file.h"
#include "recording/event_grid.h"
#include "recording/file_io.h"

namespace vess::cli {
namespace {

std::string EventsCsv(const Workspace& ws) {
    const Recording& rec = *ws.recording;
    std::string out =
        "event,time_ms,sample_index,amplitude,amplitude_counts,baseline,noise_counts,"
        "rise_points,decay_points,rise1090_ms,rise50_points,half_width_ms,slope,area,"
        "peak_direction\n";
    for (int32_t i = 1; i <= ws.events.Count(); ++i) {
        const EventRecord& e = ws.events[i];
        // A half-width that could not be measured is an empty field.
        out += fmt::format("{},{:.4f},{},{:.5g},{},{:.5g},{},{},{},{:.5g},{},{},{:.5g},{:.5g},{}\n",
                           i, e.time, e.sampleIndex, rec.Bit2pA2(e.amplitude), e.amplitude,
                           rec.Bit2pA(e.baseline), e.noise, e.riseTime, e.decayTime, e.rise1090,
                           e.rise50, FormatCell(CellValue(e.halfWidth)), e.slope1090, e.area,
                           e.peakDirection);
    }
    return out;
}

int RunDetect(const DetectionOptions& options, const std::string& outPath, const std::string& csvPath,
              bool quiet) {
    Workspace ws;
    if (!PrintFailure("detect", PrepareWorkspace(options, ws))) return 2;
    if (const std::string problem = UnreachableThresholds(ws); !problem.empty())
        std::cerr << "vess detect: " << problem << "  --suggest-from-noise sets them from the "
                  << "recording.\n";
    StderrDialogs dialogs;
    const auto started = std::chrono::steady_clock::now();
    auto lastReport = started;
    const ProgressCallback progress = [&](const NonStopAnalysis::Progress& p) {
        if (quiet) return true;
        const auto now = std::chrono::steady_clock::now();
        if (!quiet && now - lastReport > std::chrono::seconds(1)) {
            lastReport = now;
            std::cerr << fmt::format("\r{} / {} screens, {} events", p.screensDone + 1,
                                     p.screensTotal + 1, p.eventsFound)
                      << std::flush;
        }
        return true;
    };
    const WholeFileResult result = DetectWholeFile(ws, progress);
    if (!quiet && std::chrono::steady_clock::now() - started > std::chrono::seconds(1))
        std::cerr << "\n";
    if (!ShowFailure(dialogs, result.status)) return 3;

    const Recording& rec = *ws.recording;
    if (!outPath.empty()) {
        const std::string problem =
            WriteEventFile(outPath, rec.HeaderBytes(), ws.params(), ws.events, rec.FileName());
        if (!problem.empty()) {
            std::cerr << "vess detect: " << problem << "\n";
            return 4;
        }
    }
    if (!csvPath.empty()) {
        if (const std::string problem = WriteFileAtomic(csvPath, EventsCsv(ws)); !problem.empty()) {
            std::cerr << "vess detect: " << problem << "\n";
            return 4;
        }
    }
    const EventSummary summary = SummariseEvents(rec, ws.events);
    std::cout << fmt::format("{}: {} events in {:.3f} s ({:.3f} per second), {} screens of {} blocks\n",
                             rec.FileName(), summary.events, summary.durationS, summary.frequencyHz,
                             result.screens, ws.BlocksPerScreen());
    if (!ws.events.Empty())
        std::cout << fmt::format("median amplitude {:.4g} {}, median rise time 10-90 {:.4g} ms\n",
                                 summary.medianAmplitude, rec.Units(), summary.medianRise1090Ms);
    return 0;
}

}  // namespace

void AddDetectCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("detect", "detect events in a whole recording");
    struct State {
        DetectionOptions options;
        std::string out, csv;
        bool quiet = false;
    };
    auto state = std::make_shared<State>();
    AddDetectionOptions(*cmd, state->options);
    cmd->add_option("--out", state->out, "write the events to this event file (.EVT)");
    cmd->add_option("--csv", state->csv, "write the events to this CSV file");
    cmd->add_flag("--quiet", state->quiet, "no progress on stderr");
    cmd->callback([state] {
        const int status = RunDetect(state->options, state->out, state->csv, state->quiet);
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace vess::cli
