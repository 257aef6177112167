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
inline constexpr const char* kNearDuplicatesLabel = "Remove near duplicates";

}  // namespace vess::method_texts
