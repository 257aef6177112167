// vess noise, vess eventfree and vess synch: the noise measures and spectrum
// of a stretch, the event-free copy of a channel, and the sweep start times,
// with the engine of the main window's signal tools.
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>

#include "cli/command_failure.h"
#include "cli/commands.h"
#include "cli/detection_options.h"
#include "cli/stderr_dialogs.h"
#include "detection/method_commands.h"
#include "detection/whole_file.h"
#include "signal/event_free_file.h"
#include "signal/event_free_hidden.h"
#include "signal/noise_measures.h"
#include "signal/synch_array.h"
#include "signal/welch_spectrum.h"

namespace vess::cli {
namespace {

Workspace OpenOrFail(const DetectionOptions& options, const char* command) {
    Workspace ws;
    ExitUnlessDone(command, PrepareWorkspace(options, ws), 2);
    return ws;
}

struct NoiseOptions {
    DetectionOptions file;
    double fromS = 0, toS = -1;
    bool spectrum = false, json = false;
    int segment = 0;
    double lineHz = 50;
};

void RunNoise(const NoiseOptions& o) {
    Workspace ws = OpenOrFail(o.file, "noise");
    const Recording& rec = *ws.recording;
    const double perS = 1e6 / rec.IntervalUs();
    // The stretch must lie within the recording: no silent fall-back to the
    // whole file for a range outside it.
    const double lengthS = double(rec.PointsPerChannel()) / perS;
    const double toS = o.toS == -1 ? lengthS : o.toS;  // -1: the default, to the end
    if (!std::isfinite(o.fromS) || !std::isfinite(toS) || o.fromS < 0 || toS > lengthS || !(toS > o.fromS)) {
        std::cerr << fmt::format("vess noise: --from and --to must give a stretch from 0 to {} s with --from "
                                 "before --to\n", lengthS);
        throw CLI::RuntimeError(2);
    }
    const int64_t first = int64_t(o.fromS * perS);
    const int64_t last = int64_t(std::min(toS * perS, double(rec.PointsPerChannel())));
    // The samples are read in pieces, never held whole: s gives units only.
    const TraceStretch s = ReadStretch(rec, 0, 0);
    const auto m = MeasureRecordingNoise(rec, first, last - first);
    if (!m) {
        std::cerr << "vess noise: the stretch holds fewer than two samples\n";
        throw CLI::RuntimeError(2);
    }
    PowerSpectrum psd;
    if (o.spectrum) {
        const auto points = std::size_t(last - first);
        const int segment = o.segment > 0 ? o.segment : DefaultSegmentLength(points);
        if (!ValidSegmentLength(segment, points)) {
            std::cerr << "vess noise: --segment must be a power of 2 from 16 to the stretch's points\n";
            throw CLI::RuntimeError(2);
        }
        psd = RecordingSpectrum(rec, first, last - first, segment);
    }
    if (o.json) {
        nlohmann::json j = {{"file", rec.FileName()}, {"units", s.units}, {"points", m->points},
                            {"interval_ms", s.intervalMs}, {"mean", m->mean}, {"median", m->median},
                            {"sd", m->sd}, {"rms_about_median", m->rmsAboutBaseline},
                            {"peak_to_peak", m->peakToPeak}, {"coastline", m->coastline},
                            {"coastline_per_ms", m->coastlinePerMs}};
        if (o.spectrum)
            j["spectrum"] = {{"frequency_hz", psd.frequencyHz}, {"psd", psd.psd},
                             {"segments", psd.segments}, {"line_hz", o.lineHz}};
        std::cout << j.dump(1) << "\n";
        return;
    }
    std::cout << rec.FileName() << "\n" << NoiseReportText(*m, s.units) << "\n";
    if (!o.spectrum) return;
    std::cout << fmt::format("frequency_hz psd_{}^2/Hz ({} segments)\n", s.units, psd.segments);
    for (std::size_t k = 0; k < psd.psd.size(); ++k)
        std::cout << fmt::format("{:.6g} {:.6g}\n", psd.frequencyHz[k], psd.psd[k]);
}

void AddNoise(CLI::App& app) {
    auto o = std::make_shared<NoiseOptions>();
    auto* cmd = app.add_subcommand("noise", "noise measures (and Welch spectrum) of a stretch");
    cmd->add_option("file", o->file.file, "ABF file")->required();
    cmd->add_option("--channel", o->file.channel, "0-based channel position");
    cmd->add_option("--from", o->fromS, "start of the stretch, s");
    cmd->add_option("--to", o->toS, "end of the stretch, s (default: the end)");
    cmd->add_flag("--spectrum", o->spectrum, "print the Welch power spectral density");
    cmd->add_option("--segment", o->segment, "spectrum segment, points (a power of 2)");
    cmd->add_option("--line-hz", o->lineHz, "line frequency reported with the spectrum");
    cmd->add_flag("--json", o->json, "JSON output");
    cmd->callback([o] { RunNoise(*o); });
}

struct EventFreeCli {
    DetectionOptions detection;
    std::string out;
    double marginMs = kDefaultEventFreeMarginMs;
    bool redetect = false;
    bool tableOnly = false;
    bool json = false;
};

// Detection on the written file with the same settings, once with the
// source's noise levels and once with the copy's own (the threshold method
// measures no noise: one count).
nlohmann::json Redetected(const Workspace& ws, const std::string& out) {
    nlohmann::json counts = nlohmann::json::object();
    for (const auto& [noise, key] : {std::pair{NoiseLevels::OfSource, "source_noise_levels"},
                                     std::pair{NoiseLevels::Measured, "own_noise_levels"}}) {
        const std::optional<int32_t> again = RedetectedEventCount(ws, out, noise);
        if (!again) {
            std::cerr << "vess eventfree: " << out << " could not be detected on again\n";
            throw CLI::RuntimeError(4);
        }
        counts[key] = *again;
        if (!UsesFilteringMethod(ws)) break;
    }
    return counts;
}

void RunEventFree(const EventFreeCli& o) {
    Workspace ws = OpenOrFail(o.detection, "eventfree");
    StderrDialogs dialogs;
    if (!ShowFailure(dialogs, DetectWholeFile(ws).status)) throw CLI::RuntimeError(3);
    const Recording& rec = *ws.recording;
    if (const std::string problem = EventFreeMarginProblem(rec, o.marginMs); !problem.empty()) {
        std::cerr << "vess eventfree: " << problem << "\n";
        throw CLI::RuntimeError(2);
    }
    const Outcome<EventFreeWritten> written =
        WriteEventFreeCopy(ws, o.marginMs, EventFreeLevelPoints(ws), o.out, !o.tableOnly);
    if (!written) {
        std::cerr << "vess eventfree: " << written.message() << "\n";
        throw CLI::RuntimeError(4);
    }
    const nlohmann::json again = o.redetect ? Redetected(ws, o.out) : nlohmann::json();
    if (o.json) {
        nlohmann::json j = {{"file", rec.FileName()}, {"out", o.out}, {"removed", written->removed},
                            {"hidden_removed", written->HiddenRemoved()}};
        if (o.redetect) j["redetected"] = again;
        std::cout << j.dump(2) << "\n";
        return;
    }
    std::cout << fmt::format("{}: {} events removed into {}\n", rec.FileName(), written->removed, o.out);
    if (const std::string hidden = HiddenEventsText(written->HiddenRemoved()); !hidden.empty())
        std::cout << hidden << "\n";
    const double table = std::max(ws.events.Count(), 1);
    for (const auto& [key, how] : {std::pair{"source_noise_levels", "and noise levels"},
                                   std::pair{"own_noise_levels", "and the copy's own noise levels"}}) {
        if (!again.contains(key)) continue;
        const int32_t n = again[key];
        std::cout << fmt::format("detection with the same settings {}: {} events ({:.1f} % of {})\n", how, n,
                                 100.0 * n / table, ws.events.Count());
    }
}

void AddEventFree(CLI::App& app) {
    auto o = std::make_shared<EventFreeCli>();
    auto* cmd = app.add_subcommand("eventfree", "detect, then write the channel without its events");
    AddDetectionOptions(*cmd, o->detection);
    cmd->add_option("--out", o->out, "event-free ABF file to write")->required();
    cmd->add_option("--margin", o->marginMs, "ms added on each side of every event")->capture_default_str();
    cmd->add_flag("--redetect", o->redetect, "detect again on the written file with the same settings and count");
    cmd->add_flag("--table-only", o->tableOnly,
                  "remove only the detected events, not also the small events the same detection finds on the "
                  "copy beside removed ones");
    cmd->add_flag("--json", o->json, "JSON output");
    cmd->callback([o] { RunEventFree(*o); });
}

void AddSynch(CLI::App& app) {
    auto o = std::make_shared<DetectionOptions>();
    auto* cmd = app.add_subcommand("synch", "start time of each sweep, ms, one a line");
    cmd->add_option("file", o->file, "ABF file")->required();
    cmd->add_option("--channel", o->channel, "0-based channel position");
    cmd->callback([o] {
        Workspace ws = OpenOrFail(*o, "synch");
        const auto times = SweepStartTimesMs(*ws.recording);
        if (times.empty()) {
            std::cerr << "vess synch: " << ws.recording->FileName() << " has a single sweep\n";
            throw CLI::RuntimeError(1);
        }
        for (float t : times) std::cout << fmt::format("{:.3f}\n", t);
    });
}

}  // namespace

void AddSignalToolCommands(CLI::App& app) {
    AddNoise(app);
    AddEventFree(app);
    AddSynch(app);
}

}  // namespace vess::cli
