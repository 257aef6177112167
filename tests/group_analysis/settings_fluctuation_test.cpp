// The window's settings sections and the settings file's numbers as text,
// and non-stationary fluctuation analysis of binomial channels.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "group_analysis/fluctuation.h"
#include "group_analysis/group_settings.h"
#include "recording/file_io.h"
#include "recording/ini_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "support/test_recording.h"

namespace vess::group {
namespace {

TEST(GroupSettings, EveryKeyRoundTripsThroughTheFileKeepingOtherSectionsAndCustomFiles) {
    test::TempDir dir;
    const auto path = dir / "Vessanto.ini";
    IniFile other;
    other.Set("Analysis", "PeakDirection%", "-1");
    ASSERT_EQ(other.Save(path), "");
    GroupAnalysisSettings s;
    s.useGroups = s.restartSearch = false;
    s.groupNumber = 7, s.analysisType = "Scaled Superimpose", s.alignment = "Rise 50", s.blocksToAnalyse = 0.25;
    s.adjustBaseline = s.includeOffset = s.fixAmplitude = s.useGuess = true;
    s.fitRange = "Decay 20%-80%", s.tolerance = 1e-5, s.exponentials = 3, s.tau1 = 2.5, s.A3 = -12.75, s.riseRange = 2;
    s.walkEdge = "Absorbing", s.walkMaxIterations = 900, s.amplitudeBins = 25;
    s.subtractBaselineVariance = s.nonStationaryOffset = true;
    ASSERT_EQ(SaveGroupSettings(path, s), "");
    EXPECT_EQ(LoadGroupSettings(path), s);
    // Read and written back over a copy, the file changes no byte.
    std::filesystem::copy_file(path, dir / "again.ini");
    ASSERT_EQ(SaveGroupSettings(dir / "again.ini", LoadGroupSettings(path)), "");
    EXPECT_EQ(ReadFileBytes(dir / "again.ini"), ReadFileBytes(path));
    const IniFile written = IniFile::Load(path);
    EXPECT_EQ(written.Get("Analysis", "PeakDirection%"), "-1");
    EXPECT_EQ(written.Get("GroupAnalysis", "DisplayGroup"), "False");
    EXPECT_EQ(written.Get("NonStationary", "IncludeOffset"), "1");
    EXPECT_EQ(written.Get("Fitting", "IncludeOffset"), "1");

    // The command says where it saved; custom files ask before replacing.
    ScriptedDialogs d;
    ASSERT_TRUE(SaveGroupSettingsCommand(path, s, d));
    EXPECT_EQ(d.Messages().back().caption, "Settings Saved");
    EXPECT_EQ(d.Messages().back().text, "The settings are saved into Vessanto.ini file.");
    d.AnswerSaveFile((dir / "mine").string());
    ASSERT_TRUE(SaveGroupCustomSettingsCommand(s, d));
    d.AnswerSaveFile((dir / "mine.SET").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveGroupCustomSettingsCommand(GroupAnalysisSettings{}, d));
    EXPECT_EQ(d.Transcript().back().text, "File already exist.  Do you want to replace this file?");
    GroupAnalysisSettings loaded;
    d.AnswerOpenFile((dir / "mine.SET").string());
    ASSERT_TRUE(LoadGroupCustomSettingsCommand(loaded, d));
    EXPECT_EQ(loaded, s);
}

// Traces of N = 200 channels of i = -2 pA, each open with a probability that
// rises and decays (peak 0.6), counted binomially at each point with a fixed
// seed, plus optional Gaussian background noise. With a rundown the channel
// count falls linearly from 200 over the traces by that fraction.
std::vector<std::vector<double>> BinomialTraces(int traces, double noiseSd, unsigned seed,
                                                double rundown = 0) {
    constexpr int kPoints = 400, kBase = 40;
    constexpr double kUnit = -2.0;
    std::mt19937 rng(seed);
    std::normal_distribution<double> noise(0.0, noiseSd);
    std::vector<std::vector<double>> out;
    for (int k = 0; k < traces; ++k) {
        std::vector<double> t;
        const int kChannels = int(std::lround(200 * (1 - rundown * k / traces)));
        for (int j = 0; j < kPoints; ++j) {
            const double s = j - kBase;
            const double p = s < 0 ? 0 : 0.6 * (1 - std::exp(-s / 3)) * std::exp(-s / 80) / 0.9;
            std::binomial_distribution<int> open(kChannels, std::min(p, 1.0));
            t.push_back(kUnit * open(rng) + (noiseSd > 0 ? noise(rng) : 0.0));
        }
        out.push_back(std::move(t));
    }
    return out;
}

TEST(Fluctuation, BinomialChannelsGiveBackTheirCurrentAndNumber) {
    const auto traces = BinomialTraces(300, 0, 11);
    const FluctuationResult r =
        AnalyseFluctuation(traces, {.peakScaled = false, .amplitudeBins = 20});
    ASSERT_TRUE(r.ok);
    EXPECT_NEAR(r.unitCurrent, -2.0, 0.15);
    EXPECT_NEAR(r.channels, 200, 20);
    EXPECT_NEAR(r.openProbability, std::fabs(r.peak) / (2.0 * 200), 0.06);
    EXPECT_GT(r.rSquared, 0.9);
    EXPECT_EQ(r.curveX.size(), r.curveY.size());
    const ResultValues row = FluctuationRow(r, 4, 300);
    EXPECT_EQ(row.kind, ResultKind::Fluctuation);
    EXPECT_EQ(row.channels, r.channels);
    EXPECT_FALSE(AnalyseFluctuation(BinomialTraces(1, 0, 1), {}).ok);  // too few traces
}

TEST(Fluctuation, BackgroundVarianceIsSubtractedWhenAsked) {
    // Noise of variance 4 pA^2 lifts every bin by 4; subtracting the
    // variance of the 40 baseline points takes it away again.
    const auto traces = BinomialTraces(300, 2.0, 12);
    FluctuationOptions o{.peakScaled = false, .amplitudeBins = 20, .baselinePoints = 40};
    const FluctuationResult kept = AnalyseFluctuation(traces, o);
    o.subtractBaseVariance = true;
    const FluctuationResult cleaned = AnalyseFluctuation(traces, o);
    ASSERT_TRUE(kept.ok && cleaned.ok);
    EXPECT_NEAR(cleaned.baselineVariance, 4.0, 0.5);
    ASSERT_EQ(cleaned.binVariance.size(), kept.binVariance.size());
    for (std::size_t b = 0; b < kept.binVariance.size(); ++b)
        EXPECT_NEAR(cleaned.binVariance[b], kept.binVariance[b] - cleaned.baselineVariance, 1e-9) << b;
    EXPECT_NEAR(cleaned.unitCurrent, -2.0, 0.2);
    EXPECT_NEAR(cleaned.channels, 200, 25);
    // With the offset term the noise is absorbed by the fit instead.
    o.subtractBaseVariance = false;
    o.includeOffset = true;
    const FluctuationResult offset = AnalyseFluctuation(traces, o);
    EXPECT_NEAR(offset.offset, 4.0, 1.5);  // the least constrained term
    EXPECT_NEAR(offset.unitCurrent, -2.0, 0.3);
}

TEST(Fluctuation, ARunningMeanOfNeighboursFollowsRundown) {
    // 200 channels falling to 120 across 300 traces (160 on average): about
    // the mean of all traces the spread of the trace means swamps the
    // -I^2/N term; about the mean of 5 neighbours the drift between them is
    // small and i and the average N come back.
    const auto traces = BinomialTraces(300, 0, 13, 0.4);
    FluctuationOptions o{.peakScaled = false, .amplitudeBins = 20};
    const FluctuationResult all = AnalyseFluctuation(traces, o);
    o.averageTraces = 5;
    const FluctuationResult neighbours = AnalyseFluctuation(traces, o);
    ASSERT_TRUE(neighbours.ok);
    EXPECT_NEAR(neighbours.unitCurrent, -2.0, 0.2);
    EXPECT_NEAR(neighbours.channels, 160, 25);
    EXPECT_FALSE(all.ok && std::fabs(all.channels - 160) < 50);
    // As many neighbours as other traces is the mean of all of them.
    o.averageTraces = 299;
    EXPECT_DOUBLE_EQ(AnalyseFluctuation(traces, o).channels, all.channels);
}

// Display, filter and group-window numbers were once kept as the text they
// were written with; now they are numbers, and each must still be written
// exactly as that text was, so that files written before and after read and
// compare the same.
// The expected texts are what the version that kept these fields as text
// wrote: the first six rows for the defaults of a new installation (probe
// run against commit 88b11cb), the main settings' rows below them for the
// same values stored through the filter form and the gain keys; the group
// window's rows in the form its fields show (three decimals for the
// diffusion fields, a short exponent for the coefficient).
TEST(SettingsText, NumbersAreWrittenAsTheirTextWas) {
    Settings main = NewInstallationSettings();
    GroupAnalysisSettings group;
    IniFile defaults;
    SettingsToIni(main, defaults);
    GroupSettingsToIni(group, defaults);

    main.displayGain = 0.16, main.filterAttenuationDb = 45.5;
    main.filterCutoffHz = 0.000123456789;  // ten characters are kept, not rounded
    main.filterRippleDb = 1234.56789012;   // ten significant digits
    group.vmax = 3.25, group.diffusionCoefficient = 1.5e-10, group.blocksToAnalyse = 0.0625;
    IniFile changed;
    SettingsToIni(main, changed);
    GroupSettingsToIni(group, changed);

    struct Row {
        const IniFile& ini;
        const char *section, *key, *text;
    };
    for (const Row& r : {Row{defaults, "Display", "FractionWindow", "0.25"},
                         {defaults, "Display", "FilterFreq", "1000"},
                         {defaults, "GroupAnalysis", "DisplayOffset", "0"},
                         {defaults, "Fitting", "Electrons", "2"},
                         {defaults, "RandomWalk", "Km", "0.240"},
                         {defaults, "RandomWalk", "DiffusionCoeff", "2.7e-6"},
                         {changed, "Display", "DisplayGain", "0.16"},
                         {changed, "Display", "FilterFreq", "0.00012345"},
                         {changed, "Display", "FilterRipple", "1234.56789"},
                         {changed, "Display", "FilterAttenuation", "45.5"},
                         {changed, "RandomWalk", "Vmax", "3.250"},
                         {changed, "RandomWalk", "DiffusionCoeff", "1.5e-10"},
                         {changed, "GroupAnalysis", "BlocktoAnalyze", "0.0625"}})
        EXPECT_EQ(r.ini.Get(r.section, r.key).value_or("<missing>"), r.text) << r.section << " " << r.key;
}

}  // namespace
}  // namespace vess::group
