// The fast paths of threshold detection against the plain ones: vector
// searches against plain loops over lengths around the vector width (where
// the tail is read with overlapping lanes), walks from memory against the
// general walks, the threshold in counts against converting every count,
// the detectors' criterion loops at every vector width against plain ones.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "detection/count_threshold.h"
#include "detection/detector.h"
#include "detection/point_loops.h"
#include "detection/template_criterion.h"
#include "detection/sample_search.h"
#include "trace_helpers.h"

namespace vess {
namespace {

// Runs of few distinct values (ties everywhere), of random values, and with
// the only extreme in the last or the first sample; the searches at every
// vector width this processor has, over lengths around each width.
TEST(SampleSearch, VectorSearchesMatchPlainLoops) {
    std::mt19937 rng(11);
    for (int32_t n :
         {1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33, 40, 63, 65, 200, 201, 32767, 32768, (1 << 17) + 13, 3 << 17}) {
        std::vector<int16_t> ties(static_cast<std::size_t>(n)), random(ties), last(ties), first(ties);
        for (auto& x : ties) x = int16_t(int(rng() % 5) - 2);
        for (auto& x : random) x = int16_t(rng());
        last.back() = 32767;
        first.front() = -32768;
        for (const auto* v : {&ties, &random, &last, &first}) {
            int64_t sum = 0;
            for (int16_t x : *v) sum += x;
            EXPECT_EQ(SumOf(v->data(), n), sum) << n;
            for (bool greatest : {true, false}) {
                FirstExtreme want{0, (*v)[0]};
                for (int32_t i = 1; i < n; ++i)
                    if (greatest ? (*v)[i] > want.value : (*v)[i] < want.value) want = {i, (*v)[i]};
                for (const int32_t lanes : SampleSearchWidths()) {
                    const FirstExtreme got = FirstExtremeOfAtWidth(v->data(), n, greatest, lanes);
                    EXPECT_EQ(std::pair(got.offset, got.value), std::pair(want.offset, want.value))
                        << n << " samples, greatest " << greatest << ", " << lanes << " lanes";
                }
            }
        }
    }
    // Sums of the 16-bit limits over more than one stretch of 32-bit lanes.
    for (int16_t fill : {int16_t(-32768), int16_t(32767)}) {
        const std::vector<int16_t> v(3 << 17, fill);
        EXPECT_EQ(SumOf(v.data(), int64_t(v.size())), int64_t(fill) * int64_t(v.size()));
    }
}

// The start and decay walks, and the rise and half-width walks, read the
// screen's memory directly when no decay is taken off; a decay of 1e-300
// (which leaves every non-zero sample as it is) sends them through the
// general path. Both must give the same extent, area and measurements for a
// peak at every index of the screen's reach, events and noise alike, up to
// the edges where the walks leave the screens in memory; in both directions
// and for decay levels that fall on a third of a count (0.5 of an even
// amplitude), on none, and that stop every walk at once or never.
TEST(SampleSearch, WalksFromMemoryMatchTheGeneralPath) {
    for (const int16_t direction : {int16_t(-1), int16_t(1)}) {
        std::mt19937 rng(13);
        std::normal_distribution<double> noise(0, 6);
        std::vector<int16_t> trace(3 * 1024);
        for (auto& x : trace) x = int16_t(std::lround(-2000 + noise(rng)));
        for (int64_t onset : {100, 700, 1010, 1500, 2040, 2900})
            test::AddEvent(trace, onset, {10, 80, 120}, direction);
        test::TraceFile file(trace);
        const Screen screen(*file.rec, 4, 4);  // the middle screen; the others around it
        for (const float decayPercent : {0.32f, 0.5f, 1.0f / 3, 0.0f, 2.0f, -0.5f}) {
            SCOPED_TRACE(std::to_string(direction) + " direction, decay percent " + std::to_string(decayPercent));
            AnalysisParameters p = test::TestParams(direction);
            p.DecayPercent = decayPercent;
            const Detector det(screen, p, *ConvertPeriods(p, 50));
            int64_t events = 0;
            for (int64_t peak = -1024; peak < 2048; ++peak) {
                MeasuredEvent fast, general;
                fast.peak = general.peak = peak;
                fast.baseline = general.baseline = det.FindBaseline(peak - 120, 40);
                fast.amplitudeCounts = general.amplitudeCounts = std::abs(screen.GetSampleValue(peak) - fast.baseline);
                general.under = {1e-300, -100000, 1e9};
                det.WalkExtent(fast);
                det.WalkExtent(general);
                ASSERT_EQ(std::tuple(fast.start, fast.decay, fast.decayLevel, fast.areaUnitsMs),
                          std::tuple(general.start, general.decay, general.decayLevel, general.areaUnitsMs))
                    << peak;
                if (fast.decay - peak > 20) ++events;
                EventShape shape{peak, screen.GetSampleValue(peak), fast.baseline, fast.start,
                                 fast.amplitudeCounts, direction, HalfWidthReach(screen, peak), {}};
                const EventShape generalShape{shape.peak, shape.value, shape.baseline, shape.start,
                                              shape.amplitudeCounts, direction, shape.decayLimit, general.under};
                const int16_t rise50 = Detect50RiseTime(screen, shape);
                ASSERT_EQ(rise50, Detect50RiseTime(screen, generalShape)) << peak;
                ASSERT_EQ(Detect1090Rise(screen, shape), Detect1090Rise(screen, generalShape)) << peak;
                ASSERT_EQ(std::bit_cast<uint32_t>(DetectHalfWidth(screen, shape, rise50)),
                          std::bit_cast<uint32_t>(DetectHalfWidth(screen, generalShape, rise50)))
                    << peak;
            }
            if (decayPercent > 0 && decayPercent < 1) {
                EXPECT_GT(events, 100);  // long decays, not only noise
            }
        }
    }
    // A mean exactly on the level in whole numbers, (300 + 194 + 37) / 3 =
    // 177 = 0.5 x 354, whose thirds add in doubles to 177.00000000000003:
    // the walk goes on past it and stops at the next mean, (194 + 37 + 0) / 3.
    std::vector<int16_t> trace(3 * 1024, 0);
    const std::vector<int16_t> decay{354, 300, 194, 37};
    std::copy(decay.begin(), decay.end(), trace.begin() + 1024 + 500);
    test::TraceFile file(trace);
    const Screen screen(*file.rec, 4, 4);
    AnalysisParameters p = test::TestParams(1);
    p.DecayPercent = 0.5f;
    MeasuredEvent e;
    e.peak = 500;
    e.amplitudeCounts = 354;
    Detector(screen, p, *ConvertPeriods(p, 50)).WalkExtent(e);
    EXPECT_EQ(e.decay, 503);
}

// Baselines are means rounded half to even: halves above and below zero go
// to the even neighbour, other means to the nearest.
TEST(SampleSearch, BaselinesRoundHalvesToEven) {
    const std::vector<std::pair<std::vector<int16_t>, int16_t>> cases{
        {{1, 2}, 2}, {{2, 3}, 2}, {{-1, -2}, -2}, {{-2, -3}, -2}, {{0, 0, 1, 1}, 0}, {{1, 1, 2}, 1}, {{1, 2, 2}, 2}};
    std::vector<int16_t> trace(3 * 1024, 0);
    int64_t at = 0;
    for (const auto& [samples, mean] : cases) {
        std::copy(samples.begin(), samples.end(), trace.begin() + 1024 + at);
        at += 8;
    }
    test::TraceFile file(trace);
    const Screen screen(*file.rec, 4, 4);
    const AnalysisParameters p = test::TestParams(-1);
    const Detector det(screen, p, *ConvertPeriods(p, 50));
    at = 0;
    for (const auto& [samples, mean] : cases) {
        EXPECT_EQ(det.FindBaseline(at, int32_t(samples.size())), mean) << at;
        at += 8;
    }
}

// The periods in samples kept from the last question against converting
// them afresh, each question differing from the one before it in one value
// (a period, the points at the peak, the interval).
TEST(SampleSearch, KeptPeriodsMatchConvertingThem) {
    const AnalysisParameters base = test::TestParams(-1);
    std::vector<std::pair<AnalysisParameters, double>> asks{{base, 50}, {base, 100}, {base, 40000}};
    for (auto field : {&AnalysisParameters::PeriodToSearchMax, &AnalysisParameters::PeriodStartBaseline,
                       &AnalysisParameters::PeriodBaselineAverage, &AnalysisParameters::PeriodFindDecayTime}) {
        asks.push_back({base, 50});
        asks.push_back({base, 50});
        asks.back().first.*field += 500;
    }
    asks.push_back({base, 50});
    asks.back().first.NumberPointsPeak = 5;
    for (const auto& [params, intervalUs] : asks) {
        const Outcome<DetectionLengths> kept = CheckedPeriods(params, intervalUs);
        const std::optional<DetectionLengths> fresh = ConvertPeriods(params, intervalUs);
        ASSERT_EQ(kept.ok(), fresh.has_value()) << intervalUs;
        if (!fresh) continue;
        EXPECT_EQ(std::tuple(kept->searchLen, kept->baseOffset, kept->baseLen, kept->decayLen, kept->halfPeak),
                  std::tuple(fresh->searchLen, fresh->baseOffset, fresh->baseLen, fresh->decayLen, fresh->halfPeak))
            << intervalUs;
    }
}

// LeastCountsReaching against a count-by-count search, for scalings that
// make the boundary fall between counts, on a count and beyond the range.
// Each threshold is asked of every scaling in turn, twice: the answer kept
// from the last question is given only to the same question.
TEST(LeastCountsReaching, MatchesConvertingEveryCount) {
    test::TempDir dir;
    const std::vector<int16_t> samples(512, 0);
    std::vector<std::unique_ptr<Recording>> recs;
    for (float countsPerUnit : {1.0f, 3.7f, 0.25f, 1000.0f})
        recs.push_back(test::MakeRecording(dir / ("r" + std::to_string(recs.size()) + ".abf"), samples, 50,
                                           countsPerUnit));
    for (float units : {-1.0f, 0.0f, 5.0f, 5.0001f, 17.3f, 65535.0f, 65535.0f / 3.7f, 65535.0f / 0.25f,
                        65535.0f / 1000.0f, 1e9f, std::numeric_limits<float>::quiet_NaN()})
        for (const auto& rec : recs) {
            int32_t expected = 0;
            while (expected <= 65535 && !(rec->Bit2pA2(expected) >= units)) ++expected;
            for (int ask = 0; ask < 2; ++ask)
                EXPECT_EQ(LeastCountsReaching(*rec, units), expected)
                    << rec->Gain() << " gain, threshold " << units;
        }
}

// The criterion loops at every vector width this processor has against the
// plain loop (lanes 1), over lengths around the widths: the template
// criterion of a tile, alone and with the window sums it takes, the samples
// converted for the convolution and its spectrum products, the standardised
// criterion, and the scan for the next point above the threshold.
TEST(PointLoops, EveryWidthGivesThePlainLoopsBits) {
    std::mt19937 rng(14);
    const TemplateCriterion c{-31.5, 260.25, 180.0, 40, 39, -1};
    const std::size_t size = 515;
    std::vector<double> sY(size), sYY(size), sTY(size), z(size);
    for (std::size_t i = 0; i < size; ++i) {
        sY[i] = double(int(rng() % 4000) - 2000);
        sYY[i] = sY[i] * sY[i] / 40 + double(rng() % 5000);
        sTY[i] = double(int(rng() % 2000) - 1000) / 7;
        z[i] = std::normal_distribution<double>(0, 1)(rng);
    }
    sYY[5] = sY[5] * sY[5] / 40;  // a perfect fit: the error's floor
    z[9] = NAN;                      // neither above the threshold nor a dip
    z[300] = z[301] = z[308] = -9;  // a dip late in the scan, held three times
    // Samples over the whole 16-bit range, and the sums of each window of 40
    // from them, taken anew.
    std::vector<int16_t> x(size + 42);  // the windows from point 3 of the longest run
    for (auto& v : x) v = int16_t(rng());
    x[100] = x[101] = -32768;
    const auto windowSums = [&x](std::size_t i) {
        int64_t y = 0, yy = 0;
        for (std::size_t k = i; k < i + 40; ++k) {
            y += x[k];
            yy += int64_t(x[k]) * x[k];
        }
        return std::pair{double(y), double(yy)};
    };
    std::vector<std::complex<double>> filter(size);
    for (std::size_t k = 0; k < size; ++k) filter[k] = {sTY[k] / 3, sY[k] / 7};
    for (const int lanes : AvailableLanes()) {
        for (const int64_t m : {1, 2, 3, 7, 9, 512, 515}) {
            SCOPED_TRACE(std::to_string(lanes) + " lanes, " + std::to_string(m) + " points");
            const std::size_t count = std::size_t(m);
            std::vector<double> tile(count);
            c.Tile(sY.data(), sYY.data(), sTY.data(), m, tile.data(), lanes);
            std::vector<double> standard(z.begin(), z.begin() + m);
            Standardise(standard.data(), m, 0.25, 1.5, lanes);
            std::vector<std::complex<double>> product(count), expected(count);
            for (std::size_t k = 0; k < count; ++k) product[k] = expected[k] = {sY[k], sTY[k]};
            MultiplySpectrum(product.data(), filter.data(), m, lanes);
            std::vector<double> converted(count), slidY(count), slidYY(count), onSamples(count);
            SamplesToDoubles(x.data() + 1, m, converted.data(), lanes);
            auto [y, yy] = windowSums(2);
            SlideWindowSums(x.data(), 40, 3, m, y, yy, slidY.data(), slidYY.data(), lanes);
            ASSERT_EQ(std::pair(y, yy), windowSums(count + 2));
            std::tie(y, yy) = windowSums(2);
            c.TileOnSamples(x.data(), 3, m, y, yy, sTY.data(), onSamples.data(), lanes);
            ASSERT_EQ(std::pair(y, yy), windowSums(count + 2));
            for (std::size_t k = 0; k < count; ++k) {
                ASSERT_EQ(tile[k], c.Of(sY[k], sYY[k], sTY[k])) << "point " << k;
                ASSERT_EQ(std::bit_cast<uint64_t>(standard[k]), std::bit_cast<uint64_t>((z[k] - 0.25) / 1.5))
                    << "point " << k;
                expected[k] *= filter[k];
                ASSERT_EQ(product[k], expected[k]) << "bin " << k;
                ASSERT_EQ(std::pair(slidY[k], slidYY[k]), windowSums(k + 3)) << "window " << k;
                const auto [wy, wyy] = windowSums(k + 3);
                ASSERT_EQ(onSamples[k], c.Of(wy, wyy, sTY[k])) << "window " << k;
                ASSERT_EQ(converted[k], x[k + 1]) << "sample " << k;
            }
            for (const double threshold : {-HUGE_VAL, 1.5, 2.5, HUGE_VAL}) {
                for (const bool track : {false, true}) {
                    double dip = 0.5, plainDip = 0.5;
                    int64_t dipIndex = -1, plainDipIndex = -1, i = 1;
                    for (; i < m && !(z[std::size_t(i)] > threshold); ++i) {
                        if (track && z[std::size_t(i)] < plainDip) {
                            plainDip = z[std::size_t(i)];
                            plainDipIndex = i;
                        }
                    }
                    ASSERT_EQ(NextAbove(z.data(), 1, m, threshold, track, dip, dipIndex, lanes), i) << threshold;
                    ASSERT_EQ(dip, plainDip) << threshold << " " << track;
                    ASSERT_EQ(dipIndex, plainDipIndex) << threshold << " " << track;
                }
            }
        }
    }
}

// Division by multiplying, as the widest criterion loop divides by the
// template's length: a/b to the bit for numerators of 53 random bits, every
// sign and a wide range of sizes, by lengths and their neighbours; a
// fractional divisor is left to division.
TEST(ExactReciprocal, MultiplyingGivesTheQuotientsBits) {
    std::mt19937_64 rng(3);
    for (const double b : {3.0, 39.0, 40.0, 206.0, 207.0, 1023.0, 4194303.0}) {
        const ExactReciprocal by = ExactReciprocal::Of(b);
        ASSERT_TRUE(by.exact) << b;
        for (int k = 0; k < 100000; ++k) {
            const double a = std::ldexp(double(rng() >> 11), int(rng() % 200) - 150) * (k % 2 ? -1 : 1);
            ASSERT_EQ(std::bit_cast<uint64_t>(std::fma(a, by.hi, a * by.lo)), std::bit_cast<uint64_t>(a / b))
                << a << " / " << b;
        }
    }
    EXPECT_FALSE(ExactReciprocal::Of(180.5).exact);
}

}  // namespace
}  // namespace vess
