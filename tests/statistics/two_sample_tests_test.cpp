#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "statistics/data_analysis.h"
#include "statistics/descriptive.h"
#include "statistics/result_table.h"
#include "statistics/special_functions.h"
#include "statistics/two_sample_tests.h"

namespace vess {
namespace {

void ExpectRelative(double actual, double expected, double tolerance = 1e-6) {
    EXPECT_LE(std::fabs(actual - expected), tolerance * std::fabs(expected))
        << "actual " << actual << " expected " << expected;
}

// Student's sleep data (Biometrika 1908): extra hours of sleep of ten
// patients under two drugs.
const std::vector<double> kDrug1 = {0.7, -1.6, -0.2, -1.2, -0.1, 3.4, 3.7, 0.8, 0.0, 2.0};
const std::vector<double> kDrug2 = {1.9, 0.8, 1.1, 0.1, -0.1, 4.4, 5.5, 1.6, 4.6, 3.4};

TEST(TTests, SleepDataAgainstScipyAndTheFTest) {
    // scipy.stats.ttest_rel 1.10.1: t = -4.062127683382037, p = 0.00283289019738427.
    const TTestResult paired = PairedTTest(kDrug1, kDrug2);
    ExpectRelative(paired.t, -4.062127683382037, 1e-12);
    EXPECT_EQ(paired.degreesOfFreedom, 9);
    ExpectRelative(paired.pTwoTail, 0.00283289019738427);
    EXPECT_DOUBLE_EQ(paired.pOneTail, paired.pTwoTail / 2);

    // scipy.stats.ttest_ind 1.10.1: t = -1.8608134674868524, p = 0.07918671421593829.
    const TTestResult equal = EqualVarianceTTest(MeanAndVariance(kDrug1), MeanAndVariance(kDrug2));
    ExpectRelative(equal.t, -1.8608134674868524, 1e-12);
    EXPECT_EQ(equal.degreesOfFreedom, 18);
    ExpectRelative(equal.pTwoTail, 0.07918671421593829);
    // Equal counts: the pooled variance is the mean of 3.2005556 and 4.009.
    ExpectRelative(equal.pooledVariance, (3.2005555555555554 + 4.009) / 2, 1e-12);

    // ttest_ind(equal_var=False): p = 0.07939414018735823, df 17.776473516178495.
    const TTestResult welch = UnequalVarianceTTest(MeanAndVariance(kDrug1), MeanAndVariance(kDrug2));
    ExpectRelative(welch.degreesOfFreedom, 17.776473516178495, 1e-12);
    ExpectRelative(welch.pTwoTail, 0.07939414018735823);

    // Paired differences without spread: none is no difference, a constant one infinitely clear.
    const std::vector<double> x = {1, 2, 3}, shifted = {2, 3, 4};
    EXPECT_EQ(PairedTTest(x, x).pTwoTail, 1.0);
    EXPECT_EQ(PairedTTest(shifted, x).pTwoTail, 0.0);

    // F = 3.2005556 / 4.009; scipy.stats.f.sf(F, 9, 9) = 0.6286400341369772.
    const FTestResult f = FTest(MeanAndVariance(kDrug1), MeanAndVariance(kDrug2));
    ExpectRelative(f.f, 0.7983426179983923, 1e-12);
    ExpectRelative(f.pOneTail, 0.6286400341369772);
    ExpectRelative(f.pTwoTail, 2 * (1 - 0.6286400341369772));
}

TEST(KolmogorovSmirnov, AgainstScipy) {
    const std::vector<double> a = {0.61, 0.29, 0.06, 0.59, -1.73, -0.74, 0.51, -0.56, 0.39, 1.64, 0.05, -0.06, 0.64,
                                   -0.82, 0.37, 1.77, 1.09, -1.28, 2.36, 1.31, 1.05, -0.32, -0.4, 1.06, -2.47};
    const std::vector<double> b = {2.2, 1.66, 1.38, 0.2, 0.36, 0.0, 0.96, 1.56, 0.44, 1.5,
                                   -0.3, 0.66, 2.31, 3.29, -0.27, -0.37, 0.38, 0.7, 0.52, -0.71};
    const KsResult r = KolmogorovSmirnov(a, b);
    // scipy.stats.ks_2samp 1.10.1: D = 0.23 with sign +1 (F1 above F2); exact p 0.5286364448145011.
    EXPECT_NEAR(r.maxAbsDifference, 0.23, 1e-12);
    EXPECT_NEAR(r.maxPlusDifference, 0.23, 1e-12);
    EXPECT_TRUE(r.maxMinusDifference <= 0 && r.maxMinusDifference > -0.23) << r.maxMinusDifference;
    // Z = 0.23 sqrt(25 * 20 / 45); scipy.special.kolmogorov(Z) = 0.5991955719698889.
    ExpectRelative(r.z, 0.7666666666666667, 1e-12);
    ExpectRelative(r.p, 0.5991955719698889);
    ASSERT_TRUE(r.exactP);
    ExpectRelative(*r.exactP, 0.5286364448145011, 1e-9);

    // NaN values are left out rather than stalling the walk.
    std::vector<double> withNan = b;
    withNan.push_back(NAN);
    const KsResult n = KolmogorovSmirnov(a, withNan);
    EXPECT_EQ(std::pair(n.n2, n.maxAbsDifference), std::pair(int64_t(20), r.maxAbsDifference));

    const PlotData plot = KsPlot(a, b);
    EXPECT_EQ(plot.title, "Cumulative Histograms of Array#1 and Array#2");
    ASSERT_EQ(plot.series.size(), 2u);
    EXPECT_EQ(plot.series[1].y.back(), 1.0);
}

TEST(LinearRegression, NistNorrisCertifiedValues) {
    // Certified values of the NIST StRD "Norris" data set.
    const std::vector<double> y = {0.1,   338.8, 118.1, 888.0, 9.2,   228.1, 668.5, 998.5, 449.1,
                                   778.9, 559.2, 0.3,   0.1,   778.1, 668.8, 339.3, 448.9, 10.8,
                                   557.7, 228.3, 998.0, 888.8, 119.6, 0.3,   0.6,   557.6, 339.3,
                                   888.0, 998.5, 778.9, 10.2,  117.6, 228.9, 668.4, 449.2, 0.2};
    const std::vector<double> x = {0.2,   337.4, 118.2, 884.6, 10.1,  226.5, 666.3, 996.3, 448.6,
                                   777.0, 558.2, 0.4,   0.6,   775.5, 666.9, 338.0, 447.5, 11.6,
                                   556.0, 228.1, 995.8, 887.6, 120.2, 0.3,   0.3,   556.8, 339.1,
                                   887.2, 999.0, 779.0, 11.1,  118.3, 229.2, 669.1, 448.9, 0.5};
    const RegressionResult r = LinearRegression(x, y);
    EXPECT_EQ(r.n, 36);
    ExpectRelative(r.intercept, -0.262323073774029, 1e-9);
    ExpectRelative(r.slope, 1.00211681802045, 1e-12);
    ExpectRelative(r.interceptStdError, 0.232818234301152, 1e-9);
    ExpectRelative(r.slopeStdError, 0.429796848199937e-03, 1e-9);
    ExpectRelative(r.residualStdDev, 0.884796396144373, 1e-9);
    ExpectRelative(r.rSquared, 0.999993745883712, 1e-12);
    // scipy.stats.linregress 1.10.1: p = 4.654040849775137e-90.
    ExpectRelative(r.p, 4.654040849775137e-90);

    const PlotData plot = RegressionPlot(x, y, r);
    EXPECT_EQ(plot.title, "Array #1 vs. Array #2: n=36");
    ASSERT_EQ(plot.series.size(), 2u);
    EXPECT_DOUBLE_EQ(plot.series[1].y[0], r.intercept + r.slope * 0.2);
}

TEST(Descriptive, DefinitionsAgainstScipy) {
    // scipy.stats 1.10.1 on drug 2: variance (ddof 1) 4.009, skew(bias=False)
    // 0.38580550759199644, kurtosis(bias=False, excess) -1.421167166188611.
    const Descriptive d = Describe(kDrug2);
    EXPECT_EQ(d.n, 10);
    ExpectRelative(d.average, 2.33, 1e-12);
    ExpectRelative(d.variance, 4.009, 1e-12);
    ExpectRelative(d.stdev, std::sqrt(4.009), 1e-12);
    ExpectRelative(d.stdError, std::sqrt(4.009) / std::sqrt(10.0), 1e-12);
    ExpectRelative(d.coeffOfVar, std::sqrt(4.009) / 2.33, 1e-12);
    ExpectRelative(d.invCv2, 2.33 * 2.33 / 4.009, 1e-12);
    ExpectRelative(d.skewness, 0.38580550759199644, 1e-10);
    ExpectRelative(d.kurtosis, -1.421167166188611, 1e-10);
    EXPECT_DOUBLE_EQ(d.median, (1.6 + 1.9) / 2);  // sorted: ... 1.1, 1.6 | 1.9, 3.4 ...
    EXPECT_EQ(std::pair(d.minimum, d.maximum), std::pair(-0.1, 5.5));
    EXPECT_EQ(Describe(std::vector<double>{3, 1, 2}).median, 2.0);
    EXPECT_TRUE(std::isnan(Describe(std::vector<double>{1, 2, 3}).kurtosis));
    // A NaN is left out and counted, not carried into the average and the maximum.
    std::vector<double> withNan(200, 1.0);
    withNan[17] = NAN;
    withNan[3] = -5;
    const Descriptive n = Describe(withNan);
    EXPECT_EQ(std::tuple(n.minimum, n.maximum, n.n, n.leftOut), std::tuple(-5.0, 1.0, int64_t(199), int64_t(1)));
    EXPECT_DOUBLE_EQ(n.average, (198 - 5) / 199.0);
}

TEST(DataAnalysis, ChecksBeforeTheTestsGridRowsAndFormats) {
    Workspace ws;
    ScriptedDialogs dialogs;
    // A cleared array (upper bound 1) is empty.
    EXPECT_FALSE(ShowFailure(dialogs, RunTestCommand(ws, {StatTest::TTestEqualVar}).status()));
    EXPECT_EQ(dialogs.Messages().at(0).caption, "Empty Data Array");

    ws.array1.Assign(std::vector<float>{1, 2, 3, 4, 5});
    ws.array2.Assign(std::vector<float>{1, 2, 3, 4, 5, 7});
    dialogs.ClearTranscript();
    EXPECT_FALSE(ShowFailure(dialogs, RunTestCommand(ws, {StatTest::TTestPaired}).status()));
    EXPECT_FALSE(ShowFailure(dialogs, RunTestCommand(ws, {StatTest::LinearRegression}).status()));
    ASSERT_EQ(dialogs.Messages().size(), 2u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "Inappropriate Values");
    // Unequal counts are fine for the other tests.
    EXPECT_TRUE(RunTestCommand(ws, {StatTest::KsTest}));

    // A summary sample against an empty array names the array.
    ws.array2.Clear();
    TestRequest r{StatTest::FTest};
    r.sample1 = {false, 1, 3.0, 1.5, 12};
    dialogs.ClearTranscript();
    EXPECT_FALSE(ShowFailure(dialogs, RunTestCommand(ws, r).status()));
    EXPECT_EQ(dialogs.Messages().at(0).caption, "Empty Data Array #2");

    ws.array1.Assign(std::vector<float>{1, 2, 3});
    ws.array2.Assign(std::vector<float>{1, 2, 3});
    const auto o = RunTestCommand(ws, {StatTest::TTestEqualVar});
    ASSERT_TRUE(o);
    EXPECT_EQ(o->table.Find("Mean")->cells, (std::vector<std::string>{"2.000", "2.000"}));
    EXPECT_EQ(o->table.Find("P value: two-tail")->cells[0], "1.00000000");
    EXPECT_EQ(o->table.Find("t Stat")->values[0], 0.0);
    EXPECT_FALSE(o->Significant());
    // A summary sample ("Mean" option) stands in for an array.
    r = {StatTest::TTestUnequalVar};
    r.sample2 = {false, 2, 1234.5, 2.0, 3};
    const auto summary = RunTestCommand(ws, r);
    ASSERT_TRUE(summary);
    EXPECT_EQ(summary->table.Find("Mean")->cells[1], "1,234.500");
    EXPECT_EQ(summary->table.Find("Variance")->values[1], 4.0);
}

TEST(DataAnalysis, RegressionRowsAndColumnStatistics) {
    const std::vector<double> x = {1, 2, 3, 4}, y = {3, 5, 7, 9.5};
    const auto o = RunTest(StatTest::LinearRegression, x, y);
    ASSERT_TRUE(o);
    // Least squares by hand: slope 2.15, intercept 0.75.
    EXPECT_EQ(o->table.Find("The Equation is")->cells[0], "Y = 0.7500 + 2.1500X");
    EXPECT_EQ(o->table.Find("n")->cells[0], "4");
    ASSERT_TRUE(o->plot);

    DataArray a1, a2;
    a1.Assign(std::vector<float>{1, 2, 3, 4});
    const ResultTable t = ColumnStatistics(a1, a2);
    EXPECT_EQ(t.Find("Average")->cells, (std::vector<std::string>{"2.500", ""}));  // array 2 is empty
    EXPECT_EQ(t.Find("Median")->cells[0], "2.500");
    EXPECT_EQ(t.Find("Variance")->cells[0], "1.667");  // 5/3
}

// Golden values: scipy 1.10.1 (special.gammaln, special.betainc, stats.f.sf,
// special.kolmogorov, 2 * stats.t.sf); the Lanczos coefficients hold p to 1e-6.
TEST(SpecialFunctions, AgainstScipy) {
    const struct { const char* what; double got, expected; } cases[] = {
        {"gammaln(0.5)", GammaLn(0.5), 0.5723649429247},
        {"gammaln(100)", GammaLn(100.0), 359.1342053695754},
        {"betainc(2.5, 0.5, 0.3)", IncompleteBeta(2.5, 0.5, 0.3), 0.01892712407194565},
        {"betainc(15, 0.5, 0.9)", IncompleteBeta(15, 0.5, 0.9), 0.07785867031466785},
        {"f.sf(2.5, 4, 10)", FUpperTailP(2.5, 4, 10), 0.10937500000000001},
        {"f.sf(0.3, 7, 3)", FUpperTailP(0.3, 7, 3), 0.9141254977479154},
        {"f.sf(10, 2, 50)", FUpperTailP(10.0, 2, 50), 0.00022222816901914367},
        {"kolmogorov(0.5)", KolmogorovQ(0.5), 0.9639452436648751},
        {"kolmogorov(1.36)", KolmogorovQ(1.36), 0.049485876755377876},
        {"kolmogorov(2)", KolmogorovQ(2.0), 0.0006709252557796953},
        {"t(2, 5)", StudentTwoTailedP(2.0, 5), 0.10193947882985828},
        {"t(0.5, 1)", StudentTwoTailedP(0.5, 1), 0.7048327646991336},
        {"t(10, 30)", StudentTwoTailedP(10.0, 30), 4.5752514082296097e-11},
        {"t(3.5, 7.5)", StudentTwoTailedP(3.5, 7.5), 0.008948871980079341},
        {"t(0.01, 3)", StudentTwoTailedP(0.01, 3), 0.992649111412852},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ExpectRelative(c.got, c.expected);
    }
    EXPECT_EQ(IncompleteBeta(2, 3, 1), 1.0);
    EXPECT_NEAR(IncompleteBeta(3, 7, 0.2), 1 - IncompleteBeta(7, 3, 0.8), 1e-14);  // both branches
    EXPECT_EQ(StudentTwoTailedP(-2.0, 5), StudentTwoTailedP(2.0, 5));
    EXPECT_EQ(StudentTwoTailedP(INFINITY, 5), 0.0);
    EXPECT_EQ(KolmogorovQ(0.01), 1.0);  // too small for the series to settle
    // Exact two-sample p: sizes 2 and 2 fully apart are 2 of C(4,2) = 6 orders.
    EXPECT_NEAR(*KsExactP(2, 2, 1.0), 2.0 / 6.0, 1e-15);
    EXPECT_FALSE(KsExactP(2000, 2000, 0.1));
}

// The grid's number patterns, and p-values: no p-value reads as a row of
// zeros, eight decimals while they hold at least one significant digit beyond
// the fourth decimal, significant digits below.
TEST(NumberFormats, GridPatternsAndPValues) {
    EXPECT_EQ(FormatNumber(1234567.891, 3, true), "1,234,567.891");
    EXPECT_EQ(FormatNumber(-1234.5, 3, true), "-1,234.500");
    EXPECT_EQ(FormatNumber(999.9996, 3, true), "1,000.000");
    EXPECT_EQ(FormatNumber(0.000123456789, 8, false), "0.00012346");
    EXPECT_EQ(FormatNumber(-0.0, 3, false), "0.000");  // no "-0.000"
    EXPECT_EQ(FormatNumber(12345, 0, true), "12,345");
    EXPECT_EQ(FormatNumber(NAN, 3, true), "NaN");
    const struct {
        double p;
        const char* text;
    } cases[] = {
        {1.0, "1.00000000"},
        {0.00283289019738427, "0.00283289"},  // the paired t-test above
        {1e-4, "0.00010000"},
        {9.94e-5, "9.9e-05"},
        {3.2e-12, "3.2e-12"},
        {4.654040849775137e-90, "4.7e-90"},  // the regression above
        {0.0, "< 1e-323"},
        {std::nan(""), "NaN"},
    };
    for (const auto& c : cases) EXPECT_EQ(FormatPValue(c.p), c.text) << c.p;
}

}  // namespace
}  // namespace vess
