// The baseline of the deconvolution criterion: the running median of block
// means, drawn straight between block centres, optionally of only the blocks
// where the criterion stays below a level (events' blocks are left out).
#pragma once

#include <cstdint>

#include "detection/point_loops.h"

namespace vess {

struct BlockBaseline {
    int64_t blockPoints = 1;  // blocks aligned on the channel's points
    int64_t blocksAside = 1;  // the median of 2 blocksAside + 1 blocks
    int direction = 1;
    double leaveOutAbove = 0;  // infinite: every block counts
    // The output is taken in these units: (v - centre) / sd.
    double centre = 0;
    double sd = 1;
    int lanes = WidestLanes();  // the vector width of the loops
};

// out[a - first] = (direction × (filtered less the baseline) - centre) / sd
// for the points
// a = first .. first + count - 1, where filtered[j] is point origin + j and
// holds every point the baseline needs (blocksAside + 3 blocks either side,
// 2 blocksAside + 4 when blocks are left out). nanNearLeftOut: not a number
// at the points of a left-out block and of the blocks either side of it.
void LessBlockBaseline(const BlockBaseline& baseline, const double* filtered, int64_t origin, int64_t first,
                       int64_t count, double* out, bool nanNearLeftOut);

}  // namespace vess
