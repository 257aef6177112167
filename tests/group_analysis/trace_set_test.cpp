// Building the trace set: alignment, the byte-position rule, baseline and
// scaling, clamping, the rounded average, and a real recording.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <numeric>

#include "group_analysis/decay_fit.h"
#include "group_analysis/trace_set.h"
#include "recording/abf_writer.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess::group {
namespace {

using test::TempDir;

// Sample i of the ramp recording is i (counts), 50 us per point; with
// PeriodStartBaseline 200 us the stretch starts pre = 4 points before the
// alignment point. 0.0625 blocks are 16 points.
struct RampRecording : ::testing::Test {
    TempDir dir;
    std::unique_ptr<Recording> rec;
    AnalysisParameters params;
    EventTable events;
    void SetUp() override {
        std::vector<int16_t> ramp(2048);
        for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = int16_t(i);
        rec = test::MakeRecording(dir / "ramp.abf", ramp, 50);
        ASSERT_TRUE(rec);
        params.PeriodStartBaseline = 200;
    }
    // An event whose alignment point is point index (time = index x 0.05 ms).
    void AddEvent(double index, uint8_t group = 1, int32_t amplitude = 10, int16_t baseline = 0) {
        events.Append({.time = float(index * 0.05), .amplitude = amplitude, .baseline = baseline, .group = group});
    }
    TraceSet Build(TraceSetOptions o = {}) {
        if (o.blocks == 1) o.blocks = 0.0625;
        return BuildGroupTraceSet(*rec, events, params, o);
    }
};

TEST_F(RampRecording, OneEventAveragesToItselfFromPreBeforeItsPeak) {
    AddEvent(100);
    AddEvent(300, 2);  // another group, not taken
    const TraceSet set = Build();
    EXPECT_EQ((std::array{set.count, set.length, set.prePoints, set.eventIndex[1]}), (std::array{1, 16, 4, 1}));
    std::vector<int16_t> ramp(16);
    std::iota(ramp.begin(), ramp.end(), int16_t(96));
    for (int32_t row : {0, 1}) EXPECT_TRUE(std::ranges::equal(set.Row(row), ramp)) << row;
}

// One point of one row per rule, on the ramp where a point's value is its index.
TEST_F(RampRecording, AlignmentRoundingAndEdgesPickTheRightPoint) {
    struct Case {
        const char* rule;
        std::vector<double> at;
        Alignment alignment;
        int row, point;
        int16_t expected;
    };
    const Case cases[] = {
        // Rows 96+j and 97+j average to 96.5+j: ties go to even.
        {"96.5 -> 96", {100, 101}, Alignment::Peak, 0, 0, 96},
        {"97.5 -> 98", {100, 101}, Alignment::Peak, 0, 1, 98},
        {"98.5 -> 98", {100, 101}, Alignment::Peak, 0, 2, 98},
        {"rise time 7 before the peak", {100}, Alignment::RiseTime, 1, 0, 100 - 7 - 4},
        {"rise 50 % 3 before the peak", {100}, Alignment::Rise50, 1, 0, 100 - 3 - 4},
        // First point 95.5: byte 191, odd, lowered to 190 = point 95; first
        // point 95.75: byte 191.5 rounds to 192 = point 96.
        {"half point lowered", {99.5}, Alignment::Peak, 1, 0, 95},
        {"quarter point rounded", {99.75}, Alignment::Peak, 1, 0, 96},
        {"before the data reads 0", {2}, Alignment::Peak, 1, 2, 0},
        {"first point of the data", {2}, Alignment::Peak, 1, 3, 1},
        {"last point of the data", {2040}, Alignment::Peak, 1, 11, 2047},
        {"past the data reads 0", {2040}, Alignment::Peak, 1, 12, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.rule);
        events = {};
        for (double index : c.at) AddEvent(index);
        for (int32_t k = 1; k <= events.Count(); ++k) {
            events[k].riseTime = 7;
            events[k].rise50 = 3;
        }
        EXPECT_EQ(Build({.alignment = c.alignment}).Row(c.row)[std::size_t(c.point)], c.expected);
    }
    events = {};
    AddEvent(100, 3);
    EXPECT_TRUE(Build().Empty());  // no event in group 1
}

TEST_F(RampRecording, BaselineAndPeakScalingClampedToSixteenBits) {
    // Amplitudes 10 and 30 give a mean amplitude of 20; baselines 90 and 290.
    AddEvent(100, 1, 10, 90);
    AddEvent(300, 1, 30, 290);
    const TraceSet plain = Build({.baselineAdjust = true});
    EXPECT_EQ(plain.meanAmplitude, 20);
    EXPECT_EQ(plain.Row(1)[0], 96 - 90);
    EXPECT_EQ(plain.Row(2)[0], 296 - 290);
    // Scaled types subtract the baseline with the box unticked: (s - b) x 20 / a.
    const TraceSet scaled = Build({.type = AnalysisType::ScaledAverage});
    EXPECT_EQ(scaled.Row(1)[0], 12);   // 6 x 2
    EXPECT_EQ(scaled.Row(2)[1], 5);    // 7 x 2/3 = 4.67 -> 5
    EXPECT_EQ(scaled.Row(2)[0], 4);    // 6 x 2/3 = 4
    EXPECT_EQ(scaled.Row(0)[0], 8);    // (12 + 4) / 2
    // Beyond sixteen bits: 96 + 32768 clamps; x10 of an amplitude of 1 overflows.
    events[1].baseline = -32768, events[2].baseline = 32767;
    const TraceSet clamped = Build({.baselineAdjust = true});
    EXPECT_EQ(clamped.Row(1)[0], 32767);
    EXPECT_EQ(clamped.Row(2)[0], 296 - 32767);
    events[1].amplitude = 19, events[2].amplitude = 1;
    EXPECT_EQ(Build({.type = AnalysisType::ScaledIndividual}).Row(2)[0], -32768);
}

// The average built without holding the traces is the same, point for
// point, for every kind of value (ties to even, baseline, scaling).
TEST_F(RampRecording, TheAverageAloneEqualsRowZeroOfTheWholeSetAndASetBeyondTheBudgetIsRefused) {
    AddEvent(100, 1, 10, 90);
    AddEvent(101, 1, 30, 290);
    AddEvent(2040, 1, 20, 7);
    for (const TraceSetOptions& o : {TraceSetOptions{.blocks = 0.0625},
                                     TraceSetOptions{.blocks = 0.0625, .baselineAdjust = true},
                                     TraceSetOptions{.type = AnalysisType::ScaledAverage, .blocks = 0.0625}}) {
        const TraceSet whole = BuildGroupTraceSet(*rec, events, params, o);
        const TraceSet alone = BuildGroupAverage(*rec, events, params, o);
        EXPECT_EQ(alone.count, whole.count);
        EXPECT_EQ(alone.points.size(), std::size_t(whole.length));
        EXPECT_TRUE(std::ranges::equal(alone.Row(0), whole.Row(0)));
    }

    // A million blocks of three traces is refused before anything is held,
    // with the memory it would need: 4 rows x 256,000,000 points x 2 bytes.
    const TraceSetOptions huge{.blocks = 1e6};
    EXPECT_EQ(TraceSetSizeProblem(TraceSetBytes(*rec, events, huge, false)),
              "The traces would need 2.0 GB of memory, more than the 1 GB allowed. Analyse fewer "
              "blocks or fewer events.");
    // The average alone needs 12 bytes a point: 3.1 GB, refused too; a
    // thousand blocks (3 MB) is not.
    EXPECT_NE(TraceSetSizeProblem(TraceSetBytes(*rec, events, huge, true)), "");
    EXPECT_EQ(TraceSetSizeProblem(TraceSetBytes(*rec, events, {.blocks = 1000}, false)), "");
    EXPECT_EQ(TraceSetSizeProblem(kTraceSetBudgetBytes), "");  // the budget itself is allowed
    EXPECT_NE(TraceSetSizeProblem(kTraceSetBudgetBytes + 1), "");
}

TEST(TwoChannelRecording, HalfPointStartsReadMidSample) {
    // Frames of two channels: channel 0 holds 1000 + i, channel 1 holds 2000 + i.
    TempDir dir;
    AbfWriteLayout abfLayout = test::MakeAbfLayout(50);
    abfLayout.channels.push_back(abfLayout.channels[0]);
    std::vector<int16_t> frames;
    for (int i = 0; i < 512; ++i) frames.insert(frames.end(), {int16_t(1000 + i), int16_t(2000 + i)});
    ASSERT_EQ(WriteAbf(dir / "two.abf", abfLayout, frames), "");
    auto rec = test::OpenFile(dir / "two.abf");
    ASSERT_TRUE(rec);
    AnalysisParameters params;
    params.PeriodStartBaseline = 200;  // 4 points
    // First point 96: byte 384, channel 0 is 1096; first point 96.5: byte
    // 386, mid-frame; first point 96 of channel 1.
    EventTable events;
    for (auto [index, channel] : {std::pair{100.0, 0}, {100.5, 0}, {100.0, 1}})
        events.Append({.time = float(index * 0.05), .group = 1, .channel = uint8_t(channel)});
    const TraceSet set = BuildGroupTraceSet(*rec, events, params, {.blocks = 0.0625});
    EXPECT_EQ(set.Row(1)[0], 1096);
    EXPECT_EQ(set.Row(1)[1], 1097);
    EXPECT_EQ(set.Row(2)[0], 2096);  // channel 0 read one sample late: channel 1's value
    EXPECT_EQ(set.Row(2)[1], 2097);
    EXPECT_EQ(set.Row(3)[0], 2096);
}

// The simulated recording is sampled at 40 kHz; each event's peak is taken
// 2 ms (80 points) after its listed onset, the onset index being
// round(t x 40000) - 1. The average's baseline is the level before the
// rise: each event rises over the 80 points before its peak, so the flat
// stretch is the first 160 of the 240 points before the peak. Its mean,
// summed here by hand, is the baseline; the mean of all 240 points (the
// rising phase included) is not.
TEST(RealRecording, AverageOfSimulatedEventsMatchesAnIndependentSumAndItsBaselineIsBeforeTheRise) {
    VESS_REQUIRE_SHARED_DATA();
    auto rec = test::OpenShared("events/Sim1/Simulation.abf");
    ASSERT_TRUE(rec);
    std::ifstream times(test::SharedData() / "events" / "Sim1" / "EventTimes.txt");
    std::vector<int64_t> peaks;
    EventTable events;  // group 1 at the peaks, 0.025 ms a point
    for (double t = 0; times >> t;) {
        peaks.push_back(std::llround(t * 40000) - 1 + 80);
        events.Append({.time = float(double(peaks.back()) * 0.025), .group = 1});
    }
    ASSERT_EQ(events.Count(), 40);
    AnalysisParameters params;  // PeriodStartBaseline 6000 us: 240 points
    const TraceSet set = BuildGroupTraceSet(*rec, events, params, {.blocks = 2});
    ASSERT_EQ(set.count, 40);
    ASSERT_EQ(set.length, 512);
    for (int j = 0; j < set.length; ++j) {
        int64_t sum = 0;
        for (int64_t peak : peaks) sum += rec->Sample(peak - 240 + j);
        ASSERT_EQ(set.Row(0)[std::size_t(j)], int16_t(std::nearbyint(double(sum) / 40))) << j;
    }

    const auto row = set.Row(0);
    const auto mean = [&](int n) {
        double sum = 0;
        for (int j = 0; j < n; ++j) sum += row[std::size_t(j)];
        return sum / n;
    };
    const group::TraceMeasurements m = group::MeasureTrace(row, set.prePoints, -1, group::RiseRange::R1090,
                                                           group::UnitScale::Of(*rec));
    const double tolerance = 0.03 * std::abs(m.amplitude);
    EXPECT_NEAR(m.baseline, mean(160), tolerance);
    EXPECT_GT(std::abs(mean(240) - mean(160)), 2 * tolerance);  // the whole stretch would be off
}

// An episodic recording of 6 sweeps of 60000 points on each of 2 channels: a
// whole sweep per trace, from the second channel, less the mean of its first
// five points, every value against the recording's own sample reader.
TEST(RealRecording, EpisodesAreTheSweepsOfTheShownChannel) {
    VESS_REQUIRE_SHARED_DATA();
    auto rec = test::OpenShared("abf1/05210017_vc_abf1.abf");
    ASSERT_TRUE(rec);
    constexpr int64_t kSweep = 60000;
    rec->SetChannel(1);
    const TraceSet sweeps =
        BuildTraceSet(*rec, {}, {}, {.source = TraceSource::Episodes, .baselineAdjust = true, .fullSweep = true});
    ASSERT_EQ(sweeps.count, 6);
    ASSERT_EQ(sweeps.length, kSweep);
    for (int t = 1; t <= 6; ++t) {
        double base = 0;
        for (int j = 0; j < 5; ++j) base += rec->Sample((t - 1) * kSweep + j) / 5.0;
        for (int64_t j : {int64_t(0), int64_t(12345), kSweep - 1})
            ASSERT_EQ(sweeps.Row(t)[std::size_t(j)], int16_t(std::nearbyint(rec->Sample((t - 1) * kSweep + j) - base)))
                << t << " " << j;
    }
}

// Episodic files of both versions, one trace per sweep, and sweeps of their
// own lengths. The sweep counts, points per channel and first counts are
// those listed with the shared data; the variable lengths are the synch
// array's (8316, 8460, 8426, 8458, 8226, 8378 and 8298 samples of two
// channels, which add up to the 58562 samples the header states). Each trace
// is its sweep, then zeros up to the longest sweep; every sample is checked
// against the recording's own sample reader.
TEST(RealRecording, EpisodesAreTheSweepsOfEachFileEndingWhereTheyEnd) {
    VESS_REQUIRE_SHARED_DATA();
    struct Case {
        const char* file;
        uint8_t channel;
        std::vector<int64_t> sweeps;
        std::array<int16_t, 3> first;
    };
    const Case cases[] = {
        {"abf1/pclamp11_4ch_abf1.abf", 0, std::vector<int64_t>(10, 4000), {-786, -81, -1192}},
        {"abf2/pclamp11_4ch.abf", 3, std::vector<int64_t>(10, 4000), {895, -129, -352}},
        {"abf1/2009_01_19_0002_varlen_v18.abf", 1, {4158, 4230, 4213, 4229, 4113, 4189, 4149}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        auto rec = test::OpenShared(c.file);
        ASSERT_TRUE(rec);
        EXPECT_EQ(SweepLengths(*rec), c.sweeps);
        rec->SetChannel(c.channel);
        const TraceSet set =
            BuildTraceSet(*rec, {}, {}, {.source = TraceSource::Episodes, .fullSweep = true});
        ASSERT_EQ(set.count, int32_t(c.sweeps.size()));
        ASSERT_EQ(set.length, *std::ranges::max_element(c.sweeps));
        if (c.first[0] != 0) {
            EXPECT_TRUE(std::ranges::equal(set.Row(1).first(3), c.first));
        }
        int64_t start = 0;
        for (int32_t t = 1; t <= set.count; ++t) {
            const int64_t own = c.sweeps[std::size_t(t - 1)];
            for (int64_t j = 0; j < set.length; ++j)
                ASSERT_EQ(set.Row(t)[std::size_t(j)], j < own ? rec->Sample(start + j) : 0) << t << " " << j;
            start += own;
        }
    }
}

}  // namespace
}  // namespace vess::group
