// How the event grid prints its cells: a fixed number of decimals per column,
// chosen from what one step of the column's unit is for the open recording
// (one ADC count in the channel's unit, one sample in ms), and the widest
// text a column can hold, so that columns are made wide enough once.
//
// Text exports keep FormatCell (every digit of the stored float); the grid is
// for reading, so its columns line up.
#pragma once

#include <string>

#include "recording/event_grid.h"

namespace vess {

// Decimals that make one step of a unit visible: 0.05 -> 2, 0.0305 -> 2,
// 0.003 -> 3, 1 or more -> 0; at most 6.
int DecimalsForStep(double step);

// Decimals of grid column 0..17. Amplitudes, noise and baselines: those of one
// count; durations and times in ms: those of one sample interval; areas: one
// count over one sample; slopes: one count. Integer columns and the event
// number: 0. Without a recording, converted columns hold raw integers (0) and
// the float columns get 2.
int EventColumnDecimals(const Recording* recording, int column);

// A cell's value with the column's decimals (integers as they are; a float
// that is not a number, a measurement that could not be made, as empty).
std::string FormatGridCell(const CellValue& value, int decimals);

// The widest text column 0..17 can show for this recording (a full-scale
// amplitude, the end of the data for Time, the largest 16-bit count of points
// for durations, and so on), in the column's decimals.
std::string EventColumnWidestText(const Recording* recording, int column);

}  // namespace vess
