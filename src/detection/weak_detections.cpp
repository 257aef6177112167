#include "detection/weak_detections.h"

#include <algorithm>
#include <cmath>

#include "detection/method_filter.h"
#include "detection/point_loops.h"

namespace vess {
namespace {

constexpr double kLeadMs = 3;         // fitted before the onset
constexpr double kSearchMs = 3;       // onsets tried either side of the centre
constexpr double kSearchStepMs = 0.1;
constexpr double kDecaysFitted = 4;

int64_t Points(double ms, double intervalUs) {
    return std::max<int64_t>(int64_t(std::lround(ms * 1000 / intervalUs)), 1);
}

// The samples less their running mean over 2 half + 1 points, where whole.
// The window's sum is an exact integer, kept from point to point.
void AppendDetrended(const std::vector<int16_t>& x, int64_t half, std::vector<double>& out) {
    const int64_t n = int64_t(x.size()), width = 2 * half + 1;
    if (n < width) return;
    int64_t sum = 0;
    for (int64_t i = 0; i + 1 < width; ++i) sum += x[std::size_t(i)];
    for (int64_t i = half; i + half < n; ++i) {
        sum += x[std::size_t(i + half)];
        out.push_back(x[std::size_t(i)] - double(sum) / double(width));
        sum -= x[std::size_t(i - half)];
    }
}

}  // namespace

std::vector<WeakRun> WeakRuns(const std::vector<double>& z, double low, double high) {
    WeakRunScan scan(low, high);
    scan.Scan(z.data(), 0, int64_t(z.size()));
    return scan.Runs();
}

void WeakRunScan::Scan(const double* z, int64_t from, int64_t to) {
    int64_t i = from;
    if (begunBefore_) {
        while (i < to && z[i] > low_) ++i;
        if (i == to) return;
        begunBefore_ = false;
    }
    double unusedDip = 0;
    int64_t unusedDipIndex = 0;
    for (;;) {
        if (!inRun_) {
            // The stretches below low are passed a vector at a time.
            i = NextAbove(z, i, to, low_, false, unusedDip, unusedDipIndex);
            if (i == to) return;
            inRun_ = true;
            run_ = WeakRun{i, i};
            topValue_ = z[i];
        }
        for (; i < to && z[i] > low_; ++i) {
            if (z[i] > topValue_) {
                run_.top = i;
                topValue_ = z[i];
            }
        }
        if (i == to) return;
        inRun_ = false;
        if (topValue_ < high_) runs_.push_back(run_);
    }
}

double FittedKernelAmplitude(const Recording& rec, int64_t centre, const EventKernel& kernel,
                             int direction, int64_t end) {
    const double intervalUs = rec.IntervalUs();
    const int64_t lead = Points(kLeadMs, intervalUs), search = Points(kSearchMs, intervalUs);
    const int64_t step = Points(kSearchStepMs, intervalUs);
    const int64_t after = Points(KernelPeakMs(kernel) + kDecaysFitted * kernel.decayTauMs, intervalUs);
    const int64_t leastAfter = std::min(Points(2 * KernelPeakMs(kernel), intervalUs), after);
    const std::vector<double> k = KernelSamples(kernel, intervalUs, after);
    const int64_t first = centre - search - lead;
    std::vector<int16_t> raw(std::size_t(2 * search + lead + after));
    rec.ReadSamples(first, raw);
    // The sums over the kernel and over the samples of every window, from
    // running sums: the kernel's taken in the fit's order, the samples'
    // whole numbers (exact in any order).
    std::vector<double> kSum(k.size() + 1, 0.0), kkSum(k.size() + 1, 0.0);
    for (std::size_t j = 0; j < k.size(); ++j) {
        kSum[j + 1] = kSum[j] + k[j];
        kkSum[j + 1] = kkSum[j] + k[j] * k[j];
    }
    std::vector<int64_t> ySum(raw.size() + 1, 0), yySum(raw.size() + 1, 0);
    for (std::size_t j = 0; j < raw.size(); ++j) {
        ySum[j + 1] = ySum[j] + raw[j];
        yySum[j + 1] = yySum[j] + int64_t(raw[j]) * raw[j];
    }
    double best = -INFINITY, amplitude = 0;
    for (int64_t shift = 0; shift <= 2 * search; shift += step) {
        const int64_t n = std::min(lead + after, end - (first + shift));
        if (n < lead + leastAfter) break;
        const std::size_t fitted = std::size_t(n - lead);
        const double sK = kSum[fitted], sKK = kkSum[fitted];
        const double sY = double(ySum[std::size_t(shift + n)] - ySum[std::size_t(shift)]);
        const double sYY = double(yySum[std::size_t(shift + n)] - yySum[std::size_t(shift)]);
        const int16_t* y = raw.data() + shift + lead;
        double sKY = 0;
        for (std::size_t j = 0; j < fitted; ++j) sKY += k[j] * double(y[j]);
        const double denom = sKK - sK * sK / double(n);
        const double scale = (sKY - sK * sY / double(n)) / denom;
        const double sse = std::max(sYY - sY * sY / double(n) - scale * scale * denom, 1e-12);
        const double se = std::sqrt(sse / double(n - 2) / denom);
        const double criterion = direction * scale / se;
        if (criterion > best) {
            best = criterion;
            amplitude = direction * scale;
        }
    }
    return amplitude;
}

double TraceNoiseSd(const Recording& rec) {
    const int64_t half = Points(kBaselineWindowMs / 2, rec.IntervalUs());
    const std::vector<std::pair<int64_t, int64_t>> stretches = NoiseStretches(rec);
    std::vector<double> values;
    int64_t total = 0;
    for (const auto& stretch : stretches) total += std::max<int64_t>(stretch.second, 0);
    values.reserve(std::size_t(total));
    for (const auto& [first, count] : stretches) {
        std::vector<int16_t> x(std::size_t(std::max<int64_t>(count, 0)));
        rec.ReadSamples(first, x);
        AppendDetrended(x, half, values);
    }
    return RobustNoise(std::move(values)).sd;
}

}  // namespace vess
