#include "detection/event_summary.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vess {

double MedianOfFinite(std::vector<double> values) {
    std::erase_if(values, [](double v) { return !std::isfinite(v); });
    if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
    const std::size_t n = values.size();
    const auto mid = values.begin() + std::ptrdiff_t(n / 2);
    std::nth_element(values.begin(), mid, values.end());
    if (n % 2) return *mid;
    const double upper = *mid;
    const double lower = *std::max_element(values.begin(), mid);
    return (lower + upper) / 2;
}

EventSummary SummariseEvents(const Recording& rec, const EventTable& events) {
    EventSummary s;
    s.durationS = double(rec.PointsPerChannel()) * rec.IntervalUs() / 1e6;
    s.events = events.Count();
    s.frequencyHz = s.durationS > 0 ? s.events / s.durationS : 0.0;
    std::vector<double> amplitudes, rises, halfWidths, decays;
    for (const EventRecord& e : events.Records()) {
        amplitudes.push_back(rec.Bit2pA2(e.amplitude));
        rises.push_back(e.rise1090);
        halfWidths.push_back(e.halfWidth);
        decays.push_back(rec.Bit2msec(e.decayTime));
    }
    s.medianAmplitude = MedianOfFinite(std::move(amplitudes));
    s.medianRise1090Ms = MedianOfFinite(std::move(rises));
    s.medianHalfWidthMs = MedianOfFinite(std::move(halfWidths));
    s.medianDecayMs = MedianOfFinite(std::move(decays));
    return s;
}

}  // namespace vess
