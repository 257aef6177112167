// The event file (.EVT): a copy of the recording's ABF header with the
// creator field "Vessantorium 5.0", the detection parameters and the event
// count at 1954..2013, the data file's name at 2014 and the 76-byte records
// from 2048 on. Files of the earlier "3.0" layout and older (24-byte records)
// are read and converted. The parameter file (.PAR) shares the layout up to
// 2048 and the field helpers below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/event_record.h"
#include "recording/event_table.h"
#include "recording/settings.h"

namespace vess {

struct Workspace;

namespace evt {
inline constexpr std::size_t kHeaderBytes = 2048;          // records start here
inline constexpr std::size_t kCreator = 294, kCreatorChars = 16;
inline constexpr std::size_t kComment = 310, kCommentChars = 56;
// The long file comment of the extended ABF 1.x header (6144 bytes).
inline constexpr std::size_t kLongComment = 5154, kLongCommentChars = 128;
inline constexpr std::size_t kAreaThreshold = 1954;         // float
inline constexpr std::size_t kPeakDirection = 1958;         // int16
inline constexpr std::size_t kNumberPointsPeak = 1960;      // int16
inline constexpr std::size_t kEventCount = 1986;            // int32
inline constexpr std::size_t kThresholdAmplitude = 1990;    // float
inline constexpr std::size_t kPeriodToSearchMax = 1994;     // int32, us
inline constexpr std::size_t kPeriodStartBaseline = 1998;   // int32, us
inline constexpr std::size_t kPeriodFindDecayTime = 2002;   // int32, us
inline constexpr std::size_t kDecayPercent = 2006;          // float
inline constexpr std::size_t kPeriodBaselineAverage = 2010; // int32, us
inline constexpr std::size_t kDataFileName = 2014, kDataFileNameChars = 34;
static_assert(kDataFileName + kDataFileNameChars == kHeaderBytes);
inline constexpr std::size_t kOldRecordBytes = 24;          // "3.0" and older
}  // namespace evt

enum class EventFileVersion { Current, V3, Oldest };
enum class EventFileProblem { None, CannotRead, TooShort, BadCount, BadParameters };

struct EventFileContents {
    EventFileProblem problem = EventFileProblem::None;
    std::string creator;              // 16 characters as stored
    std::string comment;              // 56 characters as stored
    AnalysisParameters params;        // ComplexPeak is not in the file: default
    int32_t eventCount = 0;           // as stored
    std::string storedName;           // data file name, blanks trimmed
    EventFileVersion version = EventFileVersion::Current;
    std::vector<EventRecord> records; // converted to the current layout
    std::vector<uint8_t> header;      // the first 2048 bytes
    std::string detail;               // why it cannot be read, or which parameter is wrong

    bool Ok() const { return problem == EventFileProblem::None; }
    // "Vessantorium" in the creator field (needs the header to be there).
    bool HasProductTag() const;
};

// Parses a whole event file held in memory; never throws, never reads past
// the bytes, never allocates from a count the bytes cannot hold.
EventFileContents ParseEventFile(std::span<const uint8_t> bytes);
EventFileContents ReadEventFile(const std::filesystem::path& path);
// A sentence for the user saying why contents could not be read.
std::string DescribeProblem(const EventFileContents& contents);

// Reads an event file and makes every check before anything is changed: the
// file can be read whole, it is an event file of this program, its count and
// parameters are sound and, when expectedDataName is given, it was analysed
// from that recording. A failure carries its caption and message (naming the
// file). Every command that reads an event file goes through it.
Outcome<EventFileContents> ReadCheckedEventFile(const std::filesystem::path& path,
                                                const std::string* expectedDataName);

// The parameter fields at 1954..2013 (not the count). NumberPointsPeak is
// taken only when withNumberPointsPeak; other fields of base stay.
AnalysisParameters ReadParameterFields(std::span<const uint8_t> header, AnalysisParameters base,
                                       bool withNumberPointsPeak);
// Writes the creator, parameters, count and blank-padded name (cut at 34)
// over a header of at least 2048 bytes.
void WriteParameterFields(std::span<uint8_t> header, std::string_view creator,
                          const AnalysisParameters& params, bool withNumberPointsPeak,
                          int32_t eventCount, std::string_view dataFileName);

// The header copy used when no recording is open: 2048 zero bytes with the
// "ABF " signature, so the file still carries an ABF 1.x-shaped header.
std::vector<uint8_t> BlankHeaderCopy();

// The bytes of an event file: the header copy (2048 bytes at least; a longer
// extended header whole, with its long comment set from the 56-character
// comment), the fields above and the records from 2048 on.
std::vector<uint8_t> BuildEventFile(std::span<const uint8_t> headerBytes,
                                    const AnalysisParameters& params,
                                    std::span<const EventRecord> records,
                                    std::string_view dataFileName);
// Writes through a temporary file. Empty string on success, else the reason.
std::string WriteEventFile(const std::filesystem::path& path, std::span<const uint8_t> headerBytes,
                           const AnalysisParameters& params, const EventTable& table,
                           std::string_view dataFileName);

// ---- Commands ----------------------------------------------------------------

// menu_SaveEvent: the save dialog, the replace question, the writer. Ok
// when the file was written (history marked saved).
CommandResult SaveEventFileCommand(Workspace& ws, Dialogs& dialogs);
// menu_OpenEvent: offer to save the current events, the open dialog, the
// creator and name checks, then OpenEventFile. Ok when events were loaded.
CommandResult OpenEventFileCommand(Workspace& ws, Dialogs& dialogs);
// The loader: parameters and records replace the current ones as one
// undoable change; files of earlier versions are converted and the user is
// offered a rewrite in the current layout. A damaged file changes nothing.
CommandResult OpenEventFile(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs);
// The loader's second half, for contents that ReadCheckedEventFile passed.
// The events are loaded even when the offered rewrite fails, which is
// shown at once.
void LoadEventFileContents(Workspace& ws, EventFileContents file, const std::filesystem::path& path,
                           Dialogs& dialogs);
// Before a change of a setting that alters how events are measured: when
// events exist, ask "Save and Reset"; Yes saves them (through the save
// dialog) and empties the table as one undoable change. Ok when the setting
// may change: no events, or saved and reset. No or a cancelled save is
// cancelled, a save that failed is failed; both leave everything as it was,
// so the caller keeps the old setting.
CommandResult ConfirmResetForParameterChange(Workspace& ws, Dialogs& dialogs);

}  // namespace vess
