// The start time of each sweep of an episodic recording, and the series of
// screens a picture series shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

class Recording;
struct Workspace;

// Sweep starts in ms: for sweeps of their own lengths the acquisition times
// of the file's synch array, otherwise from the start of the data (point x
// interval); empty for a recording of one sweep.
std::vector<float> SweepStartTimesMs(const Recording& rec);

// Asks for the array (1 or 2) and fills it with the sweep start times.
// The array number filled; failed for a recording of one sweep.
Outcome<int> SynchArrayCommand(Workspace& ws, Dialogs& dialogs);

// Screens from, from + step, ... up to to (1-based screen numbers), or
// nothing when they do not lie within 1..screenCount in that order.
std::optional<std::vector<int32_t>> ScreenSeries(int32_t from, int32_t to, int32_t step, int32_t screenCount);
// The picture of screen n: "screen_0042.png" (the width that the last
// screen's number needs, at least 4 digits).
std::string PictureName(int32_t screen, int32_t screenCount);

}  // namespace vess
