// Saving and opening event and parameter files through the dialogs, from the
// menu and from the file list, for ABF 1 and ABF 2 recordings.
#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/file_list.h"
#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/parameter_file.h"
#include "recording/random_events.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "support/abf2_bytes.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

void WriteBytes(const std::filesystem::path& p, const std::vector<uint8_t>& b) { ASSERT_EQ(WriteFileAtomic(p, b), ""); }

// A recording of 4096 points of 25 us open in ws.
struct Fixture {
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;

    explicit Fixture(const std::string& dataName = "cell.abf") {
        ws.recording = test::MakeRecording(dir / dataName, std::vector<int16_t>(4096, 0), 25);
    }
    void AddEvents(std::size_t n, unsigned seed) { ws.events.Assign(RandomRecords(n, seed)); }
    bool Open(const std::string& name) {
        dialogs.ClearTranscript();
        dialogs.AnswerYesNo(false).AnswerOpenFile((dir / name).string());
        return ShowFailure(dialogs, OpenEventFileCommand(ws, dialogs));
    }
};

// The extension is added, the events marked saved, the header copy is the
// recording's own; an existing file is replaced only after the question.
TEST(EventFileCommands, SaveAppendsExtensionAndMarksSaved) {
    Fixture f;
    f.AddEvents(5, 20);
    f.ws.history.Checkpoint(EventTable{}, "detect");
    ASSERT_TRUE(f.ws.history.Modified());
    f.dialogs.AnswerSaveFile((f.dir / "out").string());
    ASSERT_TRUE(SaveEventFileCommand(f.ws, f.dialogs));
    EXPECT_FALSE(f.ws.history.Modified());
    const auto read = ReadEventFile(f.dir / "out.EVT");
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.records, f.ws.events.Records());
    EXPECT_EQ(read.storedName, "cell.abf");
    const auto& h = f.ws.recording->HeaderBytes();
    const auto bytes = *ReadFileBytes(f.dir / "out.EVT");
    EXPECT_TRUE(std::equal(h.begin(), h.begin() + 294, bytes.begin()));
    f.AddEvents(2, 21);
    f.dialogs.AnswerSaveFile((f.dir / "out.EVT").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveEventFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.dialogs.Transcript().back().caption, "Replace File");
    EXPECT_EQ(*ReadFileBytes(f.dir / "out.EVT"), bytes);
}

// Open Event offers to save the current events first; a cancelled or failed
// save opens nothing.
TEST(EventFileCommands, OpenAsksToSavePreviousThenLoadsAsOneUndoableChange) {
    Fixture f;
    f.AddEvents(3, 22);
    const auto saved = f.ws.events;
    f.dialogs.AnswerSaveFile((f.dir / "first.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(f.ws, f.dialogs));
    f.AddEvents(7, 23);
    const auto current = f.ws.events;
    f.ws.params().NumberPointsPeak = 9;
    f.dialogs.AnswerYesNo(true).AnswerSaveFile(std::nullopt);
    EXPECT_FALSE(OpenEventFileCommand(f.ws, f.dialogs));
    f.dialogs.AnswerYesNo(true).AnswerSaveFile((f.dir / "gone" / "x.EVT").string());  // no such folder
    EXPECT_FALSE(ShowFailure(f.dialogs, OpenEventFileCommand(f.ws, f.dialogs)));
    EXPECT_NE(f.dialogs.Messages().back().text.find("No such file or directory"), std::string::npos);
    EXPECT_TRUE(f.dialogs.AllAnswersUsed());  // no open dialog (an unexpected one throws)
    EXPECT_EQ(f.ws.events, current);
    ASSERT_TRUE(f.Open("first.EVT"));
    EXPECT_EQ(f.dialogs.Transcript()[0].text,
              "There are 7 events analysed for cell.abf.  Do you want to save the event data?");
    EXPECT_EQ(f.ws.events, saved);
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);
    EXPECT_FALSE(f.ws.history.Modified());
    EXPECT_TRUE(f.dialogs.AllAnswersUsed());
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(f.ws.events, current);
}

// A data file name longer than 34 characters is stored cut and never matches again.
TEST(EventFileCommands, RefusalsChangeNothing) {
    const std::string name = "a_very_long_recording_name_of_cell_42.abf";  // 41 characters
    Fixture f(name);
    f.AddEvents(1, 26);
    f.dialogs.AnswerSaveFile((f.dir / "long.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(f.ws, f.dialogs));
    f.AddEvents(2, 24);
    const auto before = f.ws.events;
    const auto params = f.ws.params();
    auto foreign = BuildEventFile(BlankHeaderCopy(), SomeParams(), {}, name);
    le::PutText(foreign, 294, 16, "SomethingElse5.0");
    WriteBytes(f.dir / "foreign.EVT", foreign);
    WriteBytes(f.dir / "other.EVT", BuildEventFile(BlankHeaderCopy(), SomeParams(), {}, "other.abf"));
    auto lying = BuildEventFile(BlankHeaderCopy(), SomeParams(), RandomRecords(2, 25), name);
    le::Put(lying, 1986, int32_t(1000));
    WriteBytes(f.dir / "lying.EVT", lying);
    AnalysisParameters slow = SomeParams();
    slow.PeriodToSearchMax = 3'600'000;  // 3.6 s in us, over the bound of one second
    WriteBytes(f.dir / "slow.EVT", BuildEventFile(BlankHeaderCopy(), slow, {}, name));
    const struct {
        const char* file;
        std::string caption, text;
    } cases[] = {
        {"foreign.EVT", "Not an Event File", "This file is not an event file.  Please check the file and try again."},
        {"other.EVT", "File Not Matching",
         "This event file was analysed from other.abf and does not match " + name +
             ".  Please find the appropriate event file."},
        {"long.EVT", "File Not Matching", texts::FileNotMatchingText(name.substr(0, 34), name)},
        {"lying.EVT", "Damaged File", ""},
        {"slow.EVT", "Damaged File",
         "slow.EVT: Its detection parameters cannot be used (PeriodToSearchMax is 3600000 us, "
         "outside 0 to 1000000 us); it is damaged and nothing is loaded."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        EXPECT_FALSE(f.Open(c.file));
        const auto messages = f.dialogs.Messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].caption, c.caption);
        EXPECT_EQ(c.text.empty() ? c.text : messages[0].text, c.text);
        EXPECT_EQ(f.ws.events, before);
        EXPECT_EQ(f.ws.params(), params);
        EXPECT_FALSE(f.ws.history.CanUndo());
    }
}

TEST(EventFileCommands, OlderVersionIsConvertedAndRewrittenOnYes) {
    Fixture f;
    std::array<uint8_t, 24> rec{};
    le::Put(std::span(rec), 0, 3.5f);
    le::Put(std::span(rec), 4, int32_t(-77));
    const auto old = OldEventFile("Vessantorium 3.0", {rec, rec, rec}, -1, 0);
    const auto path = f.dir / "old.EVT";
    WriteBytes(path, old);
    f.dialogs.AnswerYesNo(false);
    ASSERT_TRUE(OpenEventFile(f.ws, path, f.dialogs));
    EXPECT_EQ(f.dialogs.Transcript().back().caption, "Older Version Event File");
    EXPECT_EQ(*ReadFileBytes(path), old);  // No leaves the file as it was
    ASSERT_EQ(f.ws.events.Count(), 3);
    EXPECT_EQ(f.ws.events[3].amplitude, -77);
    EXPECT_EQ(f.ws.events[3].peakDirection, -1);
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);  // 0 in the file
    f.dialogs.AnswerYesNo(true);
    ASSERT_TRUE(OpenEventFile(f.ws, path, f.dialogs));
    const auto rewritten = ReadEventFile(path);
    ASSERT_TRUE(rewritten.Ok());
    EXPECT_EQ(rewritten.version, EventFileVersion::Current);
    EXPECT_EQ(rewritten.records, f.ws.events.Records());
    EXPECT_EQ(rewritten.storedName, "old.abf");
    EXPECT_TRUE(f.dialogs.AllAnswersUsed());
}

TEST(EventFileCommands, SaveAndResetQuestion) {
    Fixture f;
    EXPECT_TRUE(ConfirmResetForParameterChange(f.ws, f.dialogs));  // no events: no question
    EXPECT_TRUE(f.dialogs.Transcript().empty());
    f.AddEvents(4, 27);
    const auto before = f.ws.events;
    f.dialogs.AnswerYesNo(false);
    EXPECT_FALSE(ConfirmResetForParameterChange(f.ws, f.dialogs));
    EXPECT_EQ(f.dialogs.Transcript().back().text,
              "There are 4 events analysed.  You have to reset all the event data from previous "
              "settings.  Would you like to save and reset the event data?");
    EXPECT_EQ(f.ws.events, before);
    f.dialogs.AnswerYesNo(true).AnswerSaveFile(std::nullopt);  // save cancelled
    EXPECT_FALSE(ConfirmResetForParameterChange(f.ws, f.dialogs));
    EXPECT_EQ(f.ws.events, before);
    f.dialogs.AnswerYesNo(true).AnswerSaveFile((f.dir / "reset.EVT").string());
    EXPECT_TRUE(ConfirmResetForParameterChange(f.ws, f.dialogs));
    EXPECT_TRUE(f.ws.events.Empty());
    EXPECT_EQ(ReadEventFile(f.dir / "reset.EVT").records, before.Records());
    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(f.ws.events, before);
}

// Without a recording a blank ABF header is written, the extension added;
// loading keeps the recording and its events and changes only the
// parameters, an event file giving its NumberPointsPeak too (0 becoming 1).
TEST(ParameterFile, LoadChangesOnlyTheParameters) {
    TempDir dir;
    Workspace blank;
    ScriptedDialogs dialogs;
    dialogs.AnswerSaveFile((dir / "blank").string());
    ASSERT_TRUE(SaveParameterFileCommand(blank, dialogs));
    const auto bytes = *ReadFileBytes(dir / "blank.PAR");
    EXPECT_EQ(le::GetText(bytes, 0, 4), "ABF ");
    EXPECT_EQ(le::GetText(bytes, 2014, 34), std::string(34, ' '));

    Fixture f;
    f.AddEvents(3, 28);
    const auto events = f.ws.events;
    const Recording* rec = f.ws.recording.get();
    WriteBytes(f.dir / "q.PAR", BuildParameterFile(rec->HeaderBytes(), SomeParams(), 0, "other.abf"));
    f.dialogs.AnswerOpenFile((f.dir / "q.PAR").string());
    ASSERT_TRUE(LoadParameterFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.ws.recording.get(), rec);
    EXPECT_EQ(f.ws.events, events);
    EXPECT_EQ(f.ws.params().AreaThreshold, 21.25f);
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);
    for (const int16_t points : {0, 3}) {
        AnalysisParameters inFile = SomeParams();
        inFile.NumberPointsPeak = points;
        WriteBytes(f.dir / "e.EVT", BuildEventFile(BlankHeaderCopy(), inFile, {}, "x"));
        f.ws.params().NumberPointsPeak = 6;
        f.dialogs.AnswerOpenFile((f.dir / "e.EVT").string());
        ASSERT_TRUE(LoadParameterFileCommand(f.ws, f.dialogs));
        EXPECT_EQ(f.ws.params().NumberPointsPeak, points ? points : 1);
    }
}

TEST(ParameterFile, ForeignOrShortFilesAreRefused) {
    Fixture f;
    f.ws.params() = SomeParams();
    auto foreign = BuildParameterFile(BlankHeaderCopy(), AnalysisParameters{}, 0, "x");
    le::PutText(foreign, 294, 16, "Other program");
    WriteBytes(f.dir / "f.PAR", foreign);
    WriteBytes(f.dir / "s.PAR", {'s', 'h', 'o', 'r', 't'});
    for (const char* name : {"f.PAR", "s.PAR", "missing.PAR"}) {
        f.dialogs.ClearTranscript();
        f.dialogs.AnswerOpenFile((f.dir / name).string());
        EXPECT_FALSE(ShowFailure(f.dialogs, LoadParameterFileCommand(f.ws, f.dialogs)));
        ASSERT_EQ(f.dialogs.Messages().size(), 1u) << name;
        EXPECT_EQ(f.dialogs.Messages()[0].caption, "Not a Parameter File");
        EXPECT_EQ(f.ws.params(), SomeParams());
    }
}

TEST(SuggestParameters, PresetsAndResetFirst) {
    Fixture f;  // 25 us a point: PeriodBaselineAverage 250 us
    f.AddEvents(3, 29);
    int resets = 0;
    auto reset = [&] { ++resets; f.ws.events.Clear(); return true; };
    const auto r3 = SuggestParameters(f.ws, f.dialogs, 3, reset);
    EXPECT_TRUE(r3.applied);
    EXPECT_EQ(r3.combo1Index, 1);
    EXPECT_EQ(resets, 1);
    const AnalysisParameters& a = f.ws.params();
    EXPECT_EQ(a.PeriodBaselineAverage, 250);  // ten points
    EXPECT_EQ(a.PeriodToSearchMax, 10000);
    ASSERT_EQ(f.dialogs.Messages().size(), 1u);
    const auto r2 = SuggestParameters(f.ws, f.dialogs, 2, reset);
    EXPECT_EQ(resets, 1);  // no events any more: no reset
    EXPECT_EQ(r2.combo1Index, 0);
    EXPECT_EQ(a.PeriodToSearchMax, 20000);
    // A declined reset changes nothing.
    f.ws.events.Append(EventRecord{});
    const auto before = f.ws.params();
    EXPECT_FALSE(SuggestParameters(f.ws, f.dialogs, 3, [] { return false; }).applied);
    EXPECT_EQ(f.ws.params(), before);
}

// The header copy of an ABF 2 recording's event file is an ABF 1.x header
// (kept whole: 6 records end before byte 6144). Chosen in the file list (any
// case of .evt), the event file opens its data file, then the events; saving
// them again writes the same bytes.
TEST(Abf2EventFile, SavedFileCarriesAnAbfOneHeaderAndReadsBackByteForByte) {
    TempDir dir;
    test::Abf2Layout layout;
    layout.channels[0].telegraphEnable = 1;
    layout.channels[0].telegraphAdditGain = 2;
    std::vector<int16_t> samples(2048);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(i % 300);
    WriteBytes(dir / "cell.abf", test::Abf2Bytes(layout, samples));
    Workspace ws;
    ScriptedDialogs dialogs;
    ASSERT_TRUE(OpenDataFile(ws, dir / "cell.abf", dialogs));
    ws.events.Assign(RandomRecords(6, 8));
    dialogs.AnswerSaveFile((dir / "cell.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(ws, dialogs));
    const std::vector<uint8_t> saved = *ReadFileBytes(dir / "cell.EVT");
    ASSERT_EQ(saved.size(), ws.recording->HeaderBytes().size());
    EXPECT_EQ(le::GetText(saved, 0, 4), "ABF ");
    EXPECT_EQ(le::GetText(saved, evt::kCreator, evt::kCreatorChars), texts::kEventFileCreator.substr(0, 16));

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

// A missing data file opens nothing; a damaged event file is refused before
// its data file opens: nothing changes, nothing is asked.
TEST(FileList, MissingDataFileOrDamagedEventFileChangesNothing) {
    Fixture f("other.abf");
    WriteBytes(f.dir / "lost.EVT", BuildEventFile(BlankHeaderCopy(), AnalysisParameters{}, {}, "gone.abf"));
    EXPECT_FALSE(ShowFailure(f.dialogs, OpenFromFileList(f.ws, f.dir / "lost.EVT", f.dialogs)));
    ASSERT_EQ(f.dialogs.Messages().size(), 1u);
    EXPECT_NE(f.dialogs.Messages()[0].text.find("gone.abf does not exist"), std::string::npos);

    test::MakeRecording(f.dir / "cell.abf", std::vector<int16_t>(4096, 0));
    auto bytes = BuildEventFile(f.ws.recording->HeaderBytes(), AnalysisParameters{}, {}, "cell.abf");
    le::Put(std::span<uint8_t>(bytes), evt::kEventCount, int32_t(1000));  // far past the end
    WriteBytes(f.dir / "cell.EVT", bytes);
    const Recording* open = f.ws.recording.get();
    f.AddEvents(4, 30);
    const EventTable events = f.ws.events;
    f.dialogs.ClearTranscript();
    EXPECT_FALSE(ShowFailure(f.dialogs, OpenFromFileList(f.ws, f.dir / "cell.EVT", f.dialogs)));
    ASSERT_EQ(f.dialogs.Transcript().size(), 1u);  // no question about saving
    EXPECT_EQ(f.dialogs.Transcript()[0].caption, texts::kDamagedFileCaption);
    EXPECT_EQ(f.dialogs.Transcript()[0].text.rfind("cell.EVT: ", 0), 0u);
    EXPECT_EQ(f.ws.recording.get(), open);
    EXPECT_EQ(f.ws.events, events);
}

}  // namespace
}  // namespace vess
