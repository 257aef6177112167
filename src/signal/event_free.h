// Removing events from a channel: the stretch of every event (start to the
// end of its decay, widened by a margin) is replaced by the baseline around
// it with noise copied from the event-free trace just before it, so that the
// result looks like a recording without events. Works block-wise over a sample
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

// Fills out with the samples first .. first + out.size() - 1 of the source.
using SampleReader = std::function<void(int64_t first, std::span<int16_t> out)>;

// Where an event's decay ends. Detection's decay point is where the decay
// first reached DecayPercent of the amplitude (about one time constant);
// slower components go on after it. From there the trace is followed in
// windows of windowPoints until a window's mean lies within noiseCounts (the
// trace's noise SD) of the level of the windowPoints samples before the
// event's start, at most kMaxTailDecays decay lengths after the peak. Without
// a reader or a noise the decay point is the end.
struct DecayTail {
    SampleReader read;
    double noiseCounts = 0;
    int64_t windowPoints = 40;
    int64_t points = 0;  // samples in the source
};
inline constexpr int64_t kMaxTailDecays = 20;
// Points from the peak to the end of the decay (at least the decay length).
int64_t DecayEndPoints(const EventRecord& event, const DecayTail& tail);

// The stretch of each event (peak - rise time .. the end of its decay)
// widened by marginPoints on each side, cut to 0..points-1, sorted and merged
// where they touch or overlap.
std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points,
                                         const DecayTail& tail = {});
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
// the recording), less their running mean over 2 levelPoints + 1 samples when
// there are more than that, so that slow swings of the trace before (a decay
// not followed to its end, a drift) are not copied as event-like bumps.
// Returns false when the sink refused.
bool EliminateStretches(int64_t points, std::span<const PointStretch> stretches,
                        const SampleReader& read, const SampleSink& sink,
                        const EventFreeOptions& options = {});

}  // namespace vess
