// The two plots of the displayed trace: its coastline time course and the
// amplitude histogram of the stretch between the cursors.
#include <algorithm>
#include <cmath>

#include "recording/screen.h"
#include "recording/workspace.h"
#include "statistics/binning.h"
#include "statistics/histogram.h"
#include "statistics/prompts.h"
#include "statistics/result_table.h"
#include "statistics/texts.h"

namespace vess {

namespace st = stats_texts;

namespace {

// Window indices first..last of the displayed screen that hold recorded points.
struct Stretch {
    int64_t first = 0;
    int64_t last = -1;
};

Stretch Recorded(const Screen& screen, int64_t first, int64_t last) {
    const int64_t points = screen.Rec().PointsPerChannel();
    first = std::max<int64_t>(first, -screen.StartBlock() * int64_t(kBlockPoints));
    last = std::min<int64_t>(last, points - 1 - screen.AbsoluteIndex(0));
    return {first, last};
}

}  // namespace

double CoastlineLength(std::span<const double> values) {
    double sum = 0;
    for (std::size_t i = 1; i < values.size(); ++i) sum += std::fabs(values[i] - values[i - 1]);
    return sum;
}

HistogramPlot MakeCoastlineTimeCourse(std::span<const double> values, double intervalMs, double binMs,
                                      const std::string& unit, double startMs) {
    HistogramPlot h;
    if (values.size() < 2) return h;
    const auto timeOf = [&](std::size_t i) { return startMs + double(i) * intervalMs; };
    if (!ValidBinSize(binMs) || TooManyBinsFor(timeOf(0), timeOf(values.size() - 2), binMs)) {
        h.tooManyBins = true;
        return h;
    }
    const int64_t lowest = BinIndex(timeOf(0), binMs);
    const int64_t highest = BinIndex(timeOf(values.size() - 2), binMs);
    std::vector<double> lengths(std::size_t(highest - lowest + 1), 0.0);
    for (std::size_t i = 0; i + 1 < values.size(); ++i)
        lengths[std::size_t(BinIndex(timeOf(i), binMs) - lowest)] += std::fabs(values[i + 1] - values[i]);
    PlotSeries s{SeriesKind::Bars, {}, lengths, {}, binMs / 1000.0};
    for (std::size_t k = 0; k < lengths.size(); ++k) s.x.push_back(double(lowest + int64_t(k)) * binMs / 1000.0);
    h.plot.title = std::string(st::kCoastlineTitlePrefix) + std::string(st::kBinSizeTag) + BinSizeText(binMs) + " ms";
    h.plot.xAxis = std::string(st::kTimeSAxis);
    h.plot.yAxis = std::string(st::kCoastlineYAxis) + (unit.empty() ? "" : " (" + unit + ")");
    h.plot.series.push_back(std::move(s));
    return h;
}

Outcome<PlotData> CoastlineCommand(Workspace& ws, Dialogs& dialogs) {
    if (!ws.recording) return CommandResult::Cancelled();
    const Screen screen = ShownScreen(ws);
    const Stretch shown = Recorded(screen, 0, screen.WindowLen() - 1);
    if (shown.last <= shown.first) return CommandResult::Cancelled();
    // Successive differences are offset-free, so the trace is taken in units
    // without the offset.
    std::vector<double> trace;
    for (int64_t i = shown.first; i <= shown.last; ++i)
        trace.push_back(ws.recording->Bit2pA2(screen.GetSampleValue(i)));
    dialogs.Message(std::string(st::kCoastlineCaption),
                    std::string(st::kCoastlineText) + FormatNumber(CoastlineLength(trace), 3, false));
    const auto bin = AskNumber(dialogs, std::string(st::kTimeBinCaption), std::string(st::kTimeBinText),
                               std::string(st::kTimeBinDefault));
    if (!bin || *bin <= 0) return CommandResult::Cancelled();
    HistogramPlot h = MakeCoastlineTimeCourse(trace, ws.recording->IntervalUs() / 1000.0, *bin,
                                              ws.recording->Units(), screen.CalculateTime(shown.first));
    if (h.tooManyBins) return TooManyBins();
    return std::move(h.plot);
}

std::vector<double> NoiseAmplitudes(const Workspace& ws, const NoiseCursors& cursors) {
    std::vector<double> out;
    if (!ws.recording) return out;
    const Screen screen = ShownScreen(ws);
    const Stretch s = Recorded(screen, std::min(cursors.left, cursors.right), std::max(cursors.left, cursors.right));
    const double low = std::min(cursors.level1, cursors.level2);
    const double high = std::max(cursors.level1, cursors.level2);
    for (int64_t i = s.first; i <= s.last; ++i) {
        const double level = ws.recording->Bit2pA(screen.GetSampleValue(i));
        if (level >= low && level <= high) out.push_back(level);
    }
    return out;
}

Outcome<PlotData> NoiseHistogramCommand(Workspace& ws, Dialogs& dialogs, const NoiseCursors& cursors) {
    if (!ws.recording) return CommandResult::Cancelled();
    const std::string series(st::kNoiseSeries);
    const std::string unit = ws.recording->Units();
    const auto size = AskBinSize(dialogs, std::string(st::kNoiseBinTextPrefix) + st::BinSizeText(series, unit));
    if (!size) return CommandResult::Cancelled();
    const std::vector<double> values = NoiseAmplitudes(ws, cursors);
    if (values.empty()) return CommandResult::Cancelled();
    HistogramPlot h = MakeHistogram(HistogramKind::Frequency, values, *size, series, unit);
    if (h.tooManyBins) return TooManyBins();
    return std::move(h.plot);
}

}  // namespace vess
