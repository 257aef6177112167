#include "group_analysis/group_assign.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <fmt/format.h>

#include "recording/workspace.h"

namespace vess::group {

namespace {

constexpr int kLastUserGroup = 254;

bool Rejected(const EventRecord& e) { return e.group == kGroupRejected; }

uint8_t UserGroup(int64_t g) { return uint8_t(std::clamp<int64_t>(g, 1, kLastUserGroup)); }

void Assign(GroupPlan& plan, EventRecord& e, int64_t group) {
    e.group = UserGroup(group);
    ++plan.counts[e.group];
}

// The sweep a point falls in: the last one starting at or before it.
int64_t SweepOf(const std::vector<int64_t>& starts, int64_t point) {
    const auto after = std::upper_bound(starts.begin(), starts.end(), point);
    return std::max<int64_t>(after - starts.begin() - 1, 0);
}

}  // namespace

GroupPlan PlanBursts(const EventTable& events, const BurstOptions& options) {
    GroupPlan plan;
    plan.records = events.Records();
    plan.label = "Group bursts";
    auto& r = plan.records;
    for (auto& e : r) e.burstNumber = e.burstEventNumber = 0;
    // Runs of events each closer than the maximum interval to the previous.
    std::size_t start = 0;
    auto closeRun = [&](std::size_t end) {  // events start..end-1
        if (int(end - start) < std::max(options.minEvents, 1)) return;
        ++plan.bursts;
        for (std::size_t i = start; i < end; ++i) {
            r[i].burstNumber = int16_t(std::min(plan.bursts, 32767));
            r[i].burstEventNumber = int16_t(std::min<std::size_t>(i - start + 1, 32767));
            if (!options.firstEventsOnly || i == start) Assign(plan, r[i], options.group);
        }
    };
    for (std::size_t i = 1; i <= r.size(); ++i) {
        if (i < r.size() && double(r[i].time) - double(r[i - 1].time) < options.maxIntervalMs) continue;
        closeRun(i);
        start = i;
    }
    return plan;
}

GroupPlan PlanEpisodic(const EventTable& events, const EpisodicOptions& options) {
    GroupPlan plan;
    plan.records = events.Records();
    plan.label = "Group by episodes";
    for (auto& e : plan.records) {
        if (Rejected(e)) continue;
        int64_t episode = 0;
        if (options.bySweep && !options.sweepStarts.empty())
            episode = SweepOf(options.sweepStarts, e.sampleIndex);
        else if (!options.bySweep && options.windowMs > 0)
            episode = int64_t(std::floor(double(e.time) / options.windowMs));
        Assign(plan, e, options.firstGroup + episode);
    }
    return plan;
}

GroupPlan PlanRandom(const EventTable& events, const RandomOptions& options) {
    GroupPlan plan;
    plan.records = events.Records();
    plan.label = "Group at random";
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < plan.records.size(); ++i) {
        const EventRecord& e = plan.records[i];
        if (options.sourceGroup < 0 ? !Rejected(e) : e.group == options.sourceGroup)
            chosen.push_back(i);
    }
    // Fisher-Yates with the 32-bit Mersenne twister, whose output is the same
    // on every platform, so a seed always gives the same groups.
    std::mt19937 rng(options.seed);
    for (std::size_t i = chosen.size(); i > 1; --i) std::swap(chosen[i - 1], chosen[rng() % i]);
    const int groups = std::max(options.groups, 1);
    for (std::size_t k = 0; k < chosen.size(); ++k)
        Assign(plan, plan.records[chosen[k]], options.firstGroup + int64_t(k % std::size_t(groups)));
    return plan;
}

std::string PreviewText(const GroupPlan& plan) {
    std::string text;
    if (plan.bursts > 0) text += fmt::format("Bursts: {}\n", plan.bursts);
    for (const auto& [group, count] : plan.counts)
        text += fmt::format("Group {}: {} events\n", group, count);
    return text.empty() ? "No event is assigned.\n" : text;
}

void ApplyGroupPlan(Workspace& ws, const GroupPlan& plan) {
    ws.history.Checkpoint(ws.events, plan.label);
    ws.events.Assign(plan.records);
}

}  // namespace vess::group
