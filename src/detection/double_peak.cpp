#include "detection/double_peak.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>

#include "detection/complex_peak.h"
#include "detection/texts.h"
#include "recording/rounding.h"

namespace vess {
namespace {

// The second peak must rise from the trough by this fraction of the event's
// amplitude (and by the amplitude threshold).
constexpr double kSecondPeakRiseFraction = 0.05;

// Moves a peak found on three-point means to the extreme smoothed value next
// to it (the value detection itself uses), not beyond limit.
PeakPoint Climb(const Detector& det, int64_t i, int64_t limit, int step) {
    const int16_t dir = det.Direction();
    PeakPoint p{i, det.GetAverageValue(i)};
    while ((limit - (p.index + step)) * step >= 0) {
        const int16_t next = det.GetAverageValue(p.index + step);
        if (dir * next <= dir * p.value) break;
        p = {p.index + step, next};
    }
    return p;
}

std::optional<MeasuredEvent> SecondPeakOnSide(const Detector& det, const MeasuredEvent& first,
                                              bool later) {
    const Screen& s = det.Scr();
    const int16_t dir = det.Direction();
    const int step = later ? 1 : -1;
    const int64_t far = later ? first.decay : first.start;
    const Bump bump = MostDistinctBump(s, dir, first.peak + step, far, step);
    if (bump.riseCounts <= 0) return std::nullopt;
    if (bump.riseCounts < kSecondPeakRiseFraction * first.amplitudeCounts) return std::nullopt;
    if (!det.ReachesThreshold(bump.riseCounts)) return std::nullopt;
    // A later peak may climb on past the end of the stretch (the decay walk
    // stopped on its rise); an earlier one stays between the start and the
    // event's peak.
    const int64_t limit =
        later ? std::min(first.peak + det.Lengths().decayLen, det.LastPeakIndex()) : first.peak - 1;
    const PeakPoint p = Climb(det, bump.peak, limit, step);
    if (!det.PassesAmplitudeTests(p.value, first.baseline)) return std::nullopt;

    MeasuredEvent e;
    e.peak = p.index;
    e.value = p.value;
    e.baseline = first.baseline;
    e.amplitudeCounts = std::abs(int32_t(p.value) - int32_t(first.baseline));
    e.amplitudeUnits = det.AmplitudeUnits(e.amplitudeCounts);
    e.baselineMiddle = first.baselineMiddle;
    if (later)
        det.WalkExtent(e, bump.trough);
    else
        det.WalkExtent(e, std::numeric_limits<int64_t>::min(), bump.trough);
    return e;
}

// Row (1-based) of a record other than exclude whose peak lies in lo .. hi
// (sample indices from the start of the file); 0 when none.
int32_t RowNear(const EventTable& events, int64_t lo, int64_t hi, int32_t exclude) {
    for (int32_t i = 1; i <= events.Count(); ++i)
        if (i != exclude && events[i].sampleIndex >= lo && events[i].sampleIndex <= hi) return i;
    return 0;
}

// The stretch around a second peak inside which a stored record is taken to
// be that peak: from its start to as far after it.
struct Span {
    int64_t lo, hi;
};
Span SecondPeakSpan(const Screen& s, const MeasuredEvent& e) {
    const int64_t rise = std::max<int64_t>(e.peak - e.start, 1);
    return {s.AbsoluteIndex(e.peak - rise), s.AbsoluteIndex(e.peak + rise)};
}

void Insert(EventTable& events, int32_t row, const EventRecord& r) {
    std::vector<EventRecord> records = events.Records();
    records.insert(records.begin() + (row - 1), r);
    events.Assign(std::move(records));
}

CommandResult NoSecondPeak() {
    return CommandResult::Failed(detection_texts::kNoDoublePeakCaption, detection_texts::kNoDoublePeakText);
}

// Stores the second peak of the event at row firstRow next to it (after it,
// or before it when it is the earlier one), unless the table already holds
// it. Returns the row of the second peak and updates firstRow.
int32_t StoreSecond(EventTable& events, const Detector& det, const MeasuredEvent& second,
                    int32_t& firstRow, bool& alreadyStored) {
    const Span span = SecondPeakSpan(det.Scr(), second);
    if (const int32_t row = RowNear(events, span.lo, span.hi, firstRow)) {
        alreadyStored = true;
        return row;
    }
    const bool later = det.Scr().AbsoluteIndex(second.peak) > events[firstRow].sampleIndex;
    const int32_t row = later ? firstRow + 1 : firstRow;
    Insert(events, row, det.MakeRecord(second));
    if (!later) ++firstRow;
    return row;
}

}  // namespace

std::optional<MeasuredEvent> FindSecondPeak(const Detector& det, const MeasuredEvent& first) {
    if (auto e = SecondPeakOnSide(det, first, /*later=*/true)) return e;
    return SecondPeakOnSide(det, first, /*later=*/false);
}

std::optional<MeasuredEvent> StoredEvent(const Detector& det, const EventRecord& r) {
    const Screen& s = det.Scr();
    const int64_t peak = int64_t(r.sampleIndex) - s.AbsoluteIndex(0);
    if (peak < 0 || peak >= s.WindowLen()) return std::nullopt;
    MeasuredEvent e;
    e.peak = peak;
    e.baseline = r.baseline;
    e.amplitudeCounts = r.amplitude;
    e.value = Clamp16(int64_t(r.baseline) + int64_t(det.Direction()) * r.amplitude);
    e.amplitudeUnits = det.AmplitudeUnits(r.amplitude);
    e.baselineMiddle = peak - det.Lengths().baseOffset + RoundEven(det.Lengths().baseLen / 2.0);
    e.start = peak - r.riseTime;
    e.decay = peak + r.decayTime;
    e.decayLevel = RoundClamp16(Mean3(s, e.decay));
    return e;
}

Outcome<DoublePeakResult> AnalyzeDoublePeak(Workspace& ws, int32_t eventIndex) {
    DoublePeakResult result;
    if (!ws.recording) return CommandResult::Cancelled();
    if (!ws.events.HasRow(eventIndex))
        return CommandResult::Failed(detection_texts::kNoEventSelectedCaption, detection_texts::kNoEventSelectedText);
    const auto len = CheckedPeriods(ws);
    if (!len) return len.status();
    const Screen screen = ShownScreen(ws);
    const Detector det(screen, ws.params(), *len);
    const std::optional<MeasuredEvent> first = StoredEvent(det, ws.events[eventIndex]);
    if (!first)
        return CommandResult::Failed(detection_texts::kEventOffScreenCaption, detection_texts::kEventOffScreenText);
    result.firstIndex = eventIndex;
    const std::optional<MeasuredEvent> second = FindSecondPeak(det, *first);
    if (!second) return NoSecondPeak();
    const EventTable before = ws.events;
    result.eventIndex = StoreSecond(ws.events, det, *second, result.firstIndex, result.alreadyStored);
    if (!result.alreadyStored) {
        ws.history.Checkpoint(before, kUndoDoublePeak);
        AddMarks(screen, *second, result.marks);
    }
    return result;
}

Outcome<DoublePeakResult> DetectDoublePeakAtPoint(Workspace& ws, int64_t windowIndex) {
    DoublePeakResult result;
    if (!ws.recording) return CommandResult::Cancelled();
    const auto len = CheckedPeriods(ws);
    if (!len) return len.status();
    const Screen screen = ShownScreen(ws);
    const Detector det(screen, ws.params(), *len);
    const std::optional<MeasuredEvent> first =
        det.Measure(det.FindMax(windowIndex - len->searchLen / 2, len->searchLen));
    if (!first) return CommandResult::Failed(detection_texts::kNoEventFoundCaption, detection_texts::kNoEventFoundText);
    const std::optional<MeasuredEvent> second = FindSecondPeak(det, *first);
    if (!second) return NoSecondPeak();
    const EventTable before = ws.events;
    const int64_t firstSample = screen.AbsoluteIndex(first->peak);
    result.firstIndex = RowNear(ws.events, firstSample, firstSample, 0);
    if (result.firstIndex == 0) {
        ws.events.Append(det.MakeRecord(*first));
        result.firstIndex = ws.events.Count();
        AddMarks(screen, *first, result.marks);
    }
    result.eventIndex = StoreSecond(ws.events, det, *second, result.firstIndex, result.alreadyStored);
    if (!result.alreadyStored) AddMarks(screen, *second, result.marks);
    if (!(ws.events == before)) ws.history.Checkpoint(before, kUndoDoublePeak);
    return result;
}

Outcome<DoublePeakScanResult> ScanDoublePeaks(Workspace& ws, Dialogs& dialogs) {
    DoublePeakScanResult result;
    if (!ws.recording) return CommandResult::Cancelled();
    const auto len = CheckedPeriods(ws);
    if (!len) return len.status();
    const int32_t bps = ws.BlocksPerScreen();
    // Screens are built once each; events come in any order.
    std::map<int32_t, Screen> screens;
    auto screenOf = [&](int64_t sampleIndex) -> const Screen& {
        const int32_t block = int32_t(sampleIndex / kBlockPoints / bps * bps);
        auto it = screens.find(block);
        if (it == screens.end()) it = screens.emplace(block, Screen(*ws.recording, block, bps)).first;
        return it->second;
    };
    const EventTable before = ws.events;
    EventTable out;  // the table with the second peaks in place
    for (int32_t i = 1; i <= before.Count(); ++i) {
        const EventRecord& r = before[i];
        if (r.group == kGroupRejected || r.sampleIndex < 0) {
            out.Append(r);
            continue;
        }
        ++result.eventsScanned;
        const Detector det(screenOf(r.sampleIndex), ws.params(), *len);
        const std::optional<MeasuredEvent> first = StoredEvent(det, r);
        std::optional<MeasuredEvent> second;
        if (first) second = FindSecondPeak(det, *first);
        if (!second) {
            out.Append(r);
            continue;
        }
        const Span span = SecondPeakSpan(det.Scr(), *second);
        // Already in the table (as read before the scan) or added for an
        // earlier event of this scan.
        if (RowNear(before, span.lo, span.hi, i) != 0 || RowNear(out, span.lo, span.hi, 0) != 0) {
            out.Append(r);
            continue;
        }
        const bool later = det.Scr().AbsoluteIndex(second->peak) > r.sampleIndex;
        if (!later) out.Append(det.MakeRecord(*second));
        out.Append(r);
        if (later) out.Append(det.MakeRecord(*second));
        ++result.peaksAdded;
    }
    if (result.peaksAdded > 0) {
        ws.history.Checkpoint(before, kUndoScanDoublePeak);
        ws.events = std::move(out);
    }
    dialogs.Message(detection_texts::kScanDoublePeakCaption,
                    std::to_string(result.eventsScanned) + detection_texts::kScanMiddle +
                        std::to_string(result.peaksAdded) + ".");
    return result;
}

}  // namespace vess
