// The recent-recordings list: its order and bound, and its section of the
// settings file.
#include <gtest/gtest.h>

#include "recording/ini_file.h"
#include "recording/recent_recordings.h"
#include "recording/settings_file.h"
#include "support/test_recording.h"

namespace vess {
namespace {

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
