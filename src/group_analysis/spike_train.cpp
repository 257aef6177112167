#include "group_analysis/spike_train.h"

#include <algorithm>

namespace vess::group {

namespace {

struct Found {
    std::size_t onset, peak, end;  // end: where the trace came back (or the last sample)
};

// Upstrokes where dV/dt reaches the threshold rate, kept as spikes when
// they climb minHeight above their onset level; the search for the next one
// resumes once the trace is back below onset level + hysteresis.
std::vector<Found> FindSpikes(std::span<const double> y, std::span<const double> dvdt,
                              const SpikeTrainSettings& s) {
    std::vector<Found> out;
    const std::size_t last = y.size() - 1;
    std::size_t i = 0;
    while (i <= last) {
        while (i <= last && dvdt[i] < s.shape.thresholdRate) ++i;
        if (i > last) break;
        const std::size_t onset = i;
        const double base = y[onset];
        bool tall = false, back = false;
        std::size_t k = onset;
        for (; k <= last; ++k) {
            if (y[k] >= base + s.minHeight) tall = true;
            if (!tall && dvdt[k] < 0) break;           // an upstroke that stalled
            if (tall && dvdt[k] < 0 && y[k] < base + s.hysteresis) { back = true; break; }
        }
        const std::size_t end = std::min(k, last);
        if (tall) out.push_back({onset, ArgMax(y, onset, end), end});
        i = (back || !tall) ? end + 1 : last + 1;
    }
    return out;
}

}  // namespace

SpikeTrain MeasureSpikeTrain(const SampledTrace& trace, const SpikeTrainSettings& settings) {
    SpikeTrain train;
    if (trace.Size() < 3) return train;
    const std::span<const double> y(trace.y);
    const auto dvdt = Derivative(y, trace.intervalMs);
    const auto d2 = Derivative(dvdt, trace.intervalMs);
    const auto found = FindSpikes(y, dvdt, settings);
    const auto window = std::size_t(std::ceil(1.0 / trace.intervalMs));  // 1 ms before onset
    for (std::size_t k = 0; k < found.size(); ++k) {
        const std::size_t from = k == 0 ? 0 : found[k - 1].end;
        const std::size_t to = k + 1 < found.size() ? found[k + 1].onset - 1 : trace.Size() - 1;
        TrainSpike spike;
        spike.shape = MeasureSpikeAt(trace, dvdt, settings.shape, from, found[k].peak, to);
        const std::size_t fastest = ArgMax(dvdt, found[k].onset, found[k].peak);
        const std::size_t start = std::max(from, found[k].onset > window ? found[k].onset - window : 0);
        const std::size_t curve = ArgMax(d2, start, fastest);
        spike.phaseThreshold = y[curve];
        spike.phaseThresholdTime = trace.TimeAt(double(curve));
        if (k > 0) spike.interval = spike.shape.thresholdTime - train.spikes.back().shape.thresholdTime;
        train.spikes.push_back(spike);
    }
    if (train.spikes.empty()) return train;
    const auto& first = train.spikes.front().shape;
    train.latency = first.thresholdTime - trace.startMs;
    const std::size_t n = train.spikes.size();
    if (n >= 2) {
        const double span = train.spikes.back().shape.thresholdTime - first.thresholdTime;
        train.frequency = double(n - 1) / span * 1000.0;
        train.meanInterval = span / double(n - 1);
    }
    if (n >= 3) {
        double sum = 0;
        for (std::size_t k = 2; k < n; ++k) {
            const double a = train.spikes[k - 1].interval, b = train.spikes[k].interval;
            sum += (b - a) / (b + a);
        }
        train.adaptation = sum / double(n - 2);
    }
    return train;
}

std::vector<std::vector<double>> SpikeTrainRows(const SpikeTrain& train) {
    std::vector<std::vector<double>> rows;
    const double n = double(train.spikes.size());
    for (std::size_t k = 0; k < train.spikes.size(); ++k) {
        const TrainSpike& s = train.spikes[k];
        std::vector<double> row{double(k + 1)};
        for (double v : SpikeShapeValues(s.shape)) row.push_back(v);
        for (double v : {s.phaseThreshold, s.interval}) row.push_back(v);
        for (int c = 0; c < 5; ++c) row.push_back(kNotMeasured);
        rows.push_back(std::move(row));
    }
    std::vector<double> summary(19, kNotMeasured);
    summary[0] = 0;
    for (double v : {n, train.frequency, train.latency, train.meanInterval, train.adaptation})
        summary.push_back(v);
    rows.push_back(std::move(summary));
    return rows;
}

PlotData PhasePlanePlot(const SampledTrace& trace, const SpikeTrain& train, const std::string& units) {
    PlotData plot{.title = "Phase Plane", .xAxis = "V (" + units + ")", .yAxis = "dV/dt (" + units + "/ms)", .series = {}};
    const auto dvdt = Derivative(trace.y, trace.intervalMs);
    // Points, not lines: the graph windows draw lines in x order, and the
    // trajectory goes back and forth in V.
    PlotSeries path{.kind = SeriesKind::Scatter, .x = trace.y, .y = dvdt, .legend = "dV/dt"};
    path.pointSize = 2;
    plot.series.push_back(std::move(path));
    PlotSeries rate = Markers("Threshold (dV/dt)", {}, {}, {0, 150, 0});
    PlotSeries curve = Markers("Threshold (max d2V/dt2)", {}, {}, {200, 100, 0});
    const SampledTrace slope{trace.startMs, trace.intervalMs, dvdt};
    for (const TrainSpike& s : train.spikes) {
        if (Measured(s.shape.threshold)) {
            rate.x.push_back(s.shape.threshold);
            rate.y.push_back(slope.ValueAt(s.shape.thresholdIndex));
        }
        curve.x.push_back(s.phaseThreshold);
        curve.y.push_back(slope.ValueAt((s.phaseThresholdTime - trace.startMs) / trace.intervalMs));
    }
    plot.series.push_back(std::move(rate));
    plot.series.push_back(std::move(curve));
    return plot;
}

std::vector<PlotSeries> SpikeTrainMarkers(const SpikeTrain& train) {
    std::vector<PlotSeries> out;
    for (const TrainSpike& s : train.spikes)
        for (PlotSeries& m : SpikeMarkers(s.shape)) {
            auto same = std::find_if(out.begin(), out.end(), [&](const PlotSeries& o) {
                return o.legend == m.legend && o.kind == SeriesKind::Scatter;
            });
            if (same != out.end() && m.kind == SeriesKind::Scatter) {
                same->x.insert(same->x.end(), m.x.begin(), m.x.end());
                same->y.insert(same->y.end(), m.y.begin(), m.y.end());
            } else {
                out.push_back(std::move(m));
            }
        }
    return out;
}

}  // namespace vess::group
