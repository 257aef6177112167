// Filling the work arrays from the event table: one event field of all events
// or of one group, of the rows highlighted in the event grid, or the
// inter-event intervals; and clearing.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"

namespace vess {

class Recording;
struct Workspace;

// The fill menus' items, by index. The highlighted-events menus offer
// Amplitude..Slope1090 (0..15), the all-events menus also RelativeTime (16).
enum class ArrayField {
    Amplitude = 0, Noise, RiseTime, DecayTime, Area, Time, Baseline, Group, Channel, Rise1090,
    HalfWidth, Rise50, PeakDirection, BurstNumber, BurstEventNumber, Slope1090, RelativeTime
};
inline constexpr int kArrayFieldCount = 17;
inline constexpr int kHighlightedFieldCount = 16;

std::string_view ArrayFieldCaption(ArrayField field);
// The field whose caption, lower case without spaces, is name ("amplitude",
// "timetorise", "rise10-90", "burstevent#" ...).
std::optional<ArrayField> ArrayFieldFromName(std::string_view name);
// True when the value needs a recording for its conversion (counts or points).
bool ArrayFieldNeedsRecording(ArrayField field);

// The value the fill writes for one event. recording may be null only for
// fields that need none; timeOffsetMs is added to Time only.
float ArrayFieldValue(const Recording* recording, const EventRecord& record, ArrayField field,
                      double timeOffsetMs = 0);

// The field of every event of group (all events for group 0), in table order.
std::vector<float> EventFieldValues(const Recording* recording, const EventTable& events,
                                    ArrayField field, int group, double timeOffsetMs = 0);
// The field of the given 1-based rows, in the order given (rows out of range
// are skipped).
std::vector<float> RowFieldValues(const Recording* recording, const EventTable& events,
                                  std::span<const int32_t> rows, ArrayField field,
                                  double timeOffsetMs = 0);
// The values sorted ascending and the n - 1 differences between neighbours.
std::vector<float> SortedDifferences(std::vector<float> values);
// SortedDifferences of the event times (ms) of group (0: every event not
// rejected), taken on the exact times when intervalUs (the recording's
// sample interval; 0 for none) and the sample indices give them.
std::vector<float> InterEventIntervals(const EventTable& events, int group, double intervalUs = 0);

// menu_PutAllArray1/2 item field: clear/append question, group prompt,
// "Add a constant" prompt for Time, fill, closing message. Done when the
// array was filled; cancelled (nothing to say) on Cancel or when there is
// nothing to put: no events, none in the group, no rows.
CommandResult PutEventDataCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber, ArrayField field);
// menu_PutHLArray1/2: as above for the grid's selected rows (1-based, in
// selection order), without the group prompt.
CommandResult PutHighlightedEventDataCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber,
                                             ArrayField field, std::span<const int32_t> selectedRows);
// menu_InterEventArray1/2: fails with "Not enough events to add." when
// there is no interval to put into an array that was to be cleared.
CommandResult InterEventIntervalsCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber);
// menu_ClearArray1/2: no confirmation.
void ClearArrayCommand(Workspace& ws, int arrayNumber);

}  // namespace vess
