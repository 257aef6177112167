#include "detection/method_commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "detection/ordered_work.h"
#include "detection/texts.h"

namespace vess {
namespace {

// Threads that compute the criterion of a whole file (a few: beyond them the
// reading and the measuring on the calling thread set the pace).
constexpr int kDetectionWorkers = 4;

std::string NoiseKey(const Workspace& ws, const char* what) {
    const Recording& rec = *ws.recording;
    const MethodParameters& m = ws.settings.method;
    return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}|{}", what, rec.Path().string(), int(rec.Channel()),
                       rec.PointsPerChannel(), m.riseTauMs, m.decayTauMs, m.lowPassMs,
                       NormalizedDirection(ws.params().PeakDirection), rec.IntervalUs());
}

// Measures the detections on a screen and stores them. detections are point
// indices; the last may lie after the screen and only bounds the one before.
void StoreDetections(const Detector& det, const MethodRun& run, const std::vector<int64_t>& points,
                     int64_t screenEndPoint, EventTable& events, AnalyzeWindowResult& result) {
    const Screen& screen = det.Scr();
    for (std::size_t k = 0; k < points.size(); ++k) {
        if (points[k] >= screenEndPoint) break;
        const int64_t onset = points[k] - screen.AbsoluteIndex(0);
        const int64_t limit = run.Limit(
            onset, k + 1 < points.size() ? std::optional<int64_t>(points[k + 1] - screen.AbsoluteIndex(0))
                                         : std::nullopt);
        const std::optional<MeasuredEvent> e = MeasureDetection(det, run, onset, limit);
        if (!e) continue;
        const float time = screen.CalculateTime(e->peak);
        if (!events.Empty() && events.Last().time == time) continue;
        events.Append(det.MakeRecord(*e));
        ++result.eventsAdded;
        AddMarks(screen, *e, result.marks);
    }
}

}  // namespace

bool UsesFilteringMethod(const Workspace& ws) {
    return ws.settings.method.method != DetectionMethod::Threshold;
}

MethodRun MethodRunFor(Workspace& ws) {
    const Recording& rec = *ws.recording;
    const int dir = NormalizedDirection(ws.params().PeakDirection);
    const MethodParameters& m = ws.settings.method;
    if (m.method == DetectionMethod::Template) return PrepareMethodRun(m, rec, dir);
    const std::string centreKey = NoiseKey(ws, "centre"), sdKey = NoiseKey(ws, "sd");
    const std::string traceKey = NoiseKey(ws, "trace sd"), leaveKey = NoiseKey(ws, "left out above");
    auto c = ws.measuredOnce.find(centreKey), s = ws.measuredOnce.find(sdKey);
    auto t = ws.measuredOnce.find(traceKey), l = ws.measuredOnce.find(leaveKey);
    const auto end = ws.measuredOnce.end();
    if (c != end && s != end && t != end && l != end) {
        MethodRun run(m, rec.IntervalUs(), dir, {c->second, s->second});
        run.traceNoiseSd = t->second;
        run.filter.LeaveOutAbove(l->second);
        return run;
    }
    MethodRun run = PrepareMethodRun(m, rec, dir);
    ws.measuredOnce[centreKey] = run.noise.centre;
    ws.measuredOnce[sdKey] = run.noise.sd;
    ws.measuredOnce[traceKey] = run.traceNoiseSd;
    ws.measuredOnce[leaveKey] = run.filter.LeftOutAbove();
    return run;
}

bool CarryNoiseLevels(const Workspace& from, Workspace& to) {
    bool carried = false;
    for (const char* what : {"centre", "sd", "trace sd", "left out above"}) {
        const auto found = from.measuredOnce.find(NoiseKey(from, what));
        if (found == from.measuredOnce.end()) continue;
        to.measuredOnce[NoiseKey(to, what)] = found->second;
        carried = true;
    }
    return carried;
}

AnalyzeWindowResult AnalyzeWindowByMethod(const Screen& screen, const AnalysisParameters& params,
                                          const MethodRun& run, EventTable& events) {
    AnalyzeWindowResult result;
    if (!screen.Valid()) return result;
    const auto lengths = CheckedPeriods(params, screen.Rec().IntervalUs());
    if (!lengths) {
        result.status = lengths.status();
        return result;
    }
    const Detector det(screen, params, *lengths);
    const int64_t first = screen.AbsoluteIndex(0);
    const std::vector<int64_t> points = FindDetections(run, screen.Rec(), first, screen.WindowLen());
    StoreDetections(det, run, points, first + screen.WindowLen(), events, result);
    return result;
}

WholeFileResult DetectWholeFileByMethod(Workspace& ws, const ProgressCallback& progress) {
    WholeFileResult result;
    if (!ws.recording) return result;
    const Recording& rec = *ws.recording;
    const auto lengths = CheckedPeriods(ws);
    if (!lengths) {
        result.status = lengths.status();
        return result;
    }
    const MethodRun run = MethodRunFor(ws);
    const int32_t bps = ws.BlocksPerScreen();
    const int64_t windowLen = int64_t(bps) * kBlockPoints;
    const int64_t total = int64_t(rec.BlockCount()) * kBlockPoints;
    const int64_t screensTotal = (total + windowLen - 1) / windowLen;
    // Stretches of whole screens, about a million points each.
    const int64_t screensPerStretch = std::max<int64_t>(1, (int64_t(1) << 20) / windowLen);
    const int32_t before = ws.events.Count();
    AnalyzeWindowResult added;
    // The criterion of each stretch is computed on workers, each with a
    // filter of its own; the events are measured here in file order.
    const int workers = UsableWorkers(kDetectionWorkers);
    std::vector<MethodRun> copies(std::size_t(workers - 1), run);
    const auto stretchFirst = [&](int64_t i) { return i * screensPerStretch * windowLen; };
    const auto stretchCount = [&](int64_t i) {
        return std::min(screensPerStretch, screensTotal - i * screensPerStretch) * windowLen;
    };
    const auto detect = [&](int worker, int64_t i) {
        const MethodRun& mine = worker == 0 ? run : copies[std::size_t(worker - 1)];
        return FindDetections(mine, rec, stretchFirst(i), stretchCount(i));
    };
    const auto measure = [&](int64_t i, const std::vector<int64_t>& points) {
        const int64_t s = i * screensPerStretch, first = stretchFirst(i), count = stretchCount(i);
        // Each detection is measured on the screen that holds it.
        std::size_t k = 0;
        while (k < points.size() && points[k] < first + count) {
            const int64_t screenIndex = points[k] / windowLen;
            std::vector<int64_t> onScreen;
            std::size_t j = k;
            while (j < points.size() && points[j] < (screenIndex + 1) * windowLen) onScreen.push_back(points[j++]);
            if (j < points.size()) onScreen.push_back(points[j]);
            const Screen screen(rec, int32_t(screenIndex * bps), bps);
            const Detector det(screen, ws.params(), *lengths);
            StoreDetections(det, run, onScreen, (screenIndex + 1) * windowLen, ws.events, added);
            // A whole-file run shows no marks: kept, they grew with the events.
            added.marks.clear();
            k = j;
        }
        ws.analysedBlocks.Add(int32_t(s * bps), int32_t(count / kBlockPoints));
        if (!progress) return true;
        NonStopAnalysis::Progress p;
        p.screensDone = std::min(s + screensPerStretch, screensTotal) - 1;
        p.screensTotal = screensTotal - 1;
        p.eventsFound = ws.events.Count() - before;
        return progress(p);
    };
    const int64_t stretches = (screensTotal + screensPerStretch - 1) / screensPerStretch;
    ComputeInOrder(stretches, workers, 2 * int64_t(workers), detect, measure);
    ws.screenStartBlock = int32_t((screensTotal - 1) * bps);
    if (ws.events.Count() > before) {
        EventTable old = ws.events;
        old.Truncate(before);
        ws.history.Checkpoint(old, "Non-stop analysis");
    }
    result.screens = screensTotal;
    result.eventsAdded = ws.events.Count() - before;
    return result;
}

Outcome<PointCommandResult> DetectAtPointByMethod(Workspace& ws, int64_t windowIndex, bool tenthThresholds) {
    if (!ws.recording) return CommandResult::Cancelled();
    const auto lengths = CheckedPeriods(ws);
    if (!lengths) return lengths.status();
    MethodRun run = MethodRunFor(ws);
    if (tenthThresholds) run.threshold /= 10;
    const Screen screen = ShownScreen(ws);
    const Detector det(screen, ws.params(), *lengths);
    const int64_t from = screen.AbsoluteIndex(windowIndex - lengths->searchLen / 2);
    const std::vector<int64_t> points = FindDetections(run, *ws.recording, from, lengths->searchLen);
    const int64_t click = screen.AbsoluteIndex(windowIndex);
    std::optional<std::size_t> nearest;
    for (std::size_t k = 0; k < points.size(); ++k) {
        if (points[k] >= from + lengths->searchLen) break;
        if (!nearest || std::abs(points[k] - click) < std::abs(points[*nearest] - click)) nearest = k;
    }
    std::optional<MeasuredEvent> e;
    if (nearest) {
        const int64_t onset = points[*nearest] - screen.AbsoluteIndex(0);
        const int64_t limit = run.Limit(
            onset, *nearest + 1 < points.size()
                       ? std::optional<int64_t>(points[*nearest + 1] - screen.AbsoluteIndex(0))
                       : std::nullopt);
        e = MeasureDetection(det, run, onset, limit);
    }
    return StoreClickedEvent(ws, screen, det, e);
}

}  // namespace vess
