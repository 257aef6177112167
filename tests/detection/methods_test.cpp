// The deconvolution and template detectors, their suggestion and the accuracy
// check, on synthetic traces whose events are known.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <tuple>

#include "detection/accuracy_check.h"
#include "detection/exponential_grid.h"
#include "detection/fft_convolution.h"
#include "detection/method_detect.h"
#include "detection/near_duplicates.h"
#include "detection/screen_commands.h"
#include "detection/suggest_from_recording.h"
#include "detection/whole_file.h"
#include "trace_helpers.h"

namespace vess {
namespace {

constexpr double kIntervalUs = 50;
const EventKernel kKernel{0.5, 6};
constexpr DetectionMethod kBoth[] = {DetectionMethod::Deconvolution, DetectionMethod::Template};

std::vector<int16_t> Noisy(int64_t points, const std::vector<int64_t>& onsets, double amplitude,
                           double noise, double drift = 0) {
    return test::KernelTrace(points, onsets, amplitude, noise, kKernel, drift);
}

using test::Every;

// Each onset matched once by a peak 0 to 5 ms after it.
int Matched(const EventTable& events, const std::vector<int64_t>& onsets) {
    std::vector<bool> used(std::size_t(events.Count()) + 1, false);
    int matched = 0;
    for (int64_t o : onsets)
        for (int32_t k = 1; k <= events.Count(); ++k)
            if (const int64_t d = events[k].sampleIndex - o; !used[std::size_t(k)] && d >= 0 && d <= 100) {
                used[std::size_t(k)] = true, ++matched;
                break;
            }
    return matched;
}

class MethodsTest : public ::testing::Test {
protected:
    test::TempDir dir;
    ScriptedDialogs dialogs;
    Workspace Open(const std::vector<int16_t>& samples, DetectionMethod method, float countsPerUnit = 1) {
        Workspace ws;
        ws.recording = test::MakeRecording(dir / "trace.abf", samples, kIntervalUs, countsPerUnit);
        ws.settings.method.method = method;
        ws.settings.method.riseTauMs = kKernel.riseTauMs;
        ws.settings.method.decayTauMs = kKernel.decayTauMs;
        ws.params().PeakDirection = -1;
        ws.settings.blocksPerScreen = 4;  // 1024-point screens
        return ws;
    }
};

// Every event found once and nothing else: isolated, at 1024-point screen
// boundaries (10239), on a 3000-count drift, and 2 ms apart (deconvolution).
TEST_F(MethodsTest, EachEventIsFoundOnce) {
    struct Case {
        std::vector<int64_t> onsets;
        int64_t points;
        double noise, drift;
        std::vector<DetectionMethod> methods;
        bool alone;  // each event on a flat baseline: its amplitude is measured whole
    };
    const Case cases[] = {{{5000, 10239, 20480, 30700, 51190, 70000, 90000, 110000}, 120000, 10, 3000,
                           {kBoth[0], kBoth[1]}, true},
                          {{8000, 8040, 30000, 30040}, 40000, 5, 0, {DetectionMethod::Deconvolution}, false}};
    for (const Case& c : cases)
        for (DetectionMethod m : c.methods) {
            SCOPED_TRACE(testing::Message() << c.onsets.size() << " events, " << MethodName(m));
            Workspace ws = Open(Noisy(c.points, c.onsets, 150, c.noise, c.drift), m);
            DetectWholeFile(ws);
            EXPECT_EQ(std::tuple(Matched(ws.events, c.onsets), ws.events.Count()),
                      std::tuple(c.onsets.size(), c.onsets.size()));
            for (const EventRecord& e : ws.events.Records()) {
                EXPECT_TRUE(!c.alone || std::abs(e.amplitude - 150) <= 40) << e.amplitude;  // noise SD 10
                EXPECT_EQ(e.peakDirection, -1);
            }
        }
}

// The first screen and then the non-stop run store exactly the whole-file
// records; a criterion computed into a reused buffer equals a fresh one.
TEST_F(MethodsTest, ScreenByScreenEqualsWholeFile) {
    const std::vector<int64_t> onsets = Every(3000, 78000, 1337);
    const std::vector<int16_t> t = Noisy(80000, onsets, 120, 12);
    for (DetectionMethod m : kBoth) {
        SCOPED_TRACE(MethodName(m));
        Workspace whole = Open(t, m);
        DetectWholeFile(whole);
        Workspace screens = Open(t, m);
        AnalyzeCurrentScreen(screens);
        NonStopAnalysis(screens).RunToEnd();
        ASSERT_GT(whole.events.Count(), 40);
        EXPECT_EQ(screens.events.Records(), whole.events.Records());
        const MethodFilter filter(whole.settings.method, kIntervalUs, -1);
        std::vector<double> reused;
        filter.Compute(*whole.recording, -500, 79000, reused);
        for (const auto& [first, count] : {std::pair<int64_t, int64_t>{777, 3000}, {78000, 1500}}) {
            filter.Compute(*whole.recording, first, count, reused);
            EXPECT_EQ(reused, filter.Compute(t, first, count)) << first;
        }
    }
}

// Two points only where the criterion dips below 0.7 of the smaller peak, or
// runs above the threshold lie the minimum separation apart.
TEST(DetectionPoints, TwoPeaksOnlyWithAClearDip) {
    // z, threshold, separation, the points.
    const std::tuple<std::vector<double>, double, int64_t, std::vector<int64_t>> cases[] = {
        {{0, 0, 5, 10, 6, 5, 6, 8, 4, 0, 0}, 4, 100, {2, 5}},  // dip to 5 < 0.7 x 8
        {{0, 0, 5, 10, 8, 7, 8, 9, 4, 0, 0}, 4, 100, {2}},     // dip to 7, not < 6.3
        {{0, 6, 6.5, 4.4, 6, 6.2, 0}, 4.5, 2, {1, 4}},
        {{0, 6, 6.5, 4.4, 6, 6.2, 0}, 4.5, 10, {1}},
        {{5, 6, 0, 5, 7, 4, 6, 7, 0}, 4.5, 1, {3, 6}}};  // the first run began before z
    for (const auto& [z, threshold, separation, points] : cases) {
        EXPECT_EQ(DetectionPoints(z, threshold, separation, 0.7), points) << threshold << " " << separation;
        // Found as z comes, in pieces split anywhere (the points not yet
        // come hold a value above every threshold), the same.
        const int64_t n = int64_t(z.size());
        for (int64_t split = 1; split < n; ++split) {
            DetectionScan scan(threshold, separation, 0.7);
            std::vector<double> come(z.size(), 100);
            for (const int64_t available : {int64_t(1), split, n}) {
                std::copy(z.begin(), z.begin() + available, come.begin());
                scan.Scan(come.data(), available, n);
            }
            EXPECT_EQ(scan.Points(), points) << threshold << " " << separation << ", split at " << split;
        }
    }
}

// The FFT blocks give the direct convolution, also across block joins.
TEST(FftConvolver, MatchesDirectConvolution) {
    std::vector<double> taps(301), x(20000);
    std::mt19937_64 rng(9);
    for (double& v : taps) v = double(rng() % 1000) / 1000.0 - 0.5;
    for (double& v : x) v = double(rng() % 20000) - 10000;
    const int64_t centre = 120;
    FftConvolver conv(taps, centre);
    std::vector<double> out;
    conv.Filter(x, out);
    ASSERT_EQ(out.size(), x.size() - taps.size() + 1);
    for (std::size_t o : {std::size_t(0), std::size_t(4095), std::size_t(9000), out.size() - 1}) {
        double direct = 0;
        const int64_t at = int64_t(o) + conv.ReachBefore();
        for (std::size_t k = 0; k < taps.size(); ++k) direct += taps[k] * x[std::size_t(at - int64_t(k) + centre)];
        EXPECT_NEAR(out[o], direct, 1e-6 * (1 + std::abs(direct))) << o;
    }
}

// The kernel fit gives back the time constants of a noiseless average with
// 1 ms before the onset; the robust noise ignores a one-sided tail of events.
TEST(EventKernel, FitAndRobustNoiseRecoverTheirTruth) {
    std::vector<double> avg(20, 0.0);
    for (double v : KernelSamples({0.4, 5}, kIntervalUs, 600)) avg.push_back(30 * v);
    const KernelFit fit = FitKernel(avg, kIntervalUs);
    ASSERT_TRUE(fit.ok);
    // Within a tenth, the amplitude within 5 %.
    for (const auto& [value, truth] :
         {std::pair(fit.kernel.riseTauMs, 0.4), {fit.kernel.decayTauMs, 5.0}, {fit.onsetShiftMs, 1.0}})
        EXPECT_NEAR(value, truth, 0.1 * truth);
    EXPECT_NEAR(fit.amplitude, 30, 1.5);
    std::mt19937_64 rng(4);
    std::normal_distribution<double> g(10, 3);
    std::vector<double> v;
    for (int i = 0; i < 50000; ++i) v.push_back(g(rng));
    for (int i = 0; i < 3000; ++i) v.push_back(20 + double(i % 40));
    const NoiseLevel n = RobustNoise(v);
    EXPECT_TRUE(std::abs(n.sd - 3) < 0.15 && std::abs(n.centre - 10) < 0.15) << n.sd << " " << n.centre;
}

// One count is 1e-11 of the unit: the default thresholds lie beyond the
// channel's range, and the suggestion sets them from the noise (4 SDs of 10
// counts = 4e-10), after which the events are found.
TEST_F(MethodsTest, SuggestionOnAChannelWithAnOddUnitScale) {
    const std::vector<int64_t> onsets = Every(4000, 190000, 6000);
    Workspace ws = Open(Noisy(200000, onsets, 150, 10), DetectionMethod::Threshold, 1e11f);
    EXPECT_NE(UnreachableThresholds(ws).find("whole range"), std::string::npos);
    dialogs.AnswerYesNo(true);
    ASSERT_TRUE(CheckThresholdsBeforeDetecting(ws, dialogs));
    EXPECT_EQ(UnreachableThresholds(ws), "");
    EXPECT_NEAR(ws.params().ThresholdAmplitude, 4e-10, 0.6e-10);
    EXPECT_NEAR(ws.settings.method.riseTauMs, 0.5, 0.15);
    EXPECT_NEAR(ws.settings.method.decayTauMs, 6, 1.0);
    DetectWholeFile(ws);
    EXPECT_GE(Matched(ws.events, onsets), int(0.9 * double(onsets.size())));
}

// Large events (200 noise SDs) do not move their neighbours' baseline:
// turned against the detection direction they give no detections (a running
// mean gave 311); a small event (4 SDs) 20 ms after each one stands above the
// threshold with the criterion between near 0, and is measured on the large
// one's extrapolated decay (kernel 10-90 % rise 0.7 ms, onset-to-peak 1.36 ms,
// both from its formula).
TEST_F(MethodsTest, LargeEventsLeaveTheirNeighboursAlone) {
    const std::vector<int64_t> big = Every(5000, 190000, 8000);
    Workspace against = Open(Noisy(200000, big, -2000, 10), DetectionMethod::Deconvolution);
    DetectWholeFile(against);
    EXPECT_EQ(against.events.Count(), 0);
    std::vector<int16_t> t = Noisy(200000, big, 2000, 10);
    const std::vector<double> shape = KernelSamples(kKernel, kIntervalUs, 2000);
    for (int64_t o : big)
        for (int64_t i = 0; i < 2000; ++i)
            t[std::size_t(o + 400 + i)] = RoundClamp16(t[std::size_t(o + 400 + i)] - 40 * shape[std::size_t(i)]);
    Workspace ws = Open(t, DetectionMethod::Deconvolution);
    const MethodRun run = PrepareMethodRun(ws.settings.method, *ws.recording, -1);
    for (int64_t o : big) {
        const std::vector<double> c = run.filter.Compute(*ws.recording, o + 100, 400);
        std::vector<double> z(c.size());
        for (std::size_t i = 0; i < c.size(); ++i) z[i] = (c[i] - run.noise.centre) / run.noise.sd;
        EXPECT_GT(*std::max_element(z.begin() + 250, z.end()), run.threshold) << o;
        std::nth_element(z.begin(), z.begin() + 125, z.begin() + 250);
        EXPECT_LT(std::abs(z[125]), 1.0) << o;
    }
    // Peaks are means of 11 points: each amplitude within 35 %, the mean within 15 %.
    ws.params().NumberPointsPeak = 11;
    DetectWholeFile(ws);
    double amplitudeSum = 0, riseSum = 0, startSum = 0;
    const auto& r = ws.events.Records();
    for (int64_t o : big) {
        const auto small = std::find_if(r.begin(), r.end(),
                                        [&](const EventRecord& e) { return std::abs(e.sampleIndex - o - 450) <= 50; });
        ASSERT_NE(small, r.end()) << o;
        EXPECT_NEAR(small->amplitude, 40, 14) << o;
        EXPECT_NEAR(small->baseline, -2000, 4) << o;
        amplitudeSum += small->amplitude;
        riseSum += small->rise1090;
        startSum += small->riseTime * kIntervalUs / 1000;
    }
    const double n = double(big.size());
    EXPECT_NEAR(amplitudeSum / n, 40, 6);
    EXPECT_TRUE(riseSum / n > 0.35 && riseSum / n < 2.5 * 0.7) << riseSum / n;
    EXPECT_LT(startSum / n, 2 * 1.36);
}

// The fit as one would write it, every exponential computed where it is used.
ExponentialFit Direct(const std::vector<double>& y, double lowest, double range) {
    ExponentialFit best;
    const double n = double(y.size());
    for (int g = 0; g < kDecayGridSteps; ++g) {
        const double tau = lowest * std::pow(range, double(g) / (kDecayGridSteps - 1));
        double sKY = 0, sKK = 0, sYY = 0;
        for (std::size_t k = 0; k < y.size(); ++k) {
            const double e = std::exp((n - double(k)) / tau);
            sKY += e * y[k];
            sKK += e * e;
            sYY += y[k] * y[k];
        }
        const double a = sKY / sKK;
        if (sYY - a * sKY < best.sse) best = {a, tau, sYY - a * sKY};
    }
    return best;
}

// The earlier event's decay is fitted on a grid of time constants. The
// tabulated fit equals the direct one to the bit at every vector width, on
// noisy decays: short and long stretches on one grid (the table grown, and
// its sums of squares reused at a length seen before), another grid, and a
// stretch too long to tabulate. Each width has grids of its own, so that it
// makes its own sums of squares. A noiseless decay whose time constant is on
// the grid is found exactly: its value at the onset and that tau.
TEST(ExponentialGrid, TabulatedFitEqualsDirectFitAtEveryWidth) {
    struct Case {
        std::size_t points;
        double lowest, range;
    };
    const Case cases[] = {{8, 25, 16}, {600, 25, 16}, {1200, 25, 16}, {600, 25, 16},
                          {300, 25, 1.12}, {50000, 900, 16}};
    uint32_t state = 99;  // fixed-seed LCG noise
    for (const int width : GridSumWidths())
        for (const Case& c : cases) {
            const double lowest = c.lowest + width;
            std::vector<double> y(c.points);
            for (std::size_t k = 0; k < y.size(); ++k) {
                state = state * 1664525u + 1013904223u;
                y[k] = -40 * std::exp(double(y.size() - k) / (lowest * 3)) + double(state >> 24) / 16 - 8;
            }
            const ExponentialFit got = FitExponentialOnGridAtWidth(y, lowest, c.range, width);
            const ExponentialFit want = Direct(y, lowest, c.range);
            EXPECT_EQ(std::tuple(got.amplitude, got.tauPoints, got.sse),
                      std::tuple(want.amplitude, want.tauPoints, want.sse))
                << width << " " << c.points;
        }
    const double tau = 25 * std::pow(16, 10.0 / (kDecayGridSteps - 1));  // grid point 10
    std::vector<double> decay(400);
    for (std::size_t k = 0; k < decay.size(); ++k) decay[k] = 7 * std::exp(double(decay.size() - k) / tau);
    const ExponentialFit exact = FitExponentialOnGrid(decay, 25, 16);
    EXPECT_EQ(exact.tauPoints, tau);
    EXPECT_NEAR(exact.amplitude, 7, 1e-9);
}

// The suggested template threshold follows the criterion's spread: the
// default on white noise, higher on noise smoothed over 40 samples (where the
// default lost the events among false ones); the events are found on both.
TEST_F(MethodsTest, SuggestedTemplateThresholdFollowsTheCriterionsSpread) {
    const std::vector<int64_t> onsets = Every(4000, 190000, 6000);
    std::vector<int16_t> coloured = Noisy(200000, onsets, 150, 0);
    std::mt19937_64 rng(4);
    std::normal_distribution<double> g(0, 10 * std::sqrt(40.0));  // means of 40: SD 10
    std::vector<double> w(coloured.size() + 40);  // the last step reads one past the final window
    for (double& v : w) v = g(rng);
    double sum = 0;
    for (std::size_t k = 0; k < 40; ++k) sum += w[k];
    for (std::size_t i = 0; i < coloured.size(); sum += w[i + 40] - w[i], ++i)
        coloured[i] = RoundClamp16(coloured[i] + sum / 40);
    auto suggestAndDetect = [&](const std::vector<int16_t>& t) {
        Workspace ws = Open(t, DetectionMethod::Template);
        const Outcome<RecordingSuggestion> s = SuggestFromRecording(ws);
        EXPECT_TRUE(s.ok()) << s.message();
        ApplySuggestion(ws, s.value());
        EXPECT_EQ(ws.settings.method.templateThreshold, s->templateThreshold);
        DetectWholeFile(ws);
        EXPECT_GE(Matched(ws.events, onsets), int(0.9 * double(onsets.size())));
        EXPECT_LE(ws.events.Count(), int32_t(onsets.size()) + 3);
        return s->templateThreshold;
    };
    const double onWhite = suggestAndDetect(Noisy(200000, onsets, 150, 10));
    const double onColoured = suggestAndDetect(coloured);
    EXPECT_TRUE(onWhite == MethodParameters{}.templateThreshold && onColoured > 1.5 * onWhite)
        << onWhite << " " << onColoured;
}

// Slow events (rise 2 ms, decay 8 ms) of 2 noise SDs: the suggestion smooths
// over the rise it finds and finds far more than the default 0.8 ms smoothing
// (48 and 9 of 66 when written).
TEST_F(MethodsTest, SuggestionSmoothsSlowEventsOverTheirRise) {
    const std::vector<int64_t> onsets = Every(3000, 397000, 6000);
    std::mt19937_64 rng(5);
    std::normal_distribution<double> noise(0, 10);
    std::vector<double> x(400000);
    for (double& v : x) v = -2000 + noise(rng);
    const std::vector<double> shape = KernelSamples({2, 8}, kIntervalUs, 3000);
    for (int64_t o : onsets)
        for (int64_t i = 0; i < 3000; ++i) x[std::size_t(o + i)] -= 20 * shape[std::size_t(i)];
    std::vector<int16_t> t;
    for (double v : x) t.push_back(int16_t(std::lround(v)));
    Workspace ws = Open(t, DetectionMethod::Deconvolution);
    const Outcome<RecordingSuggestion> s = SuggestFromRecording(ws);
    ASSERT_TRUE(s.ok()) << s.message();
    ApplySuggestion(ws, s.value());
    EXPECT_NEAR(ws.settings.method.riseTauMs, 2, 1);
    EXPECT_DOUBLE_EQ(ws.settings.method.lowPassMs, ws.settings.method.riseTauMs);
    DetectWholeFile(ws);
    const int suggested = Matched(ws.events, onsets);
    ws.settings.method.lowPassMs = 0.8;
    ws.events = EventTable{};
    DetectWholeFile(ws);
    EXPECT_TRUE(suggested >= 40 && 2 * Matched(ws.events, onsets) < suggested) << suggested;
}

// Events added at 0.5 to 10 noise SDs: recall low below one SD and nearly
// whole above three; the unchanged and the inverted copies give few false
// events; the recording itself is untouched.
TEST_F(MethodsTest, AccuracyCheckRecallRisesWithAmplitude) {
    const std::vector<int16_t> t = Noisy(400000, {}, 0, 10);
    Workspace ws = Open(t, DetectionMethod::Deconvolution);
    const AccuracyReport r = CheckAccuracy(ws, {.events = 300, .bins = 5});
    ASSERT_TRUE(r.status.ok()) << r.status.message();
    EXPECT_EQ(r.added, 300);
    EXPECT_NEAR(r.noiseSdUnits, 10, 0.5);
    EXPECT_LT(r.bins.front().Recall(), 0.5);
    EXPECT_GT(r.bins.back().Recall(), 0.95);
    ASSERT_TRUE(r.recall90Units.has_value());
    EXPECT_LT(*r.recall90Units, 50);
    EXPECT_TRUE(r.falsePositives <= 10 && r.invertedDetections <= 10) << r.falsePositives << " " << r.invertedDetections;
    EXPECT_NEAR(r.invertedSeconds, r.seconds, 0.5);
    ASSERT_LT(r.invertedSeconds, 60);  // 20 s: too little for a rate per minute
    EXPECT_NE(AccuracySummary(r).find("false events per minute not measurable"), std::string::npos);
    const PlotData plot = AccuracyPlot(r);
    EXPECT_EQ(std::tuple(plot.series.size(), plot.series.at(0).y.size()), std::tuple(2u, 5u));
    std::vector<int16_t> back(t.size());
    ws.recording->ReadSamples(0, back);
    EXPECT_EQ(back, t);
}

// The recording's own 40 events (20 SDs) are neither found added events nor
// false ones, and the false-event estimate leaves out the trace around them.
TEST_F(MethodsTest, AccuracyCheckSetsTheRecordingsOwnEventsApart) {
    Workspace ws = Open(Noisy(400000, Every(5000, 400000, 10000), 200, 10), DetectionMethod::Deconvolution);
    const AccuracyReport r = CheckAccuracy(ws, {.events = 100, .lowSds = 8, .highSds = 10});
    ASSERT_TRUE(r.status.ok()) << r.status.message();
    EXPECT_EQ(std::tuple(r.originalEvents, r.added + r.collided), std::tuple(40, 100));
    EXPECT_TRUE(r.found >= r.added - 3 && r.found <= r.added) << r.found << " of " << r.added;
    EXPECT_TRUE(r.falsePositives <= 3 && r.invertedDetections <= 3) << r.falsePositives << " " << r.invertedDetections;
    EXPECT_LT(r.invertedSeconds, r.seconds - 0.5 * 40 * 0.02);
}

// Recall must stay at 90 % from the bin given up to the largest; bins without
// events are passed over.
TEST(AccuracyRecall90, FromTheRunOfHighRecallAtTheTop) {
    auto bin = [](double low, int added, int found) { return AccuracyBin{.lowUnits = low, .added = added, .found = found}; };
    EXPECT_EQ(Recall90From({bin(1, 10, 10), bin(2, 10, 5), bin(4, 10, 9), bin(8, 0, 0), bin(16, 10, 10)}), 4.0);
    EXPECT_EQ(Recall90From({bin(1, 10, 0), bin(2, 10, 9), bin(4, 10, 8)}), std::nullopt);
    EXPECT_EQ(Recall90From({}), std::nullopt);
}

// A run on a copied input with progress gives the table of a plain run; the
// share only grows and ends at 1. Cancelled during the unchanged copy it stops
// before the second half; cancelled before it begins it reports nothing.
TEST_F(MethodsTest, AccuracyCheckRunsOnItsOwnCopyWithProgressAndCancel) {
    const std::vector<int16_t> t = Noisy(200000, {}, 0, 10);
    for (DetectionMethod m : {DetectionMethod::Threshold, DetectionMethod::Deconvolution}) {
        SCOPED_TRACE(MethodName(m));
        Workspace ws = Open(t, m);
        const AccuracyOptions o{.events = 150, .seed = 11};
        const AccuracyReport plain = CheckAccuracy(ws, o);
        ASSERT_TRUE(plain.status.ok()) << plain.status.message();
        const AccuracyInput input = PrepareAccuracyCheck(ws, o).value();
        ws.recording.reset();
        std::vector<double> shares;
        const AccuracyReport followed = RunAccuracyCheck(input, {[&](double done) { shares.push_back(done); }});
        ASSERT_TRUE(followed.status.ok() && !followed.status.cancelled()) << followed.status.message();
        EXPECT_EQ(AccuracyTable(followed), AccuracyTable(plain));
        EXPECT_GT(plain.found, 0);
        ASSERT_GE(shares.size(), 3u);
        EXPECT_TRUE(std::ranges::is_sorted(shares) && shares.back() == 1.0) << shares.back();
    }
    Workspace ws = Open(t, DetectionMethod::Threshold);  // 196 screens: many steps
    std::atomic<bool> cancel{false};
    std::vector<double> shares;
    const AccuracyControl control{[&](double done) { shares.push_back(done), cancel = cancel || done > 0.1; }, &cancel};
    const AccuracyReport r = CheckAccuracy(ws, AccuracyOptions{}, control);
    EXPECT_TRUE(r.status.cancelled() && !r.status.ok() && r.bins.empty());
    ASSERT_FALSE(shares.empty());
    EXPECT_LT(shares.back(), 0.5);
    EXPECT_LT(std::count_if(shares.begin(), shares.end(), [](double d) { return d > 0.1; }), 3);
    shares.clear();
    EXPECT_TRUE(CheckAccuracy(ws, AccuracyOptions{}, control).status.cancelled());
    EXPECT_TRUE(shares.empty());
}

// Of two events closer than the separation the larger stays (the earlier of
// equals); other channels are not compared; one undo step.
TEST(NearDuplicates, KeepTheLargerOfTwoCloseEvents) {
    Workspace ws;
    const std::tuple<float, int32_t, uint8_t> rows[] = {{10, 50, 0},   {11, 80, 0},   {11.5f, 20, 1},
                                                        {20, 30, 0},   {21.9f, 30, 0}, {30, 40, 0}};
    for (const auto& [time, amplitude, channel] : rows)
        ws.events.Append({.time = time, .amplitude = amplitude, .channel = channel});
    const EditResult r = RemoveNearDuplicates(ws, 2);
    EXPECT_EQ(std::tuple(r.changed, r.deleted), std::tuple(true, 2));
    std::vector<float> times;
    for (const EventRecord& e : ws.events.Records()) times.push_back(e.time);
    EXPECT_EQ(times, (std::vector<float>{11, 11.5f, 20, 30}));
    ASSERT_TRUE(ws.history.CanUndo());
}

}  // namespace
}  // namespace vess
