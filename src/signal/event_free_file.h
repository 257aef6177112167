// The event-free recording as an ABF file: the chosen channel with its events
// removed (see event_free.h), one channel with the source's sample count,
// interval, units and scaling, written block by block to a temporary file
// that is renamed over the target.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "recording/abf_writer.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"
#include "recording/settings.h"

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
// the window in which each event is followed into the noise (see DecayTail). Returns an empty
// string on success, else what went wrong (nothing is left at path).
std::string WriteEventFreeAbf(const Recording& rec, const EventTable& events, double marginMs,
                              int64_t levelPoints, const std::filesystem::path& path);

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

// The main-window command: the template header templateFolder/"SamplABF.dat"
// must exist ("Error" otherwise, nothing written); then the margin prompt,
// the save dialog and the closing message. Ok when a file was written.
CommandResult EventFreeCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder);

}  // namespace vess
