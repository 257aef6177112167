#include "detection/editing.h"

#include <algorithm>
#include <string>
#include <vector>

#include "detection/editing_texts.h"
#include "detection/navigation.h"
#include "recording/number_entry.h"
#include "recording/rounding.h"

namespace vess {

namespace {

namespace t = editing_texts;

constexpr uint8_t kRejected = static_cast<uint8_t>(kGroupRejected);

// The selected rows: the grid selection, else the current event; sorted,
// unique, inside the table.
std::vector<int32_t> SelectedRows(const Workspace& ws, std::span<const int32_t> rows) {
    std::vector<int32_t> out;
    if (rows.empty()) {
        if (ws.HasSelectedEvent()) out.push_back(ws.selectedEvent);
        return out;
    }
    for (int32_t r : rows)
        if (ws.events.HasRow(r)) out.push_back(r);
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

// Gives `group` to the listed rows as one undo step; no step when no group
// actually changes.
EditResult SetGroup(Workspace& ws, const std::vector<int32_t>& rows, uint8_t group,
                    const char* label) {
    EditResult result;
    for (int32_t r : rows)
        if (ws.events[r].group != group) ++result.regrouped;
    if (result.regrouped == 0) return result;
    ws.history.Checkpoint(ws.events, label);
    for (int32_t r : rows) ws.events[r].group = group;
    result.changed = true;
    return result;
}

std::vector<int32_t> AllRows(const EventTable& table) {
    std::vector<int32_t> rows(static_cast<std::size_t>(table.Count()));
    for (int32_t i = 0; i < table.Count(); ++i) rows[std::size_t(i)] = i + 1;
    return rows;
}

// Asks for a group number and gives it to the rows that `pick` returns.
template <class Pick>
EditResult AskAndGroup(Workspace& ws, Dialogs& dialogs, const char* caption, const char* prompt,
                       const char* label, Pick pick) {
    const auto entry = dialogs.Input(caption, prompt);
    const auto group = ParseGroupEntry(entry ? std::optional<std::string_view>(*entry) : std::nullopt);
    if (!group) return {};
    EditResult result = SetGroup(ws, pick(), static_cast<uint8_t>(*group), label);
    result.group = group;
    return result;
}

// Deletes every rejected event: table sort by group, then cut before the
// first rejected record. Does nothing (and does not sort) without any.
int32_t CutRejected(EventTable& table) {
    const auto& records = table.Records();
    if (std::none_of(records.begin(), records.end(),
                     [](const EventRecord& r) { return r.group == kRejected; }))
        return 0;
    table.Sort(EventField::Group);
    int32_t first = 1;
    while (first <= table.Count() && table[first].group != kRejected) ++first;
    const int32_t deleted = table.Count() - (first - 1);
    table.Truncate(first - 1);
    return deleted;
}

// After rows were reordered or removed: the row that now holds the record
// that was selected, else the old row number kept inside the table.
void FollowSelection(Workspace& ws, const std::optional<EventRecord>& selectedBefore) {
    if (selectedBefore) {
        const auto& records = ws.events.Records();
        const auto it = std::find(records.begin(), records.end(), *selectedBefore);
        if (it != records.end()) {
            ws.selectedEvent = static_cast<int32_t>(it - records.begin()) + 1;
            return;
        }
    }
    KeepSelectionValid(ws);
}

std::optional<EventRecord> SelectedRecord(const Workspace& ws) {
    if (!ws.HasSelectedEvent()) return std::nullopt;
    return ws.events[ws.selectedEvent];
}

}  // namespace

std::optional<int32_t> ParseGroupEntry(std::optional<std::string_view> entry) {
    if (!entry) return std::nullopt;
    const auto number = ParseNumberEntry(*entry);
    if (!number) return std::nullopt;
    const double value = *number;
    if (!IsGroupNumber(value)) return std::nullopt;
    return static_cast<int32_t>(RoundEven(value));
}

EditResult GroupSelectedEvents(Workspace& ws, Dialogs& dialogs, std::span<const int32_t> rows) {
    const std::vector<int32_t> selected = SelectedRows(ws, rows);
    if (selected.empty()) return {};
    return AskAndGroup(ws, dialogs, t::kGroupSelectedCaption, t::kGroupSelectedPrompt,
                       t::kLabelGroupSelected, [&] { return selected; });
}

EditResult GroupAllEvents(Workspace& ws, Dialogs& dialogs) {
    if (ws.events.Empty()) return {};
    return AskAndGroup(ws, dialogs, t::kGroupAllCaption, t::kGroupAllPrompt, t::kLabelGroupAll,
                       [&] { return AllRows(ws.events); });
}

EditResult GroupWindowEvents(Workspace& ws, Dialogs& dialogs) {
    const ScreenGeometry g = GeometryOf(ws);
    if (!g.HasRecording() || ws.events.Empty()) return {};
    const int64_t first = int64_t(ws.screenStartBlock) * kBlockPoints;
    const int64_t end = first + int64_t(g.blocksPerScreen) * kBlockPoints;
    return AskAndGroup(ws, dialogs, t::kGroupWindowCaption, t::kGroupWindowPrompt,
                       t::kLabelGroupWindow, [&] {
                           std::vector<int32_t> rows;
                           for (int32_t i = 1; i <= ws.events.Count(); ++i) {
                               const int64_t s = EventSamplePosition(ws.events[i], g.intervalUs);
                               if (s >= first && s < end) rows.push_back(i);
                           }
                           return rows;
                       });
}

EditResult UnmarkEvent(Workspace& ws) {
    return SetGroup(ws, SelectedRows(ws, {}), 0, t::kLabelUnmark);
}

EditResult UnmarkGroup(Workspace& ws, Dialogs& dialogs) {
    if (ws.events.Empty()) return {};
    const auto entry = dialogs.Input(t::kUnmarkGroupCaption, t::kUnmarkGroupPrompt);
    const auto group = ParseGroupEntry(entry ? std::optional<std::string_view>(*entry) : std::nullopt);
    if (!group) return {};
    std::vector<int32_t> rows;
    for (int32_t i = 1; i <= ws.events.Count(); ++i)
        if (*group == 0 || ws.events[i].group == *group) rows.push_back(i);
    EditResult result = SetGroup(ws, rows, 0, t::kLabelUnmarkGroup);
    result.group = group;
    return result;
}

EditResult RejectEvent(Workspace& ws) {
    return SetGroup(ws, SelectedRows(ws, {}), kRejected, t::kLabelRejectEvent);
}

EditResult RejectSelectedEvents(Workspace& ws, std::span<const int32_t> rows) {
    if (!ws.recording || ws.events.Empty()) return {};
    return SetGroup(ws, SelectedRows(ws, rows), kRejected, t::kLabelRejectSelected);
}

EditResult DeleteEvent(Workspace& ws) {
    const std::vector<int32_t> row = SelectedRows(ws, {});
    if (row.empty()) return {};
    ws.history.Checkpoint(ws.events, t::kLabelDeleteEvent);
    ws.events.Delete(row.front());
    KeepSelectionValid(ws);  // the row after the deleted one, or the new last row
    EditResult result;
    result.changed = true;
    result.deleted = 1;
    return result;
}

EditResult DeleteSelectedEvents(Workspace& ws, std::span<const int32_t> rows) {
    if (!ws.recording || ws.events.Count() == 1) return {};
    const std::vector<int32_t> selected = SelectedRows(ws, rows);
    const auto& records = ws.events.Records();
    const bool anyRejected = std::any_of(records.begin(), records.end(),
                                         [](const EventRecord& r) { return r.group == kRejected; });
    if (selected.empty() && !anyRejected) return {};
    const std::optional<EventRecord> before = SelectedRecord(ws);
    ws.history.Checkpoint(ws.events, t::kLabelDeleteSelected);
    EditResult result;
    for (int32_t r : selected) {
        if (ws.events[r].group != kRejected) ++result.regrouped;
        ws.events[r].group = kRejected;
    }
    result.deleted = CutRejected(ws.events);
    result.changed = true;
    FollowSelection(ws, before);
    return result;
}

EditResult DeleteRejectedEvents(Workspace& ws) {
    const auto& records = ws.events.Records();
    if (std::none_of(records.begin(), records.end(),
                     [](const EventRecord& r) { return r.group == kRejected; }))
        return {};
    const std::optional<EventRecord> before = SelectedRecord(ws);
    ws.history.Checkpoint(ws.events, t::kLabelDeleteRejected);
    EditResult result;
    result.deleted = CutRejected(ws.events);
    result.changed = true;
    FollowSelection(ws, before);
    return result;
}

EditResult RemoveDuplicateEvents(Workspace& ws, Dialogs& dialogs) {
    EditResult result;
    // Count first, so that the undo step is recorded only when rows go.
    for (int32_t i = ws.events.Count(); i >= 2; --i)
        if (ws.events[i].time == ws.events[i - 1].time) ++result.deleted;
    if (result.deleted > 0) {
        const std::optional<EventRecord> before = SelectedRecord(ws);
        ws.history.Checkpoint(ws.events, t::kLabelRemoveDuplicates);
        for (int32_t i = ws.events.Count(); i >= 2; --i)
            if (ws.events[i].time == ws.events[i - 1].time) ws.events.Delete(i);
        result.changed = true;
        FollowSelection(ws, before);
    }
    dialogs.Message(t::kDuplicatesCaption,
                    t::kDuplicatesBefore + std::to_string(result.deleted) + t::kDuplicatesAfter);
    return result;
}

void KeepSelectionValid(Workspace& ws) {
    ws.selectedEvent = std::clamp(ws.selectedEvent, 0, ws.events.Count());
}

}  // namespace vess
