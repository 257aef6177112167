#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "hrv/analysis.h"
#include "hrv/geometric.h"
#include "hrv/rr_intervals.h"
#include "hrv/spectrum.h"

namespace vess::hrv {
namespace {

HrvOptions WideOpen() { return {.upperBoundMs = 1e6, .lowerBoundMs = 0}; }

// Beats at 0, 800, 1600 and 3200 ms: RR 800, 800, 1600; dRR 0, 800. Bounds
// leave out intervals and the deltas formed with them.
TEST(TimeDomain, FourBeatsByHand) {
    const std::vector<double> beats{0, 800, 1600, 3200};
    const TimeDomainResult r = AnalyseBeats(beats, 3200, 3200, WideOpen()).timeDomain;
    // Deviations -266.67, -266.67, 533.33: squares sum to 426666.67, over n - 1 = 2.
    const double sdrr = std::sqrt(426666.0 / 2 + 1.0 / 3), mrr = 3200.0 / 3;
    // Threshold 50: only |800| counts (nNN 1, pNN 50); a dRR equal to the threshold does not.
    const double byHand[] = {3, mrr, sdrr, 100 * sdrr / mrr, 2, 400, std::sqrt(2 * 400.0 * 400.0),
                             std::sqrt(800.0 * 800.0 / 2), 1, 50};
    for (std::size_t i = 0; i < std::size(byHand); ++i) EXPECT_NEAR(r.Values()[i], byHand[i], 1e-9) << i;
    HrvOptions atThreshold = WideOpen();
    atThreshold.thresholdMs = 800;
    EXPECT_EQ(AnalyseBeats(beats, 3200, 3200, atThreshold).timeDomain.nNN, 0);
    HrvOptions o = WideOpen();
    o.upperBoundMs = 1000;  // 1600 goes, and with it the dRR 800
    const TimeDomainResult bounded = AnalyseBeats(beats, 3200, 3200, o).timeDomain;
    EXPECT_EQ(std::tuple(bounded.nRR, bounded.nDRR, bounded.nNN), std::tuple(2, 1, 0));
    // A middle interval left out breaks both pairs around it.
    o.upperBoundMs = 150;
    const TimeDomainResult gap = AnalyseBeats(std::vector<double>{0, 100, 200, 900, 1000, 1100}, 1100, 1100, o).timeDomain;
    EXPECT_EQ(std::tuple(gap.nRR, gap.nDRR), std::tuple(4, 2));
    // The stored defaults (10 to 100 ms) suit rodents: a human series is all left out, the
    // count kept for the message that names the bounds; the mean not measured, never 0.
    const HrvAnalysis rodent = AnalyseBeats(beats, 3200, 3200, HrvOptions{});
    EXPECT_EQ(std::tuple(rodent.rr.outsideBounds, rodent.timeDomain.nRR, rodent.timeDomain.nDRR), std::tuple(3u, 0, 0));
    EXPECT_TRUE(std::isnan(rodent.timeDomain.MRR));
    // Undefined measures are blank, never 0; a beat not measured costs its two intervals only.
    const TimeDomainResult one = AnalyseBeats(std::vector<double>{0, 800}, 800, 800, WideOpen()).timeDomain;
    EXPECT_EQ(one.nRR, 1);
    for (double v : {one.SDRR, one.CVPercent, one.MdRR, one.rMSSD, one.pNN}) EXPECT_TRUE(std::isnan(v));
    EXPECT_EQ(std::tuple(FormatMeasure(3, one.CVPercent), FormatMeasure(1, one.MRR)), std::tuple("", "800.000"));
    const HrvAnalysis a = AnalyseBeats(std::vector<double>{0, 800, std::nan(""), 2400, 3200, 4000}, 4000, 4000, WideOpen());
    // 2400-3200-4000: one delta, of 0.
    EXPECT_EQ(std::tuple(a.rr.notMeasured, a.timeDomain.nRR, a.timeDomain.MRR, a.timeDomain.rMSSD),
              std::tuple(2u, 3, 800.0, 0.0));
}
// Segments of 1000 ms over 4500 ms: intervals end at 800 (segment 1), 1600 (2),
// 3200 (4), 4400 and 4450 (5, RR 1200 and 50); segment 3 holds none.
TEST(TimeDomain, SegmentsWithEmptyAndLastOptions) {
    const std::vector<double> beats{0, 800, 1600, 3200, 4400, 4450};
    HrvOptions o = WideOpen();
    TimeDomainResult r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    ASSERT_EQ(r.nSegment, 4);
    EXPECT_EQ(std::tuple(r.segments[2].number, r.segments[3].number, r.segments[3].count, r.segments[3].meanMs),
              std::tuple(4, 5, 2, 625.0));
    EXPECT_NEAR(r.segments[3].sdMs, std::sqrt(2 * 575.0 * 575.0), 1e-9);
    // One interval has no SD: not measured, and left out of MSDNN rather than pulling it to 0.
    EXPECT_TRUE(std::isnan(r.segments[0].sdMs) && r.MSDNN == r.segments[3].sdMs) << r.MSDNN;
    EXPECT_NEAR(r.MANN, (800 + 800 + 1600 + 625) / 4.0, 1e-12);
    o.includeZeroSegments = true;
    r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    EXPECT_EQ(std::tuple(r.nSegment, r.segments[2].count), std::tuple(5, 0));
    EXPECT_NEAR(r.MANN, (800 + 800 + 0 + 1600 + 625) / 5.0, 1e-12);
    o.excludeLastSegment = true;
    r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    EXPECT_EQ(std::pair(r.nSegment, r.segments.back().number), std::pair(4, 4));
    // A recording longer than the beats adds empty segments at the end, a part one counted.
    r = AnalyseBeats(beats, 9200, 1000, o).timeDomain;
    EXPECT_EQ(r.nSegment, 9);
}

// Far beats and tiny segments: empty segments cost nothing; too many rows are refused with a reason.
TEST(TimeDomain, FarBeatsAndTinySegmentsStayBounded) {
    HrvOptions o = WideOpen();
    o.upperBoundMs = 1e308;
    // Beats, segment length, empty segments included, segments listed (-1: refused with a reason).
    const std::tuple<std::vector<double>, double, bool, int> cases[] = {
        // The interval ending at 1e15 ms is in the last of 1e8 segments: listed alone.
        {{0, 800, 1e15}, 1e7, false, 2},
        {{0, 800, 1e300}, 1000, false, -1},    // segment number beyond any int
        {{0, 800, 1600}, 1e-300, false, -1},   // 1.6e303 segments
        {{0, 800, 1e12}, 1000, true, -1},      // a billion empty rows asked for
        {{0, 800, 1600, 2400}, 1, true, 2400}, // one row a millisecond, listed
    };
    for (const auto& [beats, segmentMs, includeZero, segments] : cases) {
        SCOPED_TRACE(testing::Message() << beats.back() << " " << segmentMs);
        o.includeZeroSegments = includeZero;
        const TimeDomainResult r = AnalyseBeats(beats, 0, segmentMs, o).timeDomain;
        EXPECT_EQ(r.nRR, int(beats.size()) - 1);
        EXPECT_EQ(r.segmentProblem.find("too many to list") != std::string::npos, segments < 0) << r.segmentProblem;
        EXPECT_EQ(r.nSegment, std::max(segments, 0));
    }
    o.includeZeroSegments = false;
    EXPECT_EQ(AnalyseBeats(std::vector<double>{0, 800, 1e15}, 0, 1e7, o).timeDomain.segments[1].number,
              100'000'000);
}

// 1000 intervals around 700 ms modulated at 0.25, 0.08 and 0.02 Hz, with noise and two
// artefacts; golden values from reference_values.py beside this file (numpy and scipy).
std::vector<double> RealisticBeats() {
    std::minstd_rand gen(12345);  // x <- 48271 x mod (2^31 - 1), fixed by the standard
    std::vector<double> beats{0};
    for (int k = 0; k < 1000; ++k) {
        const double u = double(gen() - 1) / double(std::minstd_rand::modulus - 2);
        const double t = beats.back() / 1000;
        double rr = 700 + 25 * std::sin(2 * M_PI * 0.25 * t) + 15 * std::sin(2 * M_PI * 0.08 * t + 0.3) +
                    10 * std::sin(2 * M_PI * 0.02 * t) + 20 * (u - 0.5);
        if (k == 100) rr = 1400;
        if (k == 500) rr = 250;
        beats.push_back(beats.back() + rr);
    }
    return beats;
}

TEST(TimeDomain, RealisticSeriesAgreesWithIndependentReference) {
    const std::vector<double> beats = RealisticBeats();
    const HrvOptions o{
        .upperBoundMs = 900, .lowerBoundMs = 300, .pointsPerSegment = 60000, .thresholdMs = 20, .rrBinMs = 1000.0 / 128};
    const HrvAnalysis a = AnalyseBeats(beats, beats.back(), o.SegmentMs(1000), o);
    const SpectrumResult s = AnalyseSpectrum(a.rr.endMs, a.rr.rrMs, HumanSpectrumPreset());
    ASSERT_EQ(s.error, "");
    // The script prints ten significant digits (CV% is worked out from the two before it); the
    // spectrum's spline and windows agree to 1e-7.
    const double timeDomain[] = {998,         699.5278676, 22.6211135,  100 * 22.6211135 / 699.5278676,
                                 995,         0.04366458153, 20.73192023, 20.72154557, 406, 40.8040201, 12,
                                 699.5115643, 1.45732191,  22.70147813, 0.3708834274};
    for (std::size_t i = 0; i < std::size(timeDomain); ++i)
        EXPECT_NEAR(a.timeDomain.Values()[i], timeDomain[i], 1e-8 * timeDomain[i]) << "column " << i;
    const std::tuple<double, double, double> others[] = {
        {a.lorenz.sd1Ms, 14.65968138, 1e-8},         {a.lorenz.sd2Ms, 28.44102254, 1e-8},
        {a.triangle.triangularIndex, 6.789115646, 1e-8}, {double(a.timeDomain.segments.front().count), 85, 0},
        {s.vlf.powerMs2, 61.74181284, 1e-7},         {s.lf.powerMs2, 115.6408624, 1e-7},
        {s.hf.powerMs2, 327.2360259, 1e-7},          {s.vlf.peakHz, 0.015625, 0},
        {s.lf.peakHz, 0.078125, 0},                  {s.hf.peakHz, 0.25, 0}};
    for (const auto& [value, golden, relative] : others) EXPECT_NEAR(value, golden, relative * golden);
    // The fitted triangle spans the bulk of the intervals around the mean.
    EXPECT_TRUE(a.triangle.nMs < 650 && a.triangle.mMs > 750 && a.triangle.tinnMs < 250)
        << a.triangle.nMs << " " << a.triangle.mMs << " " << a.triangle.tinnMs;
}

TEST(Geometric, BinsTriangleAndLorenzEllipse) {
    // Bins of 10: 5 and 9 in bin 0, 10 in bin 1, -1 in bin -1 (floor).
    const std::vector<double> v{5, 9, 10, -1};
    const auto h = BinValues(v, 10);
    ASSERT_TRUE(h);
    EXPECT_EQ(std::tuple(h->lowestBin, h->counts), std::tuple(-1, std::vector<int32_t>{1, 2, 1}));
    // 60001 bins are too many, 60000 not; bins of no width neither.
    EXPECT_EQ(std::tuple(bool(BinValues(std::vector<double>{0, 60000}, 1)),
                         bool(BinValues(std::vector<double>{0, 59999}, 1)), bool(BinValues(v, 0))),
              std::tuple(false, true, false));
    // An exact triangle 0,1,2,3,4,3,2,1,0 (bins 0..8 of width 1): feet at the
    // centres of bins 0 and 8, TINN 8, index 16 / 4.
    const TriangleFit fit = FitTriangle({1, 0, {0, 1, 2, 3, 4, 3, 2, 1, 0}});
    EXPECT_EQ(std::tuple(fit.nMs, fit.mMs, fit.tinnMs, fit.triangularIndex), std::tuple(0.5, 8.5, 8.0, 4.0));
    // Feet found by the bin-by-bin least-squares search this fit replaced (commit fee4ce0).
    // A triangle 40,000 bins wide and 20,000 high is found exactly.
    Histogram wide{1, 0, std::vector<int32_t>(40001)};
    for (int i = 0; i <= 40000; ++i) wide.counts[i] = i <= 20000 ? i : 40000 - i;
    const std::pair<Histogram, std::pair<double, double>> feet[] = {
        {{8, 90, {3, 0, 5, 9, 14, 20, 12, 7, 7, 2, 1, 0, 0, 1}}, {732, 796}},
        {{8, 100, {1, 4, 2, 8, 3, 15, 6, 2, 9, 1}}, {820, 876}},
        {{7.8125, -2, {10, 3, 1}}, {-19.53125, 3.90625}},
        {{1, 0, {5, 5, 5, 5}}, {-0.5, 4.5}},
        {wide, {0.5, 40000.5}}};
    for (const auto& [h, nm] : feet) {
        const TriangleFit f = FitTriangle(h);
        EXPECT_EQ(std::pair(f.nMs, f.mMs), nm) << h.counts.size();
    }
    // Two falling feet with the same error (680, by exact fractions): the narrower wins.
    EXPECT_EQ(FitTriangle({1, 0, {3, 4, 7, 3, 2, 19, 22, 5, 0, 32, 16, 3, 23, 19, 7, 4, 10}}).mMs, 16.5);
    // Points on the identity line have no spread across it.
    const std::vector<std::pair<double, double>> line{{100, 100}, {110, 110}, {120, 120}};
    const LorenzMeasures m = AnalyseLorenz(line);
    EXPECT_NEAR(m.sd1Ms, 0, 1e-12);
    EXPECT_NEAR(m.sd2Ms, std::sqrt(2.0) * 10, 1e-9);
    const auto ellipse = LorenzEllipse(m, 5);
    ASSERT_EQ(ellipse.size(), 5u);
    EXPECT_NEAR(std::hypot(ellipse[0].first - 120, ellipse[0].second - 120), 0, 1e-9);  // SD2 along the identity line
}

// RR(t) = 700 + 30 sin(2 pi 0.1 t) + 20 sin(2 pi 0.25 t) ms at the beat ending each interval
// (fixed point, five steps). A sine of amplitude A carries A^2 / 2: LF 450, HF 200 ms^2.
struct Series { std::vector<double> timesMs, rrMs; };
Series TwoSines(int count) {
    const auto f = [](double ms) {
        const double t = ms / 1000;
        return 700 + 30 * std::sin(2 * M_PI * 0.1 * t) + 20 * std::sin(2 * M_PI * 0.25 * t);
    };
    Series s;
    double t = 0;
    for (int k = 0; k < count; ++k) {
        double end = t + 700;
        for (int i = 0; i < 5; ++i) end = t + f(end);
        s.rrMs.push_back(end - t);
        s.timesMs.push_back(end);
        t = end;
    }
    return s;
}

// Welch, 3 %: Hann side lobes under 0.1 % outside the bands, ripple off-bin under 1 %, the
// spline under 1 %. Lomb-Scargle on the uneven beats, 5 %: the unwindowed sine leaks across
// the band edges.
TEST(Spectrum, WelchAndLombScargleRecoverTwoSines) {
    using enum SpectrumMethod;
    for (const auto& [method, beats, tolerance, peakHz] :
         {std::tuple(Welch, 1000, 0.03, 1.0 / 64), std::tuple(LombScargle, 600, 0.05, 0.005)}) {
        const Series s = TwoSines(beats);
        SpectrumOptions o = HumanSpectrumPreset();
        o.method = method;
        const SpectrumResult r = AnalyseSpectrum(s.timesMs, s.rrMs, o);
        ASSERT_EQ(r.error, "");
        EXPECT_NEAR(r.lf.powerMs2, 450, 450 * tolerance);
        EXPECT_NEAR(r.hf.powerMs2, 200, 200 * tolerance);
        EXPECT_NEAR(r.lf.peakHz, 0.1, peakHz);
        EXPECT_NEAR(r.hf.peakHz, 0.25, peakHz);
        if (method != Welch) continue;
        EXPECT_TRUE(r.windows > 15 && r.vlf.powerMs2 < 2) << r.windows << " " << r.vlf.powerMs2;
        EXPECT_NEAR(r.lfHfRatio, 2.25, 2.25 * 0.05);
        EXPECT_NEAR(r.lfNu, 100 * 450.0 / 650, 1.5);
        // The density integrates to the variance of the detrended series.
        double total = 0;
        for (double p : r.densityMs2PerHz) total += p * (r.frequencyHz[1] - r.frequencyHz[0]);
        EXPECT_NEAR(total, 650, 650 * 0.03);
    }
}

TEST(Spectrum, MousePresetScalesTheBandsAndFailuresAreReported) {
    const SpectrumOptions mouse = MouseSpectrumPreset();
    // A mouse series at 10 beats a second with sines at 1 Hz (LF) and 3 Hz (HF).
    std::vector<double> times{0}, rr;
    for (int k = 0; k < 3000; ++k) {
        const double t = times.back() / 1000;
        rr.push_back(100 + 4 * std::sin(2 * M_PI * 1.0 * t) + 2 * std::sin(2 * M_PI * 3.0 * t));
        times.push_back(times.back() + rr.back());
    }
    times.erase(times.begin());
    const SpectrumResult r = AnalyseSpectrum(times, rr, mouse);
    ASSERT_EQ(r.error, "");
    // Peaks within 0.05 Hz; powers 4^2 / 2 and 2^2 / 2, the value taken at the starting beat, within 10 %.
    for (const auto& [value, truth, tolerance] : {std::tuple(r.lf.peakHz, 1.0, 0.05), {r.hf.peakHz, 3.0, 0.05},
                                                  {r.lf.powerMs2, 8.0, 0.8}, {r.hf.powerMs2, 2.0, 0.2}})
        EXPECT_NEAR(value, truth, tolerance);
    const std::vector<double> few{1, 2, 3};
    EXPECT_NE(AnalyseSpectrum(few, few, HumanSpectrumPreset()).error, "");
    // 3e11 resampled points, or as many Lomb-Scargle frequencies: refused before anything is held.
    SpectrumOptions fast = mouse;
    fast.resampleHz = 1e9;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("choose a lower resampling rate"), std::string::npos);
    times.back() = 1e30;
    fast.method = SpectrumMethod::LombScargle;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("analyse a shorter stretch"), std::string::npos);
    // Few enough frequencies, but 10,000 beats at each of about 1e7 of them: refused before the sums.
    std::vector<double> manyTimes(10'000), manyRr(10'000, 800);
    for (std::size_t i = 0; i < manyTimes.size(); ++i) manyTimes[i] = 800.0 * double(i + 1);
    manyTimes.back() = 5e8;
    const SpectrumResult slow = AnalyseSpectrum(manyTimes, manyRr, fast);
    EXPECT_NE(slow.error.find("periodogram sums"), std::string::npos) << slow.error;
}

// Removing the mean leaves the trend; the spline and the linear trend's removal are checked
// against the reference values above.
TEST(Spectrum, MeanRemovalLeavesTheTrend) {
    std::vector<double> ramp{1, 3, 5, 7};
    RemoveTrend(ramp, Detrend::Mean);
    EXPECT_EQ(ramp, (std::vector<double>{-3, -1, 1, 3}));
}

// Lomb's normalised periodogram at f, straight from its definition.
double DirectLomb(const std::vector<double>& t, const std::vector<double>& y, double f) {
    const double w = 2 * std::numbers::pi * f;
    double s2 = 0, c2 = 0;
    for (double ti : t) s2 += std::sin(2 * w * ti), c2 += std::cos(2 * w * ti);
    const double tau = std::atan2(s2, c2) / (2 * w);
    double yc = 0, ys = 0, cc = 0, ss = 0;
    for (std::size_t i = 0; i < t.size(); ++i) {
        const double c = std::cos(w * (t[i] - tau)), s = std::sin(w * (t[i] - tau));
        yc += y[i] * c, ys += y[i] * s, cc += c * c, ss += s * s;
    }
    return 0.5 * (yc * yc / cc + ys * ys / ss);
}

// The periodogram, computed by turning each time's sine and cosine from one frequency to the
// next (a 3-hour series of 186 beats took seconds with four sines and cosines per beat and
// frequency), equals the definition evaluated directly at every frequency: uneven beats hours
// into a recording, intervals of 0.6 to 1.2 s carrying a 0.1 Hz and a 0.3 Hz modulation.
TEST(LombScargle, EveryFrequencyEqualsTheDefinition) {
    std::mt19937 gen(5);
    std::uniform_real_distribution<double> interval(0.6, 1.2);
    std::vector<double> t{10800}, y;
    for (int i = 0; i < 300; ++i) t.push_back(t.back() + interval(gen));
    for (double ti : t) y.push_back(40 * std::sin(0.2 * std::numbers::pi * ti) + 15 * std::cos(0.6 * std::numbers::pi * ti));
    const SpectrumResult s = LombScargleDensity(t, y, 0.4, 4);
    ASSERT_EQ(s.error, "");
    const double span = t.back() - t.front(), df = 1 / (4 * span);
    ASSERT_EQ(s.frequencyHz.size(), std::size_t(std::floor(0.4 / df)) + 1);
    EXPECT_EQ(s.densityMs2PerHz[0], 0);
    const double largest = *std::max_element(s.densityMs2PerHz.begin(), s.densityMs2PerHz.end());
    for (std::size_t k = 1; k < s.frequencyHz.size(); ++k) {
        EXPECT_NEAR(s.frequencyHz[k], double(k) * df, 1e-12);
        const double expected = 2 * DirectLomb(t, y, double(k) * df) * span / double(t.size());
        EXPECT_NEAR(s.densityMs2PerHz[k], expected, 1e-9 * largest) << s.frequencyHz[k];
    }
}

}  // namespace
}  // namespace vess::hrv
