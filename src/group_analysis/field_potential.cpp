#include "group_analysis/field_potential.h"

#include <algorithm>
#include <cmath>

namespace vess::group {

namespace {

std::size_t IndexOf(const SampledTrace& t, double ms) {
    const double i = std::round((ms - t.startMs) / t.intervalMs);
    return std::size_t(std::clamp(i, 0.0, double(t.Size() - 1)));
}

// The first interior local maximum of v in (from, to), or nullopt.
std::optional<std::size_t> FirstLocalMax(std::span<const double> v, std::size_t from, std::size_t to) {
    for (std::size_t i = from + 1; i < to && i + 1 < v.size(); ++i)
        if (v[i] >= v[i - 1] && v[i] > v[i + 1]) return i;
    return std::nullopt;
}

// The steepest least-squares slope of `window` consecutive samples within
// [a, b] (all of them when fewer), and the index where that stretch begins.
std::pair<double, std::size_t> SteepestSlope(const SampledTrace& t, std::size_t a, std::size_t b,
                                             std::size_t window, int sign) {
    const std::size_t n = std::min(window, b - a + 1);
    double best = kNotMeasured;
    std::size_t at = a;
    for (std::size_t s = a; s + n <= b + 1; ++s) {
        double mx = 0, my = 0;
        for (std::size_t i = 0; i < n; ++i) mx += double(i), my += t.y[s + i];
        mx /= double(n), my /= double(n);
        double sxy = 0, sxx = 0;
        for (std::size_t i = 0; i < n; ++i) {
            sxy += (double(i) - mx) * (t.y[s + i] - my);
            sxx += (double(i) - mx) * (double(i) - mx);
        }
        const double slope = sxy / sxx / t.intervalMs;
        if (!Measured(best) || sign * slope > sign * best) best = slope, at = s;
    }
    return {best, at};
}

// One response from its stimulus up to `end`.
FieldResponse MeasureResponse(const SampledTrace& t, const std::vector<double>& dvdt, const FieldSettings& s,
                              std::size_t stim, std::size_t end) {
    FieldResponse r;
    const std::span<const double> y(t.y);
    r.stimulusTime = t.TimeAt(double(stim));
    const auto perMs = 1.0 / t.intervalMs;
    // The artefact: at least minBlankMs from the stimulus and past its
    // fastest point.
    std::size_t artefact = stim;
    for (std::size_t i = stim; i <= std::min(end, stim + std::size_t(std::ceil(0.5 * perMs))); ++i)
        if (std::fabs(dvdt[i]) > std::fabs(dvdt[artefact])) artefact = i;
    // It has ended once dV/dt has stayed for 0.1 ms within three SDs of its
    // noise before the stimulus (or, on a noise-free trace, below 2 % of
    // the artefact's fastest rate).
    const auto before = std::size_t(std::llround(s.baselineMs * perMs));
    const std::size_t quietFrom = stim > before ? stim - before : 0;
    double noise = 0;
    for (std::size_t i = quietFrom; i + 1 < stim; ++i) noise += dvdt[i] * dvdt[i];
    noise = stim > quietFrom + 1 ? std::sqrt(noise / double(stim - quietFrom - 1)) : 0;
    const double settled = noise > 0 ? 3 * noise : 0.02 * std::fabs(dvdt[artefact]);
    std::size_t blank = std::max(artefact, stim + std::size_t(std::ceil(s.minBlankMs * perMs)));
    const auto settle = std::max<std::size_t>(2, std::size_t(std::ceil(0.1 * perMs)));
    for (std::size_t quiet = 0; blank < end && quiet < settle; ++blank)
        quiet = std::fabs(dvdt[blank]) < settled ? quiet + 1 : 0;
    if (blank + 3 >= end) return r;
    r.blankEnd = t.TimeAt(double(blank));
    r.baseline = stim > 0 ? Mean(y, stim > before ? stim - before : 0, stim) : y[blank];

    // Work on w = sign x (y - baseline), so that the response rises.
    int sign = -1;
    if (s.synapticCurrents) {
        const std::size_t hi = ArgMax(y, blank, end), lo = ArgMin(y, blank, end);
        sign = y[hi] - r.baseline > r.baseline - y[lo] ? 1 : -1;
    }
    std::vector<double> w(y.size());
    for (std::size_t i = 0; i < y.size(); ++i) w[i] = sign * (y[i] - r.baseline);
    const std::size_t extreme = ArgMax(w, blank, end);

    // Fibre volley: the first dip of the field (a local maximum of w) close
    // to the stimulus that the trace climbs back from; its amplitude is its
    // depth below the line joining the highest points on either side.
    std::size_t descentStart = blank;
    const std::size_t volleyEnd = std::min(IndexOf(t, r.stimulusTime + s.volleyWindowMs), extreme);
    if (!s.synapticCurrents)
        if (const auto fv = FirstLocalMax(w, blank, volleyEnd)) {
            if (const auto after = FirstLocalMax(y, *fv, extreme)) {
                const std::size_t left = ArgMax(y, blank, *fv);
                const double line = y[left] + (y[*after] - y[left]) * double(*fv - left) / double(*after - left);
                r.volleyAmplitude = line - y[*fv];
                r.volleyTime = t.TimeAt(double(*fv));
                r.volleyValue = y[*fv];
                r.volleyLatency = r.volleyTime - r.stimulusTime;
                descentStart = *after;
            }
        }

    // Population spike (tangent method): the deepest point of the field
    // between two positive peaks; the field EPSP then ends at the first peak.
    std::size_t descentEnd = extreme;
    if (!s.synapticCurrents) {
        const std::size_t trough = ArgMin(y, descentStart, end);
        // The nearest peaks: climb from the trough on either side.
        std::size_t p1 = trough, p2 = trough;
        while (p1 > descentStart && y[p1 - 1] > y[p1]) --p1;
        while (p2 < end && y[p2 + 1] > y[p2]) ++p2;
        const bool inner1 = p1 > descentStart && p1 < trough;
        const bool inner2 = p2 > trough && p2 < end;
        if (inner1 && inner2) {
            const double line = y[p1] + (y[p2] - y[p1]) * double(trough - p1) / double(p2 - p1);
            r.spikeAmplitude = line - y[trough];
            r.spikeTime = t.TimeAt(double(trough));
            r.spikeValue = y[trough];
            r.spikeLatency = r.spikeTime - r.stimulusTime;
            descentEnd = ArgMax(w, descentStart, p1);
        }
    }
    r.amplitude = w[descentEnd];
    r.peakTime = t.TimeAt(double(descentEnd));
    r.peakValue = y[descentEnd];
    r.peakLatency = r.peakTime - r.stimulusTime;

    // Slope over 10-90 % of the descent.
    const double from = y[descentStart], to = y[descentEnd];
    const bool rising = to > from;
    const auto c10 = Crossing(y, descentStart, descentEnd, from + 0.1 * (to - from), rising);
    const auto c90 = Crossing(y, descentStart, descentEnd, from + 0.9 * (to - from), rising);
    if (!c10 || !c90 || *c90 <= *c10) return r;
    r.onsetLatency = t.TimeAt(*c10) - r.stimulusTime;
    if (s.chordSlope) {
        r.slope = 0.8 * (to - from) / ((*c90 - *c10) * t.intervalMs);
        r.slopeFrom = t.TimeAt(*c10), r.slopeTo = t.TimeAt(*c90);
        r.slopeFromValue = t.ValueAt(*c10), r.slopeToValue = t.ValueAt(*c90);
        return r;
    }
    const auto a = std::size_t(std::ceil(*c10)), b = std::size_t(std::floor(*c90));
    if (b <= a) return r;
    const auto window = std::size_t(std::llround(s.slopeWindowMs * perMs)) + 1;
    const auto [slope, at] = SteepestSlope(t, a, b, window, rising ? 1 : -1);
    const std::size_t last = std::min(b, at + window - 1);
    r.slope = slope;
    r.slopeFrom = t.TimeAt(double(at)), r.slopeTo = t.TimeAt(double(last));
    r.slopeFromValue = y[at], r.slopeToValue = y[at] + slope * double(last - at) * t.intervalMs;
    return r;
}

}  // namespace

std::vector<double> FindStimuli(const SampledTrace& trace, const FieldSettings& settings) {
    if (trace.Size() < 3) return {};
    // jump[i]: the step from sample i - 1 to i, so that a stimulus falls on
    // the first sample of its artefact.
    std::vector<double> jump(trace.Size(), 0.0);
    for (std::size_t i = 1; i < trace.Size(); ++i) jump[i] = std::fabs(trace.y[i] - trace.y[i - 1]);
    const std::size_t first = ArgMax(jump, 1, jump.size() - 1);
    const auto gap = std::size_t(std::ceil(settings.minGapMs / trace.intervalMs));
    // An artefact that takes a few samples starts where its steps begin to be large.
    const auto onset = [&](std::size_t i) {
        const double big = 0.1 * jump[i];
        while (i > 1 && jump[i - 1] >= big) --i;
        return trace.TimeAt(double(i));
    };
    std::vector<double> out{onset(first)};
    std::optional<std::size_t> second;
    for (std::size_t i = 1; i < jump.size(); ++i)
        if ((i + gap <= first || i >= first + gap) && jump[i] >= 0.5 * jump[first] &&
            (!second || jump[i] > jump[*second]))
            second = i;
    if (second) out.push_back(onset(*second));
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<FieldResponse> MeasureFieldResponses(const SampledTrace& trace, const FieldSettings& settings,
                                                 std::vector<double> stimulusTimes) {
    if (trace.Size() < 8) return {};
    if (stimulusTimes.empty()) stimulusTimes = FindStimuli(trace, settings);
    std::sort(stimulusTimes.begin(), stimulusTimes.end());
    const auto dvdt = Derivative(trace.y, trace.intervalMs);
    std::vector<FieldResponse> out;
    for (std::size_t k = 0; k < stimulusTimes.size(); ++k) {
        const std::size_t stim = IndexOf(trace, stimulusTimes[k]);
        const std::size_t end =
            k + 1 < stimulusTimes.size() ? IndexOf(trace, stimulusTimes[k + 1]) - 1 : trace.Size() - 1;
        if (end > stim) out.push_back(MeasureResponse(trace, dvdt, settings, stim, end));
    }
    if (out.size() == 2) {
        out[1].pairedSlopeRatio = out[1].slope / out[0].slope;
        out[1].pairedAmplitudeRatio = out[1].amplitude / out[0].amplitude;
    }
    return out;
}

std::vector<double> FieldResponseValues(const FieldResponse& r, int number) {
    return {double(number), r.stimulusTime, r.baseline, r.volleyAmplitude, r.volleyLatency, r.slope,
            r.amplitude, r.onsetLatency, r.peakLatency, r.spikeAmplitude, r.spikeLatency,
            r.pairedSlopeRatio, r.pairedAmplitudeRatio, r.slopeFrom};
}

std::vector<PlotSeries> FieldMarkers(const std::vector<FieldResponse>& responses) {
    std::vector<PlotSeries> out;
    for (const FieldResponse& r : responses) {
        if (Measured(r.slope))
            out.push_back(Segment("Slope", r.slopeFrom, r.slopeFromValue, r.slopeTo, r.slopeToValue, {0, 150, 0}));
        if (Measured(r.peakTime)) out.push_back(Markers("fEPSP", {r.peakTime}, {r.peakValue}, {200, 0, 0}));
        if (Measured(r.volleyTime)) out.push_back(Markers("Volley", {r.volleyTime}, {r.volleyValue}, {0, 90, 200}));
        if (Measured(r.spikeTime)) out.push_back(Markers("Pop spike", {r.spikeTime}, {r.spikeValue}, {150, 0, 150}));
    }
    return out;
}

}  // namespace vess::group
