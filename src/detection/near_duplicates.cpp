#include "detection/near_duplicates.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <vector>

#include "detection/method_texts.h"

namespace vess {

EditResult RemoveNearDuplicates(Workspace& ws, double separationMs) {
    EditResult result;
    const int32_t n = ws.events.Count();
    if (n < 2 || !(separationMs > 0)) return result;
    std::vector<int32_t> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 1);
    std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
        return ws.events[a].time < ws.events[b].time;
    });
    std::vector<bool> drop(std::size_t(n) + 1, false);
    // The last kept event of each channel, compared with the next in time.
    std::vector<int32_t> kept(256, 0);
    for (const int32_t i : order) {
        const EventRecord& e = ws.events[i];
        int32_t& k = kept[e.channel];
        if (k != 0 && double(e.time) - double(ws.events[k].time) < separationMs) {
            if (std::abs(e.amplitude) > std::abs(ws.events[k].amplitude)) {
                drop[std::size_t(k)] = true;
                k = i;
            } else {
                drop[std::size_t(i)] = true;
            }
        } else {
            k = i;
        }
    }
    result.deleted = int32_t(std::count(drop.begin(), drop.end(), true));
    if (result.deleted == 0) return result;
    ws.history.Checkpoint(ws.events, method_texts::kNearDuplicatesLabel);
    for (int32_t i = n; i >= 1; --i)
        if (drop[std::size_t(i)]) ws.events.Delete(i);
    result.changed = true;
    KeepSelectionValid(ws);
    return result;
}

EditResult RemoveNearDuplicatesCommand(Workspace& ws, Dialogs& dialogs) {
    const std::optional<std::string> answer = dialogs.Input(
        method_texts::kNearDuplicatesCaption, method_texts::kNearDuplicatesPrompt, "2");
    if (!answer || answer->empty()) return {};
    double ms = 0;
    const auto [end, ec] = std::from_chars(answer->data(), answer->data() + answer->size(), ms);
    if (ec != std::errc() || end != answer->data() + answer->size() || !(ms > 0)) return {};
    return RemoveNearDuplicates(ws, ms);
}

}  // namespace vess
