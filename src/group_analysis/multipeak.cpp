#include "group_analysis/multipeak.h"

#include <algorithm>
#include <cmath>

namespace vess::group {

namespace {

// Prominence of the local maximum at p (of direction-weighted values v):
// its height over the higher of the two lowest points that separate it from
// higher ground (or the stretch's ends) on either side.
double Prominence(std::span<const double> v, std::size_t p) {
    double left = v[p], right = v[p];
    for (std::size_t i = p; i-- > 0;) {
        if (v[i] > v[p]) break;
        left = std::min(left, v[i]);
    }
    for (std::size_t i = p + 1; i < v.size(); ++i) {
        if (v[i] > v[p]) break;
        right = std::min(right, v[i]);
    }
    return v[p] - std::max(left, right);
}

}  // namespace

Multipeak FindPeaks(const SampledTrace& trace, const MultipeakSettings& settings) {
    Multipeak m;
    const std::size_t n = trace.Size();
    const auto quiet = std::max<std::size_t>(10, std::size_t(double(n) * settings.noiseFraction));
    if (n < quiet + 3) return m;
    const int dir = settings.direction < 0 ? -1 : 1;
    std::vector<double> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = dir * trace.y[i];
    m.noiseMean = Mean(v, 0, quiet);
    double ss = 0;
    for (std::size_t i = 0; i < quiet; ++i) ss += (v[i] - m.noiseMean) * (v[i] - m.noiseMean);
    m.noiseSd = std::sqrt(ss / double(quiet - 1));
    const double tall = settings.thresholdSds * m.noiseSd;
    std::vector<std::size_t> at;
    for (std::size_t i = 1; i + 1 < n; ++i)
        if (v[i] > v[i - 1] && v[i] >= v[i + 1] && v[i] - m.noiseMean > tall && Prominence(v, i) > tall)
            at.push_back(i);

    std::size_t previous = 0;
    for (std::size_t k = 0; k < at.size(); ++k) {
        const std::size_t p = at[k];
        const std::size_t next = k + 1 < at.size() ? at[k + 1] : n - 1;
        // The local baseline is the valley since the previous peak, or the
        // noise level when the trace came back to the noise in between.
        const std::size_t valley = ArgMin(v, previous, p);
        const double base = v[valley] - m.noiseMean < tall ? m.noiseMean : v[valley];
        FoundPeak f;
        f.time = trace.TimeAt(double(p));
        f.value = trace.y[p];
        f.localBaseline = dir * base;
        f.amplitude = v[p] - base;
        const auto level = [&](double fraction) { return base + fraction * f.amplitude; };
        const auto r10 = Crossing(v, p, previous, level(0.1), false);
        const auto r90 = Crossing(v, p, previous, level(0.9), false);
        if (r10 && r90) f.rise = (*r90 - *r10) * trace.intervalMs;
        const auto up = Crossing(v, p, previous, level(0.5), false);
        const auto down = Crossing(v, p, next, level(0.5), false);
        if (up && down) {
            f.halfWidth = (*down - *up) * trace.intervalMs;
            f.halfFrom = trace.TimeAt(*up);
            f.halfTo = trace.TimeAt(*down);
        }
        if (!m.peaks.empty()) f.interval = f.time - m.peaks.back().time;
        m.peaks.push_back(f);
        previous = p;
    }
    m.noiseMean *= dir;
    if (m.peaks.empty()) return m;
    double sum = 0, largest = 0;
    for (const FoundPeak& f : m.peaks) {
        sum += f.amplitude;
        largest = std::max(largest, f.amplitude);
    }
    m.meanAmplitude = sum / double(m.peaks.size());
    m.largestAmplitude = largest;
    if (m.peaks.size() >= 2)
        m.meanInterval = (m.peaks.back().time - m.peaks.front().time) / double(m.peaks.size() - 1);
    return m;
}

std::vector<std::vector<double>> MultipeakRows(const Multipeak& m) {
    std::vector<std::vector<double>> rows;
    for (std::size_t k = 0; k < m.peaks.size(); ++k) {
        const FoundPeak& f = m.peaks[k];
        rows.push_back({double(k + 1), f.time, f.amplitude, f.localBaseline, f.rise, f.halfWidth, f.interval,
                        kNotMeasured, kNotMeasured, kNotMeasured, kNotMeasured});
    }
    rows.push_back({0, kNotMeasured, kNotMeasured, kNotMeasured, kNotMeasured, kNotMeasured, kNotMeasured,
                    double(m.peaks.size()), m.meanAmplitude, m.largestAmplitude, m.meanInterval});
    return rows;
}

std::vector<PlotSeries> MultipeakMarkers(const Multipeak& m) {
    std::vector<PlotSeries> out;
    PlotSeries peaks = Markers("Peaks", {}, {}, {200, 0, 0});
    for (const FoundPeak& f : m.peaks) {
        peaks.x.push_back(f.time);
        peaks.y.push_back(f.value);
        if (Measured(f.halfWidth)) {
            const double half = f.localBaseline + (f.value - f.localBaseline) / 2;
            out.push_back(Segment("Half-width", f.halfFrom, half, f.halfTo, half, {0, 90, 200}));
        }
    }
    out.insert(out.begin(), std::move(peaks));
    return out;
}

}  // namespace vess::group
