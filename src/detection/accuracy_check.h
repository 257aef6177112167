// "How many events would these settings find in this recording, and how many
// false ones?": events of the kernel's shape are added at known random times
// to a copy of a stretch of the chosen channel, the current method and
// settings run on the copy, and recall is reported per amplitude bin. The
// recording itself is not changed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "graphs/plot_data.h"
#include "recording/workspace.h"

namespace vess {

struct AccuracyOptions {
    int events = 200;            // events added
    uint64_t seed = 1;
    double maxSeconds = 120;     // the stretch copied, from the start of the channel
    double lowSds = 0.5;         // amplitudes from lowSds to highSds noise SDs,
    double highSds = 5;          // evenly on a logarithmic scale
    int bins = 8;
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
    bool ok = false;
    std::string problem;
    double seconds = 0;          // length of the stretch
    double noiseSdUnits = 0;
    std::string units;
    int added = 0, found = 0;
    int originalEvents = 0;      // detections on the unchanged copy
    int falsePositives = 0;      // detections on the copy that match neither
    std::vector<AccuracyBin> bins;
    std::optional<double> recall90Units;  // smallest amplitude where recall reaches 90 %
};

AccuracyReport CheckAccuracy(const Workspace& ws, const AccuracyOptions& options);

std::string AccuracyTable(const AccuracyReport& report);
PlotData AccuracyPlot(const AccuracyReport& report);

}  // namespace vess
