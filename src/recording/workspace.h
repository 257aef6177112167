// The shared state of the workbench: the open recording, its events with
// their history, the detection parameters and the settings, and the screen
// being shown. Commands take it (or its parts) explicitly; there are no
// globals.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "recording/analysed_blocks.h"
#include "recording/data_array.h"
#include "recording/event_table.h"
#include "recording/recording.h"
#include "recording/results_table.h"
#include "recording/settings.h"
#include "recording/value_ranges.h"

namespace vess {

class ScreenReadAhead;

struct Workspace {
    std::unique_ptr<Recording> recording;   // null when no file is open
    EventTable events;
    EventHistory history;
    Settings settings;                      // settings.analysis is AnalysisParameters
    ResultsTable results;                   // group analysis results, kept for the session
    std::filesystem::path iniPath;          // where "Vessanto.ini" is read and written
    int32_t screenStartBlock = 0;           // first block of the displayed screen
    int32_t selectedEvent = 0;              // 1-based; 0 when none
    // Where a screen analysis ran since the recording was opened.
    AnalysedBlocks analysedBlocks;
    // The screens after the one shown, read many at a time for the screen
    // by screen analyses; read again when it no longer serves the recording
    // as it reads now.
    std::shared_ptr<ScreenReadAhead> screensAhead;
    // The trace view shows the filtered copy while one is attached (Shift+F
    // switches); the noise tools measure what it shows.
    bool showFiltered = true;
    DataArray array1;                       // "Array #1"
    DataArray array2;                       // "Array #2"
    // Values measured once over the whole recording (such as the noise of
    // a filtered trace), keyed by what they were measured on and with.
    std::map<std::string, double> measuredOnce;
    // The recording (path, channel, direction) whose suggested settings are
    // in use, so that a new installation suggests once per recording.
    std::string suggestedFor;
    // The method and settings that made the events in the table, for the
    // status bar; empty when they are not known (events read from a file).
    std::string eventsMadeWith;
    std::string eventsMadeFor;  // the recording's path when eventsMadeWith was noted

    // Where file pickers start: the open recording's folder, else the data
    // folder. The process's working folder is never changed.
    std::filesystem::path Folder() const {
        return recording ? recording->Folder() : std::filesystem::path(settings.dataFolder);
    }
    // A row of the event table is selected.
    bool HasSelectedEvent() const { return events.HasRow(selectedEvent); }

    // Work array 1 or 2 (any other number gives array 2).
    DataArray& Array(int number) { return number == 1 ? array1 : array2; }
    const DataArray& Array(int number) const { return number == 1 ? array1 : array2; }

    AnalysisParameters& params() { return settings.analysis; }
    const AnalysisParameters& params() const { return settings.analysis; }
    int32_t BlocksPerScreen() const {
        return std::clamp(settings.blocksPerScreen, 1, kMaxBlocksPerScreen);
    }
};

}  // namespace vess
