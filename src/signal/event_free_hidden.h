// Events that only their neighbours hid. Removing events changes the trace
// detection measures a small event from (its baseline, the fit that confirms
// a weak one), so the same detection on the event-free copy can find a few
// small events beside removed ones that it did not find on the recording.
// The table never held them and the user never saw them, so no edit of the
// table speaks for keeping them: the writer below removes them too. An event
// the user deleted from the table is found on the recording too and stays.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/event_table.h"
#include "recording/workspace.h"

namespace vess {

// Rounds of detection on the copy, each followed by writing it again.
inline constexpr int kHiddenEventRounds = 2;
// A detection on the copy is the recording's own event when their peaks lie
// this close.
inline constexpr double kSameEventMs = 1.0;

// The events of found that have no event of known (sorted by sample index or
// not) within withinPoints of their peak, in the order of found.
std::vector<EventRecord> EventsNotIn(const std::vector<EventRecord>& found, const std::vector<EventRecord>& known,
                                     int64_t withinPoints);

// Opens path on channel in ws with from's settings (and, with carryNoise,
// the noise levels measured for from's recording) and detects over the whole
// of it; false when the file cannot be opened or the parameters cannot be used.
bool DetectWithSettingsOf(const Workspace& from, const std::filesystem::path& path, int channel, bool carryNoise,
                          Workspace& ws);

struct EventFreeWritten {
    int32_t removed = 0;              // the table's events
    std::vector<EventRecord> hidden;  // more events found on the copy and removed too
    int32_t HiddenRemoved() const { return int32_t(hidden.size()); }
};

// Writes the event-free copy of ws's recording without the table's events
// (see WriteEventFreeAbf). With removeHidden, detection with ws's settings and
// noise levels then runs on the copy and on the recording; the events found on
// the copy but not on the recording are added to those removed and the copy
// is written again, for at most kHiddenEventRounds rounds.
Outcome<EventFreeWritten> WriteEventFreeCopy(const Workspace& ws, double marginMs, int64_t levelPoints,
                                             const std::filesystem::path& path, bool removeHidden);

// What the closing message and the command line say about the hidden events
// (empty when there were none).
std::string HiddenEventsText(int32_t hiddenRemoved);

}  // namespace vess
