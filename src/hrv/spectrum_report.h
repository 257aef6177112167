// The spectral window's numbers as rows of text, and their export.
#pragma once

#include <string>
#include <vector>

#include "hrv/spectrum.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess::hrv {

std::vector<std::string> SpectrumTitles();
// VLF, LF, HF and Total: edges, power in ms^2, share of the total in %,
// normalised units (LF and HF only) and the peak frequency.
std::vector<std::vector<std::string>> SpectrumRows(const SpectrumResult& s, const Bands& bands);
// The rows, then "LF/HF" and the method's settings, tab-separated.
std::string SpectrumText(const SpectrumResult& s, const SpectrumOptions& options);
// Save dialog "ASCII File (*.txt)", replace question.
CommandResult SaveSpectrumCommand(Dialogs& dialogs, const SpectrumResult& s, const SpectrumOptions& options);

}  // namespace vess::hrv
