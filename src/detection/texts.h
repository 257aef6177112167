// Captions and messages of the detection commands, shown exactly as written
// here (double spaces and spelling included).
#pragma once

namespace vess::detection_texts {

// AnalyzeWindow and click detection: a period shorter than one sample.
inline constexpr const char* kImproperParametersCaption = "Improper Analysis Parameters";
inline constexpr const char* kImproperParametersText =
    "The analysis parameters are not set properly.  Please run 'Suggest Analysis Paramters' "
    "command under File menu.";

// Command5: kResetBefore + count + kResetAfter, OK/Cancel.
inline constexpr const char* kResetCaption = "Confrim Reset";
inline constexpr const char* kResetBefore = "There are ";
inline constexpr const char* kResetAfter =
    " events analysed.  Are you sure you want to erase the event data?";

// Tool tips of the analysis buttons (Command1..Command4).
inline constexpr const char* kTipAnalyzeWindow = "Analyze this window    (F9)";
inline constexpr const char* kTipAnalyzeNext = "Analyze next window  (F10 or N)";
inline constexpr const char* kTipNonStop = "Non-stop analysis       (F11)";
inline constexpr const char* kTipInterrupt = "Interrup non-stop analysis  (F12)";
inline constexpr const char* kTipRecalculate = "Recalculate selected event        (I)";
inline constexpr const char* kTipDoublePeak = "Analyze selected event for double peak   (L)";
inline constexpr const char* kTipDetectClick = "Detect an event      (Left mouse click)";
inline constexpr const char* kTipRecalculateClick = "Recalculate event    (Shift+Left mouse click)";
inline constexpr const char* kTipDoublePeakClick = "Detect a double peak   (Alt+Left mouse click)";
inline constexpr const char* kTipDetectTenth =
    "Detect an event at 1/10th of thresholds  (Ctrl+Alt+Left mouse click)";

// Our own texts for the commands whose messages are not fixed elsewhere.
inline constexpr const char* kNoEventSelectedCaption = "No Event Selected";
inline constexpr const char* kNoEventSelectedText = "Please select an event first.";
inline constexpr const char* kNoEventFoundCaption = "No Event Found";
inline constexpr const char* kNoEventFoundText =
    "No event passing the amplitude, direction and area tests was found at this point.";
inline constexpr const char* kEventOffScreenCaption = "Event Not Shown";
inline constexpr const char* kEventOffScreenText =
    "The selected event is not on this screen.  Please jump to it first.";
inline constexpr const char* kNoDoublePeakCaption = "Double Peak";
inline constexpr const char* kNoDoublePeakText = "No second peak was found after this event.";
inline constexpr const char* kBaselineThresholdCaption = "Baseline and Threshold";
inline constexpr const char* kRmsNoiseCaption = "RMS Noise";

// Double-peak scan summary: scanned + kScanMiddle + added + ".".
inline constexpr const char* kScanDoublePeakCaption = "Scan for Double Peaks";
inline constexpr const char* kScanMiddle = " events scanned; double peaks added: ";

// RMS noise and baseline and threshold reports (numbers filled in by the
// commands); the threshold question is asked with Yes/No.
inline constexpr const char* kNoQuietTraceText =
    "There is no event-free stretch on this screen to measure the noise on.";
inline constexpr const char* kRmsNoiseLabel = "RMS noise: ";
inline constexpr const char* kBaselineLabel = "Baseline: ";
inline constexpr const char* kPointsLabel = "Points measured: ";
inline constexpr const char* kSuggestedThresholdLabel = "Suggested amplitude threshold: ";
inline constexpr const char* kUseThresholdQuestion = "Use it as the amplitude threshold?";

}  // namespace vess::detection_texts
