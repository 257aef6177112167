#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <tuple>

#include "recording/file_io.h"
#include "recording/ini_file.h"
#include "recording/recent_recordings.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "recording/value_ranges.h"
#include "recording/workspace.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::ReadText;
using test::TempDir;

void Put(const std::filesystem::path& p, const std::string& text) {
    ASSERT_EQ(WriteFileAtomic(p, std::string_view(text)), "");
}

Settings Changed() {
    return {.dataFolder = "/home/someone/recordings/2024",  // longer than 10 characters
            .soundOn = true, .showToolTips = false, .lockBaseline = true, .windowFraction = 0.5, .drawTrace = false,
            .displayGain = 2.5, .displayOffsetCounts = -1200, .blocksPerScreen = 8, .navigationGroup = 3,
            .jumpIntervalMs = 250, .filterKind = 2, .filterCutoffHz = 500,
            .analysis = {.PeakDirection = 1, .ThresholdAmplitude = 7.25f, .PeriodToSearchMax = 15000,
                         .PeriodStartBaseline = 7000, .PeriodFindDecayTime = 25000, .DecayPercent = 0.37f,
                         .PeriodBaselineAverage = 500, .AreaThreshold = 20, .ComplexPeak = true, .NumberPointsPeak = 5},
            .method = {.method = DetectionMethod::Deconvolution,  // a name longer than ten characters
                       .suggestFromRecording = true}};
}

// No file: deconvolution suggested from each recording; an older file (no
// DetectionMethod) keeps threshold detection; a method name is read whole.
TEST(Settings, NoFileIsANewInstallationAndOldFilesKeepTheThresholdMethod) {
    TempDir dir;
    const Settings s = LoadIniSettings(dir / "Vessanto.ini");
    // A 4-pole Bessel low-pass at 1 kHz; files keep the table's 4.
    EXPECT_EQ(s, (Settings{.filterKind = 5, .analysis = {}, .method = {.method = DetectionMethod::Deconvolution,
                                                       .suggestFromRecording = true}}));
    for (const auto& [text, method, suggest] :
         {std::tuple{"[Analysis]\r\nPeakDirection%=-1\r\n", DetectionMethod::Threshold, false},
          {"[Analysis]\r\nDetectionMethod=deconvolution\r\n", DetectionMethod::Deconvolution, false},
          {"[Analysis]\r\nDetectionMethod=template\r\nSuggestFromRecording=True\r\n",
           DetectionMethod::Template, true}}) {
        Put(dir / "old.ini", text);
        const Settings read = LoadIniSettings(dir / "old.ini");
        EXPECT_EQ(read.method.method, method) << text;
        EXPECT_EQ(read.method.suggestFromRecording, suggest) << text;
        EXPECT_EQ(read.filterKind, 4) << text;
    }
}

// Saving leaves other windows' sections, and comments, alone.
TEST(Settings, SavingKeepsOtherSectionsAndKeys) {
    TempDir dir;
    const auto path = dir / "Vessanto.ini";
    Put(path, "; kept\r\n[HRV]\r\nRRBinSize=2\r\n\r\n[analysis]\r\nextra=1\r\npeakdirection%=1\r\n");
    ASSERT_EQ(SaveIniSettings(path, Settings{}), "");
    const IniFile ini = IniFile::Load(path);
    EXPECT_EQ(ini.Get("HRV", "RRBinSize"), "2");
    EXPECT_EQ(ini.Get("Analysis", "extra"), "1");
    EXPECT_EQ(ini.Get("Analysis", "PeakDirection%"), "-1");  // replaced, names without case
    const std::string text = ReadText(path);
    EXPECT_EQ(text.rfind("; kept\r\n", 0), 0u);
    EXPECT_EQ(text.find("peakdirection%"), std::string::npos);  // one line, not two
}

TEST(Settings, ValuesAreCutAtTenCharactersAndBadNumbersGiveDefaults) {
    const IniFile ini = IniFile::Parse(
        "[Display]\nFractionWindow=0.123456789012\nJumpInterval=abc\nFilterType=99999999999\n"
        "[Analysis]\nThresholdAmplitude!=12.5xyz\nNumberPointsPeak=0\nPeriodToSearchMax&=  42 \n"
        "ComplexPeak=\"true\"\nDecayPercent!=0.5\n[Program]\nDataDir=/a/very/long/folder/name\n");
    // The folder is read whole; the rest are the defaults.
    const Settings expected{.dataFolder = "/a/very/long/folder/name", .windowFraction = 0.12345678,
                            .analysis = {.PeriodToSearchMax = 42, .DecayPercent = 0.5f, .ComplexPeak = true},
                            .method = {}};
    EXPECT_EQ(SettingsFromIni(ini), expected);
}

TEST(IniFile, SetAddsKeysAtTheEndOfTheirSectionAndNewSectionsAtTheEnd) {
    IniFile ini = IniFile::Parse("[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n");
    ini.Set("a", "z", "3");
    ini.Set("C", "w", "4");
    EXPECT_EQ(ini.Text(), "[A]\r\nx=1\r\nz=3\r\n\r\n[B]\r\ny=2\r\n\r\n[C]\r\nw=4\r\n");
    EXPECT_EQ(ini.Get("B", "x"), std::nullopt);
    // Outer blanks and quotes survive a write and a read (a cut value may end in a blank).
    for (const std::string value : {"0.1234567 ", " a", "\"q\"", "\t", "x \"y\""}) {
        ini.Set("A", "v", value);
        EXPECT_EQ(IniFile::Parse(ini.Text()).Get("A", "v"), value) << value;
    }
}

TEST(Settings, CommandsSayWhatTheyDid) {
    TempDir dir;
    Workspace ws;
    ws.iniPath = dir / "Vessanto.ini";
    ws.settings = Changed();
    ScriptedDialogs dialogs;
    ASSERT_TRUE(SaveSettingsCommand(ws, dialogs));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, "The settings are saved into Vessanto.ini file.");

    // Custom settings: a copy of the settings file under the chosen name.
    dialogs.AnswerSaveFile((dir / "mine").string());
    ASSERT_TRUE(SaveCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(ReadText(dir / "mine.SET"), ReadText(ws.iniPath));
    dialogs.AnswerSaveFile((dir / "mine.SET").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");

    ws.settings = Settings{};
    dialogs.AnswerOpenFile((dir / "mine.SET").string());
    ASSERT_TRUE(LoadCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(ws.settings, Changed());

    // Closing: Cancel keeps the form open and writes nothing.
    ws.settings.jumpIntervalMs = 77;
    dialogs.AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(AskSaveSettingsOnExit(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Save Settings");
    EXPECT_EQ(LoadIniSettings(ws.iniPath).jumpIntervalMs, 250);
    dialogs.AnswerYesNoCancel(Answer::Yes);
    EXPECT_TRUE(AskSaveSettingsOnExit(ws, dialogs));
    EXPECT_EQ(LoadIniSettings(ws.iniPath).jumpIntervalMs, 77);
    // Yes with a save that fails keeps the form open.
    ws.iniPath = dir.Path();
    dialogs.AnswerYesNoCancel(Answer::Yes);
    EXPECT_FALSE(ShowFailure(dialogs, AskSaveSettingsOnExit(ws, dialogs)));
    EXPECT_EQ(dialogs.Transcript().back().caption, "File Error");
}

// Every value is written to survive the 10-character read (1.3456789e-05 once came back as "1.3456789e").
TEST(Settings, ExtremeValuesOfEveryKeySurviveTheTenCharacterRead) {
    const Settings s{.windowFraction = 0.123456789012, .displayGain = 12345.6789012,
                     .displayOffsetCounts = kMinDisplayOffset, .blocksPerScreen = kMaxBlocksPerScreen,
                     .navigationGroup = 255, .jumpIntervalMs = std::numeric_limits<int32_t>::max(),
                     .filterKind = kMaxFilterType, .filterCutoffHz = 1000.00000001, .filterOrder = kMaxFilterOrder,
                     .analysis = {.PeakDirection = std::numeric_limits<int16_t>::min(),
                                  .ThresholdAmplitude = 1.3456789e-05f, .PeriodToSearchMax = kMaxPeriodUs,
                                  .PeriodStartBaseline = 0, .PeriodFindDecayTime = 999999,
                                  .DecayPercent = 0.123456789f, .PeriodBaselineAverage = 1,
                                  .AreaThreshold = -987654.3f, .NumberPointsPeak = kMaxNumberPointsPeak},
                     .method = {}};
    IniFile ini;
    SettingsToIni(s, ini);
    std::vector<std::string> problems;
    const Settings back = SettingsFromIni(ini, &problems);
    EXPECT_TRUE(problems.empty()) << problems.front();
    // Decimals come back to ten significant digits cut to ten characters, floats keep the digits that fit in 10 characters.
    EXPECT_EQ(ini.Get("Analysis", "ThresholdAmplitude!"), "1.34568e-5");
    EXPECT_NEAR(back.analysis.ThresholdAmplitude, 1.3456789e-05f, 1e-10);
    Settings expected = s;
    expected.windowFraction = 0.12345678;
    expected.displayGain = 12345.6789;
    expected.filterCutoffHz = 1000.0;
    expected.analysis.ThresholdAmplitude = back.analysis.ThresholdAmplitude;
    expected.analysis.DecayPercent = 0.12345679f;
    EXPECT_EQ(back, expected);
    // What was read once is written and read again unchanged.
    IniFile again;
    SettingsToIni(back, again);
    EXPECT_EQ(again.Text(), ini.Text());
    EXPECT_EQ(SettingsFromIni(again), back);
}

// Values no recording can use keep their defaults and are each reported.
TEST(Settings, ValuesOutsideTheirRangeKeepTheDefaultsAndAreReported) {
    const IniFile ini = IniFile::Parse(
        "[Display]\nDisplayTotalNumberBlockPerScreen=8388608\nGroupNavigate=300\n"
        "[Analysis]\nPeriodToSearchMax&=3600000000\nPeriodFindDecayTime&=360000000\n"
        "NumberPointsPeak=32767\nDecayPercent!=1.5\nThresholdAmplitude!=nan\n"
        "PeriodStartBaseline&=-5\nAreaThreshold!=70\n");
    std::vector<std::string> problems;
    const Settings s = SettingsFromIni(ini, &problems);
    Settings expected;
    expected.analysis.AreaThreshold = 70;  // the one value in range is taken
    EXPECT_EQ(s, expected);
    ASSERT_EQ(problems.size(), 8u);
    EXPECT_EQ(problems[0], "DisplayTotalNumberBlockPerScreen=8388608: outside 1 to 4096");
    EXPECT_EQ(problems[2], "ThresholdAmplitude!=nan: not a number");
    EXPECT_EQ(problems[3], "PeriodToSearchMax&=3600000000: not a number");  // over 32 bits
    EXPECT_EQ(problems[5],
              "PeriodFindDecayTime&=360000000: PeriodFindDecayTime is 360000000 us, outside 0 "
              "to 1000000 us");
    EXPECT_EQ(problems[7], "NumberPointsPeak=32767: NumberPointsPeak is 32767, outside 1 to 255");
}

// A custom settings file that is missing or no settings file changes nothing and says why.
TEST(Settings, ACustomSettingsFileThatCannotBeUsedChangesNothing) {
    TempDir dir;
    Workspace ws;
    ws.settings = Changed();
    ScriptedDialogs dialogs;
    Put(dir / "notes.SET", "shopping list\n[Groceries]\nmilk=1\n");
    std::filesystem::create_directory(dir / "folder.SET");
    const struct {
        std::filesystem::path file;
        std::string why;
    } cases[] = {{dir / "missing.SET", "No such file or directory"},
                 {dir / "notes.SET", std::string(texts::kNoSettingsSections)},
                 {dir / "folder.SET", "is a folder"}};
    for (const auto& c : cases) {
        dialogs.AnswerOpenFile(c.file.string());
        EXPECT_FALSE(ShowFailure(dialogs, LoadCustomSettingsCommand(ws, dialogs)));
        EXPECT_EQ(dialogs.Transcript().back().caption, texts::kSettingsNotLoadedCaption);
        EXPECT_EQ(dialogs.Transcript().back().text,
                  texts::SettingsNotLoadedText(c.file.string(), c.why));
        EXPECT_EQ(ws.settings, Changed());
    }
    // One value out of range: the rest is taken and that one named.
    Put(dir / "odd.SET", "[Analysis]\nPeakDirection%=1\nNumberPointsPeak=32767\n");
    dialogs.AnswerOpenFile((dir / "odd.SET").string());
    EXPECT_TRUE(LoadCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(ws.settings.analysis.PeakDirection, 1);
    EXPECT_EQ(ws.settings.analysis.NumberPointsPeak, 1);
    EXPECT_EQ(dialogs.Transcript().back().text,
              SettingsProblemsText(dir / "odd.SET",
                                   {"NumberPointsPeak=32767: NumberPointsPeak is 32767, outside 1 "
                                    "to 255"}));
}

TEST(Settings, DefaultIniPathFallsBackToTheUserConfigFolder) {
    TempDir dir;
    EXPECT_EQ(DefaultIniPath(dir.Path()), dir / "Vessanto.ini");
    const char* old = std::getenv("XDG_CONFIG_HOME");
    const std::string saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", dir.Path().c_str(), 1);
    // A folder that cannot be written (here: one that does not exist).
    EXPECT_EQ(DefaultIniPath(dir / "no-such-folder"), dir.Path() / "Vessantorium" / "Vessanto.ini");
    old ? ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
}

// The recent-recordings list: its order and bound, and its section of the
// settings file.
TEST(RecentRecordings, NewestFirstWithoutRepeatsAndAtMostTen) {
    struct Case {
        std::vector<std::string> before;
        std::string opened;
        std::vector<std::string> after;
    };
    std::vector<std::string> eleven;
    for (int i = 0; i < 11; ++i) eleven.push_back("f" + std::to_string(i));
    const std::vector<std::string> tenAfterNew = {"new", "f0", "f1", "f2", "f3", "f4", "f5", "f6", "f7", "f8"};
    const Case cases[] = {
        {{}, "a", {"a"}},
        {{"a", "b", "c"}, "c", {"c", "a", "b"}},  // reopened moves to the front, once
        {{"a", "b"}, "a", {"a", "b"}},
        {eleven, "new", tenAfterNew},
    };
    for (const Case& c : cases) EXPECT_EQ(WithNewest(c.before, c.opened), c.after) << c.opened;
}

TEST(RecentRecordings, AShorterListLeavesNoStaleEntriesAndIsNoSettingsFile) {
    test::TempDir dir;
    const auto ini = dir / "Vessanto.ini";
    ASSERT_EQ(WriteRecentRecordings(ini, {"a.abf", "b.abf", "c.abf"}), "");
    ASSERT_EQ(WriteRecentRecordings(ini, {"c.abf"}), "");
    EXPECT_EQ(ReadRecentRecordings(ini), std::vector<std::string>{"c.abf"});
    // Only the list in the file: the settings of a new installation.
    EXPECT_EQ(LoadIniSettings(ini).method.method, NewInstallationSettings().method.method);
    IniFile settings = IniFile::Load(ini);
    settings.Set("Program", "SoundOn", "False");
    ASSERT_EQ(settings.Save(ini), "");
    EXPECT_NE(LoadIniSettings(ini).method.method, NewInstallationSettings().method.method);
}

}  // namespace
}  // namespace vess
