// Assigning events to groups in bulk: bursts, episodes (sweeps or fixed time
// windows) and random groups of equal size. Each mode first makes a plan
// that the dialog previews as counts per group; applying it is one undoable
// change of the event table.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "recording/event_table.h"

namespace vess {
struct Workspace;
}

namespace vess::group {

struct BurstOptions {
    double maxIntervalMs = 100;   // an interval below this joins an event to the previous one
    int minEvents = 3;            // events a run needs to count as a burst
    bool firstEventsOnly = false; // group only the first event of each burst
    int group = 1;
};

struct EpisodicOptions {
    bool bySweep = true;          // else by fixed time windows
    std::vector<int64_t> sweepStarts;  // first point of each sweep (Recording::SweepStarts)
    double windowMs = 1000;
    int firstGroup = 1;
};

struct RandomOptions {
    int groups = 2;
    int firstGroup = 1;
    uint32_t seed = 1;
    int sourceGroup = -1;         // -1: every event that is not rejected
};

struct GroupPlan {
    std::vector<EventRecord> records;   // the whole table after the change
    std::map<int, int> counts;          // events per assigned group
    int bursts = 0;
    std::string label;                  // for the undo history
};

GroupPlan PlanBursts(const EventTable& events, const BurstOptions& options);
GroupPlan PlanEpisodic(const EventTable& events, const EpisodicOptions& options);
GroupPlan PlanRandom(const EventTable& events, const RandomOptions& options);

// "Group 1: 12 events" lines for the dialog's preview.
std::string PreviewText(const GroupPlan& plan);
// Replaces the table by the plan's records after a history checkpoint.
void ApplyGroupPlan(Workspace& ws, const GroupPlan& plan);

}  // namespace vess::group
