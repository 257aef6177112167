#include "statistics/two_sample_tests.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "statistics/special_functions.h"
#include "statistics/texts.h"
#include "statistics/total_order.h"

namespace vess {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// t with its p-values; p is 1 for t = 0 and 0 for an infinite t.
TTestResult WithT(TTestResult r, double t, double df) {
    r.t = t;
    r.degreesOfFreedom = df;
    r.pTwoTail = StudentTwoTailedP(t, df);
    r.pOneTail = r.pTwoTail / 2;
    return r;
}

// mean / standard error where a zero error is a clear verdict, not 0/0.
double Ratio(double numerator, double standardError) {
    if (standardError > 0) return numerator / standardError;
    if (numerator == 0) return 0;
    return numerator > 0 ? std::numeric_limits<double>::infinity()
                         : -std::numeric_limits<double>::infinity();
}

std::vector<double> Sorted(std::span<const double> v) {
    std::vector<double> s(v.begin(), v.end());
    SortTotalOrder(s);
    return s;
}

}  // namespace

TTestResult PairedTTest(std::span<const double> x1, std::span<const double> x2) {
    TTestResult r;
    r.sample1 = MeanAndVariance(x1);
    r.sample2 = MeanAndVariance(x2);
    r.pooledVariance = kNaN;
    std::vector<double> d(std::min(x1.size(), x2.size()));
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = x1[i] - x2[i];
    const MeanVariance md = MeanAndVariance(d);
    return WithT(r, Ratio(md.mean, std::sqrt(md.variance / md.n)), md.n - 1);
}

TTestResult EqualVarianceTTest(const MeanVariance& s1, const MeanVariance& s2) {
    TTestResult r;
    r.sample1 = s1;
    r.sample2 = s2;
    const double df = s1.n + s2.n - 2;
    r.pooledVariance = ((s1.n - 1) * s1.variance + (s2.n - 1) * s2.variance) / df;
    return WithT(r, Ratio(s1.mean - s2.mean, std::sqrt(r.pooledVariance * (1 / s1.n + 1 / s2.n))), df);
}

TTestResult UnequalVarianceTTest(const MeanVariance& s1, const MeanVariance& s2) {
    TTestResult r;
    r.sample1 = s1;
    r.sample2 = s2;
    r.pooledVariance = kNaN;
    const double v1 = s1.variance / s1.n;
    const double v2 = s2.variance / s2.n;
    const double df = (v1 + v2) * (v1 + v2) / (v1 * v1 / (s1.n - 1) + v2 * v2 / (s2.n - 1));
    return WithT(r, Ratio(s1.mean - s2.mean, std::sqrt(v1 + v2)), df);
}

FTestResult FTest(const MeanVariance& s1, const MeanVariance& s2) {
    FTestResult r;
    r.sample1 = s1;
    r.sample2 = s2;
    r.df1 = s1.n - 1;
    r.df2 = s2.n - 1;
    r.f = s1.variance / s2.variance;
    r.pOneTail = FUpperTailP(r.f, r.df1, r.df2);
    r.pTwoTail = std::min(1.0, 2 * std::min(r.pOneTail, 1 - r.pOneTail));
    return r;
}

KsResult KolmogorovSmirnov(std::span<const double> a, std::span<const double> b) {
    // NaN has no place on a cumulative curve: the samples are their numbers.
    std::vector<double> s1 = Sorted(a), s2 = Sorted(b);
    std::erase_if(s1, [](double x) { return std::isnan(x); });
    std::erase_if(s2, [](double x) { return std::isnan(x); });
    KsResult r;
    r.n1 = int64_t(s1.size());
    r.n2 = int64_t(s2.size());
    if (s1.empty() || s2.empty()) {
        r.maxAbsDifference = r.z = r.p = kNaN;
        return r;
    }
    // Walk both sorted samples together; ties advance both curves before the
    // difference is taken.
    std::size_t i = 0, j = 0;
    while (i < s1.size() && j < s2.size()) {
        const double x = std::min(s1[i], s2[j]);
        while (i < s1.size() && s1[i] == x) ++i;
        while (j < s2.size() && s2[j] == x) ++j;
        const double diff = double(i) / double(r.n1) - double(j) / double(r.n2);
        r.maxPlusDifference = std::max(r.maxPlusDifference, diff);
        r.maxMinusDifference = std::min(r.maxMinusDifference, diff);
    }
    r.maxAbsDifference = std::max(r.maxPlusDifference, -r.maxMinusDifference);
    const double n1 = double(r.n1), n2 = double(r.n2);
    r.z = r.maxAbsDifference * std::sqrt(n1 * n2 / (n1 + n2));
    r.p = KolmogorovQ(r.z);
    r.exactP = KsExactP(r.n1, r.n2, r.maxAbsDifference);
    return r;
}

namespace {

PlotSeries CumulativeSteps(std::span<const double> v, std::string legend) {
    PlotSeries s;
    s.kind = SeriesKind::Steps;
    s.legend = std::move(legend);
    const std::vector<double> sorted = Sorted(v);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        s.x.push_back(sorted[i]);
        s.y.push_back(double(i + 1) / double(sorted.size()));
    }
    return s;
}

}  // namespace

PlotData KsPlot(std::span<const double> a, std::span<const double> b) {
    PlotData p;
    p.title = std::string(stats_texts::kKsTitle);
    p.yAxis = std::string(stats_texts::kCumulativeFraction);
    p.series.push_back(CumulativeSteps(a, stats_texts::ArrayName(1)));
    p.series.push_back(CumulativeSteps(b, stats_texts::ArrayName(2)));
    return p;
}

RegressionResult LinearRegression(std::span<const double> x, std::span<const double> y) {
    RegressionResult r;
    const std::size_t count = std::min(x.size(), y.size());
    r.n = int64_t(count);
    const MeanVariance mx = MeanAndVariance(x.first(count));
    const MeanVariance my = MeanAndVariance(y.first(count));
    double sxx = 0, syy = 0, sxy = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double dx = x[i] - mx.mean, dy = y[i] - my.mean;
        sxx += dx * dx;
        syy += dy * dy;
        sxy += dx * dy;
    }
    const double n = double(count);
    r.slope = sxy / sxx;
    r.intercept = my.mean - r.slope * mx.mean;
    r.r = sxy / std::sqrt(sxx * syy);
    r.rSquared = r.r * r.r;
    const double residual = std::max(0.0, syy - r.slope * sxy);
    r.residualStdDev = std::sqrt(residual / (n - 2));
    r.slopeStdError = r.residualStdDev / std::sqrt(sxx);
    r.interceptStdError = r.residualStdDev * std::sqrt(1 / n + mx.mean * mx.mean / sxx);
    const double t = r.rSquared >= 1 ? (r.r > 0 ? 1 : -1) * std::numeric_limits<double>::infinity()
                                     : r.r * std::sqrt((n - 2) / (1 - r.rSquared));
    r.p = StudentTwoTailedP(t, n - 2);
    return r;
}

PlotData RegressionPlot(std::span<const double> x, std::span<const double> y, const RegressionResult& r) {
    PlotData p;
    p.title = std::string(stats_texts::kRegressionCaptionPrefix) + std::to_string(r.n);
    p.xAxis = std::string(stats_texts::kXAxis);
    p.yAxis = std::string(stats_texts::kYAxis);
    const std::size_t count = std::size_t(r.n);
    PlotSeries points{SeriesKind::Scatter, {x.begin(), x.begin() + long(count)},
                      {y.begin(), y.begin() + long(count)}, {}, 0};
    p.series.push_back(std::move(points));
    if (count > 0) {
        const auto [lo, hi] = std::minmax_element(x.begin(), x.begin() + long(count));
        p.series.push_back({SeriesKind::Lines, {*lo, *hi},
                            {r.intercept + r.slope * *lo, r.intercept + r.slope * *hi}, {}, 0});
    }
    return p;
}

}  // namespace vess
