#include <gtest/gtest.h>

#include <cstdlib>

#include "recording/file_io.h"
#include "recording/ini_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

std::string ReadText(const std::filesystem::path& p) {
    const auto b = ReadFileBytes(p);
    return b ? std::string(b->begin(), b->end()) : std::string("<missing>");
}

Settings Changed() {
    Settings s;
    s.DataDir = "/home/someone/recordings/2024";  // longer than 10 characters
    s.SoundOn = true;
    s.DisplayTooltips = false;
    s.LockBase = true;
    s.FractionWindow = "0.5";
    s.DisplayTrace = false;
    s.DisplayGain = "2.5";
    s.DisplayOffset = -1200;
    s.DisplayTotalNumberBlockPerScreen = 8;
    s.GroupNavigate = 3;
    s.JumpInterval = 250;
    s.FilterType = 2;
    s.FilterFreq = "500";
    s.analysis.PeakDirection = 1;
    s.analysis.ThresholdAmplitude = 7.25f;
    s.analysis.PeriodToSearchMax = 15000;
    s.analysis.PeriodStartBaseline = 7000;
    s.analysis.PeriodFindDecayTime = 25000;
    s.analysis.DecayPercent = 0.37f;
    s.analysis.PeriodBaselineAverage = 500;
    s.analysis.AreaThreshold = 20;
    s.analysis.ComplexPeak = true;
    s.analysis.NumberPointsPeak = 5;
    return s;
}

TEST(Settings, NoFileGivesTheDefaults) {
    TempDir dir;
    const Settings s = LoadIniSettings(dir / "Vessanto.ini");
    EXPECT_EQ(s, Settings{});
    EXPECT_EQ(s.DataDir, "c:\\");
    EXPECT_EQ(s.analysis.PeakDirection, -1);
    EXPECT_EQ(s.analysis.DecayPercent, 0.32f);
    EXPECT_EQ(s.FractionWindow, "0.25");
}

TEST(Settings, WrittenKeysReadBackAndSecondSaveIsByteIdentical) {
    TempDir dir;
    const auto path = dir / "Vessanto.ini";
    ASSERT_EQ(SaveIniSettings(path, Changed()), "");
    const std::string first = ReadText(path);
    EXPECT_NE(first.find("[Analysis]\r\nPeakDirection%=1\r\nThresholdAmplitude!=7.25\r\n"),
              std::string::npos);
    EXPECT_NE(first.find("DisplayOffset&=-1200\r\n"), std::string::npos);
    EXPECT_NE(first.find("ComplexPeak=True\r\n"), std::string::npos);
    EXPECT_NE(first.find("SoundOn=True\r\nDisplayTooltips=False\r\n"), std::string::npos);
    EXPECT_EQ(LoadIniSettings(path), Changed());
    ASSERT_EQ(SaveIniSettings(path, LoadIniSettings(path)), "");
    EXPECT_EQ(ReadText(path), first);
}

// Other windows keep their own sections in the same file: saving ours must
// leave them, and comments, alone.
TEST(Settings, SavingKeepsOtherSectionsAndKeys) {
    TempDir dir;
    const auto path = dir / "Vessanto.ini";
    ASSERT_EQ(WriteFileAtomic(path, std::string("; kept\r\n[HRV]\r\nRRBinSize=2\r\n\r\n"
                                                "[analysis]\r\nextra=1\r\npeakdirection%=1\r\n")),
              "");
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
    const Settings s = SettingsFromIni(ini);
    EXPECT_EQ(s.FractionWindow, "0.12345678");
    EXPECT_EQ(s.JumpInterval, 1000);
    EXPECT_EQ(s.FilterType, 4);
    EXPECT_EQ(s.analysis.ThresholdAmplitude, 5.0f);
    EXPECT_EQ(s.analysis.NumberPointsPeak, 1);
    EXPECT_EQ(s.analysis.PeriodToSearchMax, 42);
    EXPECT_TRUE(s.analysis.ComplexPeak);
    EXPECT_EQ(s.analysis.DecayPercent, 0.5f);
    EXPECT_EQ(s.DataDir, "/a/very/long/folder/name");  // a folder is read whole
}

TEST(IniFile, SetAddsKeysAtTheEndOfTheirSectionAndNewSectionsAtTheEnd) {
    IniFile ini = IniFile::Parse("[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n");
    ini.Set("a", "z", "3");
    ini.Set("C", "w", "4");
    EXPECT_EQ(ini.Text(), "[A]\r\nx=1\r\nz=3\r\n\r\n[B]\r\ny=2\r\n\r\n[C]\r\nw=4\r\n");
    EXPECT_EQ(ini.Get("B", "x"), std::nullopt);
    EXPECT_EQ(ini.Get("D", "x"), std::nullopt);
}

TEST(Settings, CommandsSayWhatTheyDid) {
    TempDir dir;
    Workspace ws;
    ws.iniPath = dir / "Vessanto.ini";
    ws.settings = Changed();
    ScriptedDialogs dialogs;
    ASSERT_TRUE(SaveSettingsCommand(ws, dialogs));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "Settings Saved");
    EXPECT_EQ(dialogs.Messages()[0].text, "The settings are saved into Vessanto.ini file.");

    // Custom settings: a copy of the settings file under the chosen name.
    dialogs.AnswerSaveFile((dir / "mine").string());
    ASSERT_TRUE(SaveCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().text, "Custom Settings File (*.SET)");
    EXPECT_EQ(ReadText(dir / "mine.SET"), ReadText(ws.iniPath));
    dialogs.AnswerSaveFile((dir / "mine.SET").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Replace File");

    ws.settings = Settings{};
    dialogs.AnswerOpenFile((dir / "mine.SET").string());
    ASSERT_TRUE(LoadCustomSettingsCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().text, "Custom Settings File (*.SET)|*.SET");
    EXPECT_EQ(ws.settings, Changed());

    // Closing: Cancel keeps the form open and writes nothing.
    ws.settings.JumpInterval = 77;
    dialogs.AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(AskSaveSettingsOnExit(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript().back().caption, "Save Settings");
    EXPECT_EQ(dialogs.Transcript().back().text, "Would you like to save settings before exit?");
    EXPECT_EQ(LoadIniSettings(ws.iniPath).JumpInterval, 250);
    dialogs.AnswerYesNoCancel(Answer::Yes);
    EXPECT_TRUE(AskSaveSettingsOnExit(ws, dialogs));
    EXPECT_EQ(LoadIniSettings(ws.iniPath).JumpInterval, 77);
}

TEST(Settings, DefaultIniPathFallsBackToTheUserConfigFolder) {
    TempDir dir;
    EXPECT_EQ(DefaultIniPath(dir.Path()), dir / "Vessanto.ini");
    const char* old = std::getenv("XDG_CONFIG_HOME");
    const std::string saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", dir.Path().c_str(), 1);
    // A folder that cannot be written (here: one that does not exist).
    EXPECT_EQ(DefaultIniPath(dir / "no-such-folder"), dir.Path() / "Vessantorium" / "Vessanto.ini");
    if (old) ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace vess
