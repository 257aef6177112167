// "Suggest from this recording" learns the typical event only from clear
// events: noise bursts, test pulses and voltage steps make no kernel, no
// kernel rises faster than the noise can change, and one recording gives one
// suggestion and one set of events whatever kernel was set before.
#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "detection/clear_events.h"
#include "detection/suggest_from_recording.h"
#include "detection/whole_file.h"
#include "trace_helpers.h"

namespace vess {
namespace {

constexpr double kIntervalUs = 50;
constexpr int64_t kSecond = 20000;  // points

std::vector<int16_t> Rounded(const std::vector<double>& x) {
    std::vector<int16_t> out;
    for (double v : x) out.push_back(Clamp16(RoundEven(v)));
    return out;
}

std::vector<double> WhiteNoise(int64_t points, double sd, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::normal_distribution<double> g(0, sd);
    std::vector<double> x(std::size_t(points), 0.0);
    for (double& v : x) v = -2000 + g(rng);
    return x;
}

void AddShape(std::vector<double>& x, int64_t onset, int64_t length, const auto& shape) {
    for (int64_t i = 0; i < length && onset + i < int64_t(x.size()); ++i) x[std::size_t(onset + i)] += shape(i);
}

Workspace Open(const test::TempDir& dir, const std::vector<int16_t>& samples) {
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "trace.abf", samples, kIntervalUs, 1);
    ws.settings.method.method = DetectionMethod::Deconvolution;
    ws.params().PeakDirection = -1;
    return ws;
}

TEST(ClearAboveNoise, KeepsTheAmplitudesTheUpsideDownTraceRarelyReaches) {
    std::vector<double> descending(20);  // 100, 99, ... 81
    std::iota(descending.rbegin(), descending.rend(), 81);
    const struct {
        std::vector<double> sorted, noise;
        std::size_t kept;
    } cases[] = {
        {descending, {}, 20},
        {{5, 4, 3}, {3, 5, 4}, 0},               // the noise as large as the events
        {descending, {1000}, 20},                // one artefact of the other direction
        {descending, {85, 84, 83, 82, 81}, 16},  // down to 85: 1 in 16, within a tenth
    };
    for (const auto& c : cases) EXPECT_EQ(ClearAboveNoise(c.sorted, c.noise, 0.1), c.kept) << c.noise.size();
}

// White noise: one sampling interval. A moving mean over 8 points correlates
// as 1 - lag/8; less the running mean over 41 points (2 ms) that the measure
// takes off, its autocovariance (worked out from that of the moving mean)
// falls to 1/e at 3.94 points.
TEST(ClearEvents, NoiseCorrelationTimeAndTheRiseFloor) {
    const std::vector<double> white = WhiteNoise(200000, 10, 1);
    std::vector<double> smooth(white.size(), -2000);
    for (std::size_t i = 8; i < white.size(); ++i)
        for (std::size_t k = 0; k < 8; ++k) smooth[i] += (white[i - k] + 2000) / std::sqrt(8.0);
    EXPECT_NEAR(NoiseCorrelationMs(Rounded(white), kIntervalUs), 0.05, 1e-9);
    EXPECT_NEAR(NoiseCorrelationMs(Rounded(smooth), kIntervalUs), 3.94 * 0.05, 0.005);
    // Events that jump in one sample in noise smoothed over 1.5 ms: the
    // kernel's rise is held at the noise's correlation time.
    std::vector<double> slow(white.size(), -2000);
    for (std::size_t i = 30; i < white.size(); ++i)
        for (std::size_t k = 0; k < 30; ++k) slow[i] += (white[i - k] + 2000) / std::sqrt(30.0);
    for (int64_t o = 3000; o + 3000 < int64_t(slow.size()); o += 1500)
        AddShape(slow, o, 3000, [](int64_t i) { return -200 * std::exp(-double(i) / 100); });
    test::TempDir dir;
    Workspace ws = Open(dir, Rounded(slow));
    const Outcome<RecordingSuggestion> suggested = SuggestFromRecording(ws);
    ASSERT_TRUE(suggested) << suggested.message();
    const RecordingSuggestion& s = suggested.value();
    EXPECT_GE(s.eventsUsed, 10);
    EXPECT_TRUE(s.minRiseMs > 0.25 && s.riseTauMs >= s.minRiseMs) << s.minRiseMs << " " << s.riseTauMs;
    EXPECT_NEAR(s.decayTauMs, 5, 1);
}

// 30 s of noise (SD 10 counts) with events (rise 0.5 ms, decay 5 ms) of 15
// to 30 SDs, and every second a test pulse (a capacitive spike of 3000
// counts over 0.3 ms on a 300-count step held 50 ms, ended by the opposite
// spike) and a voltage step of 400 counts held 200 ms with no spike.
TEST(ClearEvents, TestPulsesAndStepsMakeNoKernelAndNothingSetBeforeCounts) {
    std::vector<double> x = WhiteNoise(30 * kSecond, 10, 2);
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> amplitude(150, 300);
    const std::vector<double> kernel = KernelSamples({0.5, 5}, kIntervalUs, 3000);
    for (int64_t second = 0; second < 30; ++second) {
        const int64_t at = second * kSecond;
        AddShape(x, at + 500, 1000, [](int64_t i) { return -300 - 3000 * std::exp(-double(i) / 6); });
        AddShape(x, at + 1500, 400, [](int64_t i) { return 3000 * std::exp(-double(i) / 6); });
        AddShape(x, at + 10000, 4000, [](int64_t) { return -400.0; });
        for (const int64_t o : {4700, 6700, 8700, 16700, 18700}) {
            const double a = amplitude(rng);
            AddShape(x, at + o, 3000, [&](int64_t i) { return -a * kernel[std::size_t(i)]; });
        }
    }
    test::TempDir dir;
    Workspace ws = Open(dir, Rounded(x));
    // What the suggestion and the detection after it give, the kernel set before being rise, decay.
    const auto suggestAndDetect = [&](double rise, double decay) {
        ws.settings.method.riseTauMs = rise;
        ws.settings.method.decayTauMs = decay;
        const RecordingSuggestion s = SuggestFromRecording(ws).value();
        ApplySuggestion(ws, s);
        ws.events = EventTable{};
        DetectWholeFile(ws);
        return std::tuple(s.riseTauMs, s.decayTauMs, s.thresholdAmplitude, s.templateThreshold, ws.events);
    };
    const auto first = suggestAndDetect(3, 30);
    EXPECT_NEAR(std::get<0>(first), 0.5, 0.15);
    EXPECT_NEAR(std::get<1>(first), 5, 0.75);
    EXPECT_GE(std::get<4>(first).Count(), 150);
    EXPECT_TRUE(suggestAndDetect(0.1, 1) == first);
    EXPECT_TRUE(suggestAndDetect(0.5, 6) == first);
}

// Smooth transients (Gaussian bumps, SD 0.5 ms, 6 to 10 noise SDs) as often
// and as large one way as the other, and no events: the deconvolved trace
// crosses the strict threshold as much upside down, so nothing is clear and
// the default kernel is kept.
TEST(ClearEvents, TransientsBothWaysKeepTheDefaultKernel) {
    std::vector<double> x = WhiteNoise(30 * kSecond, 10, 4);
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> size(60, 100);
    for (int64_t o = 1000; o + 2000 < int64_t(x.size()); o += 2000) {
        const double a = (rng() % 2 ? 1 : -1) * size(rng);
        AddShape(x, o, 200, [a](int64_t i) { return a * std::exp(-0.5 * std::pow((double(i) - 100) / 10, 2)); });
    }
    test::TempDir dir;
    Workspace ws = Open(dir, Rounded(x));
    const Outcome<RecordingSuggestion> suggested = SuggestFromRecording(ws);
    ASSERT_TRUE(suggested) << suggested.message();
    const RecordingSuggestion& s = suggested.value();
    EXPECT_EQ(std::tuple(s.eventsUsed, s.riseTauMs, s.decayTauMs),
              std::tuple(0, MethodParameters{}.riseTauMs, MethodParameters{}.decayTauMs));
    EXPECT_EQ(KernelSourceText(s), "too few clear events: default kernel");
}

}  // namespace
}  // namespace vess
