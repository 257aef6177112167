// The noise of the detection criterion: a Gaussian fitted to the central
// part of its distribution, over the stretches of a channel it is measured on.
#include <algorithm>
#include <cmath>

#include "detection/method_filter.h"
#include "detection/ordered_work.h"
#include "detection/value_of_rank.h"

namespace vess {
namespace {

// Threads that compute the noise stretches of a long recording.
constexpr int kNoiseWorkers = 4;

}  // namespace

NoiseLevel RobustNoise(std::vector<double> v) {
    NoiseLevel level;
    v.erase(std::remove_if(v.begin(), v.end(), [](double d) { return !std::isfinite(d); }), v.end());
    if (v.size() < 16) return level;
    const std::size_t n = v.size();
    const double med = ValueOfRank(v.data(), n, n / 2);
    const double mad = 1.4826 * DistanceOfRank(v.data(), n, n / 2, med);
    if (!(mad > 0)) return {med, 1e-12};
    constexpr int kBins = 101;
    const double lo = med - 3 * mad, width = 6 * mad / kBins;
    std::vector<double> counts(kBins, 0.0);
    CountInBins(v.data(), n, lo, width, kBins, counts.data());
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

NoiseLevel CriterionNoise(const MethodFilter& filter, const Recording& rec, NearEvents near) {
    const std::vector<std::pair<int64_t, int64_t>> stretches = NoiseStretches(rec);
    // The stretches are computed on workers, each with a filter of its own,
    // and joined in order.
    const int workers = UsableWorkers(kNoiseWorkers);
    std::vector<MethodFilter> copies(std::size_t(workers - 1), filter);
    // Each stretch's values go straight to their place, through a buffer
    // each thread keeps (a fresh one a stretch would be faulted in each time).
    std::vector<std::size_t> places(stretches.size() + 1, 0);
    for (std::size_t i = 0; i < stretches.size(); ++i)
        places[i + 1] = places[i] + std::size_t(std::max<int64_t>(stretches[i].second, 0));
    std::vector<double> values(places.back());
    ComputeInOrder(
        int64_t(stretches.size()), workers, 2 * int64_t(workers),
        [&](int worker, int64_t i) {
            const MethodFilter& mine = worker == 0 ? filter : copies[std::size_t(worker - 1)];
            thread_local std::vector<double> part;
            mine.Compute(rec, stretches[std::size_t(i)].first, stretches[std::size_t(i)].second, part, near);
            std::copy(part.begin(), part.end(), values.begin() + std::ptrdiff_t(places[std::size_t(i)]));
            return true;
        },
        [](int64_t, bool) { return true; });
    const auto away = std::count_if(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
    if (near == NearEvents::NotANumber && 4 * std::size_t(away) < values.size())
        return CriterionNoise(filter, rec, NearEvents::Criterion);
    return RobustNoise(std::move(values));
}

}  // namespace vess
