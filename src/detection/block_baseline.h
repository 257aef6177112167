// The baseline of the deconvolution criterion: the running median of block
// means, drawn straight between block centres, optionally of only the blocks
// where the criterion stays below a level (events' blocks are left out).
#pragma once

#include <cstdint>
#include <vector>

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

// The means of the blocks of blockPoints (aligned on the channel's points)
// that lie wholly in a stretch handed over piece by piece, in order, each
// sum taken in order: the means LessBlockBaseline would take, found while
// the pieces are still in the cache.
class StreamedBlockMeans {
public:
    // The stretch begins at point origin and holds points values.
    void Start(int64_t blockPoints, int64_t origin, int64_t points);
    void Add(const double* values, int64_t count);
    const double* Means() const { return means_.data(); }
    int64_t FirstBlock() const { return firstBlock_; }

private:
    int64_t blockPoints_ = 1, firstBlock_ = 0;
    int64_t skip_ = 0;    // points still to come before the first whole block
    int64_t filled_ = 0;  // points summed of the block begun
    double partial_ = 0;
    std::vector<double> means_;
};

// out[a - first] = (direction × (filtered less the baseline) - centre) / sd
// for the points a = first .. first + count - 1, where filtered[j] is point
// origin + j and holds every point the baseline needs (blocksAside + 3
// blocks either side, 2 blocksAside + 4 when blocks are left out).
// nanNearLeftOut: not a number at the points of a left-out block and of the
// blocks either side of it. known: the means of filtered's blocks, when they
// have been found already.
void LessBlockBaseline(const BlockBaseline& baseline, const double* filtered, int64_t origin, int64_t first,
                       int64_t count, double* out, bool nanNearLeftOut, const StreamedBlockMeans* known = nullptr);

}  // namespace vess
