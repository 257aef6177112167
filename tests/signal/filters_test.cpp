// Filter designs against reference responses, the section runner, and
// filtering a channel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/scripted_dialogs.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"
#include "signal/filter_design.h"
#include "signal/sos_runner.h"
#include "support/test_recording.h"

namespace vess {
namespace {

struct Reference {
    FilterKind kind;
    FilterPass pass;
    double dbAt500, dbAt1000, dbAt2000;
};

// Order 4, cut-off 1000 Hz, 20 kHz, ripple 0.5 dB, attenuation 60 dB; golden values from scipy 1.10.1:
//   sos = signal.iirfilter(4, 1000, rp=0.5, rs=60, btype=..., ftype=..., fs=20000, output="sos")
//   20*log10(abs(signal.sosfreqz(sos, worN=[500, 1000, 2000], fs=20000)[1]))
const Reference kReferences[] = {
    {FilterKind::Butterworth, FilterPass::Low, -0.0161120779, -3.010299957, -24.97890438},
    {FilterKind::Butterworth, FilterPass::High, -24.31438113, -3.010299957, -0.01382244313},
    {FilterKind::Chebyshev, FilterPass::Low, -0.1241844538, -0.5, -31.6176602},
    {FilterKind::Chebyshev, FilterPass::High, -30.85225557, -0.5, -0.105646687},
    {FilterKind::InverseChebyshev, FilterPass::Low, -20.05862574, -60, -66.95060559},
    {FilterKind::InverseChebyshev, FilterPass::High, -66.23918249, -60, -19.30090063},
    {FilterKind::Elliptic, FilterPass::Low, -0.09740317131, -0.5, -37.85659049},
    {FilterKind::Elliptic, FilterPass::High, -36.72953495, -0.5, -0.08082782066},
};

FilterChoice Chosen(FilterKind kind, FilterPass pass, double cutoffHz, int order) {
    return {.kind = kind, .pass = pass, .cutoffHz = cutoffHz, .order = order};
}

TEST(FilterDesign, ResponsesAgreeWithTheReferenceDesignForEveryKindAndPass) {
    for (const Reference& r : kReferences) {
        const FilterDesign d = DesignFilter(Chosen(r.kind, r.pass, 1000, 4), 20000);
        ASSERT_TRUE(d.error.empty()) << d.error;
        EXPECT_EQ(d.sections.size(), 2u);
        const std::string what = std::string(KindName(r.kind)) + " " + std::string(PassName(r.pass));
        EXPECT_NEAR(ResponseDb(d.sections, 500, 20000), r.dbAt500, 1e-6) << what;
        EXPECT_NEAR(ResponseDb(d.sections, 1000, 20000), r.dbAt1000, 1e-6) << what;
        EXPECT_NEAR(ResponseDb(d.sections, 2000, 20000), r.dbAt2000, 1e-6) << what;
    }
}

// Odd orders carry a first-order section and an unpaired real zero; extreme
// cut-offs put the poles within 3e-4 of z = 1 or near z = -1. Values from
// scipy 1.10.1 as above.
TEST(FilterDesign, OddOrdersAndExtremeCutoffsAgreeWithTheReferenceDesign) {
    const struct {
        FilterKind kind;
        FilterPass pass;
        double cutoffHz;
        int order;
        double fs, hz, db, tolerance;
    } cases[] = {
        {FilterKind::InverseChebyshev, FilterPass::High, 1000, 3, 20000, 500, -60.00049883, 1e-6},
        {FilterKind::InverseChebyshev, FilterPass::High, 1000, 3, 20000, 2000, -30.94327312, 1e-6},
        {FilterKind::Elliptic, FilterPass::Low, 1000, 3, 20000, 2000, -20.74968853, 1e-6},
        {FilterKind::Elliptic, FilterPass::Low, 1000, 3, 20000, 5000, -73.82167452, 1e-6},
        // iirfilter(8, 1, btype="highpass", fs=20000), at 0.5 and 1 Hz.
        {FilterKind::Butterworth, FilterPass::High, 1, 8, 20000, 0.5, -48.16486579, 1e-5},
        {FilterKind::Butterworth, FilterPass::High, 1, 8, 20000, 1, -3.010299921, 1e-5},
        {FilterKind::Elliptic, FilterPass::High, 1, 8, 20000, 0.5, -60.63470017, 1e-4},
        {FilterKind::Elliptic, FilterPass::High, 1, 8, 20000, 1, -0.4999999633, 1e-5},
        // iirfilter(6, 20000, ..., btype="lowpass", fs=50000), at 20 and 22 kHz.
        {FilterKind::InverseChebyshev, FilterPass::Low, 20000, 6, 50000, 22000, -61.80893326, 1e-5},
        {FilterKind::Elliptic, FilterPass::Low, 20000, 6, 50000, 20000, -0.5, 1e-6},
        {FilterKind::Elliptic, FilterPass::Low, 20000, 6, 50000, 22000, -65.38835764, 1e-5},
    };
    for (const auto& c : cases) {
        const FilterDesign d = DesignFilter(Chosen(c.kind, c.pass, c.cutoffHz, c.order), c.fs);
        EXPECT_EQ(d.sections.size(), std::size_t((c.order + 1) / 2));
        EXPECT_NEAR(ResponseDb(d.sections, c.hz, c.fs), c.db, c.tolerance) << KindName(c.kind) << " at " << c.hz;
    }
}

// A 1 Hz high-pass of order 8 at 20 kHz: poles inside the unit circle, impulse and step settle.
TEST(FilterDesign, OneHertzHighPassOfOrderEightIsStableAndCutoffsOutsideTheOpenBandAreRefused) {
    for (FilterKind kind : {FilterKind::Butterworth, FilterKind::Elliptic}) {
        const FilterDesign d = DesignFilter(Chosen(kind, FilterPass::High, 1, 8), 20000);
        for (const Biquad& s : d.sections) EXPECT_LT(s[5], 1.0);  // |p|^2 of the pair
        SosRunner impulse(d.sections), step(d.sections);
        // 60 s: the sharpest poles of the elliptic design ring for seconds.
        std::vector<double> x(1200000, 0.0), y(1200000, 1000.0);
        x[0] = 1;
        impulse.Process(x);
        step.Process(y);
        // Envelope of impulse and step responses at 15-20 s and 55-60 s.
        double early = 0, late = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_TRUE(std::isfinite(x[i]) && std::isfinite(y[i]));
            double& band = i > 1100000 ? late : early;
            if (i > 300000 && (i < 400000 || i > 1100000)) band = std::max({band, std::fabs(x[i]), std::fabs(y[i])});
        }
        EXPECT_LT(late, 0.3 * early) << KindName(kind);
        EXPECT_LT(late, 2.0) << KindName(kind);  // of a 1000-count DC step
    }

    for (double fc : {0.0, -5.0, 10000.0, 12000.0, std::nan("")}) {
        const FilterDesign d = DesignFilter(Chosen(FilterKind::Butterworth, FilterPass::Low, fc, 4), 20000);
        EXPECT_TRUE(d.sections.empty());
        EXPECT_NE(d.error.find("below half the sampling frequency (10000 Hz)"), std::string::npos) << d.error;
    }
    EXPECT_FALSE(DesignFilter(Chosen(FilterKind::Butterworth, FilterPass::Low, 9999, 4), 20000).sections.empty());
    EXPECT_NE(FilterChoiceProblem(Chosen(FilterKind::Butterworth, FilterPass::Low, 100, 0), 20000), "");
    FilterChoice ellip = Chosen(FilterKind::Elliptic, FilterPass::Low, 100, 4);
    ellip.attenuationDb = 0.3;  // below the ripple
    EXPECT_NE(FilterChoiceProblem(ellip, 20000), "");
}

// The cascade equals each section run alone in turn, bit for bit, for 1 to 10 sections
// (the fixed cascades up to eight and the longer fallback). The zero-phase file filter
// runs two streams of one design sharing a loop; the ways round it (a cascade longer than
// the loops are made for, two different designs) give each stream, bit for bit, what it
// gives alone (outputs, rounded counts and the state carried on), streams of unequal
// length and counts beyond 16 bits included.
TEST(SosRunner, SettledStartCascadeEqualsSectionsRunOneAfterAnotherAndSideBySide) {
    std::vector<Biquad> all = DesignFilter(Chosen(FilterKind::Elliptic, FilterPass::Low, 700, 16), 20000).sections;
    const auto high = DesignFilter(Chosen(FilterKind::Butterworth, FilterPass::High, 3, 3), 20000).sections;
    all.insert(all.end(), high.begin(), high.end());
    ASSERT_EQ(all.size(), 10u);
    std::vector<double> x(3001);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = 100 * std::sin(0.37 * double(i)) + double(i % 53);
    // Settled at 200, a constant 200 passes unchanged from the first sample (DC gain 1).
    SosRunner settled(DesignFilter(Chosen(FilterKind::Chebyshev, FilterPass::Low, 300, 5), 20000).sections);
    settled.SettleAt(200);
    std::vector<double> flat(50, 200.0);
    settled.Process(flat);
    for (double v : flat) EXPECT_NEAR(v, 200.0, 1e-9);
    for (std::size_t n = 1; n <= all.size(); ++n) {
        const std::vector<Biquad> sections(all.begin(), all.begin() + std::ptrdiff_t(n));
        std::vector<double> cascade = x, alone = x;
        SosRunner runner(sections);
        runner.Process(std::span(cascade).first(1000));
        runner.Process(std::span(cascade).subspan(1000));
        for (std::size_t k = 0; k < n; ++k) {
            SosRunner one({sections[k]});
            one.Process(alone);
        }
        EXPECT_EQ(cascade, alone) << n << " sections";
    }

    std::vector<double> a(2500), b(1900);
    for (std::size_t i = 0; i < a.size(); ++i) a[i] = 3e4 * std::sin(0.37 * double(i)) + double(i % 53);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = 4e4 * std::cos(0.011 * double(i)) - double(i % 7);
    for (const auto& [aSections, bSections] : {std::pair{all, all}, std::pair{high, all}}) {
        SosRunner aAlone(aSections), bAlone(bSections), aPaired(aSections), bPaired(bSections);
        std::vector<double> aWant = a, bWant = b, aGot = a, bGot = b;
        aAlone.Process(aWant);
        bAlone.Process(bWant);
        std::vector<int16_t> counts(b.size()), rounded;
        ProcessSideBySide(aPaired, aGot, bPaired, bGot, counts);
        for (double v : bWant) rounded.push_back(RoundClamp16(v));
        EXPECT_EQ(aGot, aWant) << aSections.size();
        EXPECT_EQ(bGot, bWant) << aSections.size();
        EXPECT_EQ(counts, rounded) << aSections.size();
        EXPECT_EQ(aPaired.CurrentState(), aAlone.CurrentState());
        EXPECT_EQ(bPaired.CurrentState(), bAlone.CurrentState());
    }
}

struct BesselReference {
    int order;
    FilterPass pass;
    double cutoffHz;
    double hz[3], db[3];
};

// scipy 1.10.1 at fs = 20000:
//   sos = signal.bessel(order, cutoff, btype=..., norm="mag", fs=20000, output="sos")
//   20*log10(abs(signal.sosfreqz(sos, worN=hz, fs=20000)[1]))
// norm="mag" puts -3 dB at the cut-off.
const BesselReference kBessel[] = {
    {1, FilterPass::Low, 1000, {500, 1000, 5000}, {-0.9583601765, -3.010299957, -16.11335117}},
    {2, FilterPass::Low, 1000, {500, 1000, 5000}, {-0.703656867, -3.010299957, -28.01141109}},
    {3, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.6804544291, -12.50025104, -39.38190937}},
    {4, FilterPass::Low, 1000, {250, 2000, 5000}, {-0.171292405, -14.0476685, -49.86210584}},
    {5, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.7105524086, -14.81789793, -59.32863953}},
    {6, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.719158735, -15.00106979, -67.8627643}},
    {7, FilterPass::Low, 1000, {250, 2000, 5000}, {-0.1794534119, -14.83874934, -75.6148354}},
    {8, FilterPass::Low, 1000, {500, 2000, 5000}, {-0.7274692355, -14.53194364, -82.71369333}},
    {16, FilterPass::Low, 1000, {500, 1000, 2000}, {-0.7364611775, -3.010299957, -13.25292793}},
    {8, FilterPass::Low, 9000, {4000, 9000, 9900}, {-0.03877386221, -3.010299957, -114.9693531}},
    {4, FilterPass::High, 100, {50, 100, 200}, {-13.40693498, -3.010299957, -0.7047628835}},
};

TEST(BesselFilter, ResponsesAgreeWithTheReferenceDesignAcrossOrdersAndPasses) {
    for (const BesselReference& r : kBessel) {
        const FilterDesign d = DesignFilter(Chosen(FilterKind::Bessel, r.pass, r.cutoffHz, r.order), 20000);
        ASSERT_TRUE(d.error.empty()) << d.error;
        EXPECT_EQ(d.sections.size(), std::size_t((r.order + 1) / 2));
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(ResponseDb(d.sections, r.hz[i], 20000), r.db[i], 1e-6)
                << "order " << r.order << " at " << r.hz[i] << " Hz";
    }
}

// The Gaussian's gain is exp(-ln 2 / 2 (f / fc)^2), -3.0103 (f / fc)^2 dB, for
// cut-offs far below the sampling frequency; near half of it the sampled
// kernel is widened until the gain at the cut-off is -3 dB all the same.
TEST(GaussianFilter, GainFollowsTheGaussianAndTheFilteredChannelIsCentredAndHeldAtTheEnds) {
    const double minus3 = -10 * std::log10(2.0);
    for (double fc : {20.0, 100.0, 1000.0}) {
        const FilterDesign d = DesignFilter(Chosen(FilterKind::Gaussian, FilterPass::Low, fc, 4), 20000);
        ASSERT_TRUE(d.error.empty()) << d.error;
        ASSERT_EQ(d.kernel.size() % 2, 1u);
        for (double ratio : {0.5, 1.0, 2.0})
            EXPECT_NEAR(DesignResponseDb(d, ratio * fc, 20000), minus3 * ratio * ratio, 2e-3) << fc << " " << ratio;
    }
    const FilterDesign nearNyquist = DesignFilter(Chosen(FilterKind::Gaussian, FilterPass::Low, 8000, 4), 20000);
    EXPECT_NEAR(DesignResponseDb(nearNyquist, 8000, 20000), minus3, 1e-6);
    EXPECT_LT(DesignResponseDb(nearNyquist, 9999, 20000), minus3);

    // Low-pass only, and no kernel longer than the bound.
    EXPECT_NE(FilterChoiceProblem(Chosen(FilterKind::Gaussian, FilterPass::High, 100, 4), 20000), "");
    EXPECT_NE(FilterChoiceProblem(Chosen(FilterKind::Gaussian, FilterPass::Low, 5, 4), 20000), "");
    EXPECT_EQ(FilterChoiceProblem(Chosen(FilterKind::Gaussian, FilterPass::Low, 7, 0), 20000), "");

    // Filtering a recording with the Gaussian: centred (a step keeps its place,
    // half-way at the step), held at the ends (a flat start and end stay
    // flat), and the same across the file filter's 65,536-point blocks.
    test::TempDir dir;
    std::vector<int16_t> raw(140000, -1000);
    for (std::size_t i = 70000; i < raw.size(); ++i) raw[i] = 1000;
    auto rec = test::MakeRecording(dir / "step.abf", raw, 50);
    FilteredChannel f = FilterChannel(*rec, Chosen(FilterKind::Gaussian, FilterPass::Low, 100, 4));
    ASSERT_TRUE(f.counts) << f.status.message();
    rec->AttachFiltered(std::move(f.counts));
    rec->ReadFiltered(true);
    std::vector<int16_t> out(raw.size());
    rec->ReadSamples(0, out);
    EXPECT_EQ(out.front(), -1000);
    EXPECT_EQ(out.back(), 1000);
    // Sample 69999.5 is the step's middle: the two samples beside it are
    // equally far from 0, and the step is spread over a few sigmas (26.5 points).
    EXPECT_EQ(out[69999], -out[70000]);
    EXPECT_GT(out[70000], 0);
    EXPECT_LT(out[70000], 100);
    EXPECT_GT(out[69950], -1000);
    EXPECT_EQ(out[69800], -1000);
    // Across the block boundary at 65,536 nothing changes in the flat part.
    EXPECT_EQ(out[65535], -1000);
    EXPECT_EQ(out[65536], -1000);
}

// Filtering a recording's channel in blocks, and the filter commands.
FilterChoice LowPass(double cutoffHz, bool zeroPhase, FilterKind kind = FilterKind::Butterworth) {
    return {.kind = kind, .cutoffHz = cutoffHz, .order = 4, .zeroPhase = zeroPhase};
}

// Whole-trace filtering in memory, the definition the block-wise file version reproduces.
std::vector<int16_t> InMemory(const std::vector<int16_t>& raw, const FilterChoice& choice, double fs) {
    const auto sections = DesignFilter(choice, fs).sections;
    std::vector<double> x(raw.begin(), raw.end());
    SosRunner forward(sections);
    forward.SettleAt(x.front());
    forward.Process(x);
    if (choice.zeroPhase) {
        std::reverse(x.begin(), x.end());
        SosRunner backward(sections);
        backward.SettleAt(x.front());
        backward.Process(x);
        std::reverse(x.begin(), x.end());
    }
    std::vector<int16_t> out;
    for (double v : x) out.push_back(RoundClamp16(v));
    return out;
}

std::vector<int16_t> Noisy(std::size_t n) {
    std::vector<int16_t> s(n);
    uint32_t state = 12345;  // fixed-seed LCG
    for (std::size_t i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        s[i] = int16_t(-300 + int(state >> 22) % 200 + (i / 5000 % 2) * 2000);
    }
    return s;
}

// 150,000 points span three 65,536-point blocks of the file filter.
TEST(FilterChannel, BlockwiseFileEqualsWholeTraceFilteringCausalAndZeroPhase) {
    test::TempDir dir;
    const std::vector<int16_t> raw = Noisy(150000);
    auto rec = test::MakeRecording(dir / "n.abf", raw, 50);  // 20 kHz
    for (bool zeroPhase : {false, true}) {
        const FilterChoice choice = LowPass(500, zeroPhase);
        ASSERT_TRUE(ApplyFilter(*rec, choice).ok());
        rec->ReadFiltered(true);
        std::vector<int16_t> got(raw.size());
        EXPECT_TRUE(rec->ReadSamples(0, got));
        EXPECT_EQ(got, InMemory(raw, choice, 20000)) << "zero phase " << zeroPhase;
        // A screen in the middle reads the same counts as the whole file.
        const Screen screen(*rec, 300, 4);
        for (int i = -1024; i < 2048; i += 97)
            EXPECT_EQ(screen.GetSampleValue(i), got[std::size_t(300 * 256 + i)]);
        // Switched back, reads give the recorded samples again.
        rec->ReadFiltered(false);
        EXPECT_EQ(rec->Sample(1234), raw[1234]);
        EXPECT_EQ(rec->Sample(-5), raw.front());
    }
}

// Zero phase runs three passes: progress rises to 1, a stop in any pass gives no copy.
TEST(FilterChannel, ZeroPhaseProgressRisesToOneAndStopsInAnyPassCountsAreClampedAndAChannelChangeDropsTheCopy) {
    test::TempDir dir;
    auto rec = test::MakeRecording(dir / "n.abf", Noisy(150000), 50);
    std::vector<double> seen;
    const FilteredChannel whole = FilterChannel(*rec, LowPass(500, true), [&](double f) {
        seen.push_back(f);
        return true;
    });
    ASSERT_TRUE(whole.counts) << whole.status.message();
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_DOUBLE_EQ(seen.back(), 1.0);
    for (std::size_t stopAt : {std::size_t(0), seen.size() / 2, seen.size() - 1}) {
        std::size_t calls = 0;
        const FilteredChannel f = FilterChannel(*rec, LowPass(500, true), [&](double) { return calls++ < stopAt; });
        EXPECT_FALSE(f.counts);
        EXPECT_TRUE(f.status.cancelled()) << stopAt;
    }

    // A full-scale square wave overshoots through an elliptic low-pass.
    std::vector<int16_t> raw(4000);
    for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = (i / 500) % 2 ? 32767 : -32768;
    rec = test::MakeRecording(dir / "s.abf", raw, 50);
    ASSERT_TRUE(ApplyFilter(*rec, LowPass(2000, false, FilterKind::Elliptic)).ok());
    rec->ReadFiltered(true);
    std::vector<int16_t> y(raw.size());
    rec->ReadSamples(0, y);
    EXPECT_EQ(*std::max_element(y.begin(), y.end()), 32767);
    EXPECT_EQ(*std::min_element(y.begin(), y.end()), -32768);
    rec->SetChannel(0);
    EXPECT_FALSE(rec->HasFiltered());
    EXPECT_EQ(rec->Sample(700), raw[700]);
}

TEST(FilterCommands, SettingsRoundTripAndDetectionFollowsTheChoice) {
    test::TempDir dir;
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "n.abf", Noisy(3000), 50);
    FilterChoice choice{.kind = FilterKind::InverseChebyshev, .pass = FilterPass::High, .cutoffHz = 750,
                        .attenuationDb = 45, .zeroPhase = true};
    StoreFilterChoice(choice, ws.settings);
    EXPECT_EQ(FilterChoiceFromSettings(ws.settings), choice);

    SetDetectOnFiltered(ws, true);
    EXPECT_FALSE(DetectsOnFiltered(ws));  // nothing applied yet
    ScriptedDialogs dialogs;
    ASSERT_TRUE(ApplyFilterCommand(ws, choice));
    EXPECT_TRUE(DetectsOnFiltered(ws));
    SetDetectOnFiltered(ws, false);
    EXPECT_FALSE(DetectsOnFiltered(ws));
    choice.cutoffHz = 10000;  // fs/2 exactly
    EXPECT_FALSE(ShowFailure(dialogs, ApplyFilterCommand(ws, choice)));
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_NE(dialogs.Messages().back().text.find("10000 Hz cannot be used"), std::string::npos);
    EXPECT_EQ(ws.settings.filterCutoffHz, 750.0);  // the refused value is not stored
}

}  // namespace
}  // namespace vess
