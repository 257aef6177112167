#include "detection/method_filter.h"

#include <algorithm>
#include <cmath>

#include "detection/block_baseline.h"
#include "detection/point_loops.h"
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
    StreamedBlockMeans means;
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
                           NearEvents near, NoiseLevel units, const Written& written) const {
    const int64_t before = convolver_->ReachBefore() + Apron();
    const int64_t after = convolver_->ReachAfter() + Apron();
    std::vector<int16_t>& raw = Scratch().raw;
    raw.resize(std::size_t(count + before + after));
    rec.ReadSamples(first - before, raw);
    FromSamples(raw, first, count, out, near, units, written);
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
                               std::vector<double>& out, NearEvents near, NoiseLevel units,
                               const Written& written) const {
    // Every value is written below: no zeroing first.
    out.resize(std::size_t(std::max<int64_t>(count, 0)));
    if (method_ != DetectionMethod::Template) {
        // The convolution is levelled a stretch at a time as its blocks come,
        // its block means taken from each block as it is copied out: the
        // points are read again while they are still in the cache, and only
        // those a stretch still to level needs are held.
        ComputeScratch& scratch = Scratch();
        std::vector<double>& held = scratch.filtered;  // outputs heldFrom ..
        const int64_t outputs = int64_t(x.size()) - convolver_->ReachBefore() - convolver_->ReachAfter();
        const int64_t origin = first - Apron();  // the point of output 0
        scratch.means.Start(blockPoints_, origin, outputs);
        constexpr int64_t kLevelledAtOnce = int64_t(1) << 15;
        if (held.size() < std::size_t(2 * kLevelledAtOnce)) held.resize(std::size_t(2 * kLevelledAtOnce));
        int64_t heldFrom = 0, copied = 0;  // outputs copied into held
        int64_t done = 0;  // points of out levelled; the next needs outputs from done on
        // Points done .. upTo - 1 levelled (they need outputs up to upTo + 2 Apron).
        const auto levelTo = [&](int64_t upTo) {
            while (done < upTo) {
                const int64_t n = std::min(kLevelledAtOnce, upTo - done);
                LessRunningMedian(held, origin + heldFrom, first + done, n, out.data() + done, near, units,
                                  scratch.means);
                if (written) written(done, n);
                done += n;
            }
        };
        const auto levelReady = [&] {
            while (done < count) {
                const int64_t n = std::min(kLevelledAtOnce, count - done);
                if (copied < done + n + 2 * Apron()) return;
                levelTo(done + n);
            }
        };
        convolver_->Filter(x.data(), int64_t(x.size()), [&](int64_t at, const double* values, int64_t n) {
            if (at + n - heldFrom > int64_t(held.size())) {
                // Every point the held outputs allow is levelled, and the
                // outputs no point still to level needs make way: only the
                // few its baseline reaches back to move.
                levelTo(std::min(count, copied - 2 * Apron()));
                const int64_t keep = std::min(done, copied);
                std::copy(held.begin() + (keep - heldFrom), held.begin() + (copied - heldFrom), held.begin());
                heldFrom = keep;
                if (at + n - heldFrom > int64_t(held.size())) held.resize(std::size_t(at + n - heldFrom));
            }
            std::copy(values, values + n, held.begin() + (at - heldFrom));
            scratch.means.Add(values, n);
            copied = at + n;
            levelReady();
        });
        levelReady();
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
    // Each block of the criterion is given to written as it is made, while it
    // is in the cache; (v - 0) / 1 is v to the bit.
    const bool standardise = units.centre != 0 || units.sd != 1;
    const auto criteria = [&](int64_t block, const double* sTY, int64_t values) {
        int64_t from = block;
        if (from == 0) {
            out[0] = criterion.Of(sY, sYY, sTY[0]);
            ++from;
        }
        criterion.TileOnSamples(x.data(), from, block + values - from, sY, sYY, sTY + (from - block),
                                out.data() + from);
        if (standardise) Standardise(out.data() + block, values, units.centre, units.sd);
        if (written) written(block, values);
    };
    convolver_->Filter(x.data(), int64_t(x.size()), criteria);
}

void MethodFilter::LessRunningMedian(const std::vector<double>& filtered, int64_t origin, int64_t first,
                                     int64_t count, double* out, NearEvents near, NoiseLevel units,
                                     const StreamedBlockMeans& means) const {
    // filtered[j] is point origin + j.
    LessBlockBaseline({blockPoints_, blocksAside_, direction_, leaveOutAbove_, units.centre, units.sd}, filtered.data(),
                      origin, first, count, out, near == NearEvents::NotANumber, &means);
}

}  // namespace vess
