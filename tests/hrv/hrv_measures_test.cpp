#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "hrv/analysis.h"
#include "hrv/geometric.h"
#include "hrv/rr_intervals.h"
#include "hrv/spectrum.h"

namespace vess::hrv {
namespace {

HrvOptions WideOpen() {
    HrvOptions o;
    o.upperBoundMs = 1e6;
    o.lowerBoundMs = 0;
    return o;
}

// Beats at 0, 800, 1600 and 3200 ms: RR 800, 800, 1600; dRR 0, 800.
TEST(TimeDomain, FourBeatsByHand) {
    const std::vector<double> beats{0, 800, 1600, 3200};
    const HrvAnalysis a = AnalyseBeats(beats, 3200, 3200, WideOpen());
    const TimeDomainResult& r = a.timeDomain;
    EXPECT_EQ(r.nRR, 3);
    EXPECT_DOUBLE_EQ(r.MRR, 3200.0 / 3);
    // Deviations -266.67, -266.67, 533.33: squares sum to 426666.67, over n - 1 = 2.
    EXPECT_NEAR(r.SDRR, std::sqrt(426666.0 / 2 + 1.0 / 3), 1e-9);
    EXPECT_EQ(r.nDRR, 2);
    EXPECT_DOUBLE_EQ(r.MdRR, 400);
    EXPECT_NEAR(r.SDdRR, std::sqrt(2 * 400.0 * 400.0), 1e-9);
    EXPECT_NEAR(r.rMSSD, std::sqrt(800.0 * 800.0 / 2), 1e-9);
    // Threshold 50: only |800| counts; a dRR equal to the threshold does not.
    EXPECT_EQ(r.nNN, 1);
    EXPECT_DOUBLE_EQ(r.pNN, 50);
    HrvOptions atThreshold = WideOpen();
    atThreshold.thresholdMs = 800;
    EXPECT_EQ(AnalyseBeats(beats, 3200, 3200, atThreshold).timeDomain.nNN, 0);
}

TEST(TimeDomain, BoundsLeaveOutIntervalsAndTheDeltasFormedWithThem) {
    const std::vector<double> beats{0, 800, 1600, 3200};
    HrvOptions o = WideOpen();
    o.upperBoundMs = 1000;  // 1600 goes, and with it the dRR 800
    TimeDomainResult r = AnalyseBeats(beats, 3200, 3200, o).timeDomain;
    EXPECT_EQ(r.nRR, 2);
    EXPECT_EQ(r.nDRR, 1);
    EXPECT_EQ(r.nNN, 0);
    // A middle interval left out breaks both pairs around it.
    const std::vector<double> gap{0, 100, 200, 900, 1000, 1100};
    o.upperBoundMs = 150;
    r = AnalyseBeats(gap, 1100, 1100, o).timeDomain;
    EXPECT_EQ(r.nRR, 4);
    EXPECT_EQ(r.nDRR, 2);
    // The stored defaults (10 to 100 ms) suit rodents: a human series is all left out.
    const HrvAnalysis rodent = AnalyseBeats(beats, 3200, 3200, HrvOptions{});
    EXPECT_EQ(rodent.rr.outsideBounds, 3u);  // counted for the message that names the bounds
    EXPECT_EQ(rodent.timeDomain.nRR, 0);
    EXPECT_EQ(rodent.timeDomain.nDRR, 0);
    EXPECT_TRUE(std::isnan(rodent.timeDomain.MRR));  // not measured, never 0
}

// Undefined measures are blank, never 0; a beat not measured costs its two intervals only.
TEST(TimeDomain, NotMeasuredValuesAreBlankAndLeftOut) {
    const TimeDomainResult one = AnalyseBeats(std::vector<double>{0, 800}, 800, 800, WideOpen()).timeDomain;
    EXPECT_EQ(one.nRR, 1);
    for (double v : {one.SDRR, one.CVPercent, one.MdRR, one.rMSSD, one.pNN}) EXPECT_TRUE(std::isnan(v));
    EXPECT_EQ(FormatMeasure(3, one.CVPercent), "");
    EXPECT_EQ(FormatMeasure(1, one.MRR), "800.000");

    const std::vector<double> beats{0, 800, std::nan(""), 2400, 3200, 4000};
    const HrvAnalysis a = AnalyseBeats(beats, 4000, 4000, WideOpen());
    EXPECT_EQ(a.rr.notMeasured, 2u);
    EXPECT_EQ(a.timeDomain.nRR, 3);
    EXPECT_DOUBLE_EQ(a.timeDomain.MRR, 800);
    EXPECT_DOUBLE_EQ(a.timeDomain.rMSSD, 0);  // 2400-3200-4000: one delta of 0
}

// Segments of 1000 ms over 4500 ms: intervals end at 800 (segment 1), 1600 (2),
// 3200 (4), 4400 and 4450 (5, RR 1200 and 50); segment 3 holds none.
TEST(TimeDomain, SegmentsWithEmptyAndLastOptions) {
    const std::vector<double> beats{0, 800, 1600, 3200, 4400, 4450};
    HrvOptions o = WideOpen();
    TimeDomainResult r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    ASSERT_EQ(r.nSegment, 4);
    EXPECT_EQ(r.segments[2].number, 4);
    EXPECT_EQ(r.segments[3].number, 5);
    EXPECT_EQ(r.segments[3].count, 2);
    EXPECT_DOUBLE_EQ(r.segments[3].meanMs, 625);
    EXPECT_NEAR(r.segments[3].sdMs, std::sqrt(2 * 575.0 * 575.0), 1e-9);
    // One interval has no SD: not measured, and left out of MSDNN rather than pulling it to 0.
    EXPECT_TRUE(std::isnan(r.segments[0].sdMs));
    EXPECT_NEAR(r.MSDNN, r.segments[3].sdMs, 1e-12);
    EXPECT_NEAR(r.MANN, (800 + 800 + 1600 + 625) / 4.0, 1e-12);
    o.includeZeroSegments = true;
    r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    EXPECT_EQ(r.nSegment, 5);
    EXPECT_EQ(r.segments[2].count, 0);
    EXPECT_NEAR(r.MANN, (800 + 800 + 0 + 1600 + 625) / 5.0, 1e-12);
    o.excludeLastSegment = true;
    r = AnalyseBeats(beats, 4500, 1000, o).timeDomain;
    EXPECT_EQ(r.nSegment, 4);
    EXPECT_EQ(r.segments.back().number, 4);
    // A recording longer than the beats adds empty segments at the end, a part one counted.
    r = AnalyseBeats(beats, 9200, 1000, o).timeDomain;
    EXPECT_EQ(r.nSegment, 9);
}

// Far beats and tiny segments: empty segments cost nothing; too many rows are refused with a reason.
TEST(TimeDomain, FarBeatsAndTinySegmentsStayBounded) {
    HrvOptions o = WideOpen();
    o.upperBoundMs = 1e308;
    const struct {
        std::vector<double> beats;
        double segmentMs;
        bool includeZero;
        int segments;  // -1: refused with a reason
    } cases[] = {
        // The interval ending at 1e15 ms is in the last of 1e8 segments: listed alone.
        {{0, 800, 1e15}, 1e7, false, 2},
        {{0, 800, 1e300}, 1000, false, -1},    // segment number beyond any int
        {{0, 800, 1600}, 1e-300, false, -1},   // 1.6e303 segments
        {{0, 800, 1e12}, 1000, true, -1},      // a billion empty rows asked for
        {{0, 800, 1600, 2400}, 1, true, 2400}, // one row a millisecond, listed
    };
    for (const auto& c : cases) {
        o.includeZeroSegments = c.includeZero;
        const TimeDomainResult r = AnalyseBeats(c.beats, 0, c.segmentMs, o).timeDomain;
        EXPECT_EQ(r.nRR, int(c.beats.size()) - 1);
        if (c.segments < 0) {
            EXPECT_NE(r.segmentProblem.find("too many to list"), std::string::npos) << c.beats.back();
            EXPECT_EQ(r.nSegment, 0);
        } else {
            EXPECT_EQ(r.segmentProblem, "");
            EXPECT_EQ(r.nSegment, c.segments) << c.beats.back();
        }
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

HrvOptions RealisticOptions() {
    HrvOptions o;
    o.upperBoundMs = 900;
    o.lowerBoundMs = 300;
    o.pointsPerSegment = 60000;
    o.thresholdMs = 20;
    o.rrBinMs = 1000.0 / 128;
    return o;
}

TEST(TimeDomain, RealisticSeriesAgreesWithIndependentReference) {
    const std::vector<double> beats = RealisticBeats();
    const HrvOptions o = RealisticOptions();
    const HrvAnalysis a = AnalyseBeats(beats, beats.back(), o.SegmentMs(1000), o);
    const TimeDomainResult& r = a.timeDomain;
    EXPECT_EQ(r.nRR, 998);
    EXPECT_NEAR(r.MRR, 699.5278676, 1e-6);
    EXPECT_NEAR(r.SDRR, 22.6211135, 1e-6);
    EXPECT_EQ(r.nDRR, 995);
    EXPECT_NEAR(r.MdRR, 0.04366458153, 1e-9);
    EXPECT_NEAR(r.SDdRR, 20.73192023, 1e-7);
    EXPECT_NEAR(r.rMSSD, 20.72154557, 1e-7);
    EXPECT_EQ(r.nNN, 406);
    EXPECT_NEAR(r.pNN, 40.8040201, 1e-6);
    EXPECT_EQ(r.nSegment, 12);
    EXPECT_NEAR(r.MANN, 699.5115643, 1e-6);
    EXPECT_NEAR(r.SDANN, 1.45732191, 1e-7);
    EXPECT_NEAR(r.MSDNN, 22.70147813, 1e-7);
    EXPECT_NEAR(r.SDSDNN, 0.3708834274, 1e-8);
    EXPECT_EQ(r.segments.front().count, 85);

    EXPECT_NEAR(a.lorenz.sd1Ms, 14.65968138, 1e-7);
    EXPECT_NEAR(a.lorenz.sd2Ms, 28.44102254, 1e-7);
    EXPECT_NEAR(a.triangle.triangularIndex, 6.789115646, 1e-8);
    // The fitted triangle spans the bulk of the intervals around the mean.
    EXPECT_LT(a.triangle.nMs, 650);
    EXPECT_GT(a.triangle.mMs, 750);
    EXPECT_LT(a.triangle.tinnMs, 250);

    SpectrumResult s = AnalyseSpectrum(a.rr.endMs, a.rr.rrMs, HumanSpectrumPreset());
    ASSERT_EQ(s.error, "");
    EXPECT_NEAR(s.vlf.powerMs2, 61.74181284, 1e-5);
    EXPECT_NEAR(s.lf.powerMs2, 115.6408624, 1e-5);
    EXPECT_NEAR(s.hf.powerMs2, 327.2360259, 1e-5);
    EXPECT_DOUBLE_EQ(s.vlf.peakHz, 0.015625);
    EXPECT_DOUBLE_EQ(s.lf.peakHz, 0.078125);
    EXPECT_DOUBLE_EQ(s.hf.peakHz, 0.25);
}

TEST(Geometric, BinsTriangleAndLorenzEllipse) {
    // Bins of 10: 5 and 9 in bin 0, 10 in bin 1, -1 in bin -1 (floor).
    const std::vector<double> v{5, 9, 10, -1};
    const auto h = BinValues(v, 10);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->lowestBin, -1);
    EXPECT_EQ(h->counts, (std::vector<int32_t>{1, 2, 1}));
    EXPECT_FALSE(BinValues(std::vector<double>{0, 60000}, 1));  // 60001 bins
    EXPECT_TRUE(BinValues(std::vector<double>{0, 59999}, 1));
    EXPECT_FALSE(BinValues(v, 0));

    // An exact triangle 0,1,2,3,4,3,2,1,0 (bins 0..8 of width 1): feet at the
    // centres of bins 0 and 8, TINN 8, index 16 / 4.
    Histogram tri{1, 0, {0, 1, 2, 3, 4, 3, 2, 1, 0}};
    const TriangleFit fit = FitTriangle(tri);
    EXPECT_DOUBLE_EQ(fit.nMs, 0.5);
    EXPECT_DOUBLE_EQ(fit.mMs, 8.5);
    EXPECT_DOUBLE_EQ(fit.tinnMs, 8);
    EXPECT_DOUBLE_EQ(fit.triangularIndex, 4);

    // Feet found by the bin-by-bin least-squares search this fit replaced (commit fee4ce0).
    struct Case {
        Histogram h;
        double nMs, mMs;
    };
    const std::vector<Case> before{
        {{8, 90, {3, 0, 5, 9, 14, 20, 12, 7, 7, 2, 1, 0, 0, 1}}, 732, 796},
        {{8, 100, {1, 4, 2, 8, 3, 15, 6, 2, 9, 1}}, 820, 876},
        {{7.8125, -2, {10, 3, 1}}, -19.53125, 3.90625},
        {{1, 0, {5, 5, 5, 5}}, -0.5, 4.5},
    };
    for (const auto& c : before) {
        const TriangleFit f = FitTriangle(c.h);
        EXPECT_DOUBLE_EQ(f.nMs, c.nMs) << c.h.counts.size();
        EXPECT_DOUBLE_EQ(f.mMs, c.mMs) << c.h.counts.size();
    }
    // Two falling feet with the same error (680, by exact fractions): the
    // narrower wins.
    Histogram tie{1, 0, {3, 4, 7, 3, 2, 19, 22, 5, 0, 32, 16, 3, 23, 19, 7, 4, 10}};
    EXPECT_DOUBLE_EQ(FitTriangle(tie).mMs, 16.5);
    // A triangle 40,000 bins wide and 20,000 high is found exactly.
    Histogram wide{1, 0, std::vector<int32_t>(40001)};
    for (int i = 0; i <= 40000; ++i) wide.counts[i] = i <= 20000 ? i : 40000 - i;
    const TriangleFit w = FitTriangle(wide);
    EXPECT_DOUBLE_EQ(w.nMs, 0.5);
    EXPECT_DOUBLE_EQ(w.mMs, 40000.5);

    // Points on the identity line have no spread across it.
    const std::vector<std::pair<double, double>> line{{100, 100}, {110, 110}, {120, 120}};
    const LorenzMeasures m = AnalyseLorenz(line);
    EXPECT_NEAR(m.sd1Ms, 0, 1e-12);
    EXPECT_NEAR(m.sd2Ms, std::sqrt(2.0) * 10, 1e-9);
    const auto ellipse = LorenzEllipse(m, 5);
    ASSERT_EQ(ellipse.size(), 5u);
    EXPECT_NEAR(ellipse[0].first, 110 + 10, 1e-9);  // SD2 along the identity line
    EXPECT_NEAR(ellipse[0].second, 110 + 10, 1e-9);
}

// RR(t) = 700 + 30 sin(2 pi 0.1 t) + 20 sin(2 pi 0.25 t) ms at the beat ending each interval
// (fixed point, five steps). A sine of amplitude A carries A^2 / 2: LF 450, HF 200 ms^2.
struct Series {
    std::vector<double> timesMs, rrMs;
};
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

// 3 %: Hann side lobes under 0.1 % outside the bands, ripple off-bin under 1 %, the spline under 1 %.
TEST(Spectrum, WelchRecoversTwoSines) {
    const Series s = TwoSines(1000);
    const SpectrumResult r = AnalyseSpectrum(s.timesMs, s.rrMs, HumanSpectrumPreset());
    ASSERT_EQ(r.error, "");
    EXPECT_GT(r.windows, 15);
    EXPECT_NEAR(r.lf.powerMs2, 450, 450 * 0.03);
    EXPECT_NEAR(r.hf.powerMs2, 200, 200 * 0.03);
    EXPECT_LT(r.vlf.powerMs2, 2);
    EXPECT_NEAR(r.lf.peakHz, 0.1, 1.0 / 64);
    EXPECT_NEAR(r.hf.peakHz, 0.25, 1.0 / 64);
    EXPECT_NEAR(r.lfHfRatio, 2.25, 2.25 * 0.05);
    EXPECT_NEAR(r.lfNu, 100 * 450.0 / 650, 1.5);
    // The density integrates to the variance of the detrended series.
    double total = 0;
    for (double p : r.densityMs2PerHz) total += p * (r.frequencyHz[1] - r.frequencyHz[0]);
    EXPECT_NEAR(total, 650, 650 * 0.03);
}

// Lomb-Scargle on the uneven beats; 5 %: the unwindowed sine leaks across the band edges.
TEST(Spectrum, LombScargleRecoversTwoSines) {
    const Series s = TwoSines(600);
    SpectrumOptions o;
    o.method = SpectrumMethod::LombScargle;
    const SpectrumResult r = AnalyseSpectrum(s.timesMs, s.rrMs, o);
    ASSERT_EQ(r.error, "");
    EXPECT_NEAR(r.lf.powerMs2, 450, 450 * 0.05);
    EXPECT_NEAR(r.hf.powerMs2, 200, 200 * 0.05);
    EXPECT_NEAR(r.lf.peakHz, 0.1, 0.005);
    EXPECT_NEAR(r.hf.peakHz, 0.25, 0.005);
}

TEST(Spectrum, MousePresetScalesTheBandsAndFailuresAreReported) {
    const SpectrumOptions mouse = MouseSpectrumPreset();
    const SpectrumOptions human = HumanSpectrumPreset();

    // A mouse series at 10 beats a second with sines at 1 Hz (LF) and 3 Hz (HF).
    std::vector<double> times, rr;
    double t = 0;
    for (int k = 0; k < 3000; ++k) {
        const double v = 100 + 4 * std::sin(2 * M_PI * 1.0 * t / 1000) + 2 * std::sin(2 * M_PI * 3.0 * t / 1000);
        t += v;
        times.push_back(t);
        rr.push_back(v);
    }
    const SpectrumResult r = AnalyseSpectrum(times, rr, mouse);
    ASSERT_EQ(r.error, "");
    EXPECT_NEAR(r.lf.peakHz, 1.0, 0.05);
    EXPECT_NEAR(r.hf.peakHz, 3.0, 0.05);
    EXPECT_NEAR(r.lf.powerMs2, 8, 8 * 0.1);  // 4^2 / 2, the value taken at the starting beat
    EXPECT_NEAR(r.hf.powerMs2, 2, 2 * 0.1);

    const std::vector<double> few{1, 2, 3};
    EXPECT_NE(AnalyseSpectrum(few, few, human).error, "");
    // 3e11 resampled points, or as many Lomb-Scargle frequencies: refused before anything is held.
    SpectrumOptions fast = mouse;
    fast.resampleHz = 1e9;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("choose a lower resampling rate"), std::string::npos);
    times.back() = 1e30;
    fast.method = SpectrumMethod::LombScargle;
    EXPECT_NE(AnalyseSpectrum(times, rr, fast).error.find("analyse a shorter stretch"), std::string::npos);
}

TEST(Spectrum, SplineAndDetrendPieces) {
    // A natural spline reproduces a straight line exactly and passes through its knots.
    const std::vector<double> x{0, 1, 2.5, 4}, line{1, 3, 6, 9};
    const std::vector<double> at{0, 0.5, 2.5, 3.25, 4};
    const auto y = CubicSplineAt(x, line, at);
    for (std::size_t i = 0; i < at.size(); ++i) EXPECT_NEAR(y[i], 1 + 2 * at[i], 1e-12);
    std::vector<double> ramp{1, 3, 5, 7};
    RemoveTrend(ramp, Detrend::Linear);
    for (double v : ramp) EXPECT_NEAR(v, 0, 1e-12);
    std::vector<double> shifted{1, 3, 5, 7};
    RemoveTrend(shifted, Detrend::Mean);
    EXPECT_DOUBLE_EQ(shifted[0], -3);
}

}  // namespace
}  // namespace vess::hrv
