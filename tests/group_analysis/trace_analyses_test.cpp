// The trace analyses where a measurement cannot be made, the levels that
// decide what counts as a spike or a peak, the rows they append, and the
// delineation of ECG beats; amperometric spikes and the diffusion model. Traces
// with known answers and the comparison with a separate implementation are
// in trace_analyses_reference.py.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "group_analysis/amperometry.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/ecg_delineation.h"
#include "group_analysis/field_potential.h"
#include "group_analysis/multipeak.h"
#include "group_analysis/radial_diffusion.h"
#include "group_analysis/results_commands.h"
#include "group_analysis/results_plots.h"
#include "group_analysis/spike_train.h"
#include "support/ecg_beat.h"

namespace vess::group {
namespace {

constexpr double kDt = 0.02;

// -65 mV with Gaussian spikes (height, centre ms, sd 0.3 ms) and an
// optional dip after each.
SampledTrace Spikes(std::vector<std::pair<double, double>> spikes, double ms, double dip = 0) {
    SampledTrace t{0, kDt, {}};
    for (double x = 0; x < ms; x += kDt) {
        double v = -65;
        for (auto [h, c] : spikes) {
            v += h * std::exp(-(x - c) * (x - c) / (2 * 0.09));
            if (x > c + 1) v -= dip * (x - c - 1) / 3 * std::exp(1 - (x - c - 1) / 3);
        }
        t.y.push_back(v);
    }
    return t;
}

TEST(SpikeShape, WhatCannotBeMeasuredIsNotMeasuredWidthAboveThresholdAhpReferenceAndDecayPercent) {
    struct Case {
        const char* what;
        SampledTrace trace;
        bool threshold, halfWidth, ahp;
    };
    SampledTrace rising{0, kDt, {}};   // climbs through threshold and never comes down
    for (int i = 0; i < 400; ++i) rising.y.push_back(-65 + 100 / (1 + std::exp(-(i - 200) * 0.2)));
    const Case cases[] = {
        {"flat trace", Spikes({}, 20), false, false, false},
        {"slow bump under the rate", SampledTrace{0, kDt, std::vector<double>(1000, -65.0)}, false, false, false},
        {"spike without an AHP", Spikes({{90, 10}}, 30), true, true, false},
        {"spike with an AHP", Spikes({{90, 10}}, 30, 10), true, true, true},
        {"cut off at its peak", rising, true, false, false},
    };
    for (const Case& c : cases) {
        const SpikeShape s = MeasureSpike(c.trace, {});
        EXPECT_TRUE(Measured(s.peak)) << c.what;
        EXPECT_EQ(Measured(s.threshold), c.threshold) << c.what;
        EXPECT_EQ(Measured(s.halfWidth), c.halfWidth) << c.what;
        EXPECT_EQ(Measured(s.ahpPeak), c.ahp) << c.what;
        EXPECT_EQ(Measured(s.ahpArea), c.ahp) << c.what;
    }

    const SampledTrace t = Spikes({{90, 10}}, 30, 10);
    SpikeShapeSettings s;
    s.widthAboveThreshold = 200;   // above the peak
    EXPECT_FALSE(Measured(MeasureSpike(t, s).width));
    s.widthAboveThreshold = 0;     // at threshold: wider than the half-width
    const SpikeShape atThreshold = MeasureSpike(t, s);
    EXPECT_GT(atThreshold.width, atThreshold.halfWidth);
    // Against the threshold the AHP is deeper by threshold - baseline.
    s.useThresholdBaseline = true;
    const SpikeShape fromThreshold = MeasureSpike(t, s);
    EXPECT_NEAR(fromThreshold.ahpPeak - atThreshold.ahpPeak, fromThreshold.threshold - atThreshold.baseline, 1e-9);
    for (const char* bad : {"37-90%", "90", "a-b%", "150-10%"}) EXPECT_FALSE(SetDecayPercent(s, bad)) << bad;
    ASSERT_TRUE(SetDecayPercent(s, "80-20%"));
    EXPECT_EQ(std::pair(s.decayFrom, s.decayTo), std::pair(0.8, 0.2));
}

TEST(SpikeTrain, YmAndYtDecideWhatIsASpike) {
    // Spikes of 90 mV at 10 and 30 ms, a 4 mV ripple at 50 ms, and a doublet
    // at 70 and 71 ms whose trough stays far above threshold.
    const SampledTrace t = Spikes({{90, 10}, {90, 30}, {4, 50}, {90, 70}, {90, 71}}, 90);
    struct Case {
        double ym, yt;
        std::size_t spikes;
    };
    for (const Case c : {Case{5, 2, 3}, Case{3, 2, 3}, Case{5, 80, 4}, Case{95, 2, 0}}) {
        SpikeTrainSettings s;
        s.minHeight = c.ym, s.hysteresis = c.yt, s.shape.thresholdRate = 10;
        const SpikeTrain train = MeasureSpikeTrain(t, s);
        EXPECT_EQ(train.spikes.size(), c.spikes) << "Ym " << c.ym << " Yt " << c.yt;
        // One row per spike and the summary, under the train's headings.
        EXPECT_EQ(SpikeTrainRows(train).size(), c.spikes + 1);
    }
    const SpikeTrain two = MeasureSpikeTrain(Spikes({{90, 10}, {90, 30}}, 40), {});
    EXPECT_FALSE(Measured(two.adaptation));   // needs two intervals
    EXPECT_NEAR(two.frequency, 50, 0.1);
    // d2V/dt2 of a Gaussian of sd 0.3 ms peaks sqrt(3) sd before its centre.
    EXPECT_NEAR(two.spikes[0].phaseThresholdTime, 10 - std::sqrt(3.0) * 0.3, kDt);
}

TEST(Multipeak, NoiseAloneHasNoPeaksAndDownwardPeaksAreFound) {
    SampledTrace t{0, kDt, {}};
    uint32_t seed = 1;
    for (int i = 0; i < 4000; ++i) {
        seed = seed * 1664525u + 1013904223u;
        t.y.push_back(double(seed >> 8) / double(1u << 24) - 0.5);   // uniform noise, sd 0.29
    }
    const Multipeak none = FindPeaks(t, {});
    EXPECT_TRUE(none.peaks.empty());
    EXPECT_FALSE(Measured(none.meanAmplitude));
    for (int i = 0; i < 4000; ++i) t.y[std::size_t(i)] -= 5 * std::exp(-std::pow((i - 2000) * kDt, 2) / 0.5);
    const Multipeak down = FindPeaks(t, {.direction = -1});
    ASSERT_EQ(down.peaks.size(), 1u);
    EXPECT_NEAR(down.peaks[0].time, 40, 0.1);   // the noise moves the top by a few samples
    EXPECT_NEAR(down.peaks[0].amplitude, 5, 0.5);
    EXPECT_TRUE(FindPeaks(t, {.direction = 1}).peaks.empty());
}

TEST(FieldPotential, SynapticCurrentsTakeTheSignOfTheResponse) {
    // A stimulus step at 5 ms, then an outward current rising at 100 pA/ms.
    SampledTrace t{0, kDt, {}};
    for (int i = 0; i < 1500; ++i) {
        const double x = i * kDt;
        double v = x >= 5 ? 500 * std::exp(-(x - 5) / 0.02) : 0;
        if (x >= 7) v += std::min(100 * (x - 7), 200.0) * std::exp(-std::max(0.0, x - 9) / 5);
        t.y.push_back(v);
    }
    FieldSettings s;
    s.synapticCurrents = true;
    const auto r = MeasureFieldResponses(t, s);
    ASSERT_EQ(r.size(), 1u);
    EXPECT_NEAR(r[0].stimulusTime, 5, kDt);
    EXPECT_NEAR(r[0].slope, 100, 1);
    EXPECT_NEAR(r[0].amplitude, 200, 2);
    EXPECT_FALSE(Measured(r[0].spikeAmplitude));
    EXPECT_FALSE(Measured(r[0].pairedSlopeRatio));
    EXPECT_TRUE(MeasureFieldResponses(SampledTrace{0, kDt, {1, 2, 3}}, s).empty());
}

TEST(TraceAnalysisRows, NotMeasuredIsBlankAndLeftOutOfStatistics) {
    ResultsTable table;
    for (const SpikeShape& s : {SpikeShape{.threshold = -50, .halfWidth = 1.0}, SpikeShape{.threshold = -40}})
        table.Append(MeasureRow(ResultKind::SpikeShape, 1, 2, SpikeShapeValues(s)));  // the second without half-width
    const auto text = ResultsText(table);
    EXPECT_EQ(text.substr(0, text.find('\t')), "Threshold");
    EXPECT_NE(text.find("-40.000\t\t"), std::string::npos);
    const auto stats = ResultColumnStatistics(table);
    ASSERT_EQ(stats.size(), 16u);
    EXPECT_EQ(stats[8].title, "Half-width");
    EXPECT_DOUBLE_EQ(stats[8].stats.average, 1.0);
    EXPECT_DOUBLE_EQ(stats[0].stats.average, -45.0);
}

TEST(TraceAnalysis, StretchBetweenCursorsAndAreaAcrossALevel) {
    const TraceSet set{.length = 5, .count = 1, .intervalUs = 100, .points = {0, 0, 0, 0, 0, 10, 20, 30, 40, 50}, .eventIndex = {}};
    const UnitScale scale;
    const SampledTrace t = TraceStretch(set, 1, 3, 1, scale);
    EXPECT_DOUBLE_EQ(t.startMs, 0.1);
    EXPECT_EQ(t.y, (std::vector<double>{scale.Level(20), scale.Level(30), scale.Level(40)}));
    // A V from 0 down to -2 and back over four samples, level -1: the
    // triangle below the level has base 2 samples and height 1.
    const SampledTrace v{0, 0.5, {0, -1, -2, -1, 0}};
    EXPECT_DOUBLE_EQ(AreaBeyond(v, 0, 4, -1, -1), 0.5 * 2 * 1 * 0.5);
    EXPECT_DOUBLE_EQ(AreaBeyond(v, 0, 4, -0.5, -1), 0.5 * 3 * 1.5 * 0.5);
}

// Delineation of synthetic beats whose wave boundaries are known from their
// construction (support/ecg_beat.h): every boundary within one sample.
using Beat = test::EcgBeatShape;

SampledTrace Sample(const Beat& b, double dt, double lengthMs = 800, double noiseSd = 0) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0, 1);
    SampledTrace t{0, dt, {}};
    for (int i = 0; i * dt < lengthMs; ++i) t.y.push_back(b.At(i * dt) + (noiseSd > 0 ? noiseSd * noise(rng) : 0));
    return t;
}

TEST(EcgDelineation, BoundariesWithinOneSampleOfTheConstruction) {
    struct Case { const char* name; Beat beat; double dt; };
    Beat noQ, noS, inverted, shortPr;
    noQ.qAmp = 0, noS.sAmp = 0, inverted.tAmp = -0.25;
    shortPr.pOn = 281, shortPr.pOff = 341;   // a PR segment of 20 ms: P close to Q
    for (const Case& c : {Case{"qRs 500 Hz", Beat{}, 2}, Case{"qRs 1 kHz", Beat{}, 1}, Case{"qRs 250 Hz", Beat{}, 4},
                          Case{"Rs", noQ, 2}, Case{"qR", noS, 2}, Case{"inverted T", inverted, 2},
                          Case{"short PR", shortPr, 2}}) {
        const Beat& b = c.beat;
        const EcgBeat m = DelineateBeat(Sample(b, c.dt), {});
        const std::pair<double, double> boundaries[] = {
            {m.pOnset, b.pOn}, {m.pOffset, b.pOff}, {m.qrsOnset, b.qrsOn}, {m.qrsOffset, b.qrsOff},
            {m.tOnset, b.tOn}, {m.tOffset, b.tOff}, {m.pr, b.qrsOn - b.pOn}, {m.qrs, b.qrsOff - b.qrsOn},
            {m.qt, b.tOff - b.qrsOn}, {m.pPeak, (b.pOn + b.pOff) / 2}, {m.tPeak, (b.tOn + b.tOff) / 2},
            {m.rPeak, b.rTime}};
        for (std::size_t k = 0; k < std::size(boundaries); ++k)
            EXPECT_NEAR(boundaries[k].first, boundaries[k].second, c.dt) << c.name << " value " << k;
        // Amplitudes: the construction at the sampled peaks, above the baseline.
        EXPECT_NEAR(m.baseline, b.base, 1e-12) << c.name;
        EXPECT_NEAR(m.pAmp, Beat::HalfSine(m.pPeak, b.pOn, b.pOff, b.pAmp), 1e-12) << c.name;
        EXPECT_NEAR(m.rAmp, b.Qrs(m.rPeak), 1e-12) << c.name;
        EXPECT_NEAR(m.tAmp, Beat::HalfSine(m.tPeak, b.tOn, b.tOff, b.tAmp), 1e-12) << c.name;
        if (b.sAmp == 0) EXPECT_FALSE(Measured(m.sAmp)) << c.name;
        else EXPECT_NEAR(m.sAmp, b.Qrs(m.sPeak), 1e-12) << c.name;
    }
}

TEST(EcgDelineation, QtCorrectionsNoiseAndMissingWaves) {
    // QT 400 ms at RR 640 ms: Bazett 400 / 0.8 = 500 ms, Fridericia
    // 400 / 0.64^(1/3) = 464.2 ms.
    EXPECT_NEAR(QtcBazett(400, 640), 500, 1e-9);
    EXPECT_NEAR(QtcFridericia(400, 640), 464.158883, 1e-6);
    const Beat b;
    EXPECT_NEAR(DelineateBeat(Sample(b, 2), {.rrMs = 640}).qtcFridericia, 320 / std::cbrt(0.64), 2);
    EXPECT_FALSE(Measured(DelineateBeat(Sample(b, 2), {}).qtcBazett)) << "no RR, no QTc";
    // Noise of 5 µV on a 1.2 mV R at 500 Hz: boundaries within two samples
    // (worst over 50 noise seeds: 3.2 ms).
    const EcgBeat noisy = DelineateBeat(Sample(b, 2, 800, 0.005), {});
    for (auto [got, want] : {std::pair{noisy.qrsOnset, b.qrsOn}, {noisy.qrsOffset, b.qrsOff}, {noisy.pOnset, b.pOn},
                             {noisy.tOffset, b.tOff}})
        EXPECT_NEAR(got, want, 4);
    // A beat cut before its T wave ends: no QT, the QRS still measured.
    const EcgBeat cut = DelineateBeat(Sample(b, 2, 600), {.rrMs = 900});
    EXPECT_FALSE(Measured(cut.qt));
    EXPECT_NEAR(cut.qrs, 80, 2);
    // No P wave: no PR, the baseline from just before the QRS.
    Beat noP;
    noP.pAmp = 0;
    const EcgBeat q = DelineateBeat(Sample(noP, 2), {});
    EXPECT_FALSE(Measured(q.pr));
    EXPECT_NEAR(q.baseline, noP.base, 1e-12);
}

// Amperometric spikes built from straight pieces, so that every level
// crossing and the area (trapezoids are exact on straight pieces) are known
// from the geometry of the spike; the diffusion simulator and its fit.
constexpr double kAmperoDt = 0.1, kBase = 3;

// Baseline 3 pA for 30 ms; the piecewise-linear spike through the given
// (ms, pA above baseline) corners, baseline outside them.
SampledTrace Spike(std::vector<std::pair<double, double>> corners, double ms = 30) {
    SampledTrace t{0, kAmperoDt, {}};
    for (int i = 0; i * kAmperoDt < ms; ++i) {
        const double x = i * kAmperoDt;
        double v = 0;
        for (std::size_t k = 0; k + 1 < corners.size(); ++k) {
            const auto [x0, y0] = corners[k];
            const auto [x1, y1] = corners[k + 1];
            if (x >= x0 - 1e-9 && x <= x1 + 1e-9) v = y0 + (y1 - y0) * (x - x0) / (x1 - x0);
        }
        t.y.push_back(kBase + v);
    }
    return t;
}

// Triangle: up from 10 to 11 ms to 40 pA, down to baseline at 15 ms. Area
// 40 x 5 / 2 = 100 pA ms = 0.1 pC.
const std::vector<std::pair<double, double>> kTriangle = {{10, 0}, {11, 40}, {15, 0}};

TEST(Amperometry, TriangleMeasuresFollowFromItsCornersForEachRiseRangeAndElectrons) {
    const AmperoSpike s = MeasureAmperoSpike(Spike(kTriangle), {});
    EXPECT_NEAR(s.baseline, kBase, 1e-12);
    EXPECT_NEAR(s.imax, 40, 1e-12);
    EXPECT_NEAR(s.timeToPeak, 1, 1e-9);
    EXPECT_NEAR(s.rise, 0.4, 1e-9);        // 50 % at 10.5 ms, 90 % at 10.9 ms
    EXPECT_NEAR(s.riseSlope, 40, 1e-9);
    EXPECT_NEAR(s.halfWidth, 2.5, 1e-9);   // 10.5 to 13 ms
    EXPECT_NEAR(s.decay, 2.12, 1e-9);      // 90 % at 11.4, 37 % at 13.52 ms
    EXPECT_NEAR(s.charge, 0.1, 1e-12);
    EXPECT_FALSE(Measured(s.footDuration)) << "a spike rising straight from baseline has no foot";
    // Molecules N = Q / (n e): 0.1 pC over one or two elementary charges.
    struct Case { const char* rise; double electrons, riseMs, molecules; };
    for (const Case c : {Case{"25-75% Rise", 1, 0.5, 0.1e-12 / 1.602176634e-19},
                         Case{"10-90% Rise", 2, 0.8, 0.1e-12 / (2 * 1.602176634e-19)}}) {
        AmperoSettings a;
        ASSERT_TRUE(SetAmperoRise(a, c.rise));
        a.electrons = c.electrons;
        const AmperoSpike m = MeasureAmperoSpike(Spike(kTriangle), a);
        EXPECT_NEAR(m.rise, c.riseMs, 1e-9) << c.rise;
        EXPECT_NEAR(m.molecules, c.molecules, 1e-3) << c.rise;
    }
    AmperoSettings bad;
    EXPECT_FALSE(SetAmperoRise(bad, "90-50% Rise"));
    EXPECT_FALSE(SetAmperoDecay(bad, "37-90%"));
}

TEST(Amperometry, FootBeforeTheUpstrokeAndSpikesCutOffOrAbsent) {
    // A 4 pA foot from 8 to 10 ms, then up to 40 pA at 11 ms and down by 15.
    const AmperoSpike s = MeasureAmperoSpike(Spike({{7.9, 0}, {8, 4}, {10, 4}, {11, 40}, {15, 0}}), {});
    EXPECT_NEAR(s.footDuration, 2.1, 1e-6);             // 7.9 to 10 ms
    EXPECT_NEAR(s.footCharge, (0.2 + 8) / 1000, 1e-9);  // ramp 0.2 + plateau 8 pA ms
    EXPECT_NEAR(s.footAmplitude, 8.2 / 2.1, 1e-6);      // mean current over the foot
    EXPECT_NEAR(s.charge, (8.2 + 22 + 80) / 1000, 1e-12);
    // Cut off before it comes back, or absent: not measured.
    const AmperoSpike cut = MeasureAmperoSpike(Spike(kTriangle, 13), {});
    EXPECT_NEAR(cut.imax, 40, 1e-12);
    EXPECT_FALSE(Measured(cut.charge)) << "the spike has not come back to baseline";
    EXPECT_FALSE(Measured(cut.molecules));
    const AmperoSpike flat = MeasureAmperoSpike(Spike({}), {});
    EXPECT_FALSE(Measured(flat.rise));
    EXPECT_FALSE(Measured(flat.charge));
}

// The diffusion simulator against the two analytic solutions it must
// reproduce, and the fit on traces simulated with known parameters plus
// noise.
// W0(x) for x >= 0 by Halley's iteration on w e^w = x.
double LambertW0(double x) {
    double w = std::log1p(x);
    for (int k = 0; k < 50; ++k) {
        const double e = std::exp(w), f = w * e - x;
        const double step = f / (e * (w + 1) - (w + 2) * f / (2 * w + 2));
        w -= step;
        if (std::fabs(step) < 1e-15 * (1 + std::fabs(w))) break;
    }
    return w;
}

TEST(RadialDiffusion, PointSourceSpreadsAsInAnUnboundedMediumAndUniformUptakeFollowsMichaelisMenten) {
    // N in the centre shell, no uptake, the edge far away:
    // C(r, t) = N (4 pi D t)^-3/2 exp(-r² / 4 D t), D in µm²/ms.
    WalkModel m{.vmax = 0, .diffusion = 2.7e-6, .deadRadius = 0, .totalRadius = 120};
    RadialDiffusion walk(m);
    const double n = 1000, d = 2.7e-6 * 1e5, t = 200;
    walk.Concentration()[0] = n / (4.0 / 3 * std::numbers::pi);
    walk.Advance(t);
    for (const int shell : {0, 5, 10, 20}) {
        const double r = shell + 0.5;  // the shell's middle
        const double exact = n * std::pow(4 * std::numbers::pi * d * t, -1.5) * std::exp(-r * r / (4 * d * t));
        EXPECT_NEAR(walk.Concentration()[std::size_t(shell)] / exact, 1, 0.02) << "shell " << shell;
    }

    // No dead space and a holding edge keep the tissue uniform, so
    // dC/dt = -Vmax C / (Km + C): C(t) = Km W((C0/Km) exp((C0 - Vmax t) / Km)).
    const WalkModel u{.release = 2, .vmax = 3.5, .km = 0.24, .deadRadius = 0, .diffusingEdge = false};
    const auto c = SimulateElectrode(u, 201, 5);
    for (const std::size_t i : {20u, 80u, 120u, 200u}) {
        const double t = double(i) * 5 / 1000;  // s
        const double exact = u.km * LambertW0(u.release / u.km * std::exp((u.release - u.vmax * t) / u.km));
        EXPECT_NEAR(c[i], exact, 1e-4 * u.release) << "t = " << t << " s";
    }
}

TEST(RadialDiffusion, FitRecoversReleaseVmaxAndKmFromANoisyTrace) {
    const WalkModel truth;  // the defaults: 2 µM, 3.5 µM/s, 0.24 µM
    SampledTrace trace{0, 5, SimulateElectrode(truth, 500, 5)};
    const double peak = *std::max_element(trace.y.begin(), trace.y.end());
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0, 0.02 * peak);
    for (double& v : trace.y) v += noise(rng);
    WalkModel start = truth;
    start.release = 1.5, start.vmax = 2.5, start.km = 0.4;
    const WalkFit fit = FitWalk(trace, start, {});
    EXPECT_NEAR(fit.model.release / truth.release, 1, 0.05);
    EXPECT_NEAR(fit.model.vmax / truth.vmax, 1, 0.05);
    EXPECT_NEAR(fit.model.km / truth.km, 1, 0.05);
    EXPECT_NEAR(fit.stdev / (0.02 * peak), 1, 0.1) << "the residual is the noise";
}

}  // namespace
}  // namespace vess::group
