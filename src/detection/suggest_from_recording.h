// "Suggest from this recording": the noise of the chosen channel and the
// kinetics of its largest clear events, turned into the detectors' kernel and
// thresholds in the channel's own units, whatever their scale.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

namespace vess {

struct RecordingSuggestion {
    double noiseSdCounts = 0;     // robust SD of the trace outside the events
    double noiseSdUnits = 0;
    int eventsUsed = 0;           // clear events averaged for the kernel; 0: default kernel kept
    double minRiseMs = 0;         // the noise's correlation time, below which no rise is fitted
    double riseTauMs = 0, decayTauMs = 0;
    double lowPassMs = 0;         // smoothing of the deconvolved trace
    double templateThreshold = 0; // from the spread of the template criterion
    float thresholdAmplitude = 0; // units
    float areaThreshold = 0;      // units x ms
};

// Robust SD (counts) of samples less their 50 ms running mean, outside the
// stretches from 1 ms before to five decay constants after each onset.
double RecordingNoiseSdCounts(const std::vector<int16_t>& samples, double intervalUs,
                              const std::vector<int64_t>& onsets, double decayMs);

// Measures over at most the first two minutes of the channel. The kernel
// comes from the (up to 40) largest clear events (clear_events.h) of a first
// deconvolution pass with the default kernel, and again with the kernel so
// found; with fewer than ten the default kernel is kept. Its rise is never
// faster than the noise's correlation time.
// Fails, saying why, without a recording or with one shorter than 0.2 s.
Outcome<RecordingSuggestion> SuggestFromRecording(Workspace& ws);

// Sets the kernel, ThresholdAmplitude (4 noise SDs) and AreaThreshold (half
// the area of an event of that amplitude with the kernel's shape).
void ApplySuggestion(Workspace& ws, const RecordingSuggestion& s);

// The command: suggests, applies and tells the user what was set.
CommandResult SuggestFromRecordingCommand(Workspace& ws, Dialogs& dialogs);
std::string SuggestionReport(const Workspace& ws, const RecordingSuggestion& s);
// Where the kernel came from: "21 clear events", or that too few were found.
std::string KernelSourceText(const RecordingSuggestion& s);

// Why the threshold detection can never find an event, or finds noise: the
// amplitude threshold below one count or above the channel's whole range,
// or an area threshold larger than any event could have. Empty when fine.
std::string UnreachableThresholds(const Workspace& ws);
// Before a detection command: when the thresholds are unreachable, says so and
// offers the suggestion (Yes applies it). Ok when the command may run;
// cancelled when the user declined, failed when no suggestion could be made.
CommandResult CheckThresholdsBeforeDetecting(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
