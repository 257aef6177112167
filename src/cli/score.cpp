// vess score: detection accuracy against known event times, for one file or
// for a sweep of synthetic recordings at several signal-to-noise ratios.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iostream>

#include "cli/command_failure.h"
#include "cli/commands.h"
#include "cli/detection_options.h"
#include "recording/number_text.h"
#include "detection/noise_commands.h"
#include "detection/scoring.h"
#include "detection/detector.h"
#include "detection/whole_file.h"
#include "recording/screen.h"
#include "recording/synth.h"

namespace vess::cli {
namespace {

std::vector<double> DetectedPeaksMs(const Workspace& ws) {
    std::vector<double> ms;
    for (const EventRecord& e : ws.events.Records()) ms.push_back(e.time);
    std::sort(ms.begin(), ms.end());
    return ms;
}

void Print(const std::string& label, const DetectionScore& s) {
    std::cout << fmt::format("{:<34} true {:5}  found {:5}  matched {:5}  recall {:.3f}  precision {:.3f}  F1 {:.3f}\n",
                             label, s.truePositives + s.falseNegatives,
                             s.truePositives + s.falsePositives, s.truePositives, s.Recall(),
                             s.Precision(), s.F1());
}

// Unmatched detections within 10 ms of a true event, or not.
void PrintFalsePositives(std::span<const double> found, std::span<const double> truth, double lowMs,
                         double highMs) {
    const FalsePositiveClasses c = ClassifyFalsePositives(found, truth, lowMs, highMs, 10.0);
    std::cout << fmt::format("{:<34} false positives: second detections {}, displaced {}, noise {}\n",
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

// Runs the detection either with the parameters as they stand or by the
// noise-threshold protocol (DetectWithNoiseThreshold), and says what the
// protocol measured and set. False when the parameters were refused.
bool Detect(Workspace& ws, const NoiseProtocolOptions* protocol, const std::string& indent) {
    if (!protocol) return DetectWholeFile(ws).status.ok();
    const NoiseProtocolResult r = DetectWithNoiseThreshold(ws, *protocol);
    if (!r.status) return false;
    std::cout << fmt::format("{}RMS noise outside the first pass's {} events {} {} (median of "
                             "screens): ThresholdAmplitude {}, AreaThreshold {}\n",
                             indent, r.firstPassEvents, FixedOrSignificant(r.rmsNoiseUnits, 3),
                             ws.recording->Units(), FixedOrSignificant(r.thresholdAmplitude, 3),
                             FixedOrSignificant(r.areaThreshold, 3));
    return true;
}

// The tolerances to score with, in samples of the recording: the one asked
// for, else a few samples (5) and 1 ms, since the sampled maximum of a
// rounded peak on noise wanders by more than a few samples.
std::vector<double> TolerancesMs(double toleranceMs, double intervalUs) {
    if (toleranceMs > 0) return {toleranceMs};
    return {5 * intervalUs / 1000.0, 1.0};
}

std::string ToleranceLabel(double tolMs, double intervalUs) {
    return fmt::format("{:g} samples ({:g} ms)", std::round(tolMs * 1000.0 / intervalUs * 100) / 100,
                       tolMs);
}

// One row of the table of methods: how a method did with its settings.
struct MethodScore {
    std::string label;
    DetectionScore score;
};

void PrintMethodTable(const std::vector<MethodScore>& rows, const std::string& indent) {
    std::cout << fmt::format("{}{:<32} {:>6} {:>6} {:>7} {:>9} {:>7} {:>6}\n", indent, "method",
                             "true", "found", "matched", "precision", "recall", "F1");
    for (const MethodScore& r : rows) {
        const DetectionScore& s = r.score;
        std::cout << fmt::format("{}{:<32} {:>6} {:>6} {:>7} {:>9.3f} {:>7.3f} {:>6.3f}\n", indent,
                                 r.label, s.truePositives + s.falseNegatives,
                                 s.truePositives + s.falsePositives, s.truePositives,
                                 s.Precision(), s.Recall(), s.F1());
    }
}

// Detects with the options (the method among them) and scores the peaks;
// nullopt after a message when the file or the parameters were refused.
std::optional<DetectionScore> ScoreOnce(const DetectionOptions& options,
                                        const NoiseProtocolOptions* protocol,
                                        const std::vector<double>& truthMs, double lowMs,
                                        double highMs) {
    Workspace ws;
    if (!PrintFailure("score", PrepareWorkspace(options, ws))) return std::nullopt;
    std::streambuf* out = std::cout.rdbuf(nullptr);  // the protocol's report is not wanted here
    const bool ok = Detect(ws, protocol, "");
    std::cout.rdbuf(out);
    if (!ok) {
        std::cerr << "vess score: improper analysis parameters\n";
        return std::nullopt;
    }
    return ScoreDetections(DetectedPeaksMs(ws), truthMs, lowMs, highMs);
}

// Every method on the same recording, each with the options given (a
// suggestion from the recording included).
int ScoreMethods(const DetectionOptions& options, const std::string& truthPath, double toleranceMs,
                 const NoiseProtocolOptions* protocol) {
    std::string problem;
    Workspace probe;
    DetectionOptions plain;
    plain.file = options.file;
    plain.channel = options.channel;
    if (!PrintFailure("score", PrepareWorkspace(plain, probe))) return 2;
    const double intervalUs = probe.recording->IntervalUs();
    const std::optional<TrueEvents> truth = ReadTrueEvents(truthPath, intervalUs, problem);
    if (!truth) {
        std::cerr << "vess score: " << problem << "\n";
        return 2;
    }
    const double tol = toleranceMs > 0 ? toleranceMs : (truth->onsets ? 5.0 : 1.0);
    const double low = truth->onsets ? 0.0 : -tol;
    std::cout << probe.recording->FileName() << ": peaks within "
              << (truth->onsets ? fmt::format("{:g} ms after the true onsets", tol)
                                : ToleranceLabel(tol, intervalUs) + " of the true peaks")
              << "\n";
    std::vector<MethodScore> rows;
    for (const DetectionMethod m :
         {DetectionMethod::Threshold, DetectionMethod::Deconvolution, DetectionMethod::Template}) {
        DetectionOptions o = options;
        o.method = std::string(MethodName(m));
        const auto score = ScoreOnce(o, m == DetectionMethod::Threshold ? protocol : nullptr,
                                     truth->timesMs, low, tol);
        if (!score) return 3;
        rows.push_back({o.method, *score});
    }
    PrintMethodTable(rows, "");
    return 0;
}

int ScoreFile(const DetectionOptions& options, const std::string& truthPath, double toleranceMs,
              const NoiseProtocolOptions* protocol) {
    std::string problem;
    Workspace ws;
    if (!PrintFailure("score", PrepareWorkspace(options, ws))) return 2;
    const std::optional<TrueEvents> truth =
        ReadTrueEvents(truthPath, ws.recording->IntervalUs(), problem);
    if (!truth) {
        std::cerr << "vess score: " << problem << "\n";
        return 2;
    }
    if (!Detect(ws, protocol, "")) {
        std::cerr << "vess score: improper analysis parameters\n";
        return 3;
    }
    const std::vector<double> found = DetectedPeaksMs(ws);
    const double intervalUs = ws.recording->IntervalUs();
    // A peak follows its onset; around a true peak it may fall either side.
    std::vector<double> tolerances =
        toleranceMs > 0 ? std::vector<double>{toleranceMs}
                        : (truth->onsets ? std::vector<double>{5.0} : TolerancesMs(0, intervalUs));
    for (const double tol : tolerances) {
        const double low = truth->onsets ? 0.0 : -tol;
        std::cout << ws.recording->FileName() << ": peaks within "
                  << (truth->onsets ? fmt::format("{:g} ms after the true onsets", tol)
                                    : ToleranceLabel(tol, intervalUs) + " of the true peaks")
                  << "\n";
        Print("", ScoreDetections(found, truth->timesMs, low, tol));
        PrintFalsePositives(found, truth->timesMs, low, tol);
    }
    std::cout << fmt::format("RMS noise outside the detected events {} {} (median of screens)\n",
                             FixedOrSignificant(MedianScreenNoise(ws), 3), ws.recording->Units());
    return 0;
}

// Synthetic recordings at signal-to-noise ratios 2, 3, 5 and 10 (median
// event amplitude / RMS of the noise as synthesised), scored with the first
// suggested parameter set as it stands and by the noise-threshold protocol.
// The sweep's table of methods: the threshold detection with the first
// suggested set and by the noise-threshold protocol, and every method with
// its settings suggested from the recording.
bool SweepMethodTable(const std::string& file, const std::vector<double>& truth, double tol,
                      const NoiseProtocolOptions& protocol) {
    std::vector<MethodScore> rows;
    struct Run {
        const char* label;
        DetectionMethod method;
        bool fromNoise;
        bool protocol;
    };
    const Run runs[] = {{"threshold, suggested set 1", DetectionMethod::Threshold, false, false},
                        {"threshold, noise protocol", DetectionMethod::Threshold, false, true},
                        {"threshold, from this recording", DetectionMethod::Threshold, true, false},
                        {"deconvolution, from this recording", DetectionMethod::Deconvolution, true, false},
                        {"template, from this recording", DetectionMethod::Template, true, false}};
    for (const Run& run : runs) {
        DetectionOptions d;
        d.file = file;
        d.suggest = run.fromNoise ? 0 : 1;
        d.suggestFromNoise = run.fromNoise;
        d.method = std::string(MethodName(run.method));
        std::streambuf* err = std::cerr.rdbuf(nullptr);  // the suggestion's report
        const auto score = ScoreOnce(d, run.protocol ? &protocol : nullptr, truth, -tol, tol);
        std::cerr.rdbuf(err);
        if (!score) return false;
        rows.push_back({run.label, *score});
    }
    PrintMethodTable(rows, "  ");
    return true;
}

int SynthSweep(double seconds, uint64_t seed, const std::filesystem::path& folder, double toleranceMs,
               const NoiseProtocolOptions& protocol, bool allMethods) {
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
        std::vector<double> truth;
        for (const TrueEvent& e : synth.events) truth.push_back(e.peakMs);
        std::cout << fmt::format("SNR {:g}: noise {:.1f} pA RMS, {} events of median {:g} pA\n", snr,
                                 o.noiseRmsPa, truth.size(), o.medianAmplitudePa);
        if (allMethods) {
            const double tol = toleranceMs > 0 ? toleranceMs : 1.0;
            std::cout << fmt::format("  peaks within {:g} ms of the true peaks\n", tol);
            if (!SweepMethodTable(file.string(), truth, tol, protocol)) return 3;
            continue;
        }
        for (const bool useProtocol : {false, true}) {
            DetectionOptions d;
            d.file = file.string();
            d.suggest = 1;
            Workspace ws;
            if (!PrintFailure("score", PrepareWorkspace(d, ws))) return 2;
            std::cout << (useProtocol ? "  noise-threshold protocol\n" : "  suggested parameters\n");
            if (!Detect(ws, useProtocol ? &protocol : nullptr, "    ")) {
                std::cerr << "vess score: improper analysis parameters\n";
                return 3;
            }
            const std::vector<double> found = DetectedPeaksMs(ws);
            const double intervalUs = ws.recording->IntervalUs();
            for (const double tol : TolerancesMs(toleranceMs, intervalUs)) {
                Print("    within " + ToleranceLabel(tol, intervalUs),
                      ScoreDetections(found, truth, -tol, tol));
                PrintFalsePositives(found, truth, -tol, tol);
            }
            if (useProtocol) continue;
            // The same noise without events, in the band the amplitude test sees.
            SynthOptions quiet = o;
            quiet.eventsPerSecond = 0;
            if (const auto len = ConvertPeriods(ws.params(), intervalUs)) {
                const double bandPa = DetectorBandNoisePa(Synthesise(quiet).samples, len->baseOffset,
                                                          len->baseLen, o.countsPerPa);
                std::cout << fmt::format("    noise in the detector's band {:.2f} pA; median "
                                         "amplitude / that noise = {:.2f}\n",
                                         bandPa, o.medianAmplitudePa / bandPa);
            }
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
        bool protocol = false;
        bool allMethods = false;
        NoiseProtocolOptions protocolOptions;
    };
    auto st = std::make_shared<State>();
    AddDetectionOptions(*cmd, st->options);
    cmd->get_option("FILE")->required(false);
    cmd->add_option("TRUTH", st->truth,
                    "true events: the synthesiser's CSV (its peak_ms column, the time of the "
                    "0-based peak sample, as it stands) or onset times in seconds, one per line "
                    "(onset t is the 1-based sample round(t x rate), as in simulated recordings: "
                    "0-based sample round(t x rate) - 1)");
    cmd->add_option("--tolerance-ms", st->toleranceMs,
                    "matching tolerance (default: both 5 samples and 1 ms around true peaks; 5 ms "
                    "after onsets)");
    cmd->add_flag("--synth-sweep", st->sweep,
                  "score synthetic recordings at signal-to-noise ratios 2, 3, 5 and 10 with the "
                  "first suggested parameter set");
    cmd->add_flag("--noise-threshold", st->protocol,
                  "detect once, set ThresholdAmplitude to a multiple of the RMS noise outside the "
                  "events found, erase them and detect again (the sweep always does both)");
    cmd->add_option("--noise-multiple", st->protocolOptions.noiseMultiple,
                    "the multiple of the RMS noise for --noise-threshold")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    cmd->add_flag("--scale-area", st->protocolOptions.scaleAreaThreshold,
                  "with --noise-threshold, scale AreaThreshold as ThresholdAmplitude changes");
    cmd->add_flag("--all-methods", st->allMethods,
                  "score every detection method in one run and print a table of precision, recall "
                  "and F1 (with --synth-sweep: the threshold detection with the first suggested set "
                  "and by the noise-threshold protocol, and every method suggested from the "
                  "recording)");
    cmd->add_option("--seconds", st->seconds, "length of each synthetic recording");
    cmd->add_option("--seed", st->seed, "seed of the synthetic recordings");
    cmd->add_option("--folder", st->folder, "where the synthetic recordings are written");
    cmd->callback([st] {
        int status = 0;
        if (st->sweep) {
            const std::filesystem::path folder =
                st->folder.empty() ? std::filesystem::temp_directory_path() / "vess-score"
                                   : std::filesystem::path(st->folder);
            status = SynthSweep(st->seconds, st->seed, folder, st->toleranceMs,
                                st->protocolOptions, st->allMethods);
        } else if (st->options.file.empty() || st->truth.empty()) {
            std::cerr << "vess score: give FILE and TRUTH, or --synth-sweep\n";
            status = 2;
        } else if (st->allMethods) {
            status = ScoreMethods(st->options, st->truth, st->toleranceMs,
                                  st->protocol ? &st->protocolOptions : nullptr);
        } else {
            status = ScoreFile(st->options, st->truth, st->toleranceMs,
                               st->protocol ? &st->protocolOptions : nullptr);
        }
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace vess::cli
