// "How many events would these settings find in this recording, and how many
// false ones?": events of the kernel's shape are added at known random times
// to a copy of a stretch of the chosen channel, the current method and
// settings run on the copy, and recall is reported per amplitude bin. The
// recording itself is not changed.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "graphs/plot_data.h"
#include "recording/abf_writer.h"
#include "recording/command_result.h"
#include "recording/workspace.h"

namespace vess {

struct AccuracyOptions {
    int events = 200;            // events added
    uint64_t seed = 1;
    double maxSeconds = 120;     // the stretch copied, from the start of the channel
    double lowSds = 0.5;         // amplitudes from lowSds to highSds noise SDs,
    double highSds = 10;         // evenly on a logarithmic scale
    int bins = 10;
    double matchMs = 5;          // a detection matches when its peak lies 0..matchMs after an onset
};

struct AccuracyBin {
    double lowUnits = 0, highUnits = 0;  // amplitude range of the bin
    int added = 0;
    int found = 0;
    int falsePositives = 0;              // extra detections whose amplitude falls in the bin
    double Recall() const { return added > 0 ? double(found) / added : 0.0; }
};

struct AccuracyReport {
    // Failed with why the check could not run, or cancelled when stopped on
    // request before its end; the figures below only when ok.
    CommandResult status = CommandResult::Ok();
    double seconds = 0;          // length of the stretch
    double noiseSdUnits = 0;
    std::string units;
    int added = 0, found = 0;
    // Added events that landed on one of the recording's own events: a
    // detection there cannot be told apart, so they stay out of recall.
    int collided = 0;
    int originalEvents = 0;      // detections on the unchanged copy
    int falsePositives = 0;      // detections on the copy that match neither
    // Detections on the unchanged copy turned upside down, away from the
    // recording's own detected events (whose turned decays a detector may
    // take for rises): that trace holds no event of the detected direction,
    // so each is one the noise alone gives, over invertedSeconds of it.
    int invertedDetections = 0;
    double invertedSeconds = 0;
    std::vector<AccuracyBin> bins;
    // The amplitude from which recall stays at 90 % or more (the lower edge
    // of the first bin of that run to the largest).
    std::optional<double> recall90Units;
    // Less than a minute of event-free trace is too little to measure a rate
    // per minute: nothing then (shown as "not measurable").
    static constexpr double kMinFalseRateSeconds = 60;
    std::optional<double> FalsePerMinute() const {
        if (!(invertedSeconds >= kMinFalseRateSeconds)) return std::nullopt;
        return invertedDetections * 60.0 / invertedSeconds;
    }
};

// What a check works on, copied from the workspace: the stretch of the
// channel, its format and the settings. A run needs nothing else, so it can
// go on while the workspace is used (on another thread).
struct AccuracyInput {
    AccuracyOptions options;
    Settings settings;
    std::vector<int16_t> samples;
    AbfWriteLayout format;          // the channel's units and scaling
    double countUnits = 1;        // units of one count
    std::filesystem::path name;
};

// Progress and stopping of a run. progress is called with the share done,
// 0 to 1, on the thread of the run; the run returns a cancelled report soon
// after cancel is set.
struct AccuracyControl {
    std::function<void(double)> progress;
    const std::atomic<bool>* cancel = nullptr;
    bool Cancelled() const { return cancel && cancel->load(); }
    void Report(double done) const {
        if (progress) progress(done);
    }
};

// The lower edge of the first bin from which every bin with added events
// up to the largest reaches 90 % recall; none when the largest does not.
std::optional<double> Recall90From(const std::vector<AccuracyBin>& bins);

Outcome<AccuracyInput> PrepareAccuracyCheck(const Workspace& ws, const AccuracyOptions& options);
AccuracyReport RunAccuracyCheck(const AccuracyInput& input, const AccuracyControl& control = {});
// Both in one go.
AccuracyReport CheckAccuracy(const Workspace& ws, const AccuracyOptions& options,
                             const AccuracyControl& control = {});

// The lines above and below the table: what was checked and found, the
// false events the noise gives, and where recall reaches 90 %.
std::string AccuracySummary(const AccuracyReport& report);
std::string AccuracyRecall90Text(const AccuracyReport& report);
std::string AccuracyTable(const AccuracyReport& report);
PlotData AccuracyPlot(const AccuracyReport& report);

}  // namespace vess
