// vess events FILE.EVT [--csv]: the detection parameters stored in an event
// file and every event with the seventeen grid columns, in the grid's units
// when the data file named in the event file is in the same folder, else in
// raw ADC counts and sample points.
#include <iostream>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/named_recording.h"
#include "cli/stderr_dialogs.h"
#include "recording/event_exports.h"
#include "recording/event_file.h"
#include "recording/event_grid.h"
#include "recording/recording.h"
#include "recording/texts.h"

namespace vess::cli {

namespace {

const char* VersionName(EventFileVersion v) {
    switch (v) {
        case EventFileVersion::Current: return "5.0";
        case EventFileVersion::V3: return "3.0 (converted)";
        case EventFileVersion::Oldest: return "older than 3.0 (converted)";
    }
    return "?";
}

std::string Parameters(const EventFileContents& f) {
    const AnalysisParameters& p = f.params;
    std::string out;
    out += fmt::format("Creator: {}\n", f.creator);
    out += fmt::format("Layout: {}\n", VersionName(f.version));
    out += fmt::format("Data file: {}\n", f.storedName);
    out += fmt::format("Events: {}\n", f.eventCount);
    out += fmt::format("PeakDirection: {}\n", p.PeakDirection);
    out += fmt::format("ThresholdAmplitude: {}\n", p.ThresholdAmplitude);
    out += fmt::format("PeriodToSearchMax (us): {}\n", p.PeriodToSearchMax);
    out += fmt::format("PeriodStartBaseline (us): {}\n", p.PeriodStartBaseline);
    out += fmt::format("PeriodFindDecayTime (us): {}\n", p.PeriodFindDecayTime);
    out += fmt::format("DecayPercent: {}\n", p.DecayPercent);
    out += fmt::format("PeriodBaselineAverage (us): {}\n", p.PeriodBaselineAverage);
    out += fmt::format("AreaThreshold: {}\n", p.AreaThreshold);
    out += fmt::format("NumberPointsPeak: {}\n", p.NumberPointsPeak < 1 ? 1 : p.NumberPointsPeak);
    return out;
}

}  // namespace

void AddEventsCommand(CLI::App& app) {
    struct Options {
        std::string file;
        bool csv = false;
    };
    auto opts = std::make_shared<Options>();
    auto* cmd = app.add_subcommand(
        "events", "Show the parameters and events of an event file (.EVT)");
    cmd->add_option("file", opts->file, "event file")->required();
    cmd->add_flag("--csv", opts->csv, "print the event table alone, comma-separated (as Export Event Grid as CSV writes it)");
    cmd->callback([opts] {
        const std::filesystem::path path = opts->file;
        StderrDialogs dialogs;
        const Outcome<EventFileContents> checked = ReadCheckedEventFile(path, nullptr);
        if (!ShowFailure(dialogs, checked.status())) throw CLI::RuntimeError(1);
        const EventFileContents& f = checked.value();
        const auto rec = OpenNamedRecording(path, f);
        if (!rec)
            std::cerr << "vess events: the data file " << f.storedName << " is not beside "
                      << path.filename().string()
                      << "; amplitudes and levels are in ADC counts, durations in sample points\n";
        if (opts->csv) {
            std::cout << EventGridText(rec.get(), f.records, ',') << std::flush;
        } else {
            std::cout << Parameters(f) << "\n" << EventGridText(rec.get(), f.records, '\t') << std::flush;
        }
    });
}

}  // namespace vess::cli
