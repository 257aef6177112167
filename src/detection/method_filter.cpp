#include "detection/method_filter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "detection/ordered_work.h"
#include "detection/template_criterion.h"

namespace vess {
namespace {

// Threads that compute the noise stretches of a long recording.
constexpr int kNoiseWorkers = 4;

// The baseline's blocks (their means are what the running median takes).
constexpr double kBaselineBlockMs = 2;

std::vector<double> GaussianTaps(double sdPoints) {
    if (!(sdPoints > 0.3)) return {1.0};
    const int64_t half = int64_t(std::ceil(4 * sdPoints));
    std::vector<double> g(std::size_t(2 * half + 1));
    double sum = 0;
    for (int64_t k = -half; k <= half; ++k) {
        const double v = std::exp(-0.5 * (k / sdPoints) * (k / sdPoints));
        g[std::size_t(k + half)] = v;
        sum += v;
    }
    for (double& v : g) v /= sum;
    return g;
}

// The inverse of the sampled kernel p^n - q^n (p for the decay, q for the
// rise): a[n] = (x[n+1] - (p+q) x[n] + pq x[n-1]) / (p - q), as taps on
// x[n+1], x[n], x[n-1] (centre 1).
std::vector<double> InverseKernelTaps(const EventKernel& k, double intervalUs) {
    const double dtMs = intervalUs / 1000.0;
    const double p = std::exp(-dtMs / k.decayTauMs), q = std::exp(-dtMs / k.riseTauMs);
    const double s = 1.0 / (p - q);
    return {s, -(p + q) * s, p * q * s};
}

std::vector<double> Convolve(const std::vector<double>& a, const std::vector<double>& b) {
    std::vector<double> out(a.size() + b.size() - 1, 0.0);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) out[i + j] += a[i] * b[j];
    return out;
}

}  // namespace

double SmoothingMsForKernel(const EventKernel& kernel) {
    return std::max(MethodParameters{}.lowPassMs, kernel.riseTauMs);
}

MethodFilter::MethodFilter(const MethodParameters& params, double intervalUs, int direction)
    : method_(params.method), direction_(direction > 0 ? 1 : -1) {
    const EventKernel kernel{params.riseTauMs, params.decayTauMs};
    const double dtMs = intervalUs / 1000.0;
    if (method_ == DetectionMethod::Template) {
        templatePoints_ = std::max<int64_t>(
            int64_t(std::lround((KernelPeakMs(kernel) + 1.5 * kernel.decayTauMs) / dtMs)), 4);
        template_ = KernelSamples(kernel, intervalUs, templatePoints_);
        std::vector<double> reversed(template_.rbegin(), template_.rend());
        convolver_ = std::make_unique<FftConvolver>(reversed, templatePoints_ - 1);
        margin_ = templatePoints_;
    } else {
        const std::vector<double> g = GaussianTaps(params.lowPassMs / dtMs);
        const std::vector<double> taps = Convolve(InverseKernelTaps(kernel, intervalUs), g);
        convolver_ = std::make_unique<FftConvolver>(taps, int64_t(g.size() / 2) + 1);
        blockPoints_ = std::max<int64_t>(int64_t(std::lround(kBaselineBlockMs / dtMs)), 1);
        blocksAside_ = std::max<int64_t>(
            int64_t(std::lround(kBaselineWindowMs / 2 / (double(blockPoints_) * dtMs))), 1);
        margin_ = Apron() + int64_t(taps.size());
    }
}

MethodFilter::MethodFilter(const MethodFilter& other)
    : method_(other.method_), direction_(other.direction_), margin_(other.margin_),
      blockPoints_(other.blockPoints_), blocksAside_(other.blocksAside_),
      templatePoints_(other.templatePoints_), template_(other.template_),
      convolver_(std::make_unique<FftConvolver>(*other.convolver_)) {}

namespace {

// The working buffers of Compute, one set a thread, kept at their largest size.
struct ComputeScratch {
    std::vector<int16_t> raw;
    std::vector<double> x, filtered;
};

ComputeScratch& Scratch() {
    thread_local ComputeScratch scratch;
    return scratch;
}


}  // namespace

std::vector<double> MethodFilter::Compute(const Recording& rec, int64_t first, int64_t count) const {
    std::vector<double> out;
    Compute(rec, first, count, out);
    return out;
}

void MethodFilter::Compute(const Recording& rec, int64_t first, int64_t count, std::vector<double>& out) const {
    const int64_t before = convolver_->ReachBefore() + Apron();
    const int64_t after = convolver_->ReachAfter() + Apron();
    ComputeScratch& scratch = Scratch();
    scratch.raw.resize(std::size_t(count + before + after));
    rec.ReadSamples(first - before, scratch.raw);
    scratch.x.assign(scratch.raw.begin(), scratch.raw.end());
    FromSamples(scratch.x, first, count, out);
}

std::vector<double> MethodFilter::Compute(const std::vector<int16_t>& signal, int64_t first,
                                          int64_t count) const {
    const int64_t before = convolver_->ReachBefore() + Apron();
    const int64_t after = convolver_->ReachAfter() + Apron();
    std::vector<double> x(std::size_t(count + before + after));
    const int64_t last = int64_t(signal.size()) - 1;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const int64_t at = std::clamp<int64_t>(first - before + int64_t(i), 0, std::max<int64_t>(last, 0));
        x[i] = signal.empty() ? 0.0 : signal[std::size_t(at)];
    }
    std::vector<double> out;
    FromSamples(x, first, count, out);
    return out;
}

void MethodFilter::FromSamples(const std::vector<double>& x, int64_t first, int64_t count,
                               std::vector<double>& out) const {
    std::vector<double>& filtered = Scratch().filtered;
    convolver_->Filter(x, filtered);
    // Every value is written below: no zeroing first.
    out.resize(std::size_t(std::max<int64_t>(count, 0)));
    if (method_ == DetectionMethod::Template) {
        // Least-squares scale and offset of the template on x[i .. i+N-1].
        const int64_t n = templatePoints_;
        double sT = 0, sTT = 0;
        for (double t : template_) {
            sT += t;
            sTT += t * t;
        }
        const double denom = sTT - sT * sT / double(n);
        double sY = 0, sYY = 0;
        for (int64_t k = 0; k < n; ++k) {
            sY += x[std::size_t(k)];
            sYY += x[std::size_t(k)] * x[std::size_t(k)];
        }
        // The window sums run from point to point; each point's criterion
        // needs only its own sums, so a tile of sums is taken first and the
        // criteria then two points at a time.
        TemplateCriterion criterion{sT, sTT, denom, double(n), double(n - 1), double(direction_)};
        constexpr int64_t kTile = 512;
        double tileY[kTile], tileYY[kTile];
        for (int64_t from = 0; from < count; from += kTile) {
            const int64_t m = std::min(kTile, count - from);
            for (int64_t j = 0; j < m; ++j) {
                const int64_t i = from + j;
                if (i > 0) {
                    const double gone = x[std::size_t(i - 1)], come = x[std::size_t(i + n - 1)];
                    sY += come - gone;
                    sYY += come * come - gone * gone;
                }
                tileY[j] = sY;
                tileYY[j] = sYY;
            }
            criterion.Tile(tileY, tileYY, filtered.data() + from, m, out.data() + from);
        }
        return;
    }
    LessRunningMedian(filtered, first, count, out);
}

namespace {

// means[m] = the mean of x[m B .. m B + B - 1], each sum taken in order.
// Four blocks are summed side by side, so that each block's chain of
// additions overlaps the others' instead of waiting on its own.
void BlockMeans(const double* x, int64_t B, std::vector<double>& means) {
    const std::size_t count = means.size();
    std::size_t m = 0;
    for (; m + 4 <= count; m += 4) {
        const double* p = x + int64_t(m) * B;
        double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
        for (int64_t j = 0; j < B; ++j) {
            s0 += p[j];
            s1 += p[j + B];
            s2 += p[j + 2 * B];
            s3 += p[j + 3 * B];
        }
        means[m] = s0 / double(B);
        means[m + 1] = s1 / double(B);
        means[m + 2] = s2 / double(B);
        means[m + 3] = s3 / double(B);
    }
    for (; m < count; ++m) {
        double sum = 0;
        for (int64_t j = 0; j < B; ++j) sum += x[int64_t(m) * B + j];
        means[m] = sum / double(B);
    }
}

// Takes gone out of the sorted window and puts in into it, keeping it
// sorted, as erasing at lower_bound and inserting at upper_bound do; the
// places are counted without branches, which a window of a few dozen
// values finds faster than a binary search that mispredicts.
void ReplaceInSorted(std::vector<double>& window, double gone, double in) {
    std::size_t below = 0;
    for (const double w : window) below += w < gone;
    window.erase(window.begin() + std::ptrdiff_t(below));
    std::size_t notAbove = 0;
    for (const double w : window) notAbove += !(in < w);
    window.insert(window.begin() + std::ptrdiff_t(notAbove), in);
}

// floor(a / b) for b > 0, also for negative a.
int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

}  // namespace

void MethodFilter::LessRunningMedian(const std::vector<double>& filtered, int64_t first, int64_t count,
                                     std::vector<double>& out) const {
    // filtered[j] is point first - Apron() + j.
    const int64_t B = blockPoints_, K = blocksAside_, origin = first - Apron();
    // Medians at the centres of blocks firstBlock .. lastBlock, which bracket
    // every point of the stretch.
    const int64_t firstBlock = FloorDiv(first, B) - 1;
    const int64_t lastBlock = FloorDiv(first + count, B) + 1;
    const int64_t meansFrom = firstBlock - K;
    std::vector<double> means(std::size_t(lastBlock + K - meansFrom + 1));
    BlockMeans(filtered.data() + (meansFrom * B - origin), B, means);
    // The running median of 2 K + 1 block means, kept in a sorted window
    // that each step drops one mean from and takes one into.
    std::vector<double> medians(std::size_t(lastBlock - firstBlock + 1));
    std::vector<double> window(means.begin(), means.begin() + std::ptrdiff_t(2 * K + 1));
    std::sort(window.begin(), window.end());
    for (std::size_t k = 0;; ++k) {
        medians[k] = window[std::size_t(K)];
        if (k + 1 == medians.size()) break;
        ReplaceInSorted(window, means[k], means[k + std::size_t(2 * K + 1)]);
    }
    // Between the centres of blocks k and k + 1 the level runs straight from
    // one median to the next.
    const double centre = double(B - 1) / 2;
    int64_t a = first;
    for (std::size_t k = 0; k + 1 < medians.size() && a < first + count; ++k) {
        const double from = double((firstBlock + int64_t(k)) * B) + centre;
        const int64_t end = std::min<int64_t>(int64_t(std::ceil(from + double(B))), first + count);
        const double step = (medians[k + 1] - medians[k]) / double(B);
        for (; a < end; ++a) {
            const double level = medians[k] + step * (double(a) - from);
            out[std::size_t(a - first)] = direction_ * (filtered[std::size_t(a - origin)] - level);
        }
    }
}

NoiseLevel RobustNoise(std::vector<double> v) {
    NoiseLevel level;
    v.erase(std::remove_if(v.begin(), v.end(), [](double d) { return !std::isfinite(d); }), v.end());
    if (v.size() < 16) return level;
    auto median = [](std::vector<double>& a) {
        std::nth_element(a.begin(), a.begin() + long(a.size() / 2), a.end());
        return a[a.size() / 2];
    };
    const double med = median(v);
    std::vector<double> dev(v.size());
    for (std::size_t i = 0; i < v.size(); ++i) dev[i] = std::abs(v[i] - med);
    const double mad = 1.4826 * median(dev);
    if (!(mad > 0)) return {med, 1e-12};
    constexpr int kBins = 101;
    const double lo = med - 3 * mad, width = 6 * mad / kBins;
    std::vector<double> counts(kBins, 0.0);
    for (double d : v) {
        const double b = (d - lo) / width;
        if (b >= 0 && b < kBins) counts[std::size_t(b)] += 1;
    }
    const double fullest = *std::max_element(counts.begin(), counts.end());
    // Weighted least squares of ln(count) = a + b x + c x^2 (x in MADs).
    double s[5] = {0, 0, 0, 0, 0}, r[3] = {0, 0, 0};
    for (int i = 0; i < kBins; ++i) {
        if (counts[std::size_t(i)] < fullest / 5) continue;
        const double x = (lo + (i + 0.5) * width - med) / mad;
        const double y = std::log(counts[std::size_t(i)]);
        const double w = counts[std::size_t(i)];
        double p = w;
        for (int k = 0; k < 5; ++k, p *= x) s[k] += p;
        r[0] += w * y;
        r[1] += w * y * x;
        r[2] += w * y * x * x;
    }
    // Solve the 3x3 normal equations by Cramer's rule.
    auto det3 = [](double a, double b, double c, double d, double e, double f, double g, double h,
                   double i) { return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g); };
    const double d = det3(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    if (!(std::abs(d) > 0)) return {med, mad};
    const double b = det3(s[0], r[0], s[2], s[1], r[1], s[3], s[2], r[2], s[4]) / d;
    const double c = det3(s[0], s[1], r[0], s[1], s[2], r[1], s[2], s[3], r[2]) / d;
    if (!(c < 0)) return {med, mad};
    level.sd = mad * std::sqrt(-1 / (2 * c));
    level.centre = med + mad * (-b / (2 * c));
    return level;
}

std::vector<std::pair<int64_t, int64_t>> NoiseStretches(const Recording& rec) {
    const int64_t points = rec.PointsPerChannel();
    if (points <= int64_t(120e6 / rec.IntervalUs())) return {{0, points}};
    const int64_t stretch = int64_t(3e6 / rec.IntervalUs());
    constexpr int kStretches = 40;
    std::vector<std::pair<int64_t, int64_t>> stretches;
    for (int s = 0; s < kStretches; ++s) stretches.emplace_back((points - stretch) * s / (kStretches - 1), stretch);
    return stretches;
}

NoiseLevel CriterionNoise(const MethodFilter& filter, const Recording& rec) {
    const std::vector<std::pair<int64_t, int64_t>> stretches = NoiseStretches(rec);
    // The stretches are computed on workers, each with a filter of its own,
    // and joined in order.
    const int workers = UsableWorkers(kNoiseWorkers);
    std::vector<MethodFilter> copies(std::size_t(workers - 1), filter);
    std::vector<double> values;
    ComputeInOrder(
        int64_t(stretches.size()), workers, 2 * int64_t(workers),
        [&](int worker, int64_t i) {
            const MethodFilter& mine = worker == 0 ? filter : copies[std::size_t(worker - 1)];
            return mine.Compute(rec, stretches[std::size_t(i)].first, stretches[std::size_t(i)].second);
        },
        [&](int64_t, const std::vector<double>& part) {
            values.insert(values.end(), part.begin(), part.end());
            return true;
        });
    return RobustNoise(std::move(values));
}

}  // namespace vess
