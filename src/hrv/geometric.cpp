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

// Running sums over the working bins, so that the squared error of a flank
// of any width comes in constant time: with u the distance from the foot and
// L the flank's width, sum (d - h u / L)^2 = sum d^2 - 2 h/L sum d u
// + h^2/L^2 sum u^2. Sums of counts stay exact in doubles below 2^53.
struct RunningSums {
    std::vector<double> count, countTimesBin, squares;  // over [0, i)
    explicit RunningSums(std::span<const int32_t> d)
        : count(d.size() + 1), countTimesBin(d.size() + 1), squares(d.size() + 1) {
        for (std::size_t t = 0; t < d.size(); ++t) {
            count[t + 1] = count[t] + d[t];
            countTimesBin[t + 1] = countTimesBin[t] + double(d[t]) * double(t);
            squares[t + 1] = squares[t] + double(d[t]) * double(d[t]);
        }
    }
    double Count(std::size_t a, std::size_t b) const { return count[b] - count[a]; }
    double Moment(std::size_t a, std::size_t b) const {
        return countTimesBin[b] - countTimesBin[a];
    }
    double Squares(std::size_t a, std::size_t b) const { return squares[b] - squares[a]; }
};

// 1^2 + 2^2 + ... + k^2.
double SumOfSquares(std::size_t k) {
    const double x = double(k);
    return x * (x + 1) * (2 * x + 1) / 6;
}

// Error of a flank of width L whose counts weighted by the distance from the
// foot sum to weighted, the squares of those counts to squares.
double FlankCost(double squares, double weighted, std::size_t width, double height) {
    const double l = double(width);
    return squares - 2 * height / l * weighted +
           height * height / (l * l) * SumOfSquares(width - 1);
}

// Squared error of the rising flank: zero up to bin n, then a straight line
// reaching the apex height at bin x (exclusive), against counts [0, x).
double RisingCost(const RunningSums& s, std::size_t n, std::size_t x, double height) {
    const double weighted = s.Moment(n + 1, x) - double(n) * s.Count(n + 1, x);
    return s.Squares(0, n + 1) + FlankCost(s.Squares(n + 1, x), weighted, x - n, height);
}

// The same for the falling flank, from the apex x (exclusive) to foot m and
// zero after it, against counts (x, end).
double FallingCost(const RunningSums& s, std::size_t m, std::size_t x, double height) {
    const std::size_t end = s.count.size() - 1;
    const double weighted = double(m) * s.Count(x + 1, m) - s.Moment(x + 1, m);
    return s.Squares(m, end) + FlankCost(s.Squares(x + 1, m), weighted, m - x, height);
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

    const RunningSums sums(d);
    // Costs equal but for rounding count as a tie, which the first candidate
    // (the widest rising flank, the narrowest falling one) wins.
    const double tie = 1e-12 * (sums.Squares(0, d.size()) + 1);
    std::size_t bestN = 0, bestM = d.size() - 1;
    double bestRise = std::numeric_limits<double>::infinity();
    for (std::size_t n = 0; n < apex; ++n) {
        const double c = RisingCost(sums, n, apex, height);
        if (c < bestRise - tie) bestRise = c, bestN = n;
    }
    double bestFall = std::numeric_limits<double>::infinity();
    for (std::size_t m = apex + 1; m < d.size(); ++m) {
        const double c = FallingCost(sums, m, apex, height);
        if (c < bestFall - tie) bestFall = c, bestM = m;
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
