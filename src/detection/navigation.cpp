#include "detection/navigation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "detection/navigation_texts.h"
#include "recording/number_entry.h"
#include "recording/recording.h"
#include "recording/rounding.h"

namespace vess {

namespace {

// The key that orders events in time: (time, row). NaN times sort first.
struct TimeKey {
    double timeMs;
    int32_t row;
    bool operator<(const TimeKey& o) const {
        return timeMs < o.timeMs || (timeMs == o.timeMs && row < o.row);
    }
};

TimeKey KeyOf(const EventTable& table, int32_t row) {
    const double t = table[row].time;
    return {std::isnan(t) ? -std::numeric_limits<double>::infinity() : t, row};
}

// Which events a time-order walk may stop at.
struct EventFilter {
    bool groupedOnly = false;
    int32_t group = 0;  // with groupedOnly: 0 any group other than 0, else this group
    bool Accepts(const EventRecord& r) const {
        if (!groupedOnly) return true;
        return group == 0 ? r.group != 0 : r.group == group;
    }
};

// Time-order neighbours of a key among the accepted events; 0 when none.
int32_t FirstAfter(const EventTable& table, const EventFilter& filter, const TimeKey& pivot) {
    int32_t best = 0;
    for (int32_t i = 1; i <= table.Count(); ++i) {
        if (!filter.Accepts(table[i])) continue;
        const TimeKey k = KeyOf(table, i);
        if (pivot < k && (best == 0 || k < KeyOf(table, best))) best = i;
    }
    return best;
}

int32_t LastBefore(const EventTable& table, const EventFilter& filter, const TimeKey& pivot) {
    int32_t best = 0;
    for (int32_t i = 1; i <= table.Count(); ++i) {
        if (!filter.Accepts(table[i])) continue;
        const TimeKey k = KeyOf(table, i);
        if (k < pivot && (best == 0 || KeyOf(table, best) < k)) best = i;
    }
    return best;
}

constexpr double kInf = std::numeric_limits<double>::infinity();

NavResult Stay(const Workspace& ws) { return {ws.screenStartBlock, ws.selectedEvent, false}; }

NavResult ToScreen(const Workspace& ws, int32_t start) {
    return {start, ws.selectedEvent, start != ws.screenStartBlock};
}

NavResult ToEvent(const Workspace& ws, int32_t row) {
    if (row == 0) return Stay(ws);
    return ShowEvent(ws, row);
}

// Time-ordered walks (events and grouped events).
NavResult WalkInTime(const Workspace& ws, const EventFilter& filter, NavCommand command) {
    const EventTable& table = ws.events;
    const ScreenGeometry g = GeometryOf(ws);
    const bool selected = ws.HasSelectedEvent();
    switch (command) {
        case NavCommand::FirstEvent:
        case NavCommand::FirstGrouped:
            return ToEvent(ws, FirstAfter(table, filter, {-kInf, 0}));
        case NavCommand::LastEvent:
        case NavCommand::LastGrouped:
            return ToEvent(ws, LastBefore(table, filter, {kInf, 0}));
        case NavCommand::NextEvent:
        case NavCommand::NextGrouped: {
            if (selected) return ToEvent(ws, FirstAfter(table, filter, KeyOf(table, ws.selectedEvent)));
            // From the start of the screen shown (the first event at or after it).
            const double fromMs = g.HasRecording() ? g.BlockStartMs(ws.screenStartBlock) : -kInf;
            return ToEvent(ws, FirstAfter(table, filter, {std::nextafter(fromMs, -kInf), 0}));
        }
        case NavCommand::PrevEvent:
        case NavCommand::PrevGrouped: {
            if (selected) return ToEvent(ws, LastBefore(table, filter, KeyOf(table, ws.selectedEvent)));
            const double endMs = g.HasRecording()
                                     ? g.BlockStartMs(int64_t(ws.screenStartBlock) + g.blocksPerScreen)
                                     : kInf;
            return ToEvent(ws, LastBefore(table, filter, {endMs, 0}));
        }
        default:
            return Stay(ws);
    }
}

NavResult WalkInSequence(const Workspace& ws, NavCommand command) {
    const int32_t count = ws.events.Count();
    if (count == 0) return Stay(ws);
    const int32_t row = ws.HasSelectedEvent() ? ws.selectedEvent : 0;
    switch (command) {
        case NavCommand::FirstInSequence: return ToEvent(ws, 1);
        case NavCommand::LastInSequence: return ToEvent(ws, count);
        case NavCommand::NextInSequence: return ToEvent(ws, row == 0 ? 1 : (row < count ? row + 1 : 0));
        case NavCommand::PrevInSequence: return ToEvent(ws, row == 0 ? count : row - 1);
        default: return Stay(ws);
    }
}

// B: the first event (in time order) at or after the start of the next screen.
NavResult NextEventInNextWindow(const Workspace& ws) {
    const ScreenGeometry g = GeometryOf(ws);
    if (!g.HasRecording()) return Stay(ws);
    const int64_t fromSample = (int64_t(ws.screenStartBlock) + g.blocksPerScreen) * kBlockPoints;
    int32_t best = 0;
    for (int32_t i = 1; i <= ws.events.Count(); ++i) {
        if (EventSamplePosition(ws.events[i], g.intervalUs) < fromSample) continue;
        if (best == 0 || KeyOf(ws.events, i) < KeyOf(ws.events, best)) best = i;
    }
    return ToEvent(ws, best);
}

// Ctrl+T: forward by JumpInterval ms from the start of the screen shown, at
// least one screen.
NavResult NextTimeInterval(const Workspace& ws) {
    const ScreenGeometry g = GeometryOf(ws);
    if (!g.HasRecording() || ws.settings.jumpIntervalMs <= 0) return Stay(ws);
    const double targetMs = g.BlockStartMs(ws.screenStartBlock) + ws.settings.jumpIntervalMs;
    if (targetMs >= g.DataEndMs()) return Stay(ws);
    int32_t start = g.ScreenOfSample(TimeToSample(targetMs, g.intervalUs));
    if (start <= ws.screenStartBlock) start = ws.screenStartBlock + g.blocksPerScreen;
    if (start >= g.blockCount) return Stay(ws);
    return ToScreen(ws, start);
}

}  // namespace

void ApplyNavigation(Workspace& ws, const NavResult& result) {
    ws.screenStartBlock = result.screenStartBlock;
    ws.selectedEvent = result.selectedEvent;
}

int32_t ScreenGeometry::ScreenOfBlock(int64_t block) const {
    if (blockCount <= 0) return 0;
    block = std::clamp<int64_t>(block, 0, blockCount - 1);
    const int32_t per = std::max(1, blocksPerScreen);
    return static_cast<int32_t>(block / per * per);
}

int32_t ScreenGeometry::ScreenOfSample(int64_t sample) const {
    // Integer part of the division: a negative sample lies in block 0.
    return ScreenOfBlock(sample < 0 ? 0 : sample / kBlockPoints);
}

int32_t ScreenGeometry::LastScreenStart() const { return ScreenOfBlock(int64_t(blockCount) - 1); }

double ScreenGeometry::BlockStartMs(int64_t block) const {
    return double(block) * kBlockPoints * intervalUs / 1000.0;
}

ScreenGeometry GeometryOf(const Workspace& ws) {
    ScreenGeometry g;
    g.blocksPerScreen = ws.BlocksPerScreen();
    if (ws.recording) {
        g.blockCount = ws.recording->BlockCount();
        g.intervalUs = ws.recording->IntervalUs();
    }
    return g;
}

int64_t TimeToSample(double timeMs, double intervalUs) {
    if (intervalUs <= 0) return 0;
    return RoundEven(timeMs * 1000.0 / intervalUs);
}

int64_t EventSamplePosition(const EventRecord& record, double intervalUs) {
    if (record.sampleIndex != 0) return record.sampleIndex;
    return TimeToSample(record.time, intervalUs);
}

NavResult ShowEvent(const Workspace& ws, int32_t index) {
    if (!ws.events.HasRow(index)) return Stay(ws);
    const ScreenGeometry g = GeometryOf(ws);
    NavResult r{ws.screenStartBlock, index, false};
    if (g.HasRecording())
        r.screenStartBlock = g.ScreenOfSample(EventSamplePosition(ws.events[index], g.intervalUs));
    r.moved = r.screenStartBlock != ws.screenStartBlock || index != ws.selectedEvent;
    return r;
}

NavResult Navigate(const Workspace& ws, NavCommand command) {
    const ScreenGeometry g = GeometryOf(ws);
    switch (command) {
        case NavCommand::FirstScreen:
            return g.HasRecording() ? ToScreen(ws, 0) : Stay(ws);
        case NavCommand::PrevScreen:
            return g.HasRecording() ? ToScreen(ws, std::max(0, ws.screenStartBlock - g.blocksPerScreen))
                                    : Stay(ws);
        case NavCommand::NextScreen: {
            if (!g.HasRecording()) return Stay(ws);
            const int64_t next = int64_t(ws.screenStartBlock) + g.blocksPerScreen;
            return next < g.blockCount ? ToScreen(ws, static_cast<int32_t>(next)) : Stay(ws);
        }
        case NavCommand::LastScreen:
            return g.HasRecording() ? ToScreen(ws, g.LastScreenStart()) : Stay(ws);
        case NavCommand::FirstEvent:
        case NavCommand::PrevEvent:
        case NavCommand::NextEvent:
        case NavCommand::LastEvent:
            return WalkInTime(ws, EventFilter{}, command);
        case NavCommand::FirstGrouped:
        case NavCommand::PrevGrouped:
        case NavCommand::NextGrouped:
        case NavCommand::LastGrouped:
            return WalkInTime(ws, EventFilter{true, GroupNavigationFilter(ws.settings)}, command);
        case NavCommand::NextEventInNextWindow:
            return NextEventInNextWindow(ws);
        case NavCommand::FirstInSequence:
        case NavCommand::PrevInSequence:
        case NavCommand::NextInSequence:
        case NavCommand::LastInSequence:
            return WalkInSequence(ws, command);
        case NavCommand::NextTimeInterval:
            return NextTimeInterval(ws);
    }
    return Stay(ws);
}

Outcome<NavResult> JumpToTime(const Workspace& ws, Dialogs& dialogs) {
    namespace t = navigation_texts;
    const ScreenGeometry g = GeometryOf(ws);
    if (!g.HasRecording()) return CommandResult::Cancelled();
    const auto entry = dialogs.Input(t::kJumpTimeCaption, t::kJumpTimePrompt);
    if (!entry || entry->empty()) return CommandResult::Cancelled();
    const auto timeMs = ParseNumberEntry(*entry);
    if (!timeMs) return CommandResult::Failed(t::kJumpTimeCaption, t::kJumpTimeNotNumber);
    const int64_t sample = TimeToSample(*timeMs, g.intervalUs);
    if (*timeMs < 0 || sample >= int64_t(g.blockCount) * kBlockPoints)
        return CommandResult::Failed(t::kJumpTimeCaption,
                                     fmt::format("{}{}{}{}{}", t::kJumpTimeOutOfRange1, *entry,
                                                 t::kJumpTimeOutOfRange2, g.DataEndMs(), t::kJumpTimeOutOfRange3));
    return ToScreen(ws, g.ScreenOfSample(sample));
}

Outcome<NavResult> JumpToEventNumber(const Workspace& ws, Dialogs& dialogs) {
    namespace t = navigation_texts;
    const int32_t count = ws.events.Count();
    if (count == 0) return CommandResult::Failed(t::kJumpEventCaption, t::kJumpEventNone);
    const auto entry = dialogs.Input(t::kJumpEventCaption, t::kJumpEventPrompt);
    if (!entry || entry->empty()) return CommandResult::Cancelled();
    const auto number = ParseNumberEntry(*entry);
    if (!number || *number != std::floor(*number) || *number < 1 || *number > count)
        return CommandResult::Failed(t::kJumpEventCaption,
                                     fmt::format("{}{}{}{}{}", t::kJumpEventOutOfRange1, *entry,
                                                 t::kJumpEventOutOfRange2, count, t::kJumpEventOutOfRange3));
    return ShowEvent(ws, static_cast<int32_t>(*number));
}

std::vector<std::string> GroupNavigationItems() {
    std::vector<std::string> items{navigation_texts::kGroupNavAll};
    for (int g = 1; g <= kLastGroup; ++g) items.push_back(std::to_string(g));
    return items;
}

int32_t GroupNavigationFilter(const Settings& settings) {
    const int32_t g = settings.navigationGroup;
    return IsGroupNumber(g) ? g : 0;
}

}  // namespace vess
