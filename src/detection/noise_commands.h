// Noise of the displayed trace: the RMS noise command and the baseline and
// threshold command, which proposes an amplitude threshold from the noise.
// Neither changes the event table.
#pragma once

#include <cstdint>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_table.h"
#include "recording/screen.h"
#include "recording/workspace.h"

namespace vess {

// The suggested ThresholdAmplitude is this many times the RMS noise.
inline constexpr double kThresholdNoiseMultiple = 4.0;

struct NoiseMeasure {
    bool valid = false;       // false when no sample was left to measure
    int64_t points = 0;       // samples used
    int64_t pointsExcluded = 0;  // samples inside stored events, left out
    double baselineUnits = 0;  // mean level, channel units (with the offset)
    double rmsUnits = 0;       // RMS about that mean, channel units
};

// The samples of the screen (window indices 0 .. WindowLen-1) outside the
// stretches (event start .. decay point) of the stored events on it: their
// mean level and their RMS about it. Events are left out so that the noise is
// that of the quiet trace, not of the events.
NoiseMeasure MeasureScreenNoise(const Screen& screen, const EventTable& events);

// menu_RMSNoise: the RMS noise of the current screen in the channel's units,
// shown in a message. Nothing happens without a recording (cancelled); a
// screen with no sample outside the events fails.
Outcome<NoiseMeasure> ShowRmsNoise(Workspace& ws, Dialogs& dialogs);

struct BaselineThresholdResult {
    NoiseMeasure noise;
    float suggestedThreshold = 0;  // kThresholdNoiseMultiple x RMS, channel units
    bool applied = false;          // the user answered Yes: ThresholdAmplitude was set
};

// menu_BaselineThreshold: measures the baseline level and the RMS noise of the
// current screen, shows them with the suggested threshold and asks (Yes/No)
// whether to use it as ThresholdAmplitude. Fails as ShowRmsNoise does.
Outcome<BaselineThresholdResult> BaselineThreshold(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
