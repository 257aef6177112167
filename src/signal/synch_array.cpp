#include "signal/synch_array.h"

#include <fmt/format.h>

#include <algorithm>

#include "recording/workspace.h"
#include "signal/tool_texts.h"
#include "statistics/prompts.h"

namespace vess {

std::vector<float> SweepStartTimesMs(const Recording& rec) {
    const auto& starts = rec.SweepStarts();
    std::vector<float> times;
    if (starts.size() < 2) return times;
    // Sweeps of their own lengths began at the times of the synch array.
    if (rec.SweepTimesMs().size() == starts.size()) {
        for (double t : rec.SweepTimesMs()) times.push_back(float(t));
        return times;
    }
    for (int64_t p : starts) times.push_back(float(double(p) * rec.IntervalUs() / 1000.0));
    return times;
}

Outcome<int> SynchArrayCommand(Workspace& ws, Dialogs& dialogs) {
    if (!ws.recording) return CommandResult::Cancelled();
    const std::vector<float> times = SweepStartTimesMs(*ws.recording);
    const std::string caption(tool_texts::kSynchCaption);
    if (times.empty()) return CommandResult::Failed(caption, tool_texts::kNotEpisodicText);
    const auto number = AskNumber(dialogs, caption, std::string(tool_texts::kSynchArrayPrompt), "1");
    if (!number || (*number != 1 && *number != 2)) return CommandResult::Cancelled();
    const int array = int(*number);
    ws.Array(array).Assign(times);
    dialogs.Message(caption, fmt::format("{}{}{}", times.size(), tool_texts::kSynchDone, array));
    return array;
}

std::optional<std::vector<int32_t>> ScreenSeries(int32_t from, int32_t to, int32_t step, int32_t screenCount) {
    if (from < 1 || to > screenCount || from > to || step < 1) return std::nullopt;
    std::vector<int32_t> screens;
    for (int64_t s = from; s <= to; s += step) screens.push_back(int32_t(s));
    return screens;
}

std::string PictureName(int32_t screen, int32_t screenCount) {
    const int digits = std::max<int>(4, int(fmt::format("{}", screenCount).size()));
    return fmt::format("screen_{:0{}}.png", screen, digits);
}

}  // namespace vess
