#include "detection/point_commands.h"

#include <optional>

#include "detection/detector.h"
#include "detection/method_commands.h"
#include "detection/texts.h"

namespace vess {

PointCommandResult DetectAtPoint(Workspace& ws, Dialogs& dialogs, int64_t windowIndex,
                                 bool tenthThresholds) {
    PointCommandResult result;
    if (!ws.recording) return result;
    if (UsesFilteringMethod(ws)) return DetectAtPointByMethod(ws, dialogs, windowIndex, tenthThresholds);
    const auto len = ConvertPeriodsOrWarn(ws, dialogs);
    if (!len) {
        result.improperParameters = true;
        return result;
    }
    AnalysisParameters params = ws.params();
    if (tenthThresholds) {
        params.ThresholdAmplitude /= 10;
        params.AreaThreshold /= 10;
    }
    const Screen screen = ShownScreen(ws);
    const Detector det(screen, params, *len);
    const int64_t from = windowIndex - len->searchLen / 2;
    return StoreClickedEvent(ws, dialogs, screen, det, det.Measure(det.FindMax(from, len->searchLen)));
}

PointCommandResult StoreClickedEvent(Workspace& ws, Dialogs& dialogs, const Screen& screen,
                                     const Detector& det, const std::optional<MeasuredEvent>& e) {
    PointCommandResult result;
    if (!e) {
        dialogs.Message(detection_texts::kNoEventFoundCaption, detection_texts::kNoEventFoundText);
        return result;
    }
    if (!ws.events.Empty() && ws.events.Last().time == screen.CalculateTime(e->peak)) return result;
    ws.history.Checkpoint(ws.events, "Detect event");
    ws.events.Append(det.MakeRecord(*e));
    result.eventIndex = ws.events.Count();
    AddMarks(screen, *e, result.marks);
    return result;
}

PointCommandResult RecalculateEvent(Workspace& ws, Dialogs& dialogs, int32_t eventIndex) {
    PointCommandResult result;
    if (!ws.recording) return result;
    if (!ws.events.HasRow(eventIndex)) {
        dialogs.Message(detection_texts::kNoEventSelectedCaption,
                        detection_texts::kNoEventSelectedText);
        return result;
    }
    const auto len = ConvertPeriodsOrWarn(ws, dialogs);
    if (!len) {
        result.improperParameters = true;
        return result;
    }
    const Screen screen = ShownScreen(ws);
    const EventRecord old = ws.events[eventIndex];
    const int64_t peak = int64_t(old.sampleIndex) - screen.AbsoluteIndex(0);
    if (peak < 0 || peak >= screen.WindowLen()) {
        dialogs.Message(detection_texts::kEventOffScreenCaption, detection_texts::kEventOffScreenText);
        return result;
    }
    const Detector det(screen, ws.params(), *len);
    const std::optional<MeasuredEvent> e = det.Measure({peak, det.GetAverageValue(peak)});
    if (!e) {
        dialogs.Message(detection_texts::kNoEventFoundCaption, detection_texts::kNoEventFoundText);
        return result;
    }
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
