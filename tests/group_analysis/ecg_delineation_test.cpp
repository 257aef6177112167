// Synthetic beats built from pieces whose boundaries are known exactly:
// half-sine P and T waves and a QRS of straight strokes, on an offset
// baseline. The delineated boundaries must lie within one sample of them.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "group_analysis/ecg_delineation.h"

namespace vess::group {
namespace {

constexpr double kBase = 0.05;  // mV: the isoelectric level

struct Beat {
    double pOn = 201, pOff = 291, pAmp = 0.15;
    double qrsOn = 361, qTime = 376, qAmp = -0.1, rTime = 401, rAmp = 1.2, sTime = 421, sAmp = -0.3, qrsOff = 441;
    double tOn = 521, tOff = 681, tAmp = 0.3;
    double lengthMs = 800;
};

double HalfSine(double x, double on, double off, double amp) {
    return x > on && x < off ? amp * std::sin(std::numbers::pi * (x - on) / (off - on)) : 0;
}

// Straight strokes through (onset, 0), Q, R, S, (offset, 0); a Q or S of
// zero amplitude is left out.
double Qrs(double x, const Beat& b) {
    std::vector<std::pair<double, double>> c{{b.qrsOn, 0}};
    if (b.qAmp != 0) c.push_back({b.qTime, b.qAmp});
    c.push_back({b.rTime, b.rAmp});
    if (b.sAmp != 0) c.push_back({b.sTime, b.sAmp});
    c.push_back({b.qrsOff, 0});
    for (std::size_t k = 0; k + 1 < c.size(); ++k)
        if (x >= c[k].first && x <= c[k + 1].first)
            return c[k].second + (c[k + 1].second - c[k].second) * (x - c[k].first) / (c[k + 1].first - c[k].first);
    return 0;
}

SampledTrace Sample(const Beat& b, double dt, double noiseSd = 0) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0, noiseSd > 0 ? noiseSd : 1);
    SampledTrace t{0, dt, {}};
    for (int i = 0; i * dt < b.lengthMs; ++i) {
        const double x = i * dt;
        t.y.push_back(kBase + HalfSine(x, b.pOn, b.pOff, b.pAmp) + Qrs(x, b) + HalfSine(x, b.tOn, b.tOff, b.tAmp) +
                      (noiseSd > 0 ? noise(rng) * noiseSd : 0));
    }
    return t;
}

TEST(EcgDelineation, BoundariesWithinOneSampleOfTheConstruction) {
    struct Case { const char* name; Beat beat; double dt; };
    Beat noQ, noS, inverted, shortPr;
    noQ.qAmp = 0;
    noS.sAmp = 0;
    inverted.tAmp = -0.25;
    shortPr.pOn = 281, shortPr.pOff = 341;   // PR segment of 20 ms
    for (const Case& c : {Case{"qRs 500 Hz", Beat{}, 2}, Case{"qRs 1 kHz", Beat{}, 1}, Case{"qRs 250 Hz", Beat{}, 4},
                          Case{"Rs", noQ, 2}, Case{"qR", noS, 2}, Case{"inverted T", inverted, 2},
                          Case{"short PR", shortPr, 2}}) {
        const Beat& b = c.beat;
        const EcgBeat m = DelineateBeat(Sample(b, c.dt), {.rrMs = 900});
        const std::pair<double, double> boundaries[] = {
            {m.pOnset, b.pOn}, {m.pOffset, b.pOff}, {m.qrsOnset, b.qrsOn}, {m.qrsOffset, b.qrsOff},
            {m.tOnset, b.tOn}, {m.tOffset, b.tOff}, {m.pr, b.qrsOn - b.pOn}, {m.qrs, b.qrsOff - b.qrsOn},
            {m.qt, b.tOff - b.qrsOn}};
        for (std::size_t k = 0; k < std::size(boundaries); ++k)
            EXPECT_NEAR(boundaries[k].first, boundaries[k].second, c.dt) << c.name << " value " << k;
        // Peaks fall on samples: within half a sample of the construction.
        EXPECT_NEAR(m.pPeak, (b.pOn + b.pOff) / 2, c.dt / 2) << c.name;
        EXPECT_NEAR(m.tPeak, (b.tOn + b.tOff) / 2, c.dt / 2) << c.name;
        EXPECT_NEAR(m.rPeak, b.rTime, c.dt / 2) << c.name;
        EXPECT_NEAR(m.baseline, kBase, 1e-12) << c.name;
        // Amplitudes: the construction at the sampled peak, above the baseline.
        EXPECT_NEAR(m.pAmp, HalfSine(m.pPeak, b.pOn, b.pOff, b.pAmp), 1e-12) << c.name;
        EXPECT_NEAR(m.rAmp, Qrs(m.rPeak, b), 1e-12) << c.name;
        EXPECT_NEAR(m.tAmp, HalfSine(m.tPeak, b.tOn, b.tOff, b.tAmp), 1e-12) << c.name;
        if (b.sAmp != 0) {
            EXPECT_NEAR(m.sAmp, Qrs(m.sPeak, b), 1e-12) << c.name;
            EXPECT_NEAR(m.sPeak, b.sTime, c.dt) << c.name;   // the lowest sample of unequal strokes
        } else {
            EXPECT_FALSE(Measured(m.sAmp)) << c.name;
        }
    }
}

TEST(EcgDelineation, QtCorrections) {
    // QT 400 ms at RR 640 ms: Bazett 400 / 0.8 = 500 ms, Fridericia
    // 400 / 0.64^(1/3) = 464.16 ms; at RR 1 s both equal QT.
    EXPECT_NEAR(QtcBazett(400, 640), 500, 1e-9);
    EXPECT_NEAR(QtcFridericia(400, 640), 400 / std::cbrt(0.64), 1e-9);
    EXPECT_NEAR(QtcFridericia(400, 1000), 400, 1e-9);
    EXPECT_FALSE(Measured(QtcBazett(400, kNotMeasured)));
    const EcgBeat m = DelineateBeat(Sample(Beat{}, 2), {.rrMs = 640});
    EXPECT_NEAR(m.qtcBazett, m.qt / 0.8, 1e-9);
    EXPECT_EQ(m.rr, 640);
    EXPECT_FALSE(Measured(DelineateBeat(Sample(Beat{}, 2), {}).qtcFridericia));
}

TEST(EcgDelineation, NoiseAndMissingWaves) {
    // Noise of 10 µV on a 1.2 mV R at 500 Hz: boundaries within two samples.
    const Beat b;
    const EcgBeat noisy = DelineateBeat(Sample(b, 2, 0.01), {});
    for (auto [got, want] : {std::pair{noisy.qrsOnset, b.qrsOn}, {noisy.qrsOffset, b.qrsOff}, {noisy.pOnset, b.pOn},
                             {noisy.tOffset, b.tOff}})
        EXPECT_NEAR(got, want, 4);
    // A beat cut before its T wave ends: QT not measured, the rest still is.
    Beat cut;
    cut.lengthMs = 600;
    const EcgBeat m = DelineateBeat(Sample(cut, 2), {.rrMs = 900});
    EXPECT_FALSE(Measured(m.tOffset));
    EXPECT_FALSE(Measured(m.qt));
    EXPECT_FALSE(Measured(m.qtcBazett));
    EXPECT_NEAR(m.qrs, 80, 2);
    // No P wave: no PR, the baseline from just before the QRS.
    Beat noP;
    noP.pAmp = 0;
    const EcgBeat q = DelineateBeat(Sample(noP, 2), {});
    EXPECT_FALSE(Measured(q.pr));
    EXPECT_NEAR(q.baseline, kBase, 1e-12);
}

}  // namespace
}  // namespace vess::group
