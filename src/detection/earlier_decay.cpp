#include "detection/earlier_decay.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "detection/exponential_grid.h"
#include "detection/vector_code.h"
#include "recording/rounding.h"

namespace vess {
namespace {

constexpr double kTauLowest = 0.25;    // x the kernel's decay
constexpr double kTauRange = 16;       // highest / lowest
constexpr double kSignificantSds = 2;  // decay at the onset, in residual SDs
constexpr int64_t kFewestPoints = 8;
constexpr double kRisesSkipped = 5;

// ln of the sum of exp(m x), m = 1 .. n, for x > 0: the squared length of
// the exponentials exp(m / tau) for x = 2 / tau, and the product of two of
// them for x = 1 / tau1 + 1 / tau2.
double LogGeometricSum(double x, double n) {
    const auto logExpm1 = [](double z) { return z > 30 ? z + std::log1p(-std::exp(-z)) : std::log(std::expm1(z)); };
    return x + logExpm1(n * x) - logExpm1(x);
}

// The angle between the exponentials of two time constants over n points.
double AngleBetween(double tau1, double tau2, double n) {
    const double x1 = 1 / tau1, x2 = 1 / tau2;
    const double logCos =
        LogGeometricSum(x1 + x2, n) - (LogGeometricSum(2 * x1, n) + LogGeometricSum(2 * x2, n)) / 2;
    const double oneLessCos = std::max(-std::expm1(logCos), 0.0);
    return 2 * std::asin(std::min(1.0, std::sqrt(oneLessCos / 2)));
}

// Above every time constant FitEarlierDecay tries (its coarse grid's
// highest, one fine step up, and room for rounding).
double MostTauTried(double tauCentre) {
    return tauCentre * kTauLowest * kTauRange * std::pow(kTauRange, 1.0 / (kDecayGridSteps - 1)) * 1.001;
}

// Whether any exponential a exp(m / tau), m = y.size() .. 1, tau at most
// tauMost, could pass the significance test below, a direction > 2
// sqrt(sse / (n - 2)). With e the exponentials and y the excess, the fit
// explains c = (e.y)^2 / (e.e) of y.y and leaves sse = y.y - c, and a^2 =
// c / (e.e); passing needs 4 (y.y - c) / (n - 2) < c / (e.e), that is c >
// y.y 4 e.e / (n - 2 + 4 e.e), a share that grows with e.e, and e.e > n +
// n (n + 1) / tauMost (e_m > 1 + m / tau). The fit must point in the
// direction, so e.y is at most e.y+ (y+ the samples in that direction,
// others 0) and c at most y+.y+ (Cauchy-Schwarz). So where y+.y+ is at most
// that share of y.y, less 0.01 (a margin no rounding of the fit's sums can
// cross), no fit passes: the fit is not made. Most detections on a level
// trace end here.
bool CanBeSignificant(const std::vector<double>& y, int direction, double tauMost) {
    // Pairs of sums side by side, with no branch on the noise's sign: the
    // order of the terms cannot matter to a test with this margin.
    using Pair = VectorOf<double, 2>;
    const Pair zero = {0, 0};
    Pair all = zero, along = zero;
    std::size_t k = 0;
    for (; k + 2 <= y.size(); k += 2) {
        const Pair v = {y[k], y[k + 1]};
        const Pair signedV = v * double(direction);
        const Pair toward = signedV > zero ? signedV : zero;
        all += v * v;
        along += toward * toward;
    }
    if (k < y.size()) {
        const double v = y[k], toward = std::max(direction * v, 0.0);
        all[0] += v * v;
        along[0] += toward * toward;
    }
    const double n = double(y.size()), leastEE = n + n * (n + 1) / tauMost;
    return along[0] + along[1] > (4 * leastEE / (n - 2 + 4 * leastEE) - 0.01) * (all[0] + all[1]);
}

}  // namespace

// With e the exponentials of a time constant and theta their angle to
// direction x y, the fit leaves sse = |y|^2 sin^2 theta and its amplitude
// is |y| cos theta / |e|, so it passes when sqrt(n - 2) cot theta / (2 |e|)
// is above 1. Across the interval |e| is at least that of tauHigh (the
// exponentials shrink as tau grows), and theta is at least the coarse one
// less the largest angle between its exponentials and those of the
// interval's ends (the angle grows away from it on either side, ln of the
// geometric sum being convex). The bound must stay below 0.9: a margin
// no rounding of the sums crosses; a fit too close to call, or one whose
// sse is too small to be read to that precision, is made.
bool NoDecayFitCanPass(std::span<const double> y, const ExponentialFit& coarse, double tauLow, double tauHigh,
                       int direction) {
    const double n = double(y.size());
    double yy = 0;
    for (const double v : y) yy += v * v;
    const double sse = std::max(coarse.sse, 0.0);
    if (!(yy > 0) || !(sse > 1e-6 * yy) || !(tauLow > 0)) return false;
    const double length = std::exp(LogGeometricSum(2 / coarse.tauPoints, n) / 2);
    const double theta = std::atan2(std::sqrt(sse), direction * coarse.amplitude * length);
    const double spread = std::max(AngleBetween(coarse.tauPoints, tauLow * (1 - 1e-9), n),
                                   AngleBetween(coarse.tauPoints, tauHigh * (1 + 1e-9), n)) + 1e-6;
    const double least = theta - spread;
    if (!(least > 1e-3)) return false;
    if (least >= M_PI / 2) return true;
    const double shortest = std::exp(LogGeometricSum(2 / (tauHigh * (1 + 1e-9)), n) / 2);
    const double bound = std::sqrt(n - 2) / (kSignificantSds * shortest * std::tan(least));
    return bound < 0.9;
}

std::optional<EarlierDecay> FitEarlierDecay(const Detector& det, int64_t onset, int64_t lookback,
                                            double kernelRiseMs, double kernelDecayMs) {
    const Screen& screen = det.Scr();
    const DetectionLengths& len = det.Lengths();
    const double pointsPerMs = 1000.0 / screen.Rec().IntervalUs();
    const int64_t from = std::max(onset - lookback, det.Span().first);
    if (onset - from < kFewestPoints) return std::nullopt;
    const PeakPoint peak = det.FindMax(from, int32_t(onset - from));
    // A peak at the start of the range is a trace falling from before it.
    if (peak.index <= from || peak.index >= onset) return std::nullopt;
    const int64_t baseStart = peak.index - len.baseOffset;
    if (baseStart < det.Span().first) return std::nullopt;
    const int16_t baseline = det.FindBaseline(baseStart, len.baseLen);
    // The rounded top of the earlier event is no exponential: the fit starts
    // where its rise has died away, five rise constants after its peak.
    const int64_t first =
        peak.index + std::max<int64_t>(std::lround(kRisesSkipped * kernelRiseMs * pointsPerMs), 1);
    if (onset - first < kFewestPoints) return std::nullopt;
    std::vector<double> y(std::size_t(onset - first));
    if (const int16_t* p = screen.Samples(first, onset - first))
        for (std::size_t k = 0; k < y.size(); ++k) y[k] = double(p[k]) - baseline;
    else
        for (std::size_t k = 0; k < y.size(); ++k)
            y[k] = double(screen.GetSampleValue(first + int64_t(k))) - baseline;
    const double tauCentre = std::max(kernelDecayMs, 0.1) * pointsPerMs;
    if (!CanBeSignificant(y, det.Direction(), MostTauTried(tauCentre))) return std::nullopt;
    // A coarse grid, then a fine one across the coarse steps either side of
    // its best: the decay extrapolated to the onset is then as good as the
    // data make it.
    const ExponentialFit coarse = FitExponentialOnGrid(y, tauCentre * kTauLowest, kTauRange);
    const double step = std::pow(kTauRange, 1.0 / (kDecayGridSteps - 1));
    if (NoDecayFitCanPass(y, coarse, coarse.tauPoints / step, coarse.tauPoints * step, det.Direction()))
        return std::nullopt;
    const ExponentialFit fit = FitExponentialOnGrid(y, coarse.tauPoints / step, step * step);
    const double residualSd = std::sqrt(std::max(fit.sse, 0.0) / double(y.size() - 2));
    if (!(det.Direction() * fit.amplitude > kSignificantSds * residualSd)) return std::nullopt;
    return EarlierDecay{{fit.amplitude, onset, fit.tauPoints}, baseline};
}

std::optional<MeasuredEvent> MeasureOnDecay(const Detector& det, const EarlierDecay& below,
                                            int64_t onset, int64_t limit, int64_t peakWindow) {
    const Screen& screen = det.Scr();
    const int16_t dir = det.Direction();
    const int64_t end = std::min({limit, onset + peakWindow, det.LastPeakIndex() + 1});
    MeasuredEvent e;
    e.under = below.under;
    e.baseline = below.baseline;
    // The peak value is smoothed as for any event (Detector::GetAverageValue).
    const int32_t h = det.Lengths().halfPeak;
    const double divisor = std::max<int32_t>(det.Params().NumberPointsPeak, 1);
    auto mean = [&](int64_t i) {
        double sum = 0;
        for (int64_t j = i - h; j <= i + h; ++j) sum += SampleLess(screen, e.under, j);
        return sum / divisor;
    };
    double best = -INFINITY, bestValue = 0;
    for (int64_t i = std::max<int64_t>(onset, det.Span().first + h); i < end; ++i) {
        const double value = mean(i);
        if (dir * (value - e.baseline) > best) {
            best = dir * (value - e.baseline);
            bestValue = value;
            e.peak = i;
        }
    }
    if (!(best > 0)) return std::nullopt;
    e.value = RoundClamp16(bestValue);
    e.amplitudeCounts = std::abs(int32_t(e.value) - int32_t(e.baseline));
    if (e.amplitudeCounts == 0) return std::nullopt;
    e.amplitudeUnits = det.AmplitudeUnits(e.amplitudeCounts);
    const int32_t baseLen = det.Lengths().baseLen;
    e.baselineMiddle = onset - baseLen + RoundEven(baseLen / 2.0);
    det.WalkExtent(e, onset - baseLen, limit > onset ? limit : std::numeric_limits<int64_t>::max());
    return e;
}

}  // namespace vess
