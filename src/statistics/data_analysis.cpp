#include "statistics/data_analysis.h"

#include <cmath>
#include <string>

#include "recording/workspace.h"
#include "statistics/descriptive.h"
#include "statistics/finite_series.h"
#include "statistics/texts.h"
#include "statistics/two_sample_tests.h"

namespace vess {

namespace st = stats_texts;

namespace {

// The grid's number formats.
std::string Thousands3(double v) { return FormatNumber(v, 3, true); }     // "#,##0.000"
std::string Thousands4(double v) { return FormatNumber(v, 4, true); }     // "#,##0.0000"
std::string Thousands6(double v) { return FormatNumber(v, 6, true); }     // "#,##0.000000"
std::string Probability(double v) { return FormatPValue(v); }
std::string Statistic(double v) { return FormatNumber(v, 6, false); }
std::string Degrees(double v) {
    return FormatNumber(v, std::floor(v) == v ? 0 : 3, true);
}

ResultRow Row(std::string_view label, std::initializer_list<double> values,
              std::string (*format)(double)) {
    ResultRow r{std::string(label), {}, values};
    for (double v : values) r.cells.push_back(format(v));
    return r;
}

// Every count below two values is an empty array.
bool IsEmpty(std::span<const double> v) { return v.size() < 2; }

void AddSampleRows(ResultTable& t, const MeanVariance& s1, const MeanVariance& s2) {
    t.columns = {std::string(st::kSample1Frame), std::string(st::kSample2Frame)};
    t.rows.push_back(Row(st::kRowMean, {s1.mean, s2.mean}, Thousands3));
    t.rows.push_back(Row(st::kRowVariance, {s1.variance, s2.variance}, Thousands3));
}

void AddPRows(ResultTable& t, double oneTail, double twoTail) {
    t.rows.push_back(Row(st::kRowPOneTail, {oneTail}, Probability));
    t.rows.push_back(Row(st::kRowPTwoTail, {twoTail}, Probability));
}

TestOutcome TTestOutcome(StatTest test, const TTestResult& r) {
    TestOutcome o;
    o.table.title = std::string(StatTestMenuCaption(test));
    AddSampleRows(o.table, r.sample1, r.sample2);
    if (test == StatTest::TTestEqualVar)
        o.table.rows.push_back(Row(st::kRowPooledVariance, {r.pooledVariance}, Thousands3));
    o.table.rows.push_back(Row(st::kRowDegreesOfFreedom, {r.degreesOfFreedom}, Degrees));
    o.table.rows.push_back(Row(st::kRowTStat, {r.t}, Statistic));
    AddPRows(o.table, r.pOneTail, r.pTwoTail);
    o.pTwoTailed = r.pTwoTail;
    return o;
}

TestOutcome FTestOutcome(const FTestResult& r) {
    TestOutcome o;
    o.table.title = std::string(st::kFTestMenu);
    AddSampleRows(o.table, r.sample1, r.sample2);
    o.table.rows.push_back(Row(st::kRowDegreesOfFreedom, {r.df1, r.df2}, Degrees));
    o.table.rows.push_back(Row(st::kRowFStat, {r.f}, Statistic));
    AddPRows(o.table, r.pOneTail, r.pTwoTail);
    o.pTwoTailed = r.pTwoTail;
    return o;
}

TestOutcome KsOutcome(std::span<const double> a, std::span<const double> b) {
    const KsResult r = KolmogorovSmirnov(a, b);
    TestOutcome o;
    o.table.title = std::string(st::kKsMenu);
    o.table.rows.push_back(Row(st::kRowMaxAbsDiff, {r.maxAbsDifference}, Statistic));
    o.table.rows.push_back(Row(st::kRowMaxPlusDiff, {r.maxPlusDifference}, Statistic));
    o.table.rows.push_back(Row(st::kRowMaxMinusDiff, {r.maxMinusDifference}, Statistic));
    o.table.rows.push_back(Row(st::kRowKsZ, {r.z}, Statistic));
    o.table.rows.push_back(Row(st::kRowKsP, {r.p}, Probability));
    if (r.exactP) o.table.rows.push_back(Row(st::kRowKsExactP, {*r.exactP}, Probability));
    o.plot = KsPlot(a, b);
    o.pTwoTailed = r.exactP.value_or(r.p);
    return o;
}

TestOutcome RegressionOutcome(std::span<const double> x, std::span<const double> y) {
    const RegressionResult r = LinearRegression(x, y);
    TestOutcome o;
    o.table.title = std::string(st::kRegressionMenu);
    o.table.rows.push_back({std::string(st::kRowEquation),
                            {std::string(st::kEquationY) + Thousands4(r.intercept) +
                             std::string(st::kEquationPlus) + Thousands4(r.slope) +
                             std::string(st::kEquationX)},
                            {r.intercept, r.slope}});
    o.table.rows.push_back(Row(st::kRowCorrelation, {r.r}, Thousands6));
    o.table.rows.push_back(Row(st::kRowRSquared, {r.rSquared}, Thousands6));
    o.table.rows.push_back(Row(st::kRowN, {double(r.n)}, Degrees));
    o.table.rows.push_back(Row(st::kRowRegressionP, {r.p}, Probability));
    o.plot = RegressionPlot(x, y, r);
    o.pTwoTailed = r.p;
    return o;
}

bool NeedsEqualCounts(StatTest test) {
    return test == StatTest::TTestPaired || test == StatTest::LinearRegression;
}

// The summary tests on two samples' moments.
TestOutcome SummaryOutcome(StatTest test, const MeanVariance& s1, const MeanVariance& s2) {
    switch (test) {
        case StatTest::TTestEqualVar: return TTestOutcome(test, EqualVarianceTTest(s1, s2));
        case StatTest::TTestUnequalVar: return TTestOutcome(test, UnequalVarianceTTest(s1, s2));
        default: break;
    }
    return FTestOutcome(FTest(s1, s2));
}

MeanVariance FromSummary(const TestSample& s) { return {s.count, s.mean, s.stdDev * s.stdDev}; }

}  // namespace

std::string_view StatTestMenuCaption(StatTest test) {
    switch (test) {
        case StatTest::TTestPaired: return st::kTTestPairedMenu;
        case StatTest::TTestUnequalVar: return st::kTTestUnequalMenu;
        case StatTest::TTestEqualVar: return st::kTTestEqualMenu;
        case StatTest::FTest: return st::kFTestMenu;
        case StatTest::LinearRegression: return st::kRegressionMenu;
        case StatTest::KsTest: break;
    }
    return st::kKsMenu;
}

namespace {

// The two series a test reads: paired tests and the regression drop a pair
// with a value that was not measured, the others each such value.
struct TestSamples {
    std::vector<double> a, b;
    std::size_t leftOut = 0;
};

TestSamples FiniteSamples(StatTest test, std::span<const double> a, std::span<const double> b) {
    if (NeedsEqualCounts(test)) {
        FinitePairs p = FinitePairsOnly(a, b);
        return {std::move(p.x), std::move(p.y), p.leftOut};
    }
    FiniteSeries fa = FiniteOnly(a), fb = FiniteOnly(b);
    return {std::move(fa.values), std::move(fb.values), fa.leftOut + fb.leftOut};
}

}  // namespace

Outcome<TestOutcome> RunTest(StatTest test, std::span<const double> a, std::span<const double> b, double alpha) {
    if (IsEmpty(a) || IsEmpty(b))
        return CommandResult::Failed(st::kEmptyArrayCaption, st::kEmptyArrayText);
    if (NeedsEqualCounts(test) && a.size() != b.size())
        return CommandResult::Failed(st::kUnequalCountsCaption, st::kUnequalCountsText);
    const TestSamples s = FiniteSamples(test, a, b);
    if (IsEmpty(s.a) || IsEmpty(s.b))
        return CommandResult::Failed(st::kNothingMeasuredCaption,
                                     std::string(st::kNothingMeasuredText) + "  " + LeftOutText(s.leftOut) + ".");
    TestOutcome o;
    switch (test) {
        case StatTest::TTestPaired: o = TTestOutcome(test, PairedTTest(s.a, s.b)); break;
        case StatTest::LinearRegression: o = RegressionOutcome(s.a, s.b); break;
        case StatTest::KsTest: o = KsOutcome(s.a, s.b); break;
        default: o = SummaryOutcome(test, MeanAndVariance(s.a), MeanAndVariance(s.b)); break;
    }
    o.table.note = LeftOutText(s.leftOut);
    o.alpha = alpha;
    return o;
}

Outcome<TestOutcome> RunTestCommand(const Workspace& ws, const TestRequest& request) {
    const bool summaryTest = request.test == StatTest::TTestEqualVar ||
                             request.test == StatTest::TTestUnequalVar || request.test == StatTest::FTest;
    if (!summaryTest || (request.sample1.fromArray && request.sample2.fromArray)) {
        const TestSample& s1 = summaryTest ? request.sample1 : TestSample{true, 1};
        const TestSample& s2 = summaryTest ? request.sample2 : TestSample{true, 2};
        const std::vector<double> a = ws.Array(s1.arrayNumber).ValuesAsDouble();
        const std::vector<double> b = ws.Array(s2.arrayNumber).ValuesAsDouble();
        return RunTest(request.test, a, b, request.alpha);
    }
    // One or both samples typed in as a summary.
    MeanVariance m[2];
    std::size_t leftOut = 0;
    const TestSample* samples[2] = {&request.sample1, &request.sample2};
    for (int i = 0; i < 2; ++i) {
        if (!samples[i]->fromArray) {
            m[i] = FromSummary(*samples[i]);
            continue;
        }
        const DataArray& array = ws.Array(samples[i]->arrayNumber);
        if (array.Empty()) {
            const int k = samples[i]->arrayNumber == 1 ? 1 : 2;
            return CommandResult::Failed(st::EmptyOneArrayCaption(k), st::EmptyOneArrayText(k));
        }
        const FiniteSeries finite = FiniteOnly(array.ValuesAsDouble());
        m[i] = MeanAndVariance(finite.values);
        leftOut += finite.leftOut;
    }
    TestOutcome o = SummaryOutcome(request.test, m[0], m[1]);
    o.table.note = LeftOutText(leftOut);
    o.alpha = request.alpha;
    return o;
}

ResultTable DescriptiveTable(std::span<const std::span<const double>> series,
                             std::span<const std::string> columnTitles) {
    ResultTable t;
    t.title = std::string(st::kDescriptiveTitle);
    t.columns.assign(columnTitles.begin(), columnTitles.end());
    for (std::string_view label : st::kDescriptiveRows) t.rows.push_back({std::string(label), {}, {}});
    for (std::size_t c = 0; c < series.size(); ++c) {
        const FiniteSeries finite = FiniteOnly(series[c]);
        const std::span<const double> s = finite.values;
        const Descriptive d = Describe(s);
        const double values[11] = {d.average, d.stdev,    d.stdError, d.coeffOfVar,
                                   d.invCv2,  d.variance, d.skewness, d.kurtosis,
                                   d.median,  d.minimum,  d.maximum};
        for (std::size_t i = 0; i < 11; ++i) {
            // "##0.000"; a series without two measured values leaves its column blank.
            t.rows[i].cells.push_back(IsEmpty(s) ? std::string() : FormatNumber(values[i], 3, false));
            t.rows[i].values.push_back(IsEmpty(s) ? std::nan("") : values[i]);
        }
        if (finite.leftOut == 0) continue;
        if (!t.note.empty()) t.note += "; ";
        t.note += (c < columnTitles.size() ? columnTitles[c] + ": " : std::string()) + LeftOutText(finite.leftOut);
    }
    return t;
}

ResultTable ColumnStatistics(const DataArray& a1, const DataArray& a2) {
    const std::vector<double> v1 = a1.ValuesAsDouble(), v2 = a2.ValuesAsDouble();
    const std::span<const double> series[2] = {v1, v2};
    const std::string titles[2] = {st::ArrayName(1), st::ArrayName(2)};
    return DescriptiveTable(series, titles);
}

}  // namespace vess
