// Event files of an ABF 2 recording: the header copy is an ABF 1.x header,
// the file reads back byte for byte, and choosing it in the file list or
// from the menu opens its ABF 2 data file and its events.
#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/file_list.h"
#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/random_events.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "support/abf2_bytes.h"
#include "support/test_recording.h"

namespace vess {
namespace {
class Abf2EventFile : public ::testing::Test {
protected:
    test::TempDir dir;

    // cell.abf: one ABF 2 channel of 2048 points, opened in ws with six events.
    void OpenWithEvents(Workspace& ws, ScriptedDialogs& dialogs) {
        test::Abf2Layout abfLayout;
        abfLayout.channels[0].telegraphEnable = 1;
        abfLayout.channels[0].telegraphAdditGain = 2;
        std::vector<int16_t> samples(2048);
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(i % 300);
        const auto bytes = test::Abf2Bytes(abfLayout, samples);
        ASSERT_EQ(WriteFileAtomic(dir / "cell.abf", bytes), "");
        ASSERT_TRUE(OpenDataFile(ws, dir / "cell.abf", dialogs));
        std::mt19937 rng(8);
        for (int k = 0; k < 6; ++k) ws.events.Append(RandomRecord(rng, 1500));
    }
};

TEST_F(Abf2EventFile, SavedFileCarriesAnAbfOneHeaderAndReadsBackByteForByte) {
    Workspace ws;
    ScriptedDialogs dialogs;
    OpenWithEvents(ws, dialogs);
    const std::vector<uint8_t> header = ws.recording->HeaderBytes();
    dialogs.AnswerSaveFile((dir / "cell.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(ws, dialogs));
    const std::vector<uint8_t> saved = *ReadFileBytes(dir / "cell.EVT");

    // The extended header copy is kept whole (tests/recording/event_file_test.cpp
    // checks what lies past the records); 6 records end before byte 6144.
    ASSERT_EQ(saved.size(), header.size());
    EXPECT_EQ(le::GetText(saved, 0, 4), "ABF ");
    EXPECT_EQ(le::GetText(saved, evt::kCreator, evt::kCreatorChars), texts::kEventFileCreator.substr(0, 16));

    // Chosen in the file list (any case of .evt): the data file opens, then the
    // events; saving them again writes the same bytes.
    EXPECT_TRUE(IsEventFileName(dir / "CELL.Evt"));
    EXPECT_FALSE(IsEventFileName(dir / "cell.abf"));
    Workspace again;
    ScriptedDialogs listDialogs;
    ASSERT_TRUE(OpenFromFileList(again, dir / "cell.EVT", listDialogs));
    EXPECT_TRUE(listDialogs.Messages().empty());
    ASSERT_TRUE(again.recording && again.recording->Abf2());
    EXPECT_EQ(again.events, ws.events);
    listDialogs.AnswerSaveFile((dir / "again.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(again, listDialogs));
    EXPECT_EQ(*ReadFileBytes(dir / "again.EVT"), saved);
}

TEST(FileList, MissingDataFileOpensNothing) {
    test::TempDir dir;
    ASSERT_EQ(WriteEventFile(dir / "lost.EVT", BlankHeaderCopy(), AnalysisParameters{}, EventTable{},
                             "gone.abf"),
              "");
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, OpenFromFileList(ws, dir / "lost.EVT", dialogs)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_NE(dialogs.Messages()[0].text.find("gone.abf does not exist"), std::string::npos);
    EXPECT_FALSE(ws.recording);
}

// A damaged event file is refused before its data file opens: nothing changes, nothing is asked.
TEST(FileList, ADamagedEventFileChangesNothing) {
    test::TempDir dir;
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
    EXPECT_FALSE(ShowFailure(dialogs, OpenFromFileList(ws, dir / "cell.EVT", dialogs)));
    ASSERT_EQ(dialogs.Transcript().size(), 1u);  // no question about saving
    EXPECT_EQ(dialogs.Transcript()[0].caption, texts::kDamagedFileCaption);
    EXPECT_EQ(dialogs.Transcript()[0].text.rfind("cell.EVT: ", 0), 0u);
    EXPECT_EQ(ws.recording.get(), open);
    EXPECT_EQ(ws.events, events);
}

}  // namespace
}  // namespace vess
