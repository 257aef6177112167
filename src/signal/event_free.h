// Removing events from a channel: the stretch of every event (start to decay
// point, widened by a margin) is replaced by the baseline around it with
// noise copied from the event-free trace just before it, so that the result
// looks like a recording without events. Works block-wise over a sample
// source and sink, so memory stays flat in the recording's length.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "recording/event_table.h"

namespace vess {

// Points first..last of the channel, both included.
struct PointStretch {
    int64_t first = 0, last = 0;
    bool operator==(const PointStretch&) const = default;
};

// The stretch of each event (peak - rise time .. peak + decay time) widened
// by marginPoints on each side, cut to 0..points-1, sorted and merged where
// they touch or overlap.
std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points);

// Fills out with the samples first .. first + out.size() - 1 of the source.
using SampleReader = std::function<void(int64_t first, std::span<int16_t> out)>;
// Receives the output in order; returns false to stop (a write failed).
using SampleSink = std::function<bool(std::span<const int16_t> samples)>;

struct EventFreeOptions {
    int64_t levelPoints = 40;          // samples averaged for the level on each side
    int64_t chunkPoints = 1 << 16;     // samples read and written at a time
    int64_t historyPoints = 1 << 18;   // most output kept for noise donors
};

// Writes points samples to sink: the source with every stretch replaced. A
// stretch of L points becomes a straight line from the mean of the levelPoints
// output samples before it to the mean of the levelPoints source samples
// after it, plus the last L output samples before it with their mean removed
// (repeated when fewer are kept; taken from after the stretch at the start of
// the recording). Returns false when the sink refused.
bool EliminateStretches(int64_t points, std::span<const PointStretch> stretches,
                        const SampleReader& read, const SampleSink& sink,
                        const EventFreeOptions& options = {});

}  // namespace vess
