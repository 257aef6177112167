#include <gtest/gtest.h>

#include <cmath>

#include "statistics/result_table.h"

namespace vess {
namespace {

// No p-value reads as a row of zeros: eight decimals while they hold at least
// one significant digit beyond the fourth decimal, significant digits below.
TEST(PValueText, EightDecimalsDownTo1e4ThenSignificantDigits) {
    const struct {
        double p;
        const char* text;
    } cases[] = {
        {1.0, "1.00000000"},
        {0.00283289019738427, "0.00283289"},  // the paired t-test of two_sample_tests_test.cpp
        {1e-4, "0.00010000"},
        {9.94e-5, "9.9e-05"},
        {3.2e-12, "3.2e-12"},
        {4.654040849775137e-90, "4.7e-90"},  // the regression of two_sample_tests_test.cpp
        {0.0, "< 1e-323"},
        {std::nan(""), "NaN"},
    };
    for (const auto& c : cases) EXPECT_EQ(FormatPValue(c.p), c.text) << c.p;
}

}  // namespace
}  // namespace vess
