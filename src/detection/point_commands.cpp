#include "detection/point_commands.h"

#include <optional>

#include "detection/detector.h"
#include "detection/method_commands.h"
#include "detection/texts.h"

namespace vess {

Outcome<PointCommandResult> DetectAtPoint(Workspace& ws, int64_t windowIndex, bool tenthThresholds) {
    if (!ws.recording) return CommandResult::Cancelled();
    if (UsesFilteringMethod(ws)) return DetectAtPointByMethod(ws, windowIndex, tenthThresholds);
    const auto len = CheckedPeriods(ws);
    if (!len) return len.status();
    AnalysisParameters params = ws.params();
    if (tenthThresholds) {
        params.ThresholdAmplitude /= 10;
        params.AreaThreshold /= 10;
    }
    const Screen screen = ShownScreen(ws);
    const Detector det(screen, params, *len);
    const int64_t from = windowIndex - len->searchLen / 2;
    return StoreClickedEvent(ws, screen, det, det.Measure(det.FindMax(from, len->searchLen)));
}

Outcome<PointCommandResult> StoreClickedEvent(Workspace& ws, const Screen& screen, const Detector& det,
                                              const std::optional<MeasuredEvent>& e) {
    PointCommandResult result;
    if (!e) return CommandResult::Failed(detection_texts::kNoEventFoundCaption, detection_texts::kNoEventFoundText);
    if (!ws.events.Empty() && ws.events.Last().time == screen.CalculateTime(e->peak)) return result;
    ws.history.Checkpoint(ws.events, "Detect event");
    ws.events.Append(det.MakeRecord(*e));
    result.eventIndex = ws.events.Count();
    AddMarks(screen, *e, result.marks);
    return result;
}

Outcome<PointCommandResult> RecalculateEvent(Workspace& ws, int32_t eventIndex) {
    PointCommandResult result;
    if (!ws.recording) return CommandResult::Cancelled();
    if (!ws.events.HasRow(eventIndex))
        return CommandResult::Failed(detection_texts::kNoEventSelectedCaption, detection_texts::kNoEventSelectedText);
    const auto len = CheckedPeriods(ws);
    if (!len) return len.status();
    const Screen screen = ShownScreen(ws);
    const EventRecord old = ws.events[eventIndex];
    const int64_t peak = int64_t(old.sampleIndex) - screen.AbsoluteIndex(0);
    if (peak < 0 || peak >= screen.WindowLen())
        return CommandResult::Failed(detection_texts::kEventOffScreenCaption, detection_texts::kEventOffScreenText);
    const Detector det(screen, ws.params(), *len);
    const std::optional<MeasuredEvent> e = det.Measure({peak, det.GetAverageValue(peak)});
    if (!e) return CommandResult::Failed(detection_texts::kNoEventFoundCaption, detection_texts::kNoEventFoundText);
    EventRecord r = det.MakeRecord(*e);
    r.group = old.group;
    r.burstNumber = old.burstNumber;
    r.burstEventNumber = old.burstEventNumber;
    r.reserved = old.reserved;
    ws.history.Checkpoint(ws.events, "Recalculate event");
    ws.events[eventIndex] = r;
    result.eventIndex = eventIndex;
    AddMarks(screen, *e, result.marks);
    return result;
}

}  // namespace vess
