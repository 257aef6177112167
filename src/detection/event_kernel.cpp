#include "detection/event_kernel.h"

#include <algorithm>
#include <cmath>

namespace vess {

double KernelPeakMs(const EventKernel& k) {
    const double r = k.riseTauMs, d = k.decayTauMs;
    if (!(d > r) || !(r > 0)) return std::max(r, 0.0);
    return std::log(d / r) * r * d / (d - r);
}

std::vector<double> KernelSamples(const EventKernel& k, double intervalUs, int64_t n) {
    std::vector<double> out(std::size_t(std::max<int64_t>(n, 0)));
    const double tp = KernelPeakMs(k);
    const double peak = std::exp(-tp / k.decayTauMs) - std::exp(-tp / k.riseTauMs);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = double(i) * intervalUs / 1000.0;
        out[i] = (std::exp(-t / k.decayTauMs) - std::exp(-t / k.riseTauMs)) / peak;
    }
    return out;
}

namespace {

struct Trial {
    double sse = INFINITY;
    double amplitude = 0;
};

// Best amplitude (closed form) and its residual for one kernel and shift.
Trial Evaluate(const std::vector<double>& y, double intervalUs, const EventKernel& k, double shiftMs) {
    double sxy = 0, sxx = 0, syy = 0;
    const double tp = KernelPeakMs(k);
    const double peak = std::exp(-tp / k.decayTauMs) - std::exp(-tp / k.riseTauMs);
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double t = double(i) * intervalUs / 1000.0 - shiftMs;
        const double x =
            t > 0 ? (std::exp(-t / k.decayTauMs) - std::exp(-t / k.riseTauMs)) / peak : 0.0;
        sxy += x * y[i];
        sxx += x * x;
        syy += y[i] * y[i];
    }
    if (!(sxx > 0)) return {};
    const double a = sxy / sxx;
    return {syy - a * sxy, a};
}

}  // namespace

KernelFit FitKernel(const std::vector<double>& average, double intervalUs, double minRiseMs) {
    KernelFit fit;
    if (average.size() < 8 || !(intervalUs > 0)) return fit;
    const double dtMs = intervalUs / 1000.0;
    const double spanMs = double(average.size()) * dtMs;
    Trial best;
    auto search = [&](double riseLo, double riseHi, double decayLo, double decayHi, double shiftLo,
                      double shiftHi, int steps) {
        const double rs = std::pow(riseHi / riseLo, 1.0 / steps);
        const double ds = std::pow(decayHi / decayLo, 1.0 / steps);
        const int shiftSteps = 8;
        for (int a = 0; a <= steps; ++a)
            for (int b = 0; b <= steps; ++b)
                for (int c = 0; c <= shiftSteps; ++c) {
                    const EventKernel k{riseLo * std::pow(rs, a), decayLo * std::pow(ds, b)};
                    if (!(k.decayTauMs > 1.2 * k.riseTauMs)) continue;
                    const double shift = shiftLo + (shiftHi - shiftLo) * c / shiftSteps;
                    const Trial t = Evaluate(average, intervalUs, k, shift);
                    if (t.sse < best.sse && t.amplitude > 0) {
                        best = t;
                        fit.kernel = k;
                        fit.onsetShiftMs = shift;
                    }
                }
    };
    const double leadMs = spanMs / 4;
    const double riseLo = std::max({dtMs / 4, 0.02, minRiseMs});
    search(riseLo, std::max({spanMs / 10, 0.1, 2 * riseLo}), std::max(dtMs, 0.1), spanMs, 0, leadMs, 24);
    if (!std::isfinite(best.sse)) return fit;
    const EventKernel c = fit.kernel;
    const double s = fit.onsetShiftMs;
    search(std::max(c.riseTauMs / 1.4, riseLo), c.riseTauMs * 1.4, c.decayTauMs / 1.4, c.decayTauMs * 1.4,
           std::max(0.0, s - leadMs / 8), s + leadMs / 8, 16);
    fit.amplitude = best.amplitude;
    fit.ok = true;
    return fit;
}

std::vector<double> AverageEvents(const Recording& rec, const std::vector<EventRecord>& events,
                                  int64_t leadPoints, int64_t lengthPoints) {
    std::vector<double> sum(std::size_t(std::max<int64_t>(lengthPoints, 0)), 0.0);
    std::vector<int16_t> stretch(sum.size());
    int n = 0;
    for (const EventRecord& e : events) {
        const int64_t onset = int64_t(e.sampleIndex) - e.riseTime;
        const int64_t first = onset - leadPoints;
        if (first < 0 || first + lengthPoints > rec.PointsPerChannel()) continue;
        rec.ReadSamples(first, stretch);
        double base = 0;
        for (int64_t i = 0; i < leadPoints; ++i) base += stretch[std::size_t(i)];
        base /= double(std::max<int64_t>(leadPoints, 1));
        const double dir = e.peakDirection > 0 ? 1.0 : -1.0;
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += dir * (stretch[i] - base);
        ++n;
    }
    if (n == 0) return {};
    for (double& v : sum) v /= n;
    return sum;
}

KernelFit LearnKernel(const Recording& rec, const EventTable& events) {
    std::vector<EventRecord> accepted;
    for (const EventRecord& e : events.Records())
        if (e.group != 255 && e.channel == rec.Channel()) accepted.push_back(e);
    if (accepted.size() < 3) return {};
    // The stretch spans the longest decay stored, at least 20 ms, at most 200 ms.
    const double msPerPoint = rec.IntervalUs() / 1000.0;
    int64_t decayPoints = 0;
    for (const EventRecord& e : accepted) decayPoints = std::max<int64_t>(decayPoints, e.decayTime);
    const int64_t length = std::clamp<int64_t>(3 * decayPoints, int64_t(20 / msPerPoint),
                                               int64_t(200 / msPerPoint));
    const int64_t lead = std::max<int64_t>(int64_t(1 / msPerPoint), 4);
    std::vector<double> average = AverageEvents(rec, accepted, lead, length + lead);
    if (average.empty()) return {};
    // Fit from a little before the stored onset; the fit finds the onset.
    const int64_t from = lead / 2;
    std::vector<double> fromOnset(average.begin() + from, average.end());
    KernelFit fit = FitKernel(fromOnset, rec.IntervalUs());
    fit.eventsUsed = int(accepted.size());
    return fit;
}

}  // namespace vess
