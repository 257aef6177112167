// Saving through a temporary file: replaced whole, permissions and links kept,
// never half-written in place, failures naming the real file and the reason.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>

#include "recording/file_io.h"
#include "support/read_back.h"

namespace vess {
namespace {

using test::TempDir;
const auto Text = test::ReadText;

void Put(const std::filesystem::path& p, const std::string& text) {
    std::ofstream(p, std::ios::binary) << text;
}

mode_t Mode(const std::filesystem::path& p) {
    struct stat st {};
    ::stat(p.c_str(), &st);
    return st.st_mode & 07777;
}

// The target is replaced whole, a user's own "X.tmp" untouched, no temporary left
// behind, the target's permissions kept, and a link written through to its target.
TEST(WriteFileAtomic, ReplacesTheTargetKeepingItsPermissionsAndLinks) {
    TempDir dir;
    Put(dir / "cell.EVT", "old");
    Put(dir / "cell.EVT.tmp", "mine");
    EXPECT_EQ(WriteFileAtomic(dir / "cell.EVT", std::string_view("new")), "");
    EXPECT_EQ(Text(dir / "cell.EVT"), "new");
    EXPECT_EQ(Text(dir / "cell.EVT.tmp"), "mine");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 2);

    Put(dir / "shared.SET", "old");
    ASSERT_EQ(::chmod((dir / "shared.SET").c_str(), 0640), 0);
    EXPECT_EQ(WriteFileAtomic(dir / "shared.SET", std::string_view("new")), "");
    EXPECT_EQ(Mode(dir / "shared.SET"), mode_t(0640));
    // A new file gets the usual permissions, not mkstemp's private 0600.
    const mode_t mask = ::umask(022);
    EXPECT_EQ(WriteFileAtomic(dir / "fresh.SET", std::string_view("x")), "");
    ::umask(mask);
    EXPECT_EQ(Mode(dir / "fresh.SET"), mode_t(0644));

    std::filesystem::create_directory(dir / "real");
    Put(dir / "real" / "cell.EVT", "old");
    std::filesystem::create_symlink("real/cell.EVT", dir / "link.EVT");
    EXPECT_EQ(WriteFileAtomic(dir / "link.EVT", std::string_view("new")), "");
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.EVT"));
    EXPECT_EQ(Text(dir / "real" / "cell.EVT"), "new");
    EXPECT_EQ(Text(dir / "link.EVT"), "new");
}

TEST(WriteFileAtomic, AFailureNamesTheRealFileAndTheReason) {
    TempDir dir;
    std::filesystem::create_symlink("missing/cell.EVT", dir / "link.EVT");
    EXPECT_EQ(WriteFileAtomic(dir / "link.EVT", std::string_view("x")),
              "Cannot write " + (dir / "missing/cell.EVT").string() +
                  ": No such file or directory.");
    std::filesystem::create_directory(dir / "folder.EVT");
    EXPECT_EQ(WriteFileAtomic(dir / "folder.EVT", std::string_view("x")),
              "Cannot write " + (dir / "folder.EVT").string() + ": it is not a regular file.");
}

// Runs check as "nobody" in a child when root (who may write any folder); its exit status.
template <class F>
int AsOrdinaryUser(F check) {
    if (::geteuid() != 0) return check();
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(90);
        ::_exit(check());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 99;
}

// No temporary file possible: refused rather than half-written in place.
TEST(WriteFileAtomic, AFolderThatForbidsNewFilesRefusesAndKeepsTheOldFile) {
    TempDir dir;
    const auto locked = dir / "locked";
    std::filesystem::create_directory(locked);
    Put(locked / "cell.EVT", "old");
    if (::geteuid() == 0) {
        ASSERT_EQ(::chmod(dir.Path().c_str(), 0755), 0);
        ASSERT_EQ(::chown(locked.c_str(), 65534, 65534), 0);
        ASSERT_EQ(::chown((locked / "cell.EVT").c_str(), 65534, 65534), 0);
    }
    ASSERT_EQ(::chmod(locked.c_str(), 0555), 0);
    const int status = AsOrdinaryUser([&] {
        if (WriteFileAtomic(locked / "cell.EVT", std::string_view("new")) !=
            "Cannot write " + (locked / "cell.EVT").string() +
                ": its folder does not allow a new file beside it (Permission denied); the file is "
                "left unchanged rather than overwritten in place. Save to another folder.")
            return 1;
        if (WriteFileAtomic(locked / "other.EVT", std::string_view("x")) !=
            "Cannot write " + (locked / "other.EVT").string() + ": Permission denied.")
            return 2;
        return 0;
    });
    ::chmod(locked.c_str(), 0755);
    EXPECT_EQ(status, 0) << "1: the writable file was not refused; 2: wrong refusal";
    EXPECT_EQ(Text(locked / "cell.EVT"), "old");
}

}  // namespace
}  // namespace vess
