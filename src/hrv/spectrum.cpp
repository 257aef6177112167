#include "hrv/spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "statistics/welch_psd.h"

namespace vess::hrv {

SpectrumOptions HumanSpectrumPreset() { return {}; }

SpectrumOptions MouseSpectrumPreset() {
    SpectrumOptions o;
    o.resampleHz = 20;
    o.windowPoints = 512;
    o.bands = {0, 0.4, 1.5, 4.0};
    return o;
}

std::vector<double> CubicSplineAt(std::span<const double> x, std::span<const double> y,
                                  std::span<const double> xs) {
    const std::size_t n = x.size();
    std::vector<double> out(xs.size(), 0);
    if (n == 0) return out;
    if (n == 1) return std::vector<double>(xs.size(), y[0]);
    // Second derivatives M with M[0] = M[n-1] = 0, by the tridiagonal sweep.
    std::vector<double> m(n, 0), c(n, 0), r(n, 0);
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double h0 = x[i] - x[i - 1], h1 = x[i + 1] - x[i];
        const double a = h0 / 6, b = (h0 + h1) / 3, cc = h1 / 6;
        const double rhs = (y[i + 1] - y[i]) / h1 - (y[i] - y[i - 1]) / h0;
        const double denom = b - a * c[i - 1];
        c[i] = cc / denom;
        r[i] = (rhs - a * r[i - 1]) / denom;
    }
    for (std::size_t i = n - 2; i >= 1; --i) m[i] = r[i] - c[i] * m[i + 1];
    std::size_t k = 0;
    for (std::size_t j = 0; j < xs.size(); ++j) {
        const double t = xs[j];
        while (k + 2 < n && t > x[k + 1]) ++k;
        const double h = x[k + 1] - x[k];
        const double a = (x[k + 1] - t) / h, b = (t - x[k]) / h;
        out[j] = a * y[k] + b * y[k + 1] +
                 ((a * a * a - a) * m[k] + (b * b * b - b) * m[k + 1]) * h * h / 6;
    }
    return out;
}

void RemoveTrend(std::vector<double>& y, Detrend detrend) {
    const double n = double(y.size());
    if (y.empty()) return;
    double sy = 0, sx = 0, sxx = 0, sxy = 0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        sy += y[i];
        sx += double(i);
        sxx += double(i) * double(i);
        sxy += double(i) * y[i];
    }
    double slope = 0;
    if (detrend == Detrend::Linear && y.size() > 1) slope = (n * sxy - sx * sy) / (n * sxx - sx * sx);
    const double intercept = (sy - slope * sx) / n;
    for (std::size_t i = 0; i < y.size(); ++i) y[i] -= intercept + slope * double(i);
}

SpectrumResult LombScargleDensity(std::span<const double> t, std::span<const double> y,
                                  double maxHz, int oversampling) {
    SpectrumResult s;
    const std::size_t n = t.size();
    if (n < 4 || !(t.back() > t.front())) {
        s.error = "Too few samples for a spectrum.";
        return s;
    }
    const double span = t.back() - t.front();
    const double df = 1 / (span * std::max(1, oversampling));
    // cos and sin of w (t - middle) for each time, turned from one frequency
    // to the next by a rotation through 2 pi df (t - middle): four products
    // a time and frequency instead of four sines and cosines. The times are
    // taken from their middle to keep the angles small; the periodogram
    // does not depend on the origin of time.
    const double middle = 0.5 * (t.front() + t.back());
    std::vector<double> cosWt(n, 1), sinWt(n, 0), turnCos(n), turnSin(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double a = 2 * std::numbers::pi * df * (t[i] - middle);
        turnCos[i] = std::cos(a), turnSin[i] = std::sin(a);
    }
    for (std::size_t k = 0; double(k) * df <= maxHz; ++k) {
        double p = 0;
        if (k > 0) {
            double yc = 0, ys = 0, cc = 0, ss = 0, cs = 0;
            for (std::size_t i = 0; i < n; ++i) {
                const double c = cosWt[i] * turnCos[i] - sinWt[i] * turnSin[i];
                const double si = sinWt[i] * turnCos[i] + cosWt[i] * turnSin[i];
                cosWt[i] = c, sinWt[i] = si;
                yc += y[i] * c, ys += y[i] * si, cc += c * c, ss += si * si, cs += c * si;
            }
            // tan(2 w tau) = sum sin(2 w t) / sum cos(2 w t); the sums about
            // tau follow from those about the middle.
            const double wTau = 0.5 * std::atan2(2 * cs, cc - ss);
            const double ct = std::cos(wTau), st = std::sin(wTau);
            const double ycTau = ct * yc + st * ys, ysTau = ct * ys - st * yc;
            const double ccTau = ct * ct * cc + 2 * ct * st * cs + st * st * ss;
            const double ssTau = ct * ct * ss - 2 * ct * st * cs + st * st * cc;
            p = 0.5 * (ycTau * ycTau / ccTau + ysTau * ysTau / ssTau);
        }
        // For even sampling P = |DFT|^2 / N, so 2 P T / N is the one-sided density.
        s.frequencyHz.push_back(double(k) * df);
        s.densityMs2PerHz.push_back(2 * p * span / double(n));
    }
    return s;
}

void MeasureBands(SpectrumResult& s, const Bands& bands) {
    if (s.frequencyHz.size() < 2) return;
    const double df = s.frequencyHz[1] - s.frequencyHz[0];
    const auto band = [&](double lo, double hi) {
        BandPower b;
        double best = -1;
        for (std::size_t k = 0; k < s.frequencyHz.size(); ++k) {
            const double f = s.frequencyHz[k];
            if (f < lo || f >= hi) continue;
            b.powerMs2 += s.densityMs2PerHz[k] * df;
            if (s.densityMs2PerHz[k] > best) best = s.densityMs2PerHz[k], b.peakHz = f;
        }
        return b;
    };
    s.vlf = band(bands.vlfLowHz, bands.vlfHighHz);
    s.lf = band(bands.vlfHighHz, bands.lfHighHz);
    s.hf = band(bands.lfHighHz, bands.hfHighHz);
    s.totalMs2 = s.vlf.powerMs2 + s.lf.powerMs2 + s.hf.powerMs2;
    const double lfhf = s.lf.powerMs2 + s.hf.powerMs2;
    s.lfNu = lfhf > 0 ? 100 * s.lf.powerMs2 / lfhf : 0;
    s.hfNu = lfhf > 0 ? 100 * s.hf.powerMs2 / lfhf : 0;
    s.lfHfRatio = s.hf.powerMs2 > 0 ? s.lf.powerMs2 / s.hf.powerMs2 : 0;
}

SpectrumResult AnalyseSpectrum(std::span<const double> timesMs, std::span<const double> rrMs,
                               const SpectrumOptions& o) {
    SpectrumResult s;
    if (rrMs.size() < 4 || timesMs.size() != rrMs.size()) {
        s.error = "At least four RR intervals are needed for a spectrum.";
        return s;
    }
    std::vector<double> tSeconds;
    for (double t : timesMs) tSeconds.push_back(t / 1000);
    const double spanS = tSeconds.back() - tSeconds.front();
    // Points the spectrum would hold: checked as a double, before any is made.
    const double points = o.method == SpectrumMethod::LombScargle
                              ? o.bands.hfHighHz * spanS * std::max(1, o.oversampling) + 1
                              : spanS * o.resampleHz + 1;
    if (!(points <= double(kMaxSpectrumPoints))) {
        s.error = fmt::format("{:.4g} s of beats give {:.3g} spectrum points, more than {}; {}.", spanS, points,
                              kMaxSpectrumPoints,
                              o.method == SpectrumMethod::LombScargle ? "analyse a shorter stretch"
                                                                     : "choose a lower resampling rate");
        return s;
    }
    // Every frequency visits every beat: beyond this the periodogram would run
    // for many minutes with no way to stop it.
    const double sums = points * double(tSeconds.size());
    if (o.method == SpectrumMethod::LombScargle && sums > kMaxLombScargleSums) {
        s.error = fmt::format("{} beats over {:.4g} s need {:.3g} periodogram sums, more than {:.3g}; "
                              "analyse a shorter stretch.",
                              tSeconds.size(), spanS, sums, kMaxLombScargleSums);
        return s;
    }
    if (o.method == SpectrumMethod::LombScargle) {
        std::vector<double> y(rrMs.begin(), rrMs.end());
        RemoveTrend(y, o.detrend);  // uneven times: the trend is fitted against beat index
        s = LombScargleDensity(tSeconds, y, o.bands.hfHighHz, o.oversampling);
    } else {
        if (!(o.resampleHz > 0)) {
            s.error = "The resampling rate must be positive.";
            return s;
        }
        std::vector<double> grid;
        const auto samples = std::size_t((tSeconds.back() - tSeconds.front()) * o.resampleHz) + 1;
        for (std::size_t k = 0; k < samples; ++k) grid.push_back(tSeconds.front() + double(k) / o.resampleHz);
        std::vector<double> y = CubicSplineAt(tSeconds, rrMs, grid);
        RemoveTrend(y, o.detrend);
        WelchPsdResult w = WelchPsd(y, o.resampleHz, o.windowPoints, o.overlapPercent);
        if (w.windows == 0) {
            s.error = "Too few samples for a spectrum.";
            return s;
        }
        s.frequencyHz = std::move(w.frequencyHz);
        s.densityMs2PerHz = std::move(w.density);
        s.windows = w.windows;
    }
    if (s.error.empty()) MeasureBands(s, o.bands);
    return s;
}

}  // namespace vess::hrv
