#include <gtest/gtest.h>

#include <cmath>

#include "statistics/special_functions.h"

namespace vess {
namespace {

// Relative agreement; the stored Lanczos coefficients hold p-values to a few
// 1e-7 at worst, so 1e-6 is the bar.
void ExpectRelative(double actual, double expected, double tolerance = 1e-6) {
    EXPECT_LE(std::fabs(actual - expected), tolerance * std::fabs(expected))
        << "actual " << actual << " expected " << expected;
}

TEST(SpecialFunctions, LogGammaAgainstScipy) {
    // scipy.special.gammaln 1.10.1.
    ExpectRelative(GammaLn(0.5), 0.5723649429247, 1e-9);
    ExpectRelative(GammaLn(10.5), 13.940625219403763, 1e-9);
    ExpectRelative(GammaLn(100.0), 359.1342053695754, 1e-9);
    EXPECT_NEAR(GammaLn(1.0), 0.0, 1e-9);
}

TEST(SpecialFunctions, IncompleteBetaAgainstScipy) {
    // scipy.special.betainc 1.10.1.
    ExpectRelative(IncompleteBeta(2.5, 0.5, 0.3), 0.01892712407194565);
    ExpectRelative(IncompleteBeta(15, 0.5, 0.9), 0.07785867031466785);
    EXPECT_EQ(IncompleteBeta(2, 3, 0), 0.0);
    EXPECT_EQ(IncompleteBeta(2, 3, 1), 1.0);
    // Symmetry I_x(a, b) = 1 - I_{1-x}(b, a) crosses both branches.
    EXPECT_NEAR(IncompleteBeta(3, 7, 0.2), 1 - IncompleteBeta(7, 3, 0.8), 1e-14);
}

TEST(SpecialFunctions, StudentTwoTailedPAgainstScipy) {
    // 2 * scipy.stats.t.sf(t, df) 1.10.1.
    struct Case { double t, df, p; };
    const Case cases[] = {{2.0, 5, 0.10193947882985828},   {0.5, 1, 0.7048327646991336},
                          {10.0, 30, 4.5752514082296097e-11}, {1.0, 200, 0.31851884790974705},
                          {3.5, 7.5, 0.008948871980079341}, {0.01, 3, 0.992649111412852}};
    for (const Case& c : cases) ExpectRelative(StudentTwoTailedP(c.t, c.df), c.p);
    EXPECT_EQ(StudentTwoTailedP(0, 9), 1.0);
    EXPECT_EQ(StudentTwoTailedP(-2.0, 5), StudentTwoTailedP(2.0, 5));
    EXPECT_EQ(StudentTwoTailedP(INFINITY, 5), 0.0);
}

TEST(SpecialFunctions, FUpperTailAgainstScipy) {
    // scipy.stats.f.sf(f, df1, df2) 1.10.1.
    ExpectRelative(FUpperTailP(2.5, 4, 10), 0.10937500000000001);
    ExpectRelative(FUpperTailP(0.3, 7, 3), 0.9141254977479154);
    ExpectRelative(FUpperTailP(10.0, 2, 50), 0.00022222816901914367);
}

TEST(SpecialFunctions, KolmogorovSeriesAgainstScipy) {
    // scipy.special.kolmogorov 1.10.1.
    ExpectRelative(KolmogorovQ(0.3), 0.9999906941986655);
    ExpectRelative(KolmogorovQ(0.5), 0.9639452436648751);
    ExpectRelative(KolmogorovQ(1.0), 0.26999967167735456);
    ExpectRelative(KolmogorovQ(1.36), 0.049485876755377876);
    ExpectRelative(KolmogorovQ(2.0), 0.0006709252557796953);
    EXPECT_EQ(KolmogorovQ(0.01), 1.0);  // too small for the series to settle
}

TEST(SpecialFunctions, ExactKsPAgainstScipy) {
    // scipy.stats.ks_2samp(method="exact") 1.10.1 on samples of 25 and 20 with
    // D = 0.23 (see the two-sample test below): p = 0.5286364448145011.
    const auto p = KsExactP(25, 20, 0.23);
    ASSERT_TRUE(p);
    ExpectRelative(*p, 0.5286364448145011, 1e-9);
    // Sizes 1 and 1: D is 1 for any two distinct values, and P(D >= 1) = 1.
    EXPECT_NEAR(*KsExactP(1, 1, 1.0), 1.0, 1e-15);
    // Sizes 2 and 2 with D = 1: the samples are fully apart, 2 of C(4,2) = 6 orders.
    EXPECT_NEAR(*KsExactP(2, 2, 1.0), 2.0 / 6.0, 1e-15);
    EXPECT_FALSE(KsExactP(2000, 2000, 0.1));
}

}  // namespace
}  // namespace vess
