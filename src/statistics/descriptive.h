// Descriptive statistics of one series, shared by the column statistics, the
// heart-rate measures and the group comparison. Definitions:
//   Stdev, Variance: sample forms, dividing by n - 1;
//   Skewness: bias-corrected sample skewness n/((n-1)(n-2)) sum z^3;
//   Kurtosis: bias-corrected sample excess kurtosis
//     n(n+1)/((n-1)(n-2)(n-3)) sum z^4 - 3(n-1)^2/((n-2)(n-3));
//   Coeff of Var = Stdev / Average as a fraction, 1/CV^2 its inverse square;
//   Median of an even count: the mean of the two middle values.
// A statistic that the count does not support (Stdev below 2 values,
// Skewness below 3, Kurtosis below 4, any on an empty series) is NaN.
// Describe takes the finite values only: n counts them, leftOut the values
// that were not measured (NaN) or overflowed (infinities).
#pragma once

#include <cstdint>
#include <span>

namespace vess {

struct Descriptive {
    int64_t n = 0;
    double average = 0;
    double stdev = 0;
    double stdError = 0;
    double coeffOfVar = 0;
    double invCv2 = 0;
    double variance = 0;
    double skewness = 0;
    double kurtosis = 0;
    double median = 0;
    double minimum = 0;
    double maximum = 0;
    int64_t leftOut = 0;
};

Descriptive Describe(std::span<const double> values);

// Mean and sample variance (n - 1) in one pass-pair; NaN variance below 2 values.
struct MeanVariance {
    double n = 0;
    double mean = 0;
    double variance = 0;
};
MeanVariance MeanAndVariance(std::span<const double> values);

}  // namespace vess
