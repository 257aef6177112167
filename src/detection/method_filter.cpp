#include "detection/method_filter.h"

#include <algorithm>
#include <cmath>

#include "detection/template_criterion.h"

namespace vess {
namespace {

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
        margin_ = int64_t(taps.size());
    }
}

MethodFilter::MethodFilter(const MethodFilter& other)
    : method_(other.method_), direction_(other.direction_), margin_(other.margin_),
      blockPoints_(other.blockPoints_), blocksAside_(other.blocksAside_), leaveOutAbove_(other.leaveOutAbove_),
      templatePoints_(other.templatePoints_), template_(other.template_),
      convolver_(std::make_unique<FftConvolver>(*other.convolver_)) {}

namespace {

// The working buffers of Compute, one set a thread, kept at their largest size.
struct ComputeScratch {
    std::vector<int16_t> raw;
    std::vector<double> filtered;
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

void MethodFilter::Compute(const Recording& rec, int64_t first, int64_t count, std::vector<double>& out,
                           NearEvents near) const {
    const int64_t before = convolver_->ReachBefore() + Apron();
    const int64_t after = convolver_->ReachAfter() + Apron();
    std::vector<int16_t>& raw = Scratch().raw;
    raw.resize(std::size_t(count + before + after));
    rec.ReadSamples(first - before, raw);
    FromSamples(raw, first, count, out, near);
}

std::vector<double> MethodFilter::Compute(const std::vector<int16_t>& signal, int64_t first,
                                          int64_t count) const {
    const int64_t before = convolver_->ReachBefore() + Apron();
    const int64_t after = convolver_->ReachAfter() + Apron();
    std::vector<int16_t> x(std::size_t(count + before + after));
    const int64_t last = int64_t(signal.size()) - 1;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const int64_t at = std::clamp<int64_t>(first - before + int64_t(i), 0, std::max<int64_t>(last, 0));
        x[i] = signal.empty() ? int16_t(0) : signal[std::size_t(at)];
    }
    std::vector<double> out;
    FromSamples(x, first, count, out, NearEvents::Criterion);
    return out;
}

void MethodFilter::FromSamples(const std::vector<int16_t>& x, int64_t first, int64_t count,
                               std::vector<double>& out, NearEvents near) const {
    // Every value is written below: no zeroing first.
    out.resize(std::size_t(std::max<int64_t>(count, 0)));
    if (method_ != DetectionMethod::Template) {
        std::vector<double>& filtered = Scratch().filtered;
        convolver_->Filter(x.data(), int64_t(x.size()), filtered);
        LessRunningMedian(filtered, first, count, out, near);
        return;
    }
    if (count <= 0) return;
    // Least-squares scale and offset of the template on x[i .. i+N-1].
    const int64_t n = templatePoints_;
    double sT = 0, sTT = 0;
    for (double t : template_) {
        sT += t;
        sTT += t * t;
    }
    const double denom = sTT - sT * sT / double(n);
    TemplateCriterion criterion{sT, sTT, denom, double(n), double(n - 1), double(direction_)};
    // The window sums run from point to point; each point's criterion needs
    // only its own sums and the template's correlation there, so a tile of
    // sums is taken first and the criteria then a vector of points at a time,
    // from each block of correlations as the convolver gives it.
    double sY = 0, sYY = 0;
    for (int64_t k = 0; k < n; ++k) {
        const double v = x[std::size_t(k)];
        sY += v;
        sYY += v * v;
    }
    constexpr int64_t kTile = 512;
    double tileY[kTile], tileYY[kTile];
    const auto criteria = [&](int64_t block, const double* sTY, int64_t values) {
        for (int64_t from = block; from < block + values; from += kTile) {
            const int64_t m = std::min(kTile, block + values - from);
            if (from == 0) {
                tileY[0] = sY;
                tileYY[0] = sYY;
                SlideWindowSums(x.data(), n, 1, m - 1, sY, sYY, tileY + 1, tileYY + 1);
            } else {
                SlideWindowSums(x.data(), n, from, m, sY, sYY, tileY, tileYY);
            }
            criterion.Tile(tileY, tileYY, sTY + (from - block), m, out.data() + from);
        }
    };
    convolver_->Filter(x.data(), int64_t(x.size()), criteria);
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

namespace {

// medians[k] = the median of means[k .. k + 2K], kept in a sorted window
// that each step drops one mean from and takes one into.
std::vector<double> RunningMedians(const std::vector<double>& means, int64_t K) {
    std::vector<double> medians(means.size() - std::size_t(2 * K));
    std::vector<double> window(means.begin(), means.begin() + std::ptrdiff_t(2 * K + 1));
    std::sort(window.begin(), window.end());
    for (std::size_t k = 0;; ++k) {
        medians[k] = window[std::size_t(K)];
        if (k + 1 == medians.size()) break;
        ReplaceInSorted(window, means[k], means[k + std::size_t(2 * K + 1)]);
    }
    return medians;
}

// The same, of the means not left out (the lower middle of an even count);
// where all 2K + 1 are left out, the median of them all.
std::vector<double> MediansOfKept(const std::vector<double>& means, const std::vector<char>& leftOut,
                                  int64_t K, const std::vector<double>& ofAll) {
    // The kept means of the window, sorted; each step drops the mean that
    // leaves (when kept) and takes in the one that comes (when kept).
    std::vector<double> medians(means.size() - std::size_t(2 * K));
    std::vector<double> window;
    for (std::size_t j = 0; j < std::size_t(2 * K + 1); ++j)
        if (!leftOut[j]) window.push_back(means[j]);
    std::sort(window.begin(), window.end());
    for (std::size_t k = 0;; ++k) {
        medians[k] = window.empty() ? ofAll[k] : window[(window.size() - 1) / 2];
        if (k + 1 == medians.size()) break;
        if (!leftOut[k]) {
            std::size_t below = 0;
            for (const double w : window) below += w < means[k];
            window.erase(window.begin() + std::ptrdiff_t(below));
        }
        const std::size_t in = k + std::size_t(2 * K + 1);
        if (!leftOut[in]) {
            std::size_t notAbove = 0;
            for (const double w : window) notAbove += !(means[in] < w);
            window.insert(window.begin() + std::ptrdiff_t(notAbove), means[in]);
        }
    }
    return medians;
}

// put(a, criterion) for the points a = from .. to - 1 of filtered (whose
// index 0 is point origin): the point less the level, which runs straight
// between the centres of blocks firstBlock + k and firstBlock + k + 1 from
// medians[k] to medians[k + 1].
template <typename Put>
void Levelled(const std::vector<double>& filtered, int64_t origin, int64_t B, int direction, int64_t firstBlock,
              const std::vector<double>& medians, int64_t from, int64_t to, Put&& put) {
    const double centre = double(B - 1) / 2;
    int64_t a = from;
    for (std::size_t k = 0; k + 1 < medians.size() && a < to; ++k) {
        const double start = double((firstBlock + int64_t(k)) * B) + centre;
        const int64_t end = std::min<int64_t>(int64_t(std::ceil(start + double(B))), to);
        const double step = (medians[k + 1] - medians[k]) / double(B);
        for (; a < end; ++a) {
            const double level = medians[k] + step * (double(a) - start);
            put(a, direction * (filtered[std::size_t(a - origin)] - level));
        }
    }
}

}  // namespace

void MethodFilter::LessRunningMedian(const std::vector<double>& filtered, int64_t first, int64_t count,
                                     std::vector<double>& out, NearEvents near) const {
    // filtered[j] is point first - Apron() + j.
    const int64_t B = blockPoints_, K = blocksAside_, origin = first - Apron();
    // Medians at the centres of blocks firstBlock .. lastBlock, which bracket
    // every point of the stretch.
    const int64_t firstBlock = FloorDiv(first, B) - 1;
    const int64_t lastBlock = FloorDiv(first + count, B) + 1;
    const bool leaving = std::isfinite(leaveOutAbove_);
    // Leaving out needs the criterion of blocks firstBlock - K .. lastBlock + K
    // first, from the medians of all around them.
    const int64_t reach = leaving ? K + 1 : 0;
    const int64_t meansFrom = firstBlock - reach - K;
    std::vector<double> means(std::size_t(lastBlock + reach + K - meansFrom + 1));
    BlockMeans(filtered.data() + (meansFrom * B - origin), B, means);
    std::vector<double> medians = RunningMedians(means, K);  // blocks firstBlock - reach ..
    const auto put = [&](int64_t a, double v) { out[std::size_t(a - first)] = v; };
    if (!leaving) {
        Levelled(filtered, origin, B, direction_, firstBlock, medians, first, first + count, put);
        return;
    }
    // means[j] is block meansFrom + j; a block is left out when a point of it
    // rises above the level.
    std::vector<char> leftOut(means.size(), 0);
    const int64_t flagFrom = firstBlock - K, flagTo = lastBlock + K + 1;
    const auto flag = [&](int64_t a, double v) {
        if (v > leaveOutAbove_) leftOut[std::size_t(FloorDiv(a, B) - meansFrom)] = 1;
    };
    Levelled(filtered, origin, B, direction_, firstBlock - reach, medians, flagFrom * B, flagTo * B, flag);
    const std::vector<double> all(medians.begin() + std::ptrdiff_t(reach), medians.end() - std::ptrdiff_t(reach));
    const std::vector<double> kept(means.begin() + std::ptrdiff_t(reach), means.end() - std::ptrdiff_t(reach));
    const std::vector<char> keptOut(leftOut.begin() + std::ptrdiff_t(reach), leftOut.end() - std::ptrdiff_t(reach));
    const std::vector<double> keptMedians = MediansOfKept(kept, keptOut, K, all);
    Levelled(filtered, origin, B, direction_, firstBlock, keptMedians, first, first + count, put);
    if (near == NearEvents::Criterion) return;
    for (int64_t a = first; a < first + count; ++a) {
        const std::size_t j = std::size_t(FloorDiv(a, B) - meansFrom);
        if (leftOut[j - 1] || leftOut[j] || leftOut[j + 1]) out[std::size_t(a - first)] = NAN;
    }
}

}  // namespace vess
