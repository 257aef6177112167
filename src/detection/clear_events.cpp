#include "detection/clear_events.h"

#include <algorithm>
#include <cmath>

#include "detection/event_kernel.h"
#include "detection/method_detect.h"
#include "detection/method_filter.h"

namespace vess {
namespace {

struct Detection {
    int64_t onset;
    double amplitude;  // counts, in the direction looked at
    bool decaysBack;
};

// Running sums of the samples, for means over any stretch.
std::vector<double> PrefixSums(const std::vector<int16_t>& x) {
    std::vector<double> prefix(x.size() + 1, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i) prefix[i + 1] = prefix[i] + x[i];
    return prefix;
}

double MeanOf(const std::vector<double>& prefix, int64_t first, int64_t count) {
    return (prefix[std::size_t(first + count)] - prefix[std::size_t(first)]) / double(count);
}

// Where the deconvolved pulses above the threshold peak: the crossing comes
// earlier the larger the event, which would blur the average.
std::vector<int64_t> PulsePeaks(const std::vector<double>& z, const MethodRun& run, double threshold) {
    std::vector<int64_t> points = DetectionPoints(z, threshold, run.minSeparationPoints, run.dipFraction);
    for (int64_t& p : points) {
        const int64_t end = std::min<int64_t>(p + run.peakWindowPoints, int64_t(z.size()));
        int64_t top = p;
        for (int64_t i = p; i < end && z[std::size_t(i)] > threshold; ++i)
            if (z[std::size_t(i)] > z[std::size_t(top)]) top = i;
        p = top;
    }
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

struct Measure {
    const std::vector<int16_t>& x;
    const std::vector<double>& prefix;
    int64_t lead;        // points of the baseline before the onset, and of the decay's mean
    int64_t peakWindow;  // the peak is sought this far after the onset
    int64_t decayReach;  // the decay must come back to half within this
};

// Amplitude over the mean of the lead before the onset, and whether the mean
// over the lead falls back below half of it after the peak.
std::vector<Detection> Measured(const std::vector<int64_t>& onsets, const Measure& m, int dir) {
    const int64_t n = int64_t(m.x.size());
    std::vector<Detection> out;
    for (const int64_t onset : onsets) {
        if (onset - m.lead < 0 || onset + m.peakWindow + m.lead >= n) continue;
        const double base = MeanOf(m.prefix, onset - m.lead, m.lead);
        double amplitude = 0;
        int64_t peak = onset;
        for (int64_t i = onset; i < onset + m.peakWindow; ++i)
            if (dir * (m.x[std::size_t(i)] - base) > amplitude) {
                amplitude = dir * (m.x[std::size_t(i)] - base);
                peak = i;
            }
        bool back = false;
        for (int64_t i = peak; !back && i + m.lead <= std::min(onset + m.decayReach, n); ++i)
            back = dir * (MeanOf(m.prefix, i, m.lead) - base) < 0.5 * amplitude;
        out.push_back({onset, amplitude, back});
    }
    return out;
}

// The amplitude beyond which a detection is an artefact, from the amplitudes
// of those that decay back.
double OutsizedLimit(const std::vector<Detection>& up, const ClearEventRules& rules) {
    std::vector<double> a;
    for (const Detection& d : up)
        if (d.decaysBack && d.amplitude > 0) a.push_back(d.amplitude);
    if (a.size() < 2) return INFINITY;
    std::sort(a.begin(), a.end());
    const double p95 = a[std::size_t(std::floor(0.95 * double(a.size() - 1)))];
    const double median = a[a.size() / 2];
    return std::min(rules.outsizedOverP95 * p95, rules.outsizedOverMedian * median);
}

// Shaped like an event and not outsized (the limit of the trace itself, also
// for its upside-down copy, whose artefacts are no noise).
bool EventLike(const Detection& d, double limit) {
    return d.decaysBack && d.amplitude > 0 && d.amplitude <= limit;
}

std::vector<double> EventLikeAmplitudes(const std::vector<Detection>& ds, double limit) {
    std::vector<double> out;
    for (const Detection& d : ds)
        if (EventLike(d, limit)) out.push_back(d.amplitude);
    return out;
}

}  // namespace

std::size_t ClearAboveNoise(const std::vector<double>& sorted, std::vector<double> noise, double share) {
    std::sort(noise.begin(), noise.end(), std::greater<>());
    std::size_t kept = 0, m = 0;
    for (std::size_t k = 1; k <= sorted.size(); ++k) {
        while (m < noise.size() && noise[m] >= sorted[k - 1]) ++m;
        if (double(m) <= share * double(k)) kept = k;
    }
    return kept;
}

std::vector<ClearEvent> FindClearEvents(const MethodParameters& params, const std::vector<int16_t>& x,
                                        double intervalUs, int dir, const ClearEventRules& rules) {
    MethodRun run(params, intervalUs, dir, {});
    const std::vector<double> c = run.filter.Compute(x, 0, int64_t(x.size()));
    const NoiseLevel noise = RobustNoise(c);
    std::vector<double> z(c.size());
    for (std::size_t i = 0; i < c.size(); ++i) z[i] = (c[i] - noise.centre) / noise.sd;
    const std::vector<int64_t> upPoints = PulsePeaks(z, run, rules.threshold);
    // The deconvolution is linear and its baseline a median: the criterion of
    // the upside-down trace is the criterion turned over.
    for (double& v : z) v = -v;
    std::vector<int64_t> downPoints = PulsePeaks(z, run, rules.threshold);

    const int64_t pointsPerMs = std::max<int64_t>(int64_t(1000 / intervalUs), 2);
    const int64_t isolation = int64_t(2 * params.decayTauMs * 1000 / intervalUs);
    // A turned event's decay looks like a slow event: none counts as noise
    // from a millisecond before a detection of the trace itself to three
    // decay constants after it.
    std::erase_if(downPoints, [&](int64_t d) {
        const auto after = std::upper_bound(upPoints.begin(), upPoints.end(), d + pointsPerMs);
        return after != upPoints.begin() && d - *std::prev(after) <= 3 * isolation / 2;
    });
    const std::vector<double> prefix = PrefixSums(x);
    const Measure m{x, prefix, pointsPerMs, run.peakWindowPoints,
                    int64_t(rules.decayBackTaus * params.decayTauMs * 1000 / intervalUs)};
    const std::vector<Detection> up = Measured(upPoints, m, dir);
    const std::vector<Detection> down = Measured(downPoints, m, -dir);
    const double limit = OutsizedLimit(up, rules);
    std::vector<double> sorted = EventLikeAmplitudes(up, limit);
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    const std::size_t kept = ClearAboveNoise(sorted, EventLikeAmplitudes(down, limit), rules.noiseShare);
    const double floor = kept > 0 ? sorted[kept - 1] : INFINITY;

    std::vector<ClearEvent> out;
    for (const Detection& d : up) {
        if (!EventLike(d, limit) || d.amplitude < floor) continue;
        // Alone: no other detection within the isolation after it, nor half of it before.
        const auto at = std::lower_bound(upPoints.begin(), upPoints.end(), d.onset);
        if (std::next(at) != upPoints.end() && *std::next(at) - d.onset < isolation) continue;
        if (at != upPoints.begin() && d.onset - *std::prev(at) < isolation / 2) continue;
        if (d.onset + isolation >= int64_t(x.size())) continue;
        out.push_back({d.onset, d.amplitude});
    }
    std::sort(out.begin(), out.end(), [](const ClearEvent& a, const ClearEvent& b) { return a.amplitude > b.amplitude; });
    if (out.size() > std::size_t(rules.maxEvents)) out.resize(std::size_t(rules.maxEvents));
    return out;
}

double NoiseCorrelationMs(const std::vector<int16_t>& x, double intervalUs) {
    const double dtMs = intervalUs / 1000;
    const int64_t half = std::max<int64_t>(int64_t(1000 / intervalUs), 1);
    const int64_t n = std::min<int64_t>(int64_t(x.size()), int64_t(1) << 20);
    if (n < 4 * half + 8) return dtMs;
    const std::vector<double> prefix = PrefixSums(x);
    std::vector<double> d;
    d.reserve(std::size_t(n));
    for (int64_t i = half; i + half < n; ++i)
        d.push_back(x[std::size_t(i)] - MeanOf(prefix, i - half, 2 * half + 1));
    std::vector<double> magnitude(d.size());
    std::transform(d.begin(), d.end(), magnitude.begin(), [](double v) { return std::abs(v); });
    std::nth_element(magnitude.begin(), magnitude.begin() + std::ptrdiff_t(magnitude.size() / 2), magnitude.end());
    const double clip = 4 * 1.4826 * magnitude[magnitude.size() / 2];
    if (!(clip > 0)) return dtMs;
    for (double& v : d) v = std::clamp(v, -clip, clip);
    auto correlation = [&](std::size_t lag) {
        double s = 0;
        for (std::size_t i = 0; i + lag < d.size(); ++i) s += d[i] * d[i + lag];
        return s / double(d.size() - lag);
    };
    const double var = correlation(0);
    const double target = std::exp(-1.0);
    double previous = 1;
    for (std::size_t lag = 1; lag < std::size_t(half); ++lag) {
        const double r = correlation(lag) / var;
        if (r < target) return std::max(dtMs, (double(lag - 1) + (previous - target) / (previous - r)) * dtMs);
        previous = r;
    }
    return double(half) * dtMs;
}

}  // namespace vess
