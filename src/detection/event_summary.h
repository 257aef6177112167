// A recording's detected events in a few numbers: how long the recording
// is, how many events and how often, and the medians of their amplitude and
// kinetics. Medians skip measurements that could not be made (not a
// number) and are not a number when nothing is left.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/event_table.h"
#include "recording/recording.h"

namespace vess {

struct EventSummary {
    double durationS = 0;           // points per channel x sample interval
    int32_t events = 0;
    double frequencyHz = 0;         // events per second; 0 for an empty recording
    double medianAmplitude = 0;     // units of the channel
    double medianRise1090Ms = 0;
    double medianHalfWidthMs = 0;
    double medianDecayMs = 0;       // peak to decay point
};

// The median of the finite values; not a number when there are none.
double MedianOfFinite(std::vector<double> values);

EventSummary SummariseEvents(const Recording& rec, const EventTable& events);

}  // namespace vess
