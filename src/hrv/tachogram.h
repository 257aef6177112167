// The tachogram (RR interval i against beat number i) as an Axon Text File
// and as a one-channel ABF file built on the template header.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

// "ATF" tab "1.0", "1" tab "2" (one optional record, two columns), the
// quoted record "Tachogram: " + recording name, the quoted column titles,
// then beat number and interval ("0.000") per row; CR LF line ends.
std::string TachogramAtfText(const std::string& recordingName, std::span<const double> rrMs);

// The ABF form. One sample per interval, one sample a second, so a reader's
// time axis in seconds is the beat number minus one. Header fields changed
// from the template (everything else is kept byte for byte):
//   operation mode 3 (gap-free), data format 0 (16-bit integers), one
//   channel on ADC 0 named "RR" in "ms", the data section right after the
//   template's header, sample count, episode count and length, seconds per
//   run, no tags, creator and comment;
//   sample interval 1000000 us;
//   ADC range 10 V, resolution 32768, programmable and signal gain 1, signal
//   and instrument offset 0, telegraph and autosample gain off, instrument
//   scale factor 10 c/32768 V per ms for c counts per ms: value = counts /
//   (gains * scale factor) * range / resolution. c is 10 (0.1 ms a count, up
//   to 3276.7 ms) unless a longer interval needs a coarser step: then 1, 0.1
//   and so on, so that no interval is clipped.
inline constexpr double kTachogramCountsPerMs = 10;
// The counts per ms the ABF form uses for these intervals.
double TachogramCountsPerMs(std::span<const double> rrMs);
inline constexpr double kTachogramIntervalUs = 1e6;
// The ABF bytes, or an empty vector with error set when the template is not
// an ABF header we can build on.
struct TachogramAbf {
    std::vector<uint8_t> bytes;
    std::string error;
};
TachogramAbf BuildTachogramAbf(std::span<const uint8_t> templateBytes, std::span<const double> rrMs,
                               const std::string& comment);

// Main-form commands over the events (in time order, asked for when not).
// menu_TachogramASCII: save dialog, replace question, then the text file.
CommandResult SaveTachogramAsciiCommand(Workspace& ws, Dialogs& dialogs);
// menu_TachogramABF: the template templateFolder/"SamplABF.dat" must exist
// ("Error" otherwise, and nothing is written); then the save dialog and
// "The Tachogram is saved as " + file name.
CommandResult SaveTachogramAbfCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder);

}  // namespace vess::hrv
