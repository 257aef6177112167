// Values that were not measured (NaN) or overflowed (infinities) in every
// statistic, the bin rule on extreme bin sizes, rejected events in the
// sources, and event times taken from the sample index.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "recording/event_time.h"
#include "statistics/array_fill.h"
#include "statistics/binning.h"
#include "statistics/correlogram.h"
#include "statistics/data_analysis.h"
#include "statistics/histogram.h"
#include "stats_fixture.h"

namespace vess {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double Value(const TestOutcome& o, const std::string& label) { return o.table.Find(label)->values.at(0); }

// Identical samples must give no difference however many values were not
// measured: t 0 with p 1 (F 1), never -Infinity with p 0. A float array read
// from text turns 1e39 into +infinity.
TEST(NotMeasured, TestsLeaveOutNonFiniteValuesAndCountThem) {
    const std::vector<double> halfWidths{1.5, 2.0, kNaN, 2.5, 3.0};
    const std::vector<double> overflowed{1.5, 2.0, kInf, 2.5, 3.0};
    struct Case {
        StatTest test;
        const std::vector<double>& a;
        const char* statistic;
        double expected;
        const char* note;
    } cases[] = {
        {StatTest::TTestEqualVar, halfWidths, "t Stat", 0, "2 values that were not measured were left out"},
        {StatTest::TTestUnequalVar, overflowed, "t Stat", 0, "2 values that were not measured were left out"},
        {StatTest::TTestPaired, halfWidths, "t Stat", 0, "1 value that was not measured was left out"},
        {StatTest::FTest, overflowed, "F Stat", 1, "2 values that were not measured were left out"},
    };
    for (const Case& c : cases) {
        const auto o = RunTest(c.test, c.a, c.a);
        ASSERT_TRUE(o) << StatTestMenuCaption(c.test);
        EXPECT_EQ(Value(*o, c.statistic), c.expected) << StatTestMenuCaption(c.test);
        EXPECT_NEAR(Value(*o, "P value: two-tail"), 1.0, 1e-12) << StatTestMenuCaption(c.test);
        EXPECT_EQ(o->table.note, c.note) << StatTestMenuCaption(c.test);
        EXPECT_FALSE(o->Significant());
    }
    // The regression drops the pair whose x was not measured: y = 2x on the rest.
    ScriptedDialogs dialogs;
    const std::vector<double> x{1, kNaN, 3, 4}, y{2, 100, 6, 8};
    const auto reg = RunTest(StatTest::LinearRegression, x, y);
    ASSERT_TRUE(reg);
    EXPECT_EQ(Value(*reg, "n"), 3);
    EXPECT_DOUBLE_EQ(reg->table.Find("The Equation is")->values.at(1), 2.0);
    // Nothing measured at all is refused with its reason.
    const std::vector<double> none{kNaN, kNaN, kNaN};
    EXPECT_FALSE(ShowFailure(dialogs, RunTest(StatTest::TTestEqualVar, none, halfWidths).status()));
    EXPECT_EQ(dialogs.Messages().back().caption, "Not measured");
}

TEST(NotMeasured, ColumnStatisticsAndHistogramsSayWhatTheyLeftOut) {
    const std::vector<double> a{1, 2, kNaN, 3}, b{4, 5, 6};
    const std::span<const double> series[] = {a, b};
    const std::string titles[] = {"Array #1", "Array #2"};
    const ResultTable t = DescriptiveTable(series, titles);
    EXPECT_EQ(t.Find("Average")->values, (std::vector<double>{2, 5}));
    EXPECT_EQ(t.note, "Array #1: 1 value that was not measured was left out");

    const HistogramPlot h = MakeHistogram(HistogramKind::CumulativeBins, a, 1, "Half-width", "msec");
    EXPECT_EQ(h.plot.series.at(0).y.back(), 1.0);  // the fractions of the three measured values
    EXPECT_EQ(h.plot.note, "1 value that was not measured was left out");
    // A running average of a value that was not measured is no average at all.
    const std::vector<double> times{0.1, 0.2, 0.3}, values{1, kNaN, 3};
    const HistogramPlot running = MakeRunningAverage(times, values, 1);
    EXPECT_EQ(running.plot.series.at(0).y, std::vector<double>{2});
    // Float arrays step by 2 above 2^24: a histogram of such values says so.
    const std::vector<double> late{16777218.0, 16777220.0};
    EXPECT_NE(MakeHistogram(HistogramKind::Frequency, late, 1, "Time", "").plot.note.find("lost precision"),
              std::string::npos);
}

// "All events" (group 0) leaves out rejected events; 255 picks them.
using Sources = test::FiveEventsTest;
TEST_F(Sources, RejectedEventsStayOutOfAllEvents) {
    ws.events[2].group = uint8_t(kGroupRejected);  // the event at 30 ms, amplitude -4
    ws.events[2].amplitude = -1540;                // a rejected test pulse
    dialogs.AnswerYesNo(true).AnswerInput("0");
    ASSERT_TRUE(PutEventDataCommand(ws, dialogs, 1, ArrayField::Amplitude));
    EXPECT_EQ(ws.array1.UpperBound(), 4);
    // Sorted times 10, 20, 45, 50 without the rejected 30.
    EXPECT_EQ(InterEventIntervals(ws.events, 0), (std::vector<float>{10, 25, 5}));
    EXPECT_EQ(EventSourceValues(ws, HistogramSource::Amplitude, 0).size(), 4u);
    EXPECT_EQ(EventSourceValues(ws, HistogramSource::Amplitude, 255),
              std::vector<double>{double(ws.recording->Bit2pA2(-1540))});
}

// Late events of a long recording: the 32-bit time in ms no longer holds one
// sample of 50 us after two hours, the sample index does.
TEST(ExactEventTimes, IntervalsComeFromTheSampleIndex) {
    EventTable events;
    const int32_t twoHours = 144'000'000;  // samples of 50 us
    for (int32_t k : {0, 1, 3}) {
        EventRecord r;
        r.sampleIndex = twoHours + k;
        r.time = float(double(r.sampleIndex) * 0.05);
        events.Append(r);
    }
    ASSERT_EQ(events[1].time, events[2].time);  // the float cannot tell them apart
    EXPECT_EQ(InterEventIntervals(events, 0, 50), (std::vector<float>{0.05f, 0.1f}));

    struct Case {
        float timeMs;
        int32_t sampleIndex;
        double expected;
    } cases[] = {
        {7200000.0f, twoHours + 1, 7200000.05},  // agrees within the float: the exact time
        {100.0f, 0, 100.0},                      // never set: the stored time
        {100.0f, 9999, 100.0},                   // the time was edited since: the stored time
        {float(kNaN), 2000, kNaN},               // not measured stays not measured
    };
    for (const Case& c : cases) {
        EventRecord r;
        r.time = c.timeMs;
        r.sampleIndex = c.sampleIndex;
        const double t = ExactEventTimeMs(r, 50);
        if (std::isnan(c.expected))
            EXPECT_TRUE(std::isnan(t));
        else
            EXPECT_DOUBLE_EQ(t, c.expected) << c.sampleIndex;
    }
}

}  // namespace
}  // namespace vess
