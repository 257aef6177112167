// Text exports of the event table: the time/amplitude Axon Text File
// (menu_SaveData) and the tab-separated table of all grid columns
// (menu_savetoAsciiFile). Both use CR LF line ends.
#pragma once

#include <span>
#include <string>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"

namespace vess {

class Recording;
struct Workspace;

// "ATF" tab "1.0", "0" tab "2" (no optional records, two columns), the quoted
// titles "Time(ms)" and "Amplitude(" + unit + ")", then one row per event.
// recording may be null: amplitudes then stay in ADC counts (unit "counts").
std::string EventsAtfText(const Recording* recording, const EventTable& table);
// A header row of the 17 grid captions, then one row per event with the
// values the grid shows.
std::string EventsAsciiText(const Recording* recording, const EventTable& table);

// Every column of the event grid (the event number and the 17 fields) with
// the grid's headings and values, separated by sep, one line per event: in
// the grid's units ("Amplitude (pA)") with a recording, else in ADC counts
// and sample points ("Amplitude (counts)"). A value that was not measured is
// left empty.
std::string EventGridText(const Recording* recording, std::span<const EventRecord> records, char sep);

// menu_SaveData: save dialog ("txt", "Text File (*.txt)"), replace question.
CommandResult SaveDataCommand(Workspace& ws, Dialogs& dialogs);
// menu_savetoAsciiFile: save dialog ("ASC", "ASCII File (*.ASC)"); an
// existing file is refused ("File Exist") and nothing is written.
CommandResult SaveToAsciiFileCommand(Workspace& ws, Dialogs& dialogs);
// Export Event Grid as CSV: save dialog ("csv", "CSV File (*.csv)"), replace
// question, then EventGridText with commas.
CommandResult SaveGridCsvCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
