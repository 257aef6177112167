// The settings file's numbers as text. Display, filter and group-window
// numbers were once kept as the text they were written with; now they are
// numbers, and each must still be written exactly as that text was, so that
// files written before and after read and compare the same.
#include <gtest/gtest.h>

#include "group_analysis/group_settings.h"
#include "recording/file_io.h"
#include "recording/ini_file.h"
#include "recording/settings_file.h"
#include "support/test_recording.h"

namespace vess::group {
namespace {

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

    main.displayGain = 0.16;
    main.filterCutoffHz = 0.000123456789;  // ten characters are kept, not rounded
    main.filterRippleDb = 1234.56789012;   // ten significant digits
    main.filterAttenuationDb = 45.5;
    group.vmax = 3.25;
    group.diffusionCoefficient = 1.5e-10;
    group.blocksToAnalyse = 0.0625;
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

// Reading a file and writing it back changes no byte.
TEST(SettingsText, AFileReadAndWrittenBackIsByteIdentical) {
    test::TempDir dir;
    const auto first = dir / "first.ini", second = dir / "second.ini";
    Settings main = NewInstallationSettings();
    main.displayGain = 2.5;
    main.filterCutoffHz = 1234.56789012;
    GroupAnalysisSettings group;
    group.deadRadius = 0;
    group.diffusionCoefficient = 7.25e-6;
    ASSERT_EQ(SaveIniSettings(first, main), "");
    ASSERT_EQ(SaveGroupSettings(first, group), "");
    ASSERT_EQ(SaveIniSettings(second, LoadIniSettings(first)), "");
    ASSERT_EQ(SaveGroupSettings(second, LoadGroupSettings(first)), "");
    EXPECT_EQ(ReadFileBytes(second), ReadFileBytes(first));
}

}  // namespace
}  // namespace vess::group
