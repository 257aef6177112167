#include "detection/analyze_window.h"

#include <algorithm>
#include <optional>

#include "detection/complex_peak.h"
#include "detection/detector.h"
#include "detection/texts.h"

namespace vess {
namespace {

// Appends the event unless the last stored record has exactly its peak time
// (analysing a screen twice does not repeat its last event). Only the last
// record is compared, so earlier events of a screen analysed again are
// appended again.
bool Store(const Detector& det, const MeasuredEvent& e, EventTable& events,
           AnalyzeWindowResult& result) {
    const float time = det.Scr().CalculateTime(e.peak);
    if (!events.Empty() && events.Last().time == time) return false;
    events.Append(det.MakeRecord(e));
    ++result.eventsAdded;
    AddMarks(det.Scr(), e, result.marks);
    return true;
}

// The peak (a window index of this screen) of the last stored event when the
// analysis of an earlier screen stored it. An event found near the end of a
// screen lies again at the start of the next one, and nothing at or before
// it may be taken there a second time. An event stored by analysing this
// same screen is no floor: analysing a screen again measures it afresh.
std::optional<int64_t> CarriedFloor(const Screen& screen, const EventTable& events) {
    if (events.Empty()) return std::nullopt;
    const EventRecord& last = events.Last();
    if (last.channel != screen.Rec().Channel()) return std::nullopt;
    const int64_t foundOnScreenStart = int64_t(last.sampleIndex) - last.relativeTime;
    if (foundOnScreenStart >= screen.AbsoluteIndex(0)) return std::nullopt;
    return int64_t(last.sampleIndex) - screen.AbsoluteIndex(0);
}

}  // namespace

void AddMarks(const Screen& screen, const MeasuredEvent& e, std::vector<DetectionMark>& marks) {
    using K = DetectionMark::Kind;
    marks.push_back({K::Peak, e.peak, e.value});
    marks.push_back({K::BaselineMiddle, e.baselineMiddle, e.baseline});
    marks.push_back({K::Start, e.start, screen.GetSampleValue(e.start)});
    marks.push_back({K::Decay, e.decay, e.decayLevel});
}

uint32_t MarkColour(DetectionMark::Kind kind) {
    switch (kind) {
        case DetectionMark::Kind::Peak: return 255;               // red
        case DetectionMark::Kind::BaselineMiddle: return 65280;   // green
        case DetectionMark::Kind::Start: return 65535;            // yellow
        case DetectionMark::Kind::Decay: return 16711935;         // magenta
    }
    return 0;
}

AnalyzeWindowResult AnalyzeWindow(const Screen& screen, const AnalysisParameters& params,
                                  EventTable& events) {
    AnalyzeWindowResult result;
    if (!screen.Valid()) return result;
    const Outcome<DetectionLengths> lengths = CheckedPeriods(params, screen.Rec().IntervalUs());
    if (!lengths) {
        result.status = lengths.status();
        return result;
    }
    Detector det(screen, params, *lengths);
    const int32_t searchLen = lengths->searchLen;
    const int64_t windowLen = screen.WindowLen();
    // On the file's first screen the search starts late enough for the first
    // baseline window to lie inside the data.
    int64_t pos = screen.StartBlock() == 0 ? int64_t(lengths->baseOffset) + searchLen : 0;
    if (const std::optional<int64_t> floor = CarriedFloor(screen, events)) {
        det.SetCarriedFloor(*floor);
        // Complex peaks: the next search range begins one range after the last
        // stored peak, on this screen as on the one that stored it.
        if (params.ComplexPeak) pos = std::max(pos, *floor + searchLen);
    }
    // Ranges that begin after the last point that can be a peak hold no data.
    while (pos <= windowLen && pos <= det.LastPeakIndex()) {
        const PeakPoint candidate = det.FindMax(pos, searchLen);
        // Fails only for a one-point range whose single point is its own start.
        if (candidate.index != pos || candidate.index != pos + searchLen - 1) {
            const std::optional<MeasuredEvent> e = det.Measure(candidate);
            // A candidate that the measuring loop moved back onto a stored
            // peak, or before it, is that event again.
            if (e && e->peak > det.Floor() && Store(det, *e, events, result)) {
                det.SetFloor(e->peak);
                if (params.ComplexPeak) {
                    int64_t last = e->peak;
                    while (last < windowLen) {
                        const std::optional<MeasuredEvent> next = FindComplexPeak(det, last);
                        if (!next || !Store(det, *next, events, result)) break;
                        last = next->peak;
                        det.SetFloor(last);
                    }
                    pos = last;
                }
            }
        }
        pos += searchLen;
    }
    return result;
}

}  // namespace vess
