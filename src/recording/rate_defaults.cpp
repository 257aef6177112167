#include "recording/rate_defaults.h"

#include <algorithm>
#include <cmath>

#include "recording/rounding.h"
#include "recording/workspace.h"

namespace vess {
namespace {

double BlocksFor(double durationMs, double intervalUs) {
    if (!(intervalUs > 0) || !(durationMs > 0)) return 1;
    return durationMs * 1000.0 / intervalUs / kBlockPoints;
}

}  // namespace

int32_t BlocksNearest(double durationMs, double intervalUs) {
    const double blocks = std::min(BlocksFor(durationMs, intervalUs), double(kMaxBlocksPerScreen));
    return int32_t(std::clamp<int64_t>(RoundEven(blocks), 1, kMaxBlocksPerScreen));
}

double GroupBlocks(double durationMs, double intervalUs) {
    const double blocks = BlocksFor(durationMs, intervalUs);
    if (blocks >= 0.75) return BlocksNearest(durationMs, intervalUs);
    // 1/2 .. 1/16 of a block, the nearest on a log scale.
    const int halvings = int(std::clamp(std::round(-std::log2(blocks)), 1.0, 4.0));
    return std::ldexp(1.0, -halvings);
}

void ApplyRateDefaults(Workspace& ws) {
    if (!ws.settings.lengthsFollowRate || !ws.recording) return;
    ws.settings.blocksPerScreen =
        BlocksNearest(kNewInstallationScreenMs, ws.recording->IntervalUs());
}

}  // namespace vess
