// Parameter files (.PAR): the event-file layout up to 2048 bytes without
// records, creator "Vessantorium 3.0", no NumberPointsPeak. Loading takes the
// detection parameters of a parameter file or of an event file and changes
// nothing else. Also the three built-in presets of Suggest Analysis
// Parameters.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_file.h"
#include "recording/settings.h"
#include "recording/texts.h"

namespace vess {

struct Workspace;

// The 2048 bytes of a parameter file over headerBytes (the recording's ABF
// header; only its first 2048 bytes are used, since nothing follows them).
std::vector<uint8_t> BuildParameterFile(std::span<const uint8_t> headerBytes,
                                        const AnalysisParameters& params, int32_t eventCount,
                                        std::string_view dataFileName);

struct ParameterFileContents {
    // TooShort, CannotRead, or BadParameters (a value outside its range)
    EventFileProblem problem = EventFileProblem::None;
    std::string detail;           // which parameter, for BadParameters
    std::string creator;          // 16 characters as stored
    bool hasProductTag = false;   // "Vessantorium" in the creator field
    // base with the file's parameters; NumberPointsPeak only from a "5.0"
    // event file (a parameter file does not hold it), and 0 there becomes 1.
    AnalysisParameters params;
};
ParameterFileContents ParseParameterFile(std::span<const uint8_t> bytes, const AnalysisParameters& base);

// menu_SaveParameter. Without an open recording the header copy is
// BlankHeaderCopy(): a zeroed header with the "ABF " signature claims
// nothing about a recording that does not exist, unlike a template header.
CommandResult SaveParameterFileCommand(Workspace& ws, Dialogs& dialogs);
// menu_LoadParameter: only AnalysisParameters change.
CommandResult LoadParameterFileCommand(Workspace& ws, Dialogs& dialogs);

// Suggest Analysis Parameters, entries 1..3 (names in texts::kSuggestEntry*).
inline constexpr std::array<std::string_view, 3> kSuggestEntryNames{
    texts::kSuggestEntry1, texts::kSuggestEntry2, texts::kSuggestEntry3};

struct SuggestResult {
    bool applied = false;
    // The entry that the main form's Combo1 (its list of event kinds, first
    // entry for synaptic events, second for large fast events) is set to:
    // 0 for entries 1 and 2, 1 for entry 3.
    int combo1Index = 0;
};
// When events exist, reset (the main form's Command5) runs first; if it
// declines, nothing changes. PeriodBaselineAverage becomes 10 sample
// intervals, rounded (kept as it is without a recording).
SuggestResult SuggestParameters(Workspace& ws, Dialogs& dialogs, int entry,
                                const std::function<bool()>& reset);

}  // namespace vess
