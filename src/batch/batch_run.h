// A batch run: detection over each recording of a list, as vess detect runs
// it on one file, on a number of worker threads, each holding one recording
// open at a time. Every recording gets a summary row; a recording that
// cannot be analysed says why in its row and never stops the others.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "batch/batch_files.h"
#include "recording/command_result.h"
#include "recording/settings.h"

namespace vess {

enum class SettingsSource { Current, SettingsFile, ParameterFile };

// Applies the chosen source over settings: the current settings as they
// are, a settings file (.SET) in place of them, or the detection parameters
// of a parameter file (.PAR). A failure comes under the batch window's title.
CommandResult ApplySettingsSource(SettingsSource source, const std::filesystem::path& file,
                                Settings& settings);

struct BatchSetup {
    Settings settings;   // the source applied and the method chosen
    int channel = 0;     // 0-based channel position, the same in every recording
    int jobs = 0;        // worker threads; 0: one per core
    bool overwrite = false;  // replace event files that already exist
};

inline constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

struct BatchRow {
    std::filesystem::path file;
    int channel = 0;
    // Not a number while the recording has not been opened; the medians
    // are not a number without events.
    double durationS = kUnknown;
    int32_t events = 0;
    double frequencyHz = kUnknown;
    double medianAmplitude = kUnknown;
    std::string units;
    double medianRise1090Ms = kUnknown;
    double medianHalfWidthMs = kUnknown;
    double medianDecayMs = kUnknown;
    std::filesystem::path eventFile;  // empty when none was written
    std::string errors;               // empty when the file was analysed whole
    bool analysed = false;            // the detection ran to the end of the file
    bool kept = false;                // not analysed: its event file exists and was kept
};

// Progress and results arrive on the worker threads: fileProgress with the
// item's index and its percentage (only when that changes), fileDone once
// per item, calls serialised, with the number of items done so far.
struct BatchCallbacks {
    std::function<void(std::size_t index, int percent)> fileProgress;
    std::function<void(std::size_t index, const BatchRow& row, std::size_t done)> fileDone;
};

// The worker count for a request of jobs (0: one per core) over count items.
int WorkerCount(int jobs, std::size_t count);

// Detection over one recording; writes its event file when the detection
// ran to the end. Setting stop ends the detection early (no event file).
// An existing event file (perhaps reviewed by hand) is kept and the
// recording not analysed unless setup.overwrite asks to replace it.
BatchRow AnalyseRecording(const BatchItem& item, const BatchSetup& setup,
                          const std::function<void(int percent)>& progress,
                          const std::atomic<bool>& stop);

// Every item, in rows of the items' order. Items not begun when stop is set
// are reported as not analysed.
std::vector<BatchRow> RunBatch(const std::vector<BatchItem>& items, const BatchSetup& setup,
                               const BatchCallbacks& callbacks, const std::atomic<bool>& stop);

// The summary as CSV, one line per row under a header line.
std::string SummaryCsv(const std::vector<BatchRow>& rows);

}  // namespace vess
