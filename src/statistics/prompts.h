// The number questions that the statistics commands share.
#pragma once

#include <optional>
#include <string>

#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {

// The answer as a number; nothing for Cancel, an empty answer or text that
// is not a number.
std::optional<double> AskNumber(Dialogs& dialogs, const std::string& caption, const std::string& text,
                                const std::string& initial = {});
// A whole number 0..255; nothing otherwise.
std::optional<int> AskGroup(Dialogs& dialogs, const std::string& caption, const std::string& text);
// "Bin Size" with the given text: a positive size; nothing for Cancel or 0.
std::optional<double> AskBinSize(Dialogs& dialogs, const std::string& text);
// The unit of an array series ("x-axis unit"); nothing for Cancel.
std::optional<std::string> AskAxisUnit(Dialogs& dialogs);
// The "Too many bins" failure.
CommandResult TooManyBins();
// The bin size as titles show it: the shortest text that reads back.
std::string BinSizeText(double binSize);

}  // namespace vess
