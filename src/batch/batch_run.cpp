#include "batch/batch_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <mutex>
#include <thread>

#include "batch/texts.h"
#include "detection/detection_start.h"
#include "detection/event_summary.h"
#include "detection/ordered_work.h"
#include "detection/whole_file.h"
#include "recording/detection_inputs.h"
#include "recording/event_file.h"
#include "recording/safe_answer_dialogs.h"
#include "recording/workspace.h"

namespace vess {
namespace {

namespace t = batch_texts;

// A batch asks no one: messages are kept for the row, questions get their
// safe answer.
class CollectingDialogs : public SafeAnswerDialogs {
public:
    void Message(const std::string& caption, const std::string& text) override {
        Add(caption + ": " + text);
    }
    void Add(std::string_view text) {
        if (!collected.empty()) collected += "; ";
        collected += text;
    }
    std::string collected;
};

void FillSummary(BatchRow& row, const Recording& rec, const EventTable& events) {
    const EventSummary s = SummariseEvents(rec, events);
    row.durationS = s.durationS;
    row.events = s.events;
    row.frequencyHz = s.frequencyHz;
    row.medianAmplitude = s.medianAmplitude;
    row.units = rec.Units();
    row.medianRise1090Ms = s.medianRise1090Ms;
    row.medianHalfWidthMs = s.medianHalfWidthMs;
    row.medianDecayMs = s.medianDecayMs;
}

BatchRow DetectAndWrite(const BatchItem& item, const BatchSetup& setup,
                        const std::function<void(int)>& progress, const std::atomic<bool>& stop) {
    BatchRow row;
    row.file = item.file;
    row.channel = setup.channel;
    Workspace ws;
    ws.settings = setup.settings;
    if (CommandResult opened = OpenRecordingOnChannel(item.file, setup.channel, ws); !opened) {
        row.errors = opened.message();
        return row;
    }
    SuggestOnFirstAnalysis(ws);  // each recording its own suggestion, when the settings ask
    CollectingDialogs dialogs;
    int lastPercent = -1;
    bool stopped = false;
    const ProgressCallback onScreen = [&](const NonStopAnalysis::Progress& p) {
        const int percent = int((p.screensDone + 1) * 100 / (p.screensTotal + 1));
        if (progress && percent != lastPercent) progress(percent);
        lastPercent = percent;
        stopped = stopped || stop.load();
        return !stopped;
    };
    const WholeFileResult result = DetectWholeFile(ws, onScreen);
    const Recording& rec = *ws.recording;
    FillSummary(row, rec, ws.events);
    if (!rec.ReadFault().empty()) dialogs.Add(rec.ReadFault() + std::string(t::kReadFaultSuffix));
    else if (!ShowFailure(dialogs, result.status)) dialogs.Add(t::kImproperParameters);
    else if (stopped) dialogs.Add(t::kStoppedPartway);
    else {
        row.analysed = true;
        const std::string problem =
            WriteEventFile(item.eventFile, rec.HeaderBytes(), ws.params(), ws.events, rec.FileName());
        if (problem.empty()) row.eventFile = item.eventFile;
        else dialogs.Add(problem);
    }
    row.errors = dialogs.collected;
    return row;
}

// A number for the summary; empty for one that could not be measured.
std::string Number(double value, const char* format) {
    return std::isfinite(value) ? fmt::format(fmt::runtime(format), value) : std::string();
}

// A CSV field, quoted when it holds a separator, a quote or a line break.
std::string Field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

CommandResult ApplySettingsSource(SettingsSource source, const std::filesystem::path& file,
                                  Settings& settings) {
    CommandResult applied = CommandResult::Ok();
    switch (source) {
        case SettingsSource::Current: break;
        case SettingsSource::SettingsFile: applied = LoadSettingsFileInto(file, settings); break;
        case SettingsSource::ParameterFile: applied = LoadParameterFileInto(file, settings.analysis); break;
    }
    if (applied.failed()) return CommandResult::Failed(batch_texts::kWindowTitle, applied.message());
    return applied;
}

int WorkerCount(int jobs, std::size_t count) {
    const int wanted = jobs > 0 ? jobs : UsableWorkers(std::numeric_limits<int>::max());
    return int(std::max<std::size_t>(1, std::min<std::size_t>(std::size_t(wanted), count)));
}

BatchRow AnalyseRecording(const BatchItem& item, const BatchSetup& setup,
                          const std::function<void(int)>& progress, const std::atomic<bool>& stop) {
    if (!item.refusal.empty()) {
        BatchRow row;
        row.file = item.file;
        row.channel = setup.channel;
        row.errors = item.refusal;
        return row;
    }
    std::error_code ec;  // a name that cannot be looked at counts as taken
    if (!setup.overwrite &&
        std::filesystem::symlink_status(item.eventFile, ec).type() != std::filesystem::file_type::not_found) {
        BatchRow row;
        row.file = item.file;
        row.channel = setup.channel;
        row.eventFile = item.eventFile;
        row.errors = t::kKeptEventFile;
        row.kept = true;
        return row;
    }
    // A damaged file must cost its own row only, whatever goes wrong in it.
    try {
        return DetectAndWrite(item, setup, progress, stop);
    } catch (const std::exception& e) {
        BatchRow row;
        row.file = item.file;
        row.channel = setup.channel;
        row.errors = item.file.string() + ": " + e.what();
        return row;
    }
}

std::vector<BatchRow> RunBatch(const std::vector<BatchItem>& items, const BatchSetup& setup,
                               const BatchCallbacks& callbacks, const std::atomic<bool>& stop) {
    std::vector<BatchRow> rows(items.size());
    std::atomic<std::size_t> next{0};
    std::mutex doneMutex;
    std::size_t done = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < items.size(); i = next++) {
            if (stop.load()) {
                rows[i].file = items[i].file;
                rows[i].channel = setup.channel;
                rows[i].errors = t::kStopped;
            } else {
                const auto progress = [&, i](int percent) {
                    if (callbacks.fileProgress) callbacks.fileProgress(i, percent);
                };
                rows[i] = AnalyseRecording(items[i], setup, progress, stop);
            }
            const std::lock_guard lock(doneMutex);
            ++done;
            if (callbacks.fileDone) callbacks.fileDone(i, rows[i], done);
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (int k = 1; k < WorkerCount(setup.jobs, items.size()); ++k) helpers.emplace_back(work);
        work();
    }
    return rows;
}

std::string SummaryCsv(const std::vector<BatchRow>& rows) {
    std::string out;
    for (std::size_t c = 0; c < t::kSummaryColumns.size(); ++c)
        out += (c ? "," : "") + Field(std::string(t::kSummaryColumns[c]));
    out += "\n";
    for (const BatchRow& r : rows) {
        out += fmt::format("{},{},{},{},{},{},{},{},{},{},{}\n", Field(r.file.string()), r.channel,
                           Number(r.durationS, "{:.3f}"),
                           std::isfinite(r.durationS) ? std::to_string(r.events) : std::string(), Number(r.frequencyHz, "{:.4f}"),
                           Number(r.medianAmplitude, "{:.5g}"), Field(r.units),
                           Number(r.medianRise1090Ms, "{:.4g}"),
                           Number(r.medianHalfWidthMs, "{:.4g}"), Number(r.medianDecayMs, "{:.4g}"),
                           Field(r.errors));
    }
    return out;
}

}  // namespace vess
