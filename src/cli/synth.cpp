// vess synth OUT.abf [...]: a synthetic recording with events at known
// times, and a CSV of those events beside it.
#include <iostream>
#include <string>

#include <fmt/format.h>

#include "cli/commands.h"
#include "recording/synth.h"

namespace vess::cli {

void AddSynthCommand(CLI::App& app) {
    struct Options {
        std::string file;
        SynthOptions synth;
    };
    auto opts = std::make_shared<Options>();
    SynthOptions& s = opts->synth;
    auto* cmd = app.add_subcommand(
        "synth", "Write a synthetic recording (coloured noise, line hum, events at known times)");
    cmd->add_option("file", opts->file, "ABF file to write")->required();
    cmd->add_option("--seconds", s.seconds, "Duration in seconds")->capture_default_str();
    cmd->add_option("--rate", s.sampleRateHz, "Sample rate in Hz")->capture_default_str();
    cmd->add_option("--seed", s.seed, "Random seed")->capture_default_str();
    cmd->add_option("--rate-of-events", s.eventsPerSecond, "Mean events per second")
        ->capture_default_str();
    cmd->add_option("--amplitude", s.medianAmplitudePa, "Median event amplitude in pA")
        ->capture_default_str();
    cmd->add_option("--noise", s.noiseRmsPa, "RMS of the coloured noise in pA")
        ->capture_default_str();
    cmd->add_option("--direction", s.direction, "Event direction, -1 or 1")
        ->check(CLI::IsMember({-1, 1}))
        ->capture_default_str();
    cmd->add_option("--rise-tau", s.riseTauMs, "Rise time constant in ms")->capture_default_str();
    cmd->add_option("--decay-tau", s.decayTauMs, "Decay time constant in ms")
        ->capture_default_str();
    cmd->callback([opts] {
        if (std::string problem = CheckSynthOptions(opts->synth); !problem.empty()) {
            std::cerr << "vess synth: " << problem << "\n";
            throw CLI::RuntimeError(1);
        }
        const SynthRecording rec = Synthesise(opts->synth);
        if (std::string problem = WriteSynthetic(opts->file, rec); !problem.empty()) {
            std::cerr << "vess synth: " << problem << "\n";
            throw CLI::RuntimeError(1);
        }
        std::cout << fmt::format("Wrote {} ({} samples at {} Hz, {} events); true events in {}\n",
                                 opts->file, rec.samples.size(), opts->synth.sampleRateHz,
                                 rec.events.size(), TrueEventsPath(opts->file).string());
    });
}

}  // namespace vess::cli
