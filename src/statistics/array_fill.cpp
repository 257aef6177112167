#include "statistics/array_fill.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "recording/event_time.h"
#include "recording/workspace.h"
#include "statistics/prompts.h"
#include "recording/texts.h"
#include "statistics/texts.h"
#include "statistics/total_order.h"

namespace vess {

namespace st = stats_texts;

namespace {

// How each fill item turns the stored value into the array's value.
enum class Conversion { AsStored, WithOffset, NoOffset, PointsToMs };

struct FieldRule {
    EventField field;
    Conversion conversion;
};

// Fill items 0..16 in menu order. The arrays take exactly the grid's values:
// an amplitude and a noise are differences (no offset), a baseline is a
// level (with the channel's offset).
constexpr FieldRule kRules[kArrayFieldCount] = {
    {EventField::Amplitude, Conversion::NoOffset},     {EventField::Noise, Conversion::NoOffset},
    {EventField::RiseTime, Conversion::PointsToMs},    {EventField::DecayTime, Conversion::PointsToMs},
    {EventField::Area, Conversion::AsStored},          {EventField::Time, Conversion::AsStored},
    {EventField::Baseline, Conversion::WithOffset},    {EventField::Group, Conversion::AsStored},
    {EventField::Channel, Conversion::AsStored},       {EventField::Rise1090, Conversion::AsStored},
    {EventField::HalfWidth, Conversion::AsStored},     {EventField::Rise50, Conversion::PointsToMs},
    {EventField::PeakDirection, Conversion::AsStored}, {EventField::BurstNumber, Conversion::AsStored},
    {EventField::BurstEventNumber, Conversion::AsStored}, {EventField::Slope1090, Conversion::AsStored},
    {EventField::RelativeTime, Conversion::PointsToMs},
};

bool InGroup(const EventRecord& r, int group) { return InSourceGroup(r, group); }

// The clear/append question; true for clear.
bool AskClear(Dialogs& dialogs, int k) {
    return dialogs.AskYesNo(std::string(st::kClearOrAppendCaption), st::ClearOrAppendText(k));
}

// The time constant for the Time item; 0 for every other item, nothing when
// the prompt was cancelled.
std::optional<double> AskTimeOffset(Dialogs& dialogs, ArrayField field) {
    if (field != ArrayField::Time) return 0.0;
    return AskNumber(dialogs, std::string(st::kAddConstantCaption), std::string(st::kAddConstantText));
}

void Store(DataArray& array, bool clear, const std::vector<float>& values) {
    if (clear)
        array.Assign(values);
    else
        array.Append(values);
}

bool HasEvents(const Workspace& ws) { return ws.recording && !ws.events.Empty(); }

double RecordingIntervalUs(const Workspace& ws) { return ws.recording ? ws.recording->IntervalUs() : 0.0; }

int ArrayNumber(int k) { return k == 1 ? 1 : 2; }

}  // namespace

std::string_view ArrayFieldCaption(ArrayField field) { return st::kFieldCaptions[int(field)]; }

std::optional<ArrayField> ArrayFieldFromName(std::string_view name) {
    for (int i = 0; i < kArrayFieldCount; ++i) {
        std::string key;
        for (char c : st::kFieldCaptions[i])
            if (c != ' ') key += char(std::tolower(static_cast<unsigned char>(c)));
        if (key == name) return ArrayField(i);
    }
    return std::nullopt;
}

bool ArrayFieldNeedsRecording(ArrayField field) {
    return kRules[int(field)].conversion != Conversion::AsStored;
}

float ArrayFieldValue(const Recording* recording, const EventRecord& record, ArrayField field,
                      double timeOffsetMs) {
    const FieldRule rule = kRules[int(field)];
    const double stored = WithEventField(rule.field, [&](auto member) { return double(record.*member); });
    if (field == ArrayField::Time) return float(stored + timeOffsetMs);
    if (rule.conversion == Conversion::AsStored || !recording) return float(stored);
    const auto counts = int32_t(stored);
    switch (rule.conversion) {
        case Conversion::WithOffset: return recording->Bit2pA(counts);
        case Conversion::NoOffset: return recording->Bit2pA2(counts);
        case Conversion::PointsToMs: return recording->Bit2msec(counts);
        case Conversion::AsStored: break;
    }
    return float(stored);
}

std::vector<float> EventFieldValues(const Recording* recording, const EventTable& events, ArrayField field,
                                    int group, double timeOffsetMs) {
    std::vector<float> out;
    for (const EventRecord& r : events.Records())
        if (InGroup(r, group)) out.push_back(ArrayFieldValue(recording, r, field, timeOffsetMs));
    return out;
}

std::vector<float> RowFieldValues(const Recording* recording, const EventTable& events,
                                  std::span<const int32_t> rows, ArrayField field, double timeOffsetMs) {
    std::vector<float> out;
    for (int32_t row : rows)
        if (events.HasRow(row))
            out.push_back(ArrayFieldValue(recording, events[row], field, timeOffsetMs));
    return out;
}

std::vector<float> SortedDifferences(std::vector<float> values) {
    SortTotalOrder(values);
    std::vector<float> out;
    for (std::size_t i = 1; i < values.size(); ++i) out.push_back(values[i] - values[i - 1]);
    return out;
}

std::vector<float> InterEventIntervals(const EventTable& events, int group, double intervalUs) {
    // The differences are taken on the exact times and only then rounded to
    // the array's floats, so late events keep their sample resolution.
    std::vector<double> times;
    for (const EventRecord& r : events.Records())
        if (InGroup(r, group)) times.push_back(ExactEventTimeMs(r, intervalUs));
    SortTotalOrder(times);
    std::vector<float> out;
    for (std::size_t i = 1; i < times.size(); ++i) out.push_back(float(times[i] - times[i - 1]));
    return out;
}

CommandResult PutEventDataCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber, ArrayField field) {
    if (!HasEvents(ws)) return CommandResult::Cancelled();
    const int k = ArrayNumber(arrayNumber);
    const bool clear = AskClear(dialogs, k);
    const auto group = AskGroup(dialogs, std::string(st::kAddGroupCaption), std::string(st::kAddGroupText));
    if (!group) return CommandResult::Cancelled();
    const auto matching = std::count_if(ws.events.Records().begin(), ws.events.Records().end(),
                                        [&](const EventRecord& r) { return InGroup(r, *group); });
    if (matching == 0) return CommandResult::Cancelled();
    const auto offset = AskTimeOffset(dialogs, field);
    if (!offset) return CommandResult::Cancelled();
    const std::vector<float> values = EventFieldValues(ws.recording.get(), ws.events, field, *group, *offset);
    Store(ws.Array(k), clear, values);
    dialogs.Message(st::DoneFillingCaption(k), st::DoneFillingText(int(values.size()), k));
    return CommandResult::Ok();
}

CommandResult PutHighlightedEventDataCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber,
                                             ArrayField field, std::span<const int32_t> selectedRows) {
    if (!HasEvents(ws) || selectedRows.empty() || int(field) >= kHighlightedFieldCount) return CommandResult::Cancelled();
    const int k = ArrayNumber(arrayNumber);
    const bool clear = AskClear(dialogs, k);
    const auto offset = AskTimeOffset(dialogs, field);
    if (!offset) return CommandResult::Cancelled();
    const std::vector<float> values = RowFieldValues(ws.recording.get(), ws.events, selectedRows, field, *offset);
    if (values.empty()) return CommandResult::Cancelled();
    Store(ws.Array(k), clear, values);
    dialogs.Message(st::DoneFillingCaption(k), st::DoneFillingText(int(values.size()), k));
    return CommandResult::Ok();
}

CommandResult InterEventIntervalsCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber) {
    if (!HasEvents(ws)) return CommandResult::Cancelled();
    const int k = ArrayNumber(arrayNumber);
    const bool clear = AskClear(dialogs, k);
    const auto group =
        AskGroup(dialogs, std::string(st::kIntervalGroupCaption), std::string(st::kIntervalGroupText));
    if (!group) return CommandResult::Cancelled();
    const std::vector<float> intervals = InterEventIntervals(ws.events, *group, RecordingIntervalUs(ws));
    if (intervals.empty() && clear) {
        return CommandResult::Failed(texts::kErrorCaption, st::kNotEnoughEventsText);
    }
    Store(ws.Array(k), clear, intervals);
    dialogs.Message(st::DoneFillingCaption(k), st::DoneIntervalsText(int(intervals.size()), k));
    return CommandResult::Ok();
}

void ClearArrayCommand(Workspace& ws, int arrayNumber) { ws.Array(ArrayNumber(arrayNumber)).Clear(); }

}  // namespace vess
