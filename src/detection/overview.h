// The overview of a whole recording: its minimum and maximum per pixel
// column, for a strip under the trace that shows where events and artefacts
// lie in an hour of data.
//
// The recording is read once, in chunks, into the extremes of each 256-point
// block; columns are then made from the blocks, so memory stays a small
// fraction of the file however long it is, and a resize reads nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

#include "detection/decimate.h"
#include "recording/job.h"

namespace vess {

class Recording;

// Extremes of every 256-point block of the chosen channel (the last block may
// be partial; samples past the data are not counted). progress hears the
// share read; when it answers false the read stops and what was read so
// far is returned.
BlockExtremes RecordingBlockExtremes(const Recording& recording, const JobProgress& progress = {});

// The overview's read as a job: it opens its own reader of the file on the
// channel (the windows' recording is never touched away from their thread)
// and hands the extremes to apply. A file that cannot be opened any more
// gives no extremes.
Job OverviewJob(const std::filesystem::path& path, uint8_t channel,
                std::function<void(BlockExtremes)> apply);

struct ColumnExtremes {
    int16_t min = 0;
    int16_t max = 0;
};

// Splits the blocks into columnCount runs as even as possible (column c
// covers blocks [c*n/columnCount, (c+1)*n/columnCount)) and keeps each run's
// extremes. With fewer blocks than columns there is one column per block.
// Empty when there are no blocks or no columns.
std::vector<ColumnExtremes> OverviewColumns(const BlockExtremes& blocks, int columnCount);

// The level range the strip shows: from the 0.5th percentile of the column
// minima to the 99.5th of the column maxima, so that one artefact does not
// flatten the rest; columns beyond it are drawn to the edge.
LevelRange OverviewRange(const std::vector<ColumnExtremes>& columns);

}  // namespace vess
