// The overview of a whole recording: its minimum and maximum per pixel
// column, for a strip under the trace that shows where events and artefacts
// lie in an hour of data.
//
// The recording is read once, in chunks, into the extremes of each 256-point
// block; columns are then made from the blocks, so memory stays a small
// fraction of the file however long it is, and a resize reads nothing.
#pragma once

#include <cstdint>
#include <vector>

#include "detection/decimate.h"

namespace vess {

class Recording;

// Extremes of every 256-point block of the chosen channel (the last block may
// be partial; samples past the data are not counted).
BlockExtremes RecordingBlockExtremes(const Recording& recording);

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
