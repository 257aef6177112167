// vess batch: detection over many recordings, each as vess detect runs it,
// on worker threads, with a summary of every recording.
#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <mutex>

#include "batch/batch_run.h"
#include "cli/commands.h"
#include "recording/file_io.h"
#include "recording/method_settings.h"
#include "recording/settings_file.h"

namespace vess::cli {
namespace {

namespace fs = std::filesystem;

struct BatchOptions {
    std::vector<std::string> files;
    std::string list;
    int channel = 0;
    std::string settingsFile, parameterFile, method, outDir, shard, summary;
    int jobs = 0;
    bool quiet = false;
    bool overwrite = false;
};

int RunBatchCommand(const BatchOptions& o) {
    const auto refuse = [](const std::string& problem) {
        std::cerr << "vess batch: " << problem << "\n";
        return 2;
    };
    std::vector<fs::path> inputs(o.files.begin(), o.files.end());
    if (!o.list.empty()) {
        std::string problem;
        const auto listed = ReadRecordingList(o.list, &problem);
        if (!listed) return refuse(problem);
        inputs.insert(inputs.end(), listed->begin(), listed->end());
    }
    if (inputs.empty()) return refuse("no recordings: give files or folders, or --list");
    Shard shard;
    if (!o.shard.empty()) {
        std::string problem;
        const auto parsed = ParseShard(o.shard, &problem);
        if (!parsed) return refuse(problem);
        shard = *parsed;
    }
    BatchSetup setup;
    setup.channel = o.channel;
    setup.jobs = o.jobs;
    setup.overwrite = o.overwrite;
    const SettingsSource source = !o.settingsFile.empty()    ? SettingsSource::SettingsFile
                                  : !o.parameterFile.empty() ? SettingsSource::ParameterFile
                                                             : SettingsSource::Current;
    const std::string sourceFile = o.settingsFile.empty() ? o.parameterFile : o.settingsFile;
    // Without a settings or parameter file, as a new installation would run.
    if (source == SettingsSource::Current) setup.settings = NewInstallationSettings();
    if (CommandResult applied = ApplySettingsSource(source, sourceFile, setup.settings); !applied)
        return refuse(applied.message());
    if (!o.method.empty()) setup.settings.method.method = *ParseMethodName(o.method);
    if (!o.outDir.empty()) {
        std::error_code ec;
        fs::create_directories(o.outDir, ec);
        if (ec) return refuse(o.outDir + ": " + ec.message());
    }
    const std::vector<fs::path> recordings = ExpandRecordings(inputs);
    if (recordings.empty()) {
        std::string named;
        for (const fs::path& p : inputs) named += (named.empty() ? "" : ", ") + p.string();
        return refuse("no recordings (*.abf) in " + named);
    }
    const std::vector<BatchItem> items = SelectShard(PlanBatch(recordings, o.outDir), shard);

    std::mutex errMutex;
    BatchCallbacks callbacks;
    callbacks.fileDone = [&](std::size_t, const BatchRow& row, std::size_t done) {
        if (o.quiet) return;
        const std::lock_guard lock(errMutex);
        std::cerr << fmt::format("[{}/{}] {}: {}\n", done, items.size(), row.file.string(),
                                 row.errors.empty() ? fmt::format("{} events", row.events) : row.errors);
    };
    const std::atomic<bool> stop{false};
    const std::vector<BatchRow> rows = RunBatch(items, setup, callbacks, stop);
    const std::string csv = SummaryCsv(rows);
    if (o.summary.empty()) {
        std::cout << csv;
    } else if (std::string problem = WriteFileAtomic(o.summary, csv); !problem.empty()) {
        std::cerr << "vess batch: " << problem << "\n";
        return 4;
    }
    const auto failed = std::count_if(rows.begin(), rows.end(), [](const BatchRow& r) { return !r.analysed && !r.kept; });
    return failed ? 1 : 0;
}

}  // namespace

void AddBatchCommand(CLI::App& app) {
    auto* cmd = app.add_subcommand("batch", "detect events in many recordings, with a summary");
    auto o = std::make_shared<BatchOptions>();
    cmd->add_option("FILES", o->files, "recordings (ABF 1.x or ABF 2) or folders of them");
    cmd->add_option("--list", o->list, "a text file naming one recording or folder per line");
    cmd->add_option("--channel", o->channel, "channel position, 0-based, in every recording")
        ->check(CLI::NonNegativeNumber);
    auto* settings = cmd->add_option("--settings", o->settingsFile, "settings file (.SET) to use");
    auto* par = cmd->add_option("--par", o->parameterFile, "parameter file (.PAR) or event file (.EVT)");
    settings->excludes(par);
    cmd->add_option("--method", o->method, "detection method: threshold, deconvolution or template")
        ->check(CLI::IsMember({"threshold", "deconvolution", "template"}));
    cmd->add_option("--out-dir", o->outDir, "write the event files here instead of beside each recording");
    cmd->add_option("--jobs", o->jobs, "worker threads (default: one per core)")->check(CLI::PositiveNumber);
    cmd->add_option("--shard", o->shard,
                    "K/N: analyse recordings K, K+N, K+2N, ... of the sorted list (K from 0)");
    cmd->add_option("--summary", o->summary, "write the summary CSV here instead of to stdout");
    cmd->add_flag("--quiet", o->quiet, "no progress on stderr");
    cmd->add_flag("--overwrite", o->overwrite,
                  "replace existing event files (by default they are kept and their recordings skipped)");
    cmd->callback([o] {
        const int status = RunBatchCommand(*o);
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace vess::cli
