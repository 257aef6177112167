// vess score: detection accuracy against known event times, for one file or
// for a sweep of synthetic recordings at several signal-to-noise ratios.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/commands.h"
#include "cli/detection_options.h"
#include "detection/noise_commands.h"
#include "detection/scoring.h"
#include "detection/detector.h"
#include "detection/whole_file.h"
#include "recording/screen.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"

namespace vess::cli {
namespace {

struct Truth {
    std::vector<double> timesMs;
    bool onsets = false;  // onset times (peaks follow), else peak times
};

// Either the synthesiser's CSV (the peak_ms column) or a list of onset times
// in seconds, one per line.
std::optional<Truth> ReadTruth(const std::string& path, std::string& problem) {
    std::ifstream in(path);
    if (!in) {
        problem = path + ": cannot open";
        return std::nullopt;
    }
    Truth truth;
    std::string line;
    int peakColumn = -1;
    while (std::getline(in, line)) {
        if (line.empty() || line == "\r") continue;
        if (line.find("peak_ms") != std::string::npos) {
            std::stringstream header(line);
            std::string name;
            for (int c = 0; std::getline(header, name, ','); ++c)
                if (name == "peak_ms") peakColumn = c;
            continue;
        }
        try {
            if (peakColumn >= 0) {
                std::stringstream row(line);
                std::string cell;
                for (int c = 0; c <= peakColumn; ++c) std::getline(row, cell, ',');
                truth.timesMs.push_back(std::stod(cell));
            } else {
                truth.timesMs.push_back(std::stod(line) * 1000.0);
                truth.onsets = true;
            }
        } catch (const std::exception&) {
            problem = path + ": cannot read the line '" + line + "'";
            return std::nullopt;
        }
    }
    std::sort(truth.timesMs.begin(), truth.timesMs.end());
    return truth;
}

std::vector<double> DetectedPeaksMs(const Workspace& ws) {
    std::vector<double> ms;
    for (const EventRecord& e : ws.events.Records()) ms.push_back(e.time);
    std::sort(ms.begin(), ms.end());
    return ms;
}

void Print(const std::string& label, const DetectionScore& s) {
    std::cout << fmt::format("{:<24} true {:5}  found {:5}  matched {:5}  recall {:.3f}  precision {:.3f}  F1 {:.3f}\n",
                             label, s.truePositives + s.falseNegatives,
                             s.truePositives + s.falsePositives, s.truePositives, s.Recall(),
                             s.Precision(), s.F1());
}

// Unmatched detections within 10 ms of a true event, or not.
void PrintFalsePositives(std::span<const double> found, std::span<const double> truth, double lowMs,
                         double highMs) {
    const FalsePositiveClasses c = ClassifyFalsePositives(found, truth, lowMs, highMs, 10.0);
    std::cout << fmt::format("{:<24} false positives: second detections {}, displaced {}, noise {}\n",
                             "", c.secondDetections, c.displaced, c.noise);
}

// The noise the amplitude test sees: a sample minus the mean of the BaseLen
// samples that begin BaseOffset before it, as RMS in pA.
double DetectorBandNoisePa(const std::vector<int16_t>& samples, int64_t baseOffset, int64_t baseLen,
                           double countsPerPa) {
    double squares = 0;
    int64_t n = 0;
    for (int64_t i = baseOffset; i < int64_t(samples.size()); ++i) {
        double base = 0;
        for (int64_t k = 0; k < baseLen; ++k) base += samples[std::size_t(i - baseOffset + k)];
        const double d = samples[std::size_t(i)] - base / double(baseLen);
        squares += d * d;
        ++n;
    }
    return n == 0 ? 0 : std::sqrt(squares / double(n)) / countsPerPa;
}

// Median over the screens of the RMS noise outside the detected events.
double QuietNoise(const Workspace& ws) {
    std::vector<double> rms;
    const int32_t bps = ws.BlocksPerScreen();
    for (int32_t b = 0; b + bps <= ws.recording->BlockCount(); b += bps) {
        const NoiseMeasure m = MeasureScreenNoise(Screen(*ws.recording, b, bps), ws.events);
        if (m.valid) rms.push_back(m.rmsUnits);
    }
    if (rms.empty()) return 0;
    std::nth_element(rms.begin(), rms.begin() + std::ptrdiff_t(rms.size() / 2), rms.end());
    return rms[rms.size() / 2];
}

int ScoreFile(const DetectionOptions& options, const std::string& truthPath, double toleranceMs) {
    std::string problem;
    const std::optional<Truth> truth = ReadTruth(truthPath, problem);
    if (!truth) {
        std::cerr << "vess score: " << problem << "\n";
        return 2;
    }
    Workspace ws;
    if (problem = PrepareWorkspace(options, ws); !problem.empty()) {
        std::cerr << "vess score: " << problem << "\n";
        return 2;
    }
    ScriptedDialogs dialogs;
    if (DetectWholeFile(ws, dialogs).improperParameters) {
        std::cerr << "vess score: improper analysis parameters\n";
        return 3;
    }
    const std::vector<double> found = DetectedPeaksMs(ws);
    // A peak follows its onset; around a true peak it may fall either side.
    const double tol = toleranceMs > 0 ? toleranceMs
                                       : (truth->onsets ? 5.0 : 5 * ws.recording->IntervalUs() / 1000.0);
    const DetectionScore s = truth->onsets ? ScoreDetections(found, truth->timesMs, 0.0, tol)
                                           : ScoreDetections(found, truth->timesMs, -tol, tol);
    Print(ws.recording->FileName(), s);
    if (truth->onsets)
        PrintFalsePositives(found, truth->timesMs, 0.0, tol);
    else
        PrintFalsePositives(found, truth->timesMs, -tol, tol);
    std::cout << fmt::format("{:<24} RMS noise outside events {:.3f} {} (median of screens)\n", "",
                             QuietNoise(ws), ws.recording->Units());
    return 0;
}

int SynthSweep(double seconds, uint64_t seed, const std::filesystem::path& folder, double toleranceMs) {
    std::filesystem::create_directories(folder);
    for (const double snr : {2.0, 3.0, 5.0, 10.0}) {
        SynthOptions o;
        o.seconds = seconds;
        o.seed = seed;
        o.noiseRmsPa = o.medianAmplitudePa / snr;
        const SynthRecording synth = Synthesise(o);
        const std::filesystem::path file = folder / fmt::format("snr{}.abf", snr);
        if (const std::string problem = WriteSynthetic(file, synth); !problem.empty()) {
            std::cerr << "vess score: " << problem << "\n";
            return 4;
        }
        DetectionOptions d;
        d.file = file.string();
        d.suggest = 1;
        Workspace ws;
        if (const std::string problem = PrepareWorkspace(d, ws); !problem.empty()) {
            std::cerr << "vess score: " << problem << "\n";
            return 2;
        }
        ScriptedDialogs dialogs;
        DetectWholeFile(ws, dialogs);
        std::vector<double> truth;
        for (const TrueEvent& e : synth.events) truth.push_back(e.peakMs);
        const double tol = toleranceMs > 0 ? toleranceMs : 5 * ws.recording->IntervalUs() / 1000.0;
        const std::vector<double> found = DetectedPeaksMs(ws);
        Print(fmt::format("SNR {:g} (noise {:.1f} pA)", snr, o.noiseRmsPa),
              ScoreDetections(found, truth, -tol, tol));
        PrintFalsePositives(found, truth, -tol, tol);
        // The same noise without events, in the band the amplitude test sees.
        SynthOptions quiet = o;
        quiet.eventsPerSecond = 0;
        const auto len = ConvertPeriods(ws.params(), ws.recording->IntervalUs());
        if (len) {
            const double bandPa = DetectorBandNoisePa(Synthesise(quiet).samples, len->baseOffset,
                                                      len->baseLen, o.countsPerPa);
            std::cout << fmt::format("{:<24} noise in the detector's band {:.2f} pA; median "
                                     "amplitude / that noise = {:.2f}\n",
                                     "", bandPa, o.medianAmplitudePa / bandPa);
        }
    }
    return 0;
}

}  // namespace

void AddScoreCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand(
        "score", "detection accuracy against known event times (recall, precision, F1)");
    struct State {
        DetectionOptions options;
        std::string truth;
        double toleranceMs = 0;
        bool sweep = false;
        double seconds = 60;
        uint64_t seed = 7;
        std::string folder;
    };
    auto st = std::make_shared<State>();
    AddDetectionOptions(*cmd, st->options);
    cmd->get_option("FILE")->required(false);
    cmd->add_option("TRUTH", st->truth,
                    "true events: the synthesiser's CSV (peak times) or onset times in seconds, "
                    "one per line");
    cmd->add_option("--tolerance-ms", st->toleranceMs,
                    "matching tolerance (default 5 samples around true peaks, 5 ms after onsets)");
    cmd->add_flag("--synth-sweep", st->sweep,
                  "score synthetic recordings at signal-to-noise ratios 2, 3, 5 and 10 with the "
                  "first suggested parameter set");
    cmd->add_option("--seconds", st->seconds, "length of each synthetic recording");
    cmd->add_option("--seed", st->seed, "seed of the synthetic recordings");
    cmd->add_option("--folder", st->folder, "where the synthetic recordings are written");
    cmd->callback([st] {
        int status = 0;
        if (st->sweep) {
            const std::filesystem::path folder =
                st->folder.empty() ? std::filesystem::temp_directory_path() / "vess-score"
                                   : std::filesystem::path(st->folder);
            status = SynthSweep(st->seconds, st->seed, folder, st->toleranceMs);
        } else if (st->options.file.empty() || st->truth.empty()) {
            std::cerr << "vess score: give FILE and TRUTH, or --synth-sweep\n";
            status = 2;
        } else {
            status = ScoreFile(st->options, st->truth, st->toleranceMs);
        }
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace vess::cli
