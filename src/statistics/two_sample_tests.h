// Two-sample tests on plain series: Student's t (paired, equal and unequal
// variances), the F-test for variances, the two-sample Kolmogorov-Smirnov
// test and the least-squares line of y on x. All arithmetic in double.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "graphs/plot_data.h"
#include "statistics/descriptive.h"

namespace vess {

struct TTestResult {
    MeanVariance sample1;
    MeanVariance sample2;
    double pooledVariance = 0;   // equal-variance test only (NaN otherwise)
    double degreesOfFreedom = 0;
    double t = 0;
    double pOneTail = 0;         // half the two-tailed p
    double pTwoTail = 0;
};
// d_i = x1_i - x2_i, t = mean(d) / (sd(d)/sqrt(n)), n - 1 degrees of freedom.
// Equal counts required. When every d_i is equal (sd 0): t is 0 with p 1 for
// a zero mean, else +-infinity with p 0.
TTestResult PairedTTest(std::span<const double> x1, std::span<const double> x2);
TTestResult EqualVarianceTTest(const MeanVariance& s1, const MeanVariance& s2);
// Welch's t with the Welch-Satterthwaite degrees of freedom.
TTestResult UnequalVarianceTTest(const MeanVariance& s1, const MeanVariance& s2);

struct FTestResult {
    MeanVariance sample1;
    MeanVariance sample2;
    double df1 = 0;
    double df2 = 0;
    double f = 0;                // s1^2 / s2^2
    double pOneTail = 0;         // P(F' > f)
    double pTwoTail = 0;         // 2 min(p, 1 - p)
};
FTestResult FTest(const MeanVariance& s1, const MeanVariance& s2);

struct KsResult {
    int64_t n1 = 0;
    int64_t n2 = 0;
    double maxAbsDifference = 0;
    double maxPlusDifference = 0;   // largest F1 - F2 (>= 0)
    double maxMinusDifference = 0;  // most negative F1 - F2 (<= 0)
    double z = 0;                   // maxAbs * sqrt(n1 n2 / (n1 + n2))
    double p = 0;                   // KolmogorovQ(z)
    std::optional<double> exactP;   // when n1 * n2 is small enough
};
KsResult KolmogorovSmirnov(std::span<const double> a, std::span<const double> b);
// Both empirical cumulative curves as steps, with the title, axis and legends.
PlotData KsPlot(std::span<const double> a, std::span<const double> b);

struct RegressionResult {
    int64_t n = 0;
    double intercept = 0;        // a of Y = a + bX
    double slope = 0;            // b
    double r = 0;
    double rSquared = 0;
    double p = 0;                // two-tailed, t = r sqrt((n-2)/(1-r^2)), n - 2 df
    double interceptStdError = 0;
    double slopeStdError = 0;
    double residualStdDev = 0;
};
// Equal counts required.
RegressionResult LinearRegression(std::span<const double> x, std::span<const double> y);
// The pairs as points and the fitted line across the x range.
PlotData RegressionPlot(std::span<const double> x, std::span<const double> y, const RegressionResult& r);

}  // namespace vess
