// Lengths that a new installation (no settings file) takes from the
// recording's sampling rate, so that a screen shows about half a second and
// the group window's stretch about 50 ms whatever the rate; a settings file
// keeps the lengths it holds.
#pragma once

#include <cstdint>
#include <string>

namespace vess {

struct Workspace;

inline constexpr double kNewInstallationScreenMs = 500;
inline constexpr double kNewInstallationGroupStretchMs = 50;

// Whole 256-point blocks nearest to durationMs at intervalUs per point,
// from 1 to the longest screen.
int32_t BlocksNearest(double durationMs, double intervalUs);
// The group window's "Blocks to Analyse" for durationMs: whole blocks, or
// for slow rates the nearest of 0.5, 0.25, 0.125 and 0.0625 blocks.
double GroupBlocks(double durationMs, double intervalUs);
// With settings.lengthsFollowRate and a recording open: the screen of about
// kNewInstallationScreenMs at its rate.
void ApplyRateDefaults(Workspace& ws);

}  // namespace vess
