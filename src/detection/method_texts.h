// Captions and messages of the detection methods and their commands.
#pragma once

namespace vess::method_texts {

inline constexpr const char* kMethodLabel = "Detection method";
inline constexpr const char* kSuggestAction = "Suggest from this recording";
inline constexpr const char* kSuggestCaption = "Suggest from this recording";
inline constexpr const char* kThresholdsCaption = "Thresholds out of reach";
inline constexpr const char* kOfferSuggestion =
    "Set the thresholds from this recording's noise and events now?";
inline constexpr const char* kNoRecording = "Open a recording first.";
inline constexpr const char* kCheckAction = "Check detection accuracy...";
inline constexpr const char* kCheckCaption = "Detection accuracy";
inline constexpr const char* kNearDuplicatesAction = "Remove Near Duplicates";
inline constexpr const char* kNearDuplicatesCaption = "Remove Near Duplicates";
inline constexpr const char* kNearDuplicatesPrompt =
    "Of two events closer than this separation (ms), keep the larger:";
inline constexpr const char* kLearnKernelAction = "Learn Kernel from Accepted Events";
inline constexpr const char* kLearnKernelCaption = "Learn kernel";
inline constexpr const char* kKernelTooFewEvents =
    "At least three accepted events of this channel are needed to learn the kernel.";
inline constexpr const char* kKernelFitFailed =
    "The average of the accepted events could not be fitted with a rise and a decay.";
inline constexpr const char* kCheckRunning = "Checking detection accuracy...";
inline constexpr const char* kCheckStop = "Stop";
inline constexpr const char* kCheckStopping = "Stopping...";
inline constexpr const char* kCheckStopped = "Stopped before the end; the table is that of the last finished check.";
inline constexpr const char* kReplaceCaption = "Events in the table";
inline constexpr const char* kReplaceQuestion =
    "The table holds {} events.  Replace them with the events of this detection?\n"
    "Yes: the table is emptied first.  No: the new events are added to them.";
inline constexpr const char* kNearDuplicatesLabel = "Remove near duplicates";

}  // namespace vess::method_texts
