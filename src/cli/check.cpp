// vess check FILE.abf: how many events the current method and settings would
// find in this recording, and how many false ones, from events added to a
// copy of it at known times.
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>

#include "cli/command_failure.h"
#include "cli/commands.h"
#include "cli/detection_options.h"
#include "detection/accuracy_check.h"

namespace vess::cli {

void AddCheckCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand(
        "check", "recall and false detections of the current settings on events added to a copy");
    struct State {
        DetectionOptions options;
        AccuracyOptions check;
        bool json = false;
    };
    auto st = std::make_shared<State>();
    AddDetectionOptions(*cmd, st->options);
    cmd->add_option("--events", st->check.events, "events added")->capture_default_str()
        ->check(CLI::Range(1, 100000));
    cmd->add_option("--seed", st->check.seed, "seed of the times and amplitudes")->capture_default_str();
    cmd->add_option("--seconds", st->check.maxSeconds, "longest stretch copied")->capture_default_str()
        ->check(CLI::PositiveNumber);
    cmd->add_flag("--json", st->json, "print the report as JSON");
    cmd->callback([st] {
        Workspace ws;
        ExitUnlessDone("check", PrepareWorkspace(st->options, ws), 2);
        const AccuracyReport r = CheckAccuracy(ws, st->check);
        ExitUnlessDone("check", r.status, 3);
        if (!st->json) {
            std::cout << "method " << MethodName(ws.settings.method.method) << "\n" << AccuracyTable(r);
            return;
        }
        nlohmann::json j;
        j["method"] = std::string(MethodName(ws.settings.method.method));
        j["seconds"] = r.seconds;
        j["noise_sd"] = r.noiseSdUnits;
        j["units"] = r.units;
        j["added"] = r.added;
        j["found"] = r.found;
        j["false_positives"] = r.falsePositives;
        j["original_events"] = r.originalEvents;
        j["inverted_detections"] = r.invertedDetections;
        j["inverted_seconds"] = r.invertedSeconds;
        const auto perMinute = r.FalsePerMinute();  // null: not measurable
        j["false_per_minute"] = perMinute ? nlohmann::json(*perMinute) : nlohmann::json();
        j["collided"] = r.collided;
        j["recall_90_amplitude"] = r.recall90Units ? nlohmann::json(*r.recall90Units) : nlohmann::json();
        for (const AccuracyBin& b : r.bins)
            j["bins"].push_back({{"from", b.lowUnits}, {"to", b.highUnits}, {"added", b.added},
                                 {"found", b.found}, {"recall", b.Recall()},
                                 {"false_positives", b.falsePositives}});
        std::cout << j.dump(2) << "\n";
    });
}

}  // namespace vess::cli
