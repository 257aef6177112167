#include "group_analysis/ecg_delineation.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vess::group {

namespace {

constexpr Colour kPColour{0, 130, 0}, kQrsColour{200, 0, 0}, kTColour{0, 90, 200}, kBaseColour{150, 0, 150};

// The beat smoothed by `passes` of the binomial filter [1 2 1]/4 (ends held):
// each pass doubles the scale at which the slope is read, as the dyadic
// scales of a smoothing-function wavelet do.
std::vector<double> Smooth(std::span<const double> y, int passes) {
    std::vector<double> s(y.begin(), y.end());
    for (int p = 0; p < passes && s.size() > 2; ++p) {
        std::vector<double> next = s;
        for (std::size_t i = 1; i + 1 < s.size(); ++i) next[i] = 0.25 * s[i - 1] + 0.5 * s[i] + 0.25 * s[i + 1];
        s = std::move(next);
    }
    return s;
}

// Going from `from` one sample at a time in `step` (+1 or -1) no further than
// `limit`, the first place where the slope's modulus falls to `level`,
// interpolated between the two samples around it.
std::optional<double> Boundary(const std::vector<double>& d, std::size_t from, int step, std::size_t limit,
                               double level) {
    for (std::size_t i = from; i != limit;) {
        const std::size_t next = i + step;
        const double a = std::fabs(d[i]), b = std::fabs(d[next]);
        if (b <= level) return double(i) + step * (a > b ? (a - level) / (a - b) : 1.0);
        i = next;
    }
    return std::nullopt;
}

// From `from` in `step`, the first sample whose slope has the sign `sign` or
// is zero (the wave's turning point); `limit` when none.
std::size_t TurningPoint(const std::vector<double>& d, std::size_t from, int step, std::size_t limit, int sign) {
    std::size_t i = from;
    while (i != limit && sign * d[i] < 0) i += step;
    return i;
}

struct Wave {
    double onset = kNotMeasured, peak = kNotMeasured, offset = kNotMeasured;  // fractional indices
};

// A P or T wave with its peak at `peak` (sign +1 upwards, -1 downwards): its
// steepest slope on each side, searched within [from, to], and the
// boundaries beyond them, within [lo, hi].
Wave Hump(const std::vector<double>& d, std::size_t lo, std::size_t from, std::size_t peak, std::size_t to,
          std::size_t hi, int sign, double threshold) {
    Wave w;
    if (!(lo <= from && from < peak && peak < to && to <= hi)) return w;
    const std::size_t up = sign > 0 ? ArgMax(d, from, peak) : ArgMin(d, from, peak);
    const std::size_t down = sign > 0 ? ArgMin(d, peak, to) : ArgMax(d, peak, to);
    if (!(sign * d[up] > 0 && sign * d[down] < 0)) return w;
    const auto on = Boundary(d, up, -1, lo, threshold * std::fabs(d[up]));
    const auto off = Boundary(d, down, +1, hi, threshold * std::fabs(d[down]));
    if (on && off) w = {*on, double(peak), *off};
    return w;
}

double Samples(double ms, double intervalMs) { return std::max(1.0, std::round(ms / intervalMs)); }

}  // namespace

double MeanRrForQtc(std::span<const double> rrMs) {
    if (rrMs.empty() || !std::ranges::all_of(rrMs, [](double rr) { return rr > 0; })) return kNotMeasured;
    return Mean(rrMs, 0, rrMs.size());
}

double QtcBazett(double qtMs, double rrMs) { return rrMs > 0 ? qtMs / std::sqrt(rrMs / 1000) : kNotMeasured; }
double QtcFridericia(double qtMs, double rrMs) { return rrMs > 0 ? qtMs / std::cbrt(rrMs / 1000) : kNotMeasured; }

EcgBeat DelineateBeat(const SampledTrace& t, const EcgSettings& s) {
    EcgBeat b;
    const std::size_t n = t.Size();
    if (n < 16) return b;
    const std::span<const double> y(t.y);
    const std::size_t last = n - 1, r = ArgMax(y, 0, last);
    const auto window = [&](double ms) { return std::size_t(Samples(ms, t.intervalMs)); };
    const auto time = [&](double index) { return t.TimeAt(index); };

    // QRS at the fine scale: the steepest up- and downstrokes of R, then a Q
    // wave before and an S wave after when their slopes are significant.
    const auto dq = Derivative(Smooth(y, 1), t.intervalMs);
    const std::size_t w = window(s.qrsHalfWidthMs), qs = window(s.qsWaveMs);
    const std::size_t up = ArgMax(dq, r > w ? r - w : 0, r), down = ArgMin(dq, r, std::min(last, r + w));
    if (!(dq[up] > 0 && dq[down] < 0) || up == 0 || down == last) return b;
    const double steepest = std::max(dq[up], -dq[down]);
    std::size_t first = up, lastSlope = down;
    // The Q downstroke is the run of falling slope just before the R
    // upstroke, the S upstroke the run of rising slope just after the R
    // downstroke (so that a P wave close to the QRS is not taken for a Q).
    const std::size_t qTurn = TurningPoint(dq, up, -1, 0, -1);
    const std::size_t qStart = TurningPoint(dq, qTurn, -1, qTurn > qs ? qTurn - qs : 0, +1);
    if (const std::size_t q = ArgMin(dq, qStart, qTurn); -dq[q] > s.significantSlope * steepest) first = q;
    const std::size_t sTurn = TurningPoint(dq, down, +1, last, +1);
    const std::size_t sEnd = TurningPoint(dq, sTurn, +1, std::min(last, sTurn + qs), -1);
    std::size_t sNadir = last + 1;
    if (const std::size_t k = ArgMax(dq, sTurn, sEnd); dq[k] > s.significantSlope * steepest)
        lastSlope = k, sNadir = ArgMin(y, down, k);
    const auto on = Boundary(dq, first, -1, 0, s.qrsThreshold * std::fabs(dq[first]));
    const auto off = Boundary(dq, lastSlope, +1, last, s.qrsThreshold * std::fabs(dq[lastSlope]));
    b.rPeak = time(double(r));
    if (!on || !off) return b;
    b.qrsOnset = time(*on), b.qrsOffset = time(*off);
    b.qrs = (*off - *on) * t.intervalMs;

    // P and T at the coarse scale.
    const auto dw = Derivative(Smooth(y, 3), t.intervalMs);
    const auto qrsOn = std::size_t(std::floor(*on));
    const std::size_t pLo = qrsOn > window(s.pWindowMs) ? qrsOn - window(s.pWindowMs) : 0;
    const Wave p = Hump(dw, pLo, pLo, ArgMax(y, pLo, qrsOn), qrsOn, qrsOn, +1, s.waveThreshold);
    if (Measured(p.peak)) {
        b.pOnset = time(p.onset), b.pPeak = time(p.peak), b.pOffset = time(p.offset);
        b.pr = (*on - p.onset) * t.intervalMs;
    }
    // The isoelectric level: the PR segment, or the samples just before the
    // QRS when no P wave was found.
    const double segmentStart = Measured(p.offset) ? p.offset : double(qrsOn) - double(qs) / 2;
    b.baseline = Mean(y, std::size_t(std::max(0.0, std::ceil(segmentStart))), qrsOn + 1);
    b.rAmp = y[r] - b.baseline;
    if (Measured(p.peak)) b.pAmp = y[std::size_t(p.peak)] - b.baseline;
    if (sNadir <= last) b.sPeak = time(double(sNadir)), b.sAmp = y[sNadir] - b.baseline;

    const std::size_t tLo = std::min(last, std::size_t(std::ceil(*off)) + window(s.tDelayMs));
    const std::size_t tHi = std::min(last, std::size_t(std::ceil(*off)) + window(s.tWindowMs));
    std::size_t tPeak = tLo;
    for (std::size_t i = tLo; i <= tHi; ++i)
        if (std::fabs(y[i] - b.baseline) > std::fabs(y[tPeak] - b.baseline)) tPeak = i;
    const Wave tw = Hump(dw, std::size_t(std::ceil(*off)), tLo, tPeak, tHi, last, y[tPeak] >= b.baseline ? +1 : -1,
                         s.waveThreshold);
    if (Measured(tw.peak)) {
        b.tOnset = time(tw.onset), b.tPeak = time(tw.peak), b.tOffset = time(tw.offset);
        b.tAmp = y[tPeak] - b.baseline;
        b.qt = (tw.offset - *on) * t.intervalMs;
        b.rr = s.rrMs;
        b.qtcBazett = QtcBazett(b.qt, s.rrMs);
        b.qtcFridericia = QtcFridericia(b.qt, s.rrMs);
    }
    return b;
}

std::vector<double> EcgValues(const EcgBeat& b) {
    return {b.pOnset, b.pPeak, b.pOffset, b.qrsOnset, b.rPeak, b.qrsOffset, b.tOnset, b.tPeak, b.tOffset,
            b.pr,     b.qrs,   b.qt,      b.rr,       b.qtcBazett, b.qtcFridericia, b.baseline,
            b.pAmp,   b.rAmp,  b.sAmp,    b.tAmp};
}

std::vector<PlotSeries> EcgMarkers(const SampledTrace& t, const EcgBeat& b) {
    std::vector<PlotSeries> out;
    const auto at = [&](double ms) { return t.ValueAt((ms - t.startMs) / t.intervalMs); };
    const auto wave = [&](const char* name, std::initializer_list<double> times, Colour c) {
        std::vector<double> x, v;
        for (double ms : times)
            if (Measured(ms)) x.push_back(ms), v.push_back(at(ms));
        if (!x.empty()) out.push_back(Markers(name, std::move(x), std::move(v), c));
    };
    wave("QRS", {b.qrsOnset, b.rPeak, b.sPeak, b.qrsOffset}, kQrsColour);
    wave("P", {b.pOnset, b.pPeak, b.pOffset}, kPColour);
    wave("T", {b.tOnset, b.tPeak, b.tOffset}, kTColour);
    if (Measured(b.baseline) && Measured(b.qrsOnset))
        out.push_back(Segment("Isoelectric", Measured(b.pOffset) ? b.pOffset : b.qrsOnset, b.baseline, b.qrsOnset,
                              b.baseline, kBaseColour));
    return out;
}

}  // namespace vess::group
