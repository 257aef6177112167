// Beats and their intervals. Each event of the event table is one beat (an R
// wave) at its event time; RR interval i runs from beat i to beat i+1 and
// delta RR i is RR interval i+1 minus RR interval i.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

// The beats of the event table in ms, in table order: every event the user
// has not rejected (group 255), at its exact time when intervalUs (the
// recording's sample interval, 0 for none) and its sample index give it.
std::vector<double> BeatTimesMs(const EventTable& events, double intervalUs = 0);
// The same for the open recording's events.
std::vector<double> WorkspaceBeatTimesMs(const Workspace& ws);
bool InTimeOrder(const EventTable& events);
// Asks "Sort Events" when the events are not in time order and sorts them on
// Yes (a change the user can undo). Cancelled when they stay out of order.
CommandResult EnsureTimeOrder(Workspace& ws, Dialogs& dialogs);

// Successive differences: n values give n - 1.
std::vector<double> Differences(std::span<const double> values);

// Beats read from RR intervals: the first beat at 0 ms, then the running sum.
std::vector<double> BeatsFromIntervals(std::span<const double> rrMs);

// The RR intervals within [lowerMs, upperMs] (an interval greater than the
// upper or smaller than the lower bound is left out), and the adjacent pairs
// of them: a delta RR exists only where both of its intervals are kept.
struct BoundedRR {
    std::size_t notMeasured = 0;   // intervals left out for a beat time that is not a number
    std::size_t outsideBounds = 0; // intervals left out by the bounds
    std::vector<double> rrMs;      // kept intervals, in beat order
    std::vector<double> endMs;     // time of the beat that ends each kept interval
    std::vector<int> beatNumber;   // 1-based number i of each kept interval (beat i to i+1)
    std::vector<std::pair<double, double>> pairs;  // (RR i, RR i+1), both kept
    std::vector<double> DeltaMs() const;           // second minus first of each pair
};
BoundedRR SelectIntervals(std::span<const double> beatTimesMs, double lowerMs, double upperMs);
// Every interval, no bounds.
BoundedRR AllIntervals(std::span<const double> beatTimesMs);

}  // namespace vess::hrv

namespace vess::hrv {
// Every number in a text file of beat times or intervals (separated by
// blanks, tabs, commas, semicolons or line ends); words such as a title line
// are skipped.
std::vector<double> ReadNumberList(std::string_view text);
}  // namespace vess::hrv
