// The work arrays as text: the clipboard copy and paste, and the array text
// file (Axon Text File form, CR LF line ends) with its save and import.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recording/data_array.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/job.h"

namespace vess {

struct Workspace;

// Shortest plain decimal text that reads back to the same float ("0.1",
// "12", "-3.5e-07" is never produced: "-0.00000035").
std::string FormatArrayValue(float value);

// Both arrays as two tab-separated columns headed "Array #1" and "Array #2",
// rows 1 to the larger upper bound, CR LF line ends; a shorter array's cell
// is empty.
std::string ArraysClipboardText(const DataArray& a1, const DataArray& a2);
// Numbers of clipboard text: lines split at CR (LF tolerated), the text
// before the first tab of each line, lines that are not finite numbers (as
// a float) skipped.
std::vector<float> ParseClipboardNumbers(std::string_view text);
// menu_PasteArray index k-1: the clear question, then replace or append.
// Cancelled when the clipboard holds no number.
CommandResult PasteArrayCommand(Workspace& ws, Dialogs& dialogs, int arrayNumber, std::string_view clipboardText);

// The array text file of both arrays; recordingName follows "Array Data : ".
std::string ArraysAtfText(const std::string& recordingName, const DataArray& a1, const DataArray& a2);

struct ImportedArrays {
    DataArray array1;  // bounds 0..MaxArray1
    DataArray array2;  // bounds 0..MaxArray2
};
// Reads an array text file; nothing when it fails the header test. The
// announced counts are capped by the text's length.
std::optional<ImportedArrays> ParseArraysAtf(std::string_view text);
// The same from a file, read in pieces so that only the arrays are held;
// nothing when it cannot be read (then *readError says why) or fails the
// header test.
std::optional<ImportedArrays> ReadArraysAtf(const std::filesystem::path& path, std::string* readError = nullptr,
                                            const JobProgress& progress = {});

// menu_ArrayAscii: silent when both arrays are empty; save dialog, replace
// question, temporary file renamed over the target. Ok when written.
CommandResult SaveArraysAsciiCommand(Workspace& ws, Dialogs& dialogs);
// menu_importAscii: open dialog, "Not a Valid Data Array" on a bad file.
CommandResult ImportArraysAsciiCommand(Workspace& ws, Dialogs& dialogs);
// Its two halves, for reading the file as a job: the open dialog, then the
// arrays read (or nothing) put in place, or failed "Not a Valid Data Array".
std::optional<std::filesystem::path> ChooseArraysImport(Dialogs& dialogs);
CommandResult PlaceImportedArrays(Workspace& ws, std::optional<ImportedArrays> arrays);

}  // namespace vess
