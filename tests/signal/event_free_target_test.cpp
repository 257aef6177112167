// The event-free file replaces its target as every save does: a private or
// read-only target keeps its mode and a link stays a link (the writer once
// made every target 0644 and replaced a link by a plain file).
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "recording/event_table.h"
#include "recording/recording.h"
#include "recording/synth.h"
#include "signal/event_free_file.h"
#include "support/test_recording.h"

namespace vess {
namespace {

namespace fs = std::filesystem;

mode_t Mode(const fs::path& p) {
    struct stat st {};
    return ::lstat(p.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

TEST(EventFreeTarget, ModeAndLinksOfTheReplacedFileAreKept) {
    test::TempDir dir;
    SynthOptions synth;
    synth.seconds = 1;
    ASSERT_EQ(WriteSynthetic(dir / "s.abf", Synthesise(synth)), "");
    AbfError error{};
    const auto rec = Recording::Open(dir / "s.abf", &error);
    ASSERT_TRUE(rec);
    const EventTable none;
    const auto write = [&](const fs::path& target) { return WriteEventFreeAbf(*rec, none, 2.0, 40, target); };
    // The target holds a recording of the source's length once written.
    const auto written = [&](const fs::path& target) {
        const auto out = Recording::Open(target, &error);
        return out && out->PointsPerChannel() == rec->PointsPerChannel();
    };

    fs::create_directory(dir / "real");
    for (const mode_t mode : {mode_t(0600), mode_t(0444)}) {
        const fs::path target = dir / "real" / "free.abf";
        fs::remove(target);
        std::ofstream(target) << "old";
        ASSERT_EQ(::chmod(target.c_str(), mode), 0);
        EXPECT_EQ(write(target), "") << mode;
        EXPECT_EQ(Mode(target), mode);
        EXPECT_TRUE(written(target)) << mode;
    }
    fs::remove(dir / "real" / "free.abf");
    std::ofstream(dir / "real" / "free.abf") << "old";
    fs::create_symlink("real/free.abf", dir / "link.abf");
    EXPECT_EQ(write(dir / "link.abf"), "");
    EXPECT_TRUE(fs::is_symlink(dir / "link.abf"));
    EXPECT_TRUE(written(dir / "real" / "free.abf"));
}

}  // namespace
}  // namespace vess
