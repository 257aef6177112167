// The filtering detectors behind the analysis commands: a screen, the whole
// file and a click. A screen takes the detection points that lie on it (the
// criterion is read from the samples around it), so running screen by screen
// stores the events of a run over the whole file.
#pragma once

#include <cstdint>

#include "detection/analyze_window.h"
#include "detection/method_detect.h"
#include "detection/point_commands.h"
#include "detection/whole_file.h"
#include "recording/workspace.h"

namespace vess {

// Whether the chosen method is one of the filtering detectors.
bool UsesFilteringMethod(const Workspace& ws);

// The run for the workspace's recording and settings; the noise of the
// deconvolved trace is measured once per recording, channel and parameters.
MethodRun MethodRunFor(Workspace& ws);
// Hands the noise levels measured for from's recording to to's recording (both
// open, with the same method settings), so that detection there uses the same
// absolute thresholds instead of measuring its own noise. False when from has
// none measured.
bool CarryNoiseLevels(const Workspace& from, Workspace& to);

// Detects on the screen with the run and appends the events (the last stored
// time is not stored again).
AnalyzeWindowResult AnalyzeWindowByMethod(const Screen& screen, const AnalysisParameters& params,
                                          const MethodRun& run, EventTable& events);

// The whole recording in long stretches; the same events as the first screen
// followed by the non-stop analysis, measured on the same screens.
WholeFileResult DetectWholeFileByMethod(Workspace& ws, const ProgressCallback& progress = {});

// A click: the detection nearest the clicked window index within the search
// range centred on it (with tenthThresholds a tenth of the threshold).
Outcome<PointCommandResult> DetectAtPointByMethod(Workspace& ws, int64_t windowIndex, bool tenthThresholds);

}  // namespace vess
