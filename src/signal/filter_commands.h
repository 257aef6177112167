// The digital filter as commands over the workspace: the filter kept in the
// settings, applying and removing it, the trace that detection reads, and
// the frequency response for a graph window.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "graphs/plot_data.h"
#include "recording/dialogs.h"
#include "recording/settings.h"
#include "recording/workspace.h"
#include "signal/filter_channel.h"
#include "signal/filter_design.h"

namespace vess {

// The filter the settings describe; a text that is not a number becomes NaN,
// which FilterChoiceProblem refuses.
FilterChoice FilterChoiceFromSettings(const Settings& settings);
void StoreFilterChoice(const FilterChoice& choice, Settings& settings);

// Stores the choice in the settings and filters the recording's chosen channel;
// a refused choice or a failed run fails under the filter's caption and
// leaves the recording as it was. Ok when the filtered copy is attached.
CommandResult ApplyFilterCommand(Workspace& ws, const FilterChoice& choice, const FilterProgress& progress = {});
// The same in two steps, for a job: the choice checked and stored, then the
// channel filtered from the recording's file opened anew (nothing shared with
// the windows' reads), then the copy attached where the windows live.
struct FilterRequest {
    std::filesystem::path recording;
    uint8_t channel = 0;
    FilterChoice choice;
};
Outcome<FilterRequest> PrepareFilter(Workspace& ws, const FilterChoice& choice);
FilteredChannel FilterFromFile(const FilterRequest& request, const FilterProgress& progress);
CommandResult AttachFiltered(Workspace& ws, FilteredChannel filtered);
// Drops the filtered copy; detection reads the recorded samples again.
void RemoveFilter(Workspace& ws);
// Stores the choice and points the recording's reads at the filtered copy
// when one is attached and the choice is on.
void SetDetectOnFiltered(Workspace& ws, bool on);
// Whether detection and measurement now read the filtered trace.
bool DetectsOnFiltered(const Workspace& ws);

// The filter as the user reads it: "Butterworth low-pass 1000 Hz, order 4",
// with ", zero phase" when it runs both ways.
std::string FilterName(const FilterChoice& choice);
// What the trace view shows: "filtered: " and the filter's name while the
// filtered copy is attached and shown, "" for the recorded trace.
std::string ShownTraceName(const Workspace& ws);

// Gain in dB at log-spaced frequencies from fs/10000 (at least 0.1 Hz) to
// just below fs/2, as applied: twice the single-pass gain for zero phase.
PlotData FilterResponsePlot(const FilterChoice& choice, double sampleRateHz, int points = 400);

}  // namespace vess
