#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/file_list.h"
#include "recording/le_bytes.h"
#include "recording/texts.h"
#include "recording/random_events.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

// An event file chosen in the file list opens its data file from the same
// folder, then its events.
TEST(FileList, EventFileOpensItsRecordingThenItsEvents) {
    TempDir dir;
    auto rec = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(4096, 0));
    std::mt19937 rng(4);
    EventTable table;
    for (int k = 0; k < 6; ++k) table.Append(RandomRecord(rng, 1000));
    ASSERT_EQ(WriteEventFile(dir / "cell.evt", rec->HeaderBytes(), AnalysisParameters{}, table,
                             "cell.abf"),
              "");
    rec.reset();

    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_TRUE(IsEventFileName(dir / "cell.evt"));
    EXPECT_TRUE(IsEventFileName(dir / "CELL.Evt"));
    EXPECT_FALSE(IsEventFileName(dir / "cell.abf"));
    ASSERT_TRUE(OpenFromFileList(ws, dir / "cell.evt", dialogs));
    ASSERT_TRUE(ws.recording);
    EXPECT_EQ(ws.recording->FileName(), "cell.abf");
    EXPECT_EQ(ws.events, table);
    EXPECT_TRUE(dialogs.Messages().empty());
}

TEST(FileList, MissingDataFileOpensNothing) {
    TempDir dir;
    ASSERT_EQ(WriteEventFile(dir / "lost.EVT", BlankHeaderCopy(), AnalysisParameters{}, EventTable{},
                             "gone.abf"),
              "");
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_FALSE(OpenFromFileList(ws, dir / "lost.EVT", dialogs));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].text,
              "The original data file gone.abf does not exist in this directory.  Please make sure "
              "the event file and the original data file are present in the same directory.");
    EXPECT_FALSE(ws.recording);
}

// A damaged event file is refused before its data file is opened: the open
// recording and its events stay, and nobody is asked to save them.
TEST(FileList, ADamagedEventFileChangesNothing) {
    TempDir dir;
    auto cell = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(4096, 0));
    auto bytes = BuildEventFile(cell->HeaderBytes(), AnalysisParameters{}, {}, "cell.abf");
    cell.reset();
    le::Put(std::span<uint8_t>(bytes), evt::kEventCount, int32_t(1000));  // far past the end
    ASSERT_EQ(WriteFileAtomic(dir / "cell.EVT", bytes), "");

    Workspace ws;
    ws.recording = test::MakeRecording(dir / "other.abf", std::vector<int16_t>(2048, 5));
    const Recording* open = ws.recording.get();
    std::mt19937 rng(5);
    for (int k = 0; k < 4; ++k) ws.events.Append(RandomRecord(rng, 1000));
    const EventTable events = ws.events;
    ScriptedDialogs dialogs;
    EXPECT_FALSE(OpenFromFileList(ws, dir / "cell.EVT", dialogs));
    ASSERT_EQ(dialogs.Transcript().size(), 1u);  // no question about saving
    EXPECT_EQ(dialogs.Transcript()[0].caption, texts::kDamagedFileCaption);
    EXPECT_EQ(dialogs.Transcript()[0].text.rfind("cell.EVT: ", 0), 0u);
    EXPECT_EQ(ws.recording.get(), open);
    EXPECT_EQ(ws.events, events);
}

}  // namespace
}  // namespace vess
