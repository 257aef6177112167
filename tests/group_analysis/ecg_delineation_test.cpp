// Delineation of synthetic beats whose wave boundaries are known from their
// construction (support/ecg_beat.h): every boundary within one sample.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "group_analysis/ecg_delineation.h"
#include "support/ecg_beat.h"

namespace vess::group {
namespace {

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
    noQ.qAmp = 0;
    noS.sAmp = 0;
    inverted.tAmp = -0.25;
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

}  // namespace
}  // namespace vess::group
