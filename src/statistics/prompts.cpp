#include "statistics/prompts.h"

#include <cmath>

#include <fmt/format.h>

#include "recording/event_record.h"
#include "recording/number_entry.h"
#include "statistics/binning.h"
#include "statistics/texts.h"

namespace vess {

std::optional<double> AskNumber(Dialogs& dialogs, const std::string& caption, const std::string& text,
                                const std::string& initial) {
    const auto answer = dialogs.Input(caption, text, initial);
    if (!answer) return std::nullopt;
    return ParseNumberEntry(*answer);
}

std::optional<int> AskGroup(Dialogs& dialogs, const std::string& caption, const std::string& text) {
    const auto g = AskNumber(dialogs, caption, text, "0");
    if (!g || !IsGroupNumber(*g) || std::floor(*g) != *g) return std::nullopt;
    return int(*g);
}

std::optional<double> AskBinSize(Dialogs& dialogs, const std::string& text) {
    const auto size = AskNumber(dialogs, std::string(stats_texts::kBinSizeCaption), text);
    if (!size || !ValidBinSize(*size)) return std::nullopt;
    return size;
}

std::optional<std::string> AskAxisUnit(Dialogs& dialogs) {
    return dialogs.Input(std::string(stats_texts::kAxisUnitCaption), std::string(stats_texts::kAxisUnitText));
}

CommandResult TooManyBins() {
    return CommandResult::Failed(stats_texts::kTooManyBinsCaption, stats_texts::kTooManyBinsText);
}

std::string BinSizeText(double binSize) { return fmt::format("{}", binSize); }

}  // namespace vess
