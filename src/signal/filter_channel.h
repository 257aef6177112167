// Filtering the chosen channel of a recording, block by block with the
// state carried from block to block, into a file of filtered counts that
// the recording then serves in place of the recorded samples.
//
// The filtered copy is written once per filter change to a temporary file
// (unlinked at once, so it vanishes with the program) rather than filtered
// again on every read: a zero-phase pass needs the whole trace anyway, and
// with a file every reader (one screen, the whole-file detection, the
// measurements) sees exactly the same counts, at the cost of 2 bytes of disk
// per sample and no memory that grows with the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "recording/command_result.h"
#include "recording/data_file.h"
#include "recording/recording.h"
#include "signal/filter_design.h"

namespace vess {

// Told the fraction done (0 to 1); returns false to stop.
using FilterProgress = std::function<bool(double fraction)>;

struct FilteredChannel {
    std::unique_ptr<DataFile> counts;  // null unless status is ok
    CommandResult status = CommandResult::Ok();  // cancelled when told to stop
};

// The recorded samples of the chosen channel filtered as chosen: causal, or
// forward and then backward for zero phase. The trace is taken as going on
// at its first and last samples beyond its ends (the recording's edge rule),
// so each pass starts settled at that level. Results are rounded to counts
// (ties to even) and clamped to 16 bits.
FilteredChannel FilterChannel(const Recording& recording, const FilterChoice& choice,
                              const FilterProgress& progress = {});

// Designs, filters and attaches the copy to the recording (reads of it stay
// as they were set).
CommandResult ApplyFilter(Recording& recording, const FilterChoice& choice,
                        const FilterProgress& progress = {});

// Writes the chosen channel as read now (the filtered copy while it is read)
// as a one-channel ABF file with the channel's units and scaling, streamed
// from the recording in blocks. Returns "" or what went wrong.
std::string WriteChannelAbf(const Recording& recording, const std::filesystem::path& path);

double SampleRateHz(const Recording& recording);

}  // namespace vess
