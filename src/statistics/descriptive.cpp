#include "statistics/descriptive.h"
#include "statistics/finite_series.h"
#include "statistics/total_order.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace vess {

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
}

MeanVariance MeanAndVariance(std::span<const double> values) {
    MeanVariance mv;
    mv.n = double(values.size());
    if (values.empty()) return {0, kNaN, kNaN};
    double sum = 0;
    for (double v : values) sum += v;
    mv.mean = sum / mv.n;
    // Two-pass with the compensating term keeps the variance exact for data
    // far from zero (times in ms of a long recording).
    double squares = 0, residual = 0;
    for (double v : values) {
        squares += (v - mv.mean) * (v - mv.mean);
        residual += v - mv.mean;
    }
    mv.variance = values.size() < 2 ? kNaN : (squares - residual * residual / mv.n) / (mv.n - 1);
    return mv;
}

Descriptive Describe(std::span<const double> all) {
    const FiniteSeries finite = FiniteOnly(all);
    const std::span<const double> values = finite.values;
    Descriptive d;
    d.leftOut = int64_t(finite.leftOut);
    d.n = int64_t(values.size());
    const MeanVariance mv = MeanAndVariance(values);
    d.average = mv.mean;
    d.variance = mv.variance;
    d.stdev = std::sqrt(mv.variance);
    d.stdError = d.stdev / std::sqrt(mv.n);
    d.coeffOfVar = d.stdev / d.average;
    d.invCv2 = 1.0 / (d.coeffOfVar * d.coeffOfVar);
    if (values.empty()) {
        d.skewness = d.kurtosis = d.median = d.minimum = d.maximum = kNaN;
        return d;
    }
    const double n = mv.n;
    double cubes = 0, fourths = 0;
    for (double v : values) {
        const double z = (v - d.average) / d.stdev;
        cubes += z * z * z;
        fourths += z * z * z * z;
    }
    d.skewness = n < 3 ? kNaN : n / ((n - 1) * (n - 2)) * cubes;
    d.kurtosis = n < 4 ? kNaN
                       : n * (n + 1) / ((n - 1) * (n - 2) * (n - 3)) * fourths -
                             3 * (n - 1) * (n - 1) / ((n - 2) * (n - 3));
    std::vector<double> sorted(values.begin(), values.end());
    SortTotalOrder(sorted);
    const std::size_t mid = sorted.size() / 2;
    d.median = sorted.size() % 2 ? sorted[mid] : (sorted[mid - 1] + sorted[mid]) / 2;
    d.minimum = sorted.front();
    d.maximum = sorted.back();
    return d;
}

}  // namespace vess
