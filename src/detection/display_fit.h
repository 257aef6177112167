// The vertical frame of the trace view: which levels a screen opens at, so
// that small events fill the height while a rare artefact does not flatten
// them. Display gain and offset (navigation.h) apply on top of the frame.
#pragma once

#include <cstdint>
#include <span>

#include "detection/navigation.h"

namespace vess {

// Levels shown top to bottom at gain 1 and offset 0.
struct DisplayFrame {
    double centreCounts = 0;  // level at the middle of the plot
    double spanCounts = 0;    // counts from bottom to top
};

// Fraction of the samples left outside the frame on each side.
inline constexpr double kFrameTailFraction = 0.005;
// Where the baseline (the median) sits, as a fraction of the height from the
// edge the events move away from: near the top for downward events.
inline constexpr double kBaselineFromEdge = 0.25;
// Room kept beyond the robust range, as a fraction of that range.
inline constexpr double kFrameMargin = 0.08;
// The smallest span a frame gets (a flat trace still shows its noise).
inline constexpr double kMinFrameSpanCounts = 32;

// The frame of a screen: the 0.5th to 99.5th percentile of its samples with a
// margin, the median placed kBaselineFromEdge from the top for downward
// events (peakDirection < 0) or from the bottom for upward ones. No samples
// give a frame about 0 of the smallest span. Levels in mustShow (the peaks
// of the screen's events) lie inside the frame, however rare they are.
DisplayFrame FitFrame(std::span<const int16_t> samples, int peakDirection,
                      std::span<const int16_t> mustShow = {});

// Gain and offset over `frame` that show every sample, from the lowest to the
// highest with a margin (the largest transient of the screen included).
// The gain stays within kMinDisplayGain..kMaxDisplayGain.
DisplayScale FitAllSamples(std::span<const int16_t> samples, const DisplayFrame& frame);

}  // namespace vess
