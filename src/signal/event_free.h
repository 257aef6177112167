// Removing events from a channel: the stretch of every event (start to the
// end of its decay, widened by a margin) is replaced by the baseline around
// it with noise copied from the event-free trace on either side, so that the
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

// How far an event reaches beyond its detected start and decay point.
// Detection's decay point is where the decay first reached DecayPercent of
// the amplitude (about one time constant); slower components go on after it.
// From there the trace is followed in windows of windowPoints until a
// window's mean lies within noiseCounts (the trace's noise SD) of the level
// of the windowPoints samples before the event's start. Before the start,
// windows whose mean lies beyond the event's baseline on the side away from
// the event by more than the noise (the event began on the fall of an
// opposite swing, such as a stimulus artefact) belong to it too. Either walk
// goes at most kMaxTailDecays decay lengths, and at least kLeastReachWindows
// windows, from where it began. Without a reader or a noise the reach ends
// at the start and the decay point.
struct DecayTail {
    SampleReader read;
    double noiseCounts = 0;
    int64_t windowPoints = 40;
    int64_t points = 0;  // samples in the source
};
inline constexpr int64_t kMaxTailDecays = 20;
inline constexpr int64_t kLeastReachWindows = 50;
// Points from the peak to the end of the decay (at least the decay length).
int64_t DecayEndPoints(const EventRecord& event, const DecayTail& tail);
// Points from the peak back to where the event begins (at least its rise time).
int64_t OnsetPoints(const EventRecord& event, const DecayTail& tail);

// The stretch of each event (peak - OnsetPoints .. peak + DecayEndPoints)
// widened by marginPoints on each side, cut to 0..points-1, sorted and merged
// where they touch or overlap.
std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points,
                                         const DecayTail& tail = {});
// Receives the output in order; returns false to stop (a write failed).
using SampleSink = std::function<bool(std::span<const int16_t> samples)>;

struct EventFreeOptions {
    int64_t levelPoints = 40;          // samples whose line sets the level at each join
    int64_t trendHalfPoints = 400;     // half the running mean taken off the donors
    int64_t chunkPoints = 1 << 16;     // samples read and written at a time
    int64_t historyPoints = 1 << 18;   // most output kept for noise donors
    double noiseCounts = 0;            // the trace's noise SD; 0 keeps donor outliers
};
// Donor samples further than this many noise SDs from their trend are no noise.
inline constexpr double kDonorClipSds = 4;

// Writes points samples to sink: the source with every stretch replaced. A
// stretch of L points becomes a straight line between the levels at its two
// joins (where the least-squares line of the levelPoints samples on that side
// meets it) plus noise lent by the L output samples before it and the up to
// L source samples after it (not reaching into the next stretch): each less
// its running mean over 2 trendHalfPoints + 1 samples, outliers beyond
// kDonorClipSds noise SDs dropped, mirrored at its join so that the noise
// goes on across the join, and faded from the one side into the other. A
// donor shorter than the stretch is repeated; one that is missing (at either
// end of the recording) leaves the other alone. Returns false when the sink
// refused.
bool EliminateStretches(int64_t points, std::span<const PointStretch> stretches,
                        const SampleReader& read, const SampleSink& sink,
                        const EventFreeOptions& options = {});

}  // namespace vess
