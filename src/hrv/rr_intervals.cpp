#include "hrv/rr_intervals.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "hrv/texts.h"
#include "recording/event_time.h"
#include "recording/workspace.h"

namespace vess::hrv {

std::vector<double> BeatTimesMs(const EventTable& events, double intervalUs) {
    std::vector<double> t;
    t.reserve(events.Records().size());
    for (const EventRecord& r : events.Records())
        if (InSourceGroup(r, 0)) t.push_back(ExactEventTimeMs(r, intervalUs));
    return t;
}

std::vector<double> WorkspaceBeatTimesMs(const Workspace& ws) {
    return BeatTimesMs(ws.events, ws.recording ? ws.recording->IntervalUs() : 0.0);
}

bool InTimeOrder(const EventTable& events) {
    const auto& r = events.Records();
    return std::is_sorted(r.begin(), r.end(),
                          [](const EventRecord& a, const EventRecord& b) { return a.time < b.time; });
}

CommandResult EnsureTimeOrder(Workspace& ws, Dialogs& dialogs) {
    if (InTimeOrder(ws.events)) return CommandResult::Ok();
    if (!dialogs.AskYesNo(std::string(texts::kSortEventsCaption), std::string(texts::kSortEventsText)))
        return CommandResult::Cancelled();
    ws.history.Checkpoint(ws.events, "Sort events by time");
    ws.events.Sort(EventField::Time);
    return CommandResult::Ok();
}

std::vector<double> Differences(std::span<const double> values) {
    std::vector<double> d;
    for (std::size_t i = 1; i < values.size(); ++i) d.push_back(values[i] - values[i - 1]);
    return d;
}

std::vector<double> BeatsFromIntervals(std::span<const double> rrMs) {
    std::vector<double> beats{0.0};
    for (double rr : rrMs) beats.push_back(beats.back() + rr);
    return beats;
}

std::vector<double> BoundedRR::DeltaMs() const {
    std::vector<double> d;
    d.reserve(pairs.size());
    for (const auto& [first, second] : pairs) d.push_back(second - first);
    return d;
}

BoundedRR SelectIntervals(std::span<const double> beatTimesMs, double lowerMs, double upperMs) {
    BoundedRR out;
    bool previousKept = false;
    for (std::size_t i = 1; i < beatTimesMs.size(); ++i) {
        const double rr = beatTimesMs[i] - beatTimesMs[i - 1];
        const bool measured = std::isfinite(rr);
        const bool kept = measured && !(rr > upperMs || rr < lowerMs);
        if (!measured) ++out.notMeasured;
        else if (!kept) ++out.outsideBounds;
        if (kept && previousKept) out.pairs.emplace_back(out.rrMs.back(), rr);
        if (kept) {
            out.rrMs.push_back(rr);
            out.endMs.push_back(beatTimesMs[i]);
            out.beatNumber.push_back(int(i));
        }
        previousKept = kept;
    }
    return out;
}

BoundedRR AllIntervals(std::span<const double> beatTimesMs) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    return SelectIntervals(beatTimesMs, -inf, inf);
}

}  // namespace vess::hrv

namespace vess::hrv {

std::vector<double> ReadNumberList(std::string_view text) {
    std::vector<double> out;
    std::size_t i = 0;
    const auto separator = [](char c) {
        return c == ' ' || c == '\t' || c == ',' || c == ';' || c == '\r' || c == '\n';
    };
    while (i < text.size()) {
        while (i < text.size() && separator(text[i])) ++i;
        std::size_t j = i;
        while (j < text.size() && !separator(text[j])) ++j;
        double v = 0;
        const auto [end, ec] = std::from_chars(text.data() + i, text.data() + j, v);
        if (j > i && ec == std::errc() && end == text.data() + j && std::isfinite(v)) out.push_back(v);
        i = j;
    }
    return out;
}

}  // namespace vess::hrv
