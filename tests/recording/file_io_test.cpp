// Saving through a temporary file: replaced whole, permissions and links kept,
// never half-written in place, failures naming the real file and the reason.
// Reading a recording whose file changes on disk while open: no crash, the
// fault reported once with the events kept, no detection on unread samples;
// named pipes refused at once.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "detection/screen_commands.h"
#include "recording/abf_layout.h"
#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/screen.h"
#include "recording/screen_read_ahead.h"
#include "recording/texts.h"
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

std::vector<int16_t> Ramp(int n) {
    std::vector<int16_t> v(std::size_t(n), 0);
    for (int i = 0; i < n; ++i) v[std::size_t(i)] = int16_t(i % 3000 - 1500);
    return v;
}

// Where sample 'point' lies in a one-channel file.
uint64_t ByteOfPoint(const Recording& rec, int64_t point) {
    return uint64_t(rec.Header().dataSectionPtr) * abf::kBlockBytes + uint64_t(point) * 2;
}

TEST(ReadFault, ATruncatedFileGivesZerosAndAFaultNotACrash) {
    TempDir dir;
    const auto samples = Ramp(40 * 256);
    auto rec = test::MakeRecording(dir / "cut.abf", samples);
    std::vector<int16_t> out(512);
    ASSERT_TRUE(rec->ReadSamples(1000, out));
    EXPECT_EQ(out[0], samples[1000]);
    EXPECT_EQ(rec->ReadFault(), "");

    // Cut in the middle of block 20 while open (a memory map would raise SIGBUS).
    ASSERT_EQ(::truncate((dir / "cut.abf").c_str(), off_t(ByteOfPoint(*rec, 20 * 256 + 10))), 0);

    EXPECT_FALSE(rec->ReadSamples(20 * 256, out));
    for (int k = 0; k < 10; ++k) EXPECT_EQ(out[std::size_t(k)], samples[20 * 256 + std::size_t(k)]);
    for (std::size_t k = 10; k < out.size(); ++k) ASSERT_EQ(out[k], 0) << k;
    EXPECT_NE(rec->ReadFault().find("cut.abf"), std::string::npos) << rec->ReadFault();
    // Single samples past the cut read as 0 as well; before it, as recorded.
    EXPECT_EQ(rec->Sample(30 * 256), 0);
    EXPECT_EQ(rec->Sample(rec->PointsPerChannel() + 5), 0);  // no step after the end
    EXPECT_EQ(rec->Sample(5 * 256 + 7), samples[5 * 256 + 7]);
    const Screen screen(*rec, 28, 4);
    EXPECT_FALSE(screen.Complete());
    const Screen early(*rec, 4, 4);
    EXPECT_TRUE(early.Complete());
}

TEST(ReadFault, AFileReplacedByRenameKeepsServingTheOpenedData) {
    TempDir dir;
    const auto samples = Ramp(8 * 256);
    auto rec = test::MakeRecording(dir / "swap.abf", samples);
    // Saving another program's way: a new file renamed over the old name.
    ASSERT_EQ(WriteFileAtomic(dir / "swap.abf", std::string_view("replaced")), "");
    std::vector<int16_t> out(8 * 256);
    EXPECT_TRUE(rec->ReadSamples(0, out));
    EXPECT_EQ(out, samples);
    EXPECT_EQ(rec->ReadFault(), "");
}

class ReadFaultReport : public ::testing::Test {
protected:
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;

    void OpenAndCut(int events) {
        ws.recording = test::MakeRecording(dir / "cell.abf", Ramp(40 * 256));
        for (int k = 0; k < events; ++k) ws.events.Append(EventRecord{});
        ws.history.Checkpoint(ws.events, "test");
        ASSERT_EQ(::truncate((dir / "cell.abf").c_str(), off_t(ByteOfPoint(*ws.recording, 256))), 0);
    }
};

TEST_F(ReadFaultReport, EventsAreKeptAndOfferedForSavingOnce) {
    OpenAndCut(487);
    ws.screenStartBlock = 8;
    const AnalyzeWindowResult r = AnalyzeCurrentScreen(ws);
    EXPECT_EQ(r.eventsAdded, 0);  // zeros are not data
    EXPECT_EQ(ws.events.Count(), 487);

    dialogs.AnswerYesNo(true).AnswerSaveFile((dir / "kept.EVT").string());
    const auto save = [&] { return ShowFailure(dialogs, SaveEventFileCommand(ws, dialogs)); };
    EXPECT_TRUE(ReportReadFault(ws, dialogs, save));
    ASSERT_FALSE(dialogs.Transcript().empty());
    EXPECT_EQ(dialogs.Transcript()[0].text,
              texts::ReadFaultKeepEventsText(ws.recording->ReadFault(), 487));
    const EventFileContents saved = ReadEventFile(dir / "kept.EVT");
    ASSERT_TRUE(saved.Ok());
    EXPECT_EQ(saved.eventCount, 487);
    EXPECT_EQ(ws.events.Count(), 487);

    // Told once: the next screens that fail to read say nothing more.
    ws.screenStartBlock = 16;
    AnalyzeCurrentScreen(ws);
    EXPECT_FALSE(ReportReadFault(ws, dialogs, save));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(ReadFaultReport, NonStopAnalysisStopsAtTheFault) {
    OpenAndCut(0);
    NonStopAnalysis run(ws);
    run.RunToEnd();
    // The first screen's read past block 1 fails: the run ends there, not after nine screens.
    EXPECT_EQ(run.GetProgress().screensDone, 1);
    EXPECT_EQ(ws.events.Count(), 0);
    EXPECT_TRUE(ReportReadFault(ws, dialogs, {}));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text, ws.recording->ReadFault());
}

TEST(RegularFilesOnly, ANamedPipeIsRefusedWithoutBlocking) {
    TempDir dir;
    const auto fifo = dir / "pipe.abf";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    AbfError error = AbfError::None;
    std::string detail;
    EXPECT_EQ(Recording::Open(fifo, &error, &detail), nullptr);
    EXPECT_EQ(error, AbfError::CannotOpen);
    EXPECT_EQ(detail, "not a regular file");
    std::string why;
    EXPECT_FALSE(ReadFileBytes(fifo, &why));
    EXPECT_EQ(why, "not a regular file");
    EXPECT_FALSE(ReadFileBytes(dir.Path(), &why));
    EXPECT_EQ(why, "is a folder");
}

// The read-ahead: every screen, read ahead with buffers of 1, 2 and 3
// screens (so that most screens sit at a buffer's edge) and of many, holds
// what the screen reading its own samples holds over its whole reach, before
// the data, after it and at the last, partial screen; screen sizes of 1 and 4
// blocks. A screen kept while later reads fill the buffer keeps its samples.
TEST(ScreenReadAhead, EveryScreenHoldsWhatItsOwnReadHolds) {
    test::TempDir dir;
    std::vector<int16_t> samples(10 * 1024 + 300);  // the last screen partial
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t((i * 7919) % 65536 - 32768);
    const auto rec = test::MakeRecording(dir / "ramp.abf", samples);
    for (int32_t blocksPerScreen : {1, 4}) {
        for (int32_t screensPerRead : {1, 2, 3, 256}) {
            ScreenReadAhead ahead(*rec, blocksPerScreen, screensPerRead);
            const Screen kept = ahead.At(0);
            for (int32_t block = 0; block < rec->BlockCount(); block += blocksPerScreen) {
                const Screen own(*rec, block, blocksPerScreen);
                const Screen viewed = ahead.At(block);
                ASSERT_TRUE(viewed.Complete());
                const int64_t w = own.WindowLen();
                ASSERT_EQ(viewed.WindowLen(), w);
                ASSERT_NE(viewed.Samples(-w, 3 * w), nullptr);
                for (int64_t i = -w; i < 2 * w; ++i)
                    ASSERT_EQ(viewed.GetSampleValue(i), own.GetSampleValue(i))
                        << blocksPerScreen << " blocks, " << screensPerRead << " per read, block "
                        << block << ", index " << i;
            }
            const Screen own(*rec, 0, blocksPerScreen);
            for (int64_t i = -own.WindowLen(); i < 2 * own.WindowLen(); ++i)
                ASSERT_EQ(kept.GetSampleValue(i), own.GetSampleValue(i)) << "kept, index " << i;
        }
    }
}

}  // namespace
}  // namespace vess
