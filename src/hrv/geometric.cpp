#include "hrv/geometric.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "hrv/time_domain.h"
#include "statistics/binning.h"

namespace vess::hrv {

std::optional<Histogram> BinValues(std::span<const double> values, double binSize) {
    if (!(binSize > 0)) return std::nullopt;
    BinnedCounts bins = CountIntoBins(values, binSize);
    if (bins.tooManyBins) return std::nullopt;
    return Histogram{binSize, bins.lowestBin, std::move(bins.counts)};
}

namespace {

// Squared error of the rising flank: zero up to bin n, then a straight line
// reaching the apex height at bin x (exclusive), against counts [0, x).
double RisingCost(std::span<const int32_t> d, std::size_t n, std::size_t x, double height) {
    double cost = 0;
    for (std::size_t t = 0; t < x; ++t) {
        const double q = t <= n ? 0 : height * double(t - n) / double(x - n);
        cost += (d[t] - q) * (d[t] - q);
    }
    return cost;
}

double FallingCost(std::span<const int32_t> d, std::size_t m, std::size_t x, double height) {
    double cost = 0;
    for (std::size_t t = x + 1; t < d.size(); ++t) {
        const double q = t >= m ? 0 : height * double(m - t) / double(m - x);
        cost += (d[t] - q) * (d[t] - q);
    }
    return cost;
}

}  // namespace

TriangleFit FitTriangle(const Histogram& h) {
    TriangleFit fit;
    if (h.counts.empty()) return fit;
    // Working on bin centres, with one empty bin added on either side so
    // that the feet may lie outside the occupied range.
    std::vector<int32_t> d{0};
    d.insert(d.end(), h.counts.begin(), h.counts.end());
    d.push_back(0);
    const auto apex = std::size_t(std::max_element(d.begin(), d.end()) - d.begin());
    const double height = d[apex];
    int64_t total = 0;
    for (int32_t c : h.counts) total += c;
    fit.apexCount = int32_t(height);
    fit.triangularIndex = height > 0 ? double(total) / height : 0;

    std::size_t bestN = 0, bestM = d.size() - 1;
    double bestRise = std::numeric_limits<double>::infinity();
    for (std::size_t n = 0; n < apex; ++n) {
        const double c = RisingCost(d, n, apex, height);
        if (c < bestRise) bestRise = c, bestN = n;
    }
    double bestFall = std::numeric_limits<double>::infinity();
    for (std::size_t m = apex + 1; m < d.size(); ++m) {
        const double c = FallingCost(d, m, apex, height);
        if (c < bestFall) bestFall = c, bestM = m;
    }
    const auto centre = [&](std::size_t i) {
        return (double(h.lowestBin - 1 + int64_t(i)) + 0.5) * h.binSize;
    };
    fit.nMs = centre(bestN);
    fit.mMs = centre(bestM);
    fit.apexMs = centre(apex);
    fit.tinnMs = fit.mMs - fit.nMs;
    return fit;
}

LorenzMeasures AnalyseLorenz(std::span<const std::pair<double, double>> pairs) {
    std::vector<double> across, along, xs, ys;
    for (const auto& [x, y] : pairs) {
        across.push_back((y - x) / std::numbers::sqrt2);
        along.push_back((y + x) / std::numbers::sqrt2);
        xs.push_back(x);
        ys.push_back(y);
    }
    LorenzMeasures m;
    m.n = int(pairs.size());
    m.sd1Ms = Describe(across).sd;
    m.sd2Ms = Describe(along).sd;
    m.ratio = m.sd2Ms > 0 ? m.sd1Ms / m.sd2Ms : 0;
    m.centreX = Describe(xs).mean;
    m.centreY = Describe(ys).mean;
    return m;
}

std::vector<std::pair<double, double>> LorenzEllipse(const LorenzMeasures& m, int points) {
    std::vector<std::pair<double, double>> out;
    if (points < 3) return out;
    const double c = std::numbers::sqrt2 / 2;
    for (int k = 0; k < points; ++k) {
        const double a = 2 * std::numbers::pi * k / (points - 1);
        const double u = m.sd2Ms * std::cos(a), v = m.sd1Ms * std::sin(a);  // along, across
        out.emplace_back(m.centreX + c * (u - v), m.centreY + c * (u + v));
    }
    return out;
}

}  // namespace vess::hrv
