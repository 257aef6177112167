// The event-free recording as an ABF file: the chosen channel with its events
// removed (see event_free.h), one channel with the source's sample count,
// interval, units and scaling, written block by block to a temporary file
// that is renamed over the target.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "recording/abf_writer.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"
#include "recording/job.h"
#include "recording/settings.h"
#include "signal/event_free_hidden.h"

namespace vess {

class AtomicFile;
class Recording;
struct Workspace;

inline constexpr double kDefaultEventFreeMarginMs = 2.0;

// The window in which each event is followed into the noise: the
// baseline-averaging period in points, rounded as detection rounds it.
int64_t EventFreeLevelPoints(const Workspace& ws);

// A one-channel file whose counts read back as the same units as the source
// channel's (gain, offset, range and resolution carried over).
AbfWriteLayout EventFreeWriteLayout(const Recording& rec);

// The margin in sample points (rounded, at least 0).
int64_t MarginPoints(const Recording& rec, double marginMs);
// Why a margin cannot be used (not a number, negative, or as long as the
// recording, which would leave nothing event-free); empty when it can.
std::string EventFreeMarginProblem(const Recording& rec, double marginMs);

// The noise SD of the chosen channel in counts: every 256-point block less
// its median, over the stretches detection measures noise on, as the
// central Gaussian of their distribution (events sit in one tail).
double ChannelNoiseCounts(const Recording& rec);

// Writes the event-free copy of rec's chosen channel to path. levelPoints is
// the window in which each event is followed into the noise (see DecayTail). Returns an empty
// string on success, else what went wrong (nothing is left at path).
std::string WriteEventFreeAbf(const Recording& rec, const EventTable& events, double marginMs,
                              int64_t levelPoints, const std::filesystem::path& path);
// The same into file, left unfinished for the caller to finish or drop, with
// the channel's noise (ChannelNoiseCounts) measured once by the caller.
// progress gets the share written and stops the write by answering false
// (then the result is cancelled).
using WriteProgress = std::function<bool(double done)>;
CommandResult WriteEventFreeInto(AtomicFile& file, const Recording& rec, const EventTable& events, double marginMs,
                                 int64_t levelPoints, double noiseCounts, const WriteProgress& progress);

// Detection over the event-free file at path with the settings that found
// source's events (a suggestion made for the source is kept, not made again
// for the copy): how many events it finds, or nullopt when the file cannot be
// opened or the parameters cannot be used. Few events mean the events were
// removed whole and the joins added none. The methods that set their
// thresholds in noise SDs either keep the source's noise levels (the same
// absolute thresholds) or measure the copy's own.
enum class NoiseLevels { OfSource, Measured };
std::optional<int32_t> RedetectedEventCount(const Workspace& source, const std::filesystem::path& path,
                                            NoiseLevels noise);

// What writing the event-free file works from, copied out of the workspace:
// the recording is opened again by the work, which may run on another thread.
struct EventFreeRequest {
    std::filesystem::path recording;
    uint8_t channel = 0;
    Settings settings;
    EventTable events;
    std::map<std::string, double> measuredOnce;  // the noise levels detection measured
    // Detection read the filtered trace: the work filters its copy with the
    // settings' filter, and the file holds the trace the events were found on.
    bool readsFiltered = false;
    double marginMs = kDefaultEventFreeMarginMs;
    int64_t levelPoints = 1;
    std::filesystem::path target;
};

// The main-window command's questions: the template header
// templateFolder/"SamplABF.dat" must exist ("Error" otherwise), the table
// must hold events, then the margin prompt and the save dialog.
Outcome<EventFreeRequest> PrepareEventFree(const Workspace& ws, Dialogs& dialogs,
                                           const std::filesystem::path& templateFolder);
// The work: the copy written with the hidden events removed (see
// WriteEventFreeCopy), reporting through progress, which stops it by
// answering false; then nothing is left at the target (an existing file
// stays as it was).
Outcome<EventFreeWritten> WriteEventFree(const EventFreeRequest& request, const JobProgress& progress);
// The closing message of a written file; a failure is returned for the
// caller to show, a stopped run shows nothing.
CommandResult EventFreeClosing(Dialogs& dialogs, const std::filesystem::path& target,
                               const Outcome<EventFreeWritten>& written);
// The three in turn on the calling thread. Ok when a file was written.
CommandResult EventFreeCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder);

}  // namespace vess
