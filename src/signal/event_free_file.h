// The event-free recording as an ABF file: the chosen channel with its events
// removed (see event_free.h), one channel with the source's sample count,
// interval, units and scaling, written block by block to a temporary file
// that is renamed over the target.
#pragma once

#include <filesystem>
#include <string>

#include "recording/abf_writer.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"

namespace vess {

class Recording;
struct Workspace;

inline constexpr double kDefaultEventFreeMarginMs = 2.0;

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
// how many samples set the baseline on each side of a stretch (and the
// window in which each decay is followed into the noise). Returns an empty
// string on success, else what went wrong (nothing is left at path).
std::string WriteEventFreeAbf(const Recording& rec, const EventTable& events, double marginMs,
                              int64_t levelPoints, const std::filesystem::path& path);

// The main-window command: the template header templateFolder/"SamplABF.dat"
// must exist ("Error" otherwise, nothing written); then the margin prompt,
// the save dialog and the closing message. Ok when a file was written.
CommandResult EventFreeCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder);

}  // namespace vess
