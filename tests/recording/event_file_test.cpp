#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/random_events.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

std::vector<uint8_t> RandomBytes(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (auto& x : b) x = uint8_t(rng());
    return b;
}

std::vector<EventRecord> RandomRecords(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<EventRecord> v;
    for (std::size_t k = 0; k < n; ++k) v.push_back(RandomRecord(rng, 30000));
    return v;
}

void WriteBytes(const std::filesystem::path& p, const std::vector<uint8_t>& b) {
    ASSERT_EQ(WriteFileAtomic(p, b), "");
}

TEST(EventFileFormat, FieldsAtTheirOffsetsAndHeaderCopyKeptElsewhere) {
    const auto header = RandomBytes(2048, 1);
    const auto records = RandomRecords(3, 2);
    const auto file = BuildEventFile(header, SomeParams(), records, "cell1.abf");
    ASSERT_EQ(file.size(), 2048u + 3 * 76);
    EXPECT_EQ(le::GetText(file, 294, 16), "Vessantorium 5.0");
    EXPECT_EQ(le::Get<float>(file, 1954), 21.25f);
    EXPECT_EQ(le::Get<int16_t>(file, 1958), 1);
    EXPECT_EQ(le::Get<int16_t>(file, 1960), 3);
    EXPECT_EQ(le::Get<int32_t>(file, 1986), 3);
    EXPECT_EQ(le::Get<float>(file, 1990), 7.5f);
    EXPECT_EQ(le::Get<int32_t>(file, 1994), 12345);
    EXPECT_EQ(le::Get<int32_t>(file, 1998), 4321);
    EXPECT_EQ(le::Get<int32_t>(file, 2002), 30000);
    EXPECT_EQ(le::Get<float>(file, 2006), 0.37f);
    EXPECT_EQ(le::Get<int32_t>(file, 2010), 500);
    EXPECT_EQ(le::GetText(file, 2014, 34), "cell1.abf" + std::string(25, ' '));
    // Bytes that no field covers are the header's.
    for (std::size_t i : {0u, 293u, 310u, 1953u, 1962u, 1985u})
        EXPECT_EQ(file[i], header[i]) << "offset " << i;
    std::vector<uint8_t> second(76);
    WriteEventRecord(records[1], second);
    EXPECT_TRUE(std::equal(second.begin(), second.end(), file.begin() + 2048 + 76));
}

TEST(EventFileFormat, ByteExactRoundTrip) {
    TempDir dir;
    const auto header = RandomBytes(2048, 3);
    const auto records = RandomRecords(250, 4);
    EventTable table;
    table.Assign(records);
    const auto path = dir / "a.EVT";
    ASSERT_EQ(WriteEventFile(path, header, SomeParams(), table, "a.abf"), "");
    const auto first = *ReadFileBytes(path);

    const auto read = ReadEventFile(path);
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::Current);
    EXPECT_EQ(read.records, records);
    EXPECT_EQ(read.params, SomeParams());
    EXPECT_EQ(read.storedName, "a.abf");
    EXPECT_EQ(read.eventCount, 250);
    // Written again from what was read (its own header copy): the same bytes.
    EXPECT_EQ(BuildEventFile(read.header, read.params, read.records, read.storedName), first);
}

// An extended header is written whole under the records; its long comment takes the
// 56-character comment unless that one is blank (as in the sample recordings).
TEST(EventFileFormat, ExtendedHeaderKeepsItsTailAndGetsTheLongComment) {
    auto header = RandomBytes(6144, 6);
    le::PutText(header, 310, 56, "bath applied drug");
    const auto records = RandomRecords(2, 7);
    const auto file = BuildEventFile(header, SomeParams(), records, "e.abf");
    ASSERT_EQ(file.size(), 6144u);
    EXPECT_EQ(le::GetText(file, 5154, 128), "bath applied drug" + std::string(128 - 17, ' '));
    EXPECT_EQ(file[6000], header[6000]);
    EXPECT_EQ(file[2048 + 2 * 76], header[2048 + 2 * 76]);
    EXPECT_EQ(ParseEventFile(file).records, records);

    // Enough records to run past the extended header make the file longer.
    const auto many = RandomRecords(100, 8);
    EXPECT_EQ(BuildEventFile(header, SomeParams(), many, "e.abf").size(), 2048u + 100 * 76);

    le::PutText(header, 5154, 128, "long comment typed in the acquisition program");
    for (char blank : {' ', '\0'}) {
        std::fill_n(header.begin() + 310, 56, uint8_t(blank));
        EXPECT_EQ(le::GetText(BuildEventFile(header, SomeParams(), {}, "e.abf"), 5154, 128),
                  le::GetText(header, 5154, 128));
    }
}

TEST(EventFileFormat, DamagedFilesAreRefusedWithoutReadingPastTheEnd) {
    const auto good = BuildEventFile(RandomBytes(2048, 10), SomeParams(), RandomRecords(4, 11), "d");
    EXPECT_EQ(ParseEventFile(std::span(good).first(2047)).problem, EventFileProblem::TooShort);
    EXPECT_EQ(ParseEventFile({}).problem, EventFileProblem::TooShort);
    // One byte short of the last record.
    EXPECT_EQ(ParseEventFile(std::span(good).first(good.size() - 1)).problem,
              EventFileProblem::BadCount);
    for (int32_t count : {-1, 5, 0x7fffffff, int32_t(0x80000000)}) {
        auto bad = good;
        le::Put(bad, 1986, count);
        const auto read = ParseEventFile(bad);
        EXPECT_EQ(read.problem, EventFileProblem::BadCount) << count;
        EXPECT_TRUE(read.records.empty());
        EXPECT_NE(DescribeProblem(read), "");
    }
}

// A header made the way older versions wrote it, with 24-byte records.
std::vector<uint8_t> OldFile(std::string_view creator, const std::vector<std::array<uint8_t, 24>>& recs,
                             int16_t peakDirection, int16_t numberPointsPeak) {
    std::vector<uint8_t> b(2048, 0);
    le::PutText(b, 294, 16, creator);
    le::Put(b, 1958, peakDirection);
    le::Put(b, 1960, numberPointsPeak);
    le::Put(b, 1986, int32_t(recs.size()));
    le::PutText(b, 2014, 34, "old.abf");
    for (const auto& r : recs) b.insert(b.end(), r.begin(), r.end());
    return b;
}

TEST(EventFileFormat, Version3RecordsAreTheFirst24BytesOfTheCurrentLayout) {
    EventRecord r = RandomRecords(1, 12)[0];
    std::vector<uint8_t> full(76);
    WriteEventRecord(r, full);
    std::array<uint8_t, 24> rec{};
    std::copy_n(full.begin(), 24, rec.begin());
    const auto read = ParseEventFile(OldFile("Vessantorium 3.0", {rec}, -1, 2));
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::V3);
    ASSERT_EQ(read.records.size(), 1u);
    // Past the 24 bytes: defaults, but for the header's peak direction.
    EventRecord tail;
    tail.peakDirection = -1;
    std::vector<uint8_t> expected(76);
    WriteEventRecord(tail, expected);
    std::copy_n(full.begin(), 24, expected.begin());
    EXPECT_EQ(read.records[0], ReadEventRecord(expected));
}

TEST(EventFileFormat, OldestRecordsAreWidenedFieldByField) {
    std::array<uint8_t, 24> rec{};
    le::Put(std::span(rec), 0, 12.5f);
    le::Put(std::span(rec), 4, int16_t(-300));
    le::Put(std::span(rec), 6, int16_t(4));
    le::Put(std::span(rec), 8, int16_t(5));
    le::Put(std::span(rec), 10, int16_t(6));
    le::Put(std::span(rec), 12, int16_t(-7));
    le::Put(std::span(rec), 14, 2.25f);
    rec[18] = 200;
    const auto read = ParseEventFile(OldFile("Vessantorium 2.1", {rec, rec}, 1, 1));
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::Oldest);
    ASSERT_EQ(read.records.size(), 2u);
    EventRecord expected;
    expected.time = 12.5f;
    expected.amplitude = -300;
    expected.noise = 4;
    expected.riseTime = 5;
    expected.decayTime = 6;
    expected.baseline = -7;
    expected.area = 2.25f;
    expected.group = 200;
    expected.peakDirection = 1;
    EXPECT_EQ(read.records[1], expected);
}

// ---- Commands ---------------------------------------------------------------

struct Fixture {
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;

    explicit Fixture(const std::string& dataName = "cell.abf") {
        std::vector<int16_t> samples(4096, 0);
        ws.recording = test::MakeRecording(dir / dataName, samples);
    }
    void AddEvents(std::size_t n, unsigned seed) { ws.events.Assign(RandomRecords(n, seed)); }
};

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
    // The header copy is the recording's own, whole.
    const auto& h = f.ws.recording->HeaderBytes();
    const auto bytes = *ReadFileBytes(f.dir / "out.EVT");
    EXPECT_TRUE(std::equal(h.begin(), h.begin() + 294, bytes.begin()));
}

TEST(EventFileCommands, ReplaceRefusedLeavesTheFileAlone) {
    Fixture f;
    f.AddEvents(2, 21);
    const auto path = f.dir / "keep.evt";
    WriteBytes(path, {1, 2, 3});
    f.dialogs.AnswerSaveFile(path.string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveEventFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.dialogs.Transcript().back().caption, "Replace File");
    EXPECT_EQ(*ReadFileBytes(path), (std::vector<uint8_t>{1, 2, 3}));
}

TEST(EventFileCommands, OpenAsksToSavePreviousThenLoadsAsOneUndoableChange) {
    Fixture f;
    f.AddEvents(3, 22);
    const auto saved = f.ws.events;
    f.dialogs.AnswerSaveFile((f.dir / "first.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(f.ws, f.dialogs));

    f.AddEvents(7, 23);
    const auto current = f.ws.events;
    f.ws.params().NumberPointsPeak = 9;
    f.dialogs.ClearTranscript();
    f.dialogs.AnswerYesNo(false).AnswerOpenFile((f.dir / "first.EVT").string());
    ASSERT_TRUE(OpenEventFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.dialogs.Transcript()[0].text,
              "There are 7 events analysed for cell.abf.  Do you want to save the event data?");
    EXPECT_EQ(f.ws.events, saved);
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);
    EXPECT_FALSE(f.ws.history.Modified());
    EXPECT_TRUE(f.dialogs.AllAnswersUsed());

    ASSERT_TRUE(f.ws.history.Undo(f.ws.events));
    EXPECT_EQ(f.ws.events, current);
}

TEST(EventFileCommands, RefusalsChangeNothing) {
    Fixture f;
    f.AddEvents(2, 24);
    const auto before = f.ws.events;
    const auto params = f.ws.params();

    auto foreign = BuildEventFile(BlankHeaderCopy(), SomeParams(), {}, "cell.abf");
    le::PutText(foreign, 294, 16, "SomethingElse5.0");
    WriteBytes(f.dir / "foreign.EVT", foreign);
    WriteBytes(f.dir / "other.EVT", BuildEventFile(BlankHeaderCopy(), SomeParams(), {}, "other.abf"));
    auto lying = BuildEventFile(BlankHeaderCopy(), SomeParams(), RandomRecords(2, 25), "cell.abf");
    le::Put(lying, 1986, int32_t(1000));
    WriteBytes(f.dir / "lying.EVT", lying);
    AnalysisParameters slow = SomeParams();
    slow.PeriodToSearchMax = 3'600'000;  // 3.6 s in us, over the bound of one second
    WriteBytes(f.dir / "slow.EVT", BuildEventFile(BlankHeaderCopy(), slow, {}, "cell.abf"));

    struct Case { const char* file; std::string caption; std::string text; };
    const Case cases[] = {
        {"foreign.EVT", "Not an Event File",
         "This file is not an event file.  Please check the file and try again."},
        {"other.EVT", "File Not Matching",
         "This event file was analysed from other.abf and does not match cell.abf.  Please find "
         "the appropriate event file."},
        {"lying.EVT", "Damaged File", ""},
        {"slow.EVT", "Damaged File",
         "slow.EVT: Its detection parameters cannot be used (PeriodToSearchMax is 3600000 us, "
         "outside 0 to 1000000 us); it is damaged and nothing is loaded."},
    };
    for (const auto& c : cases) {
        f.dialogs.ClearTranscript();
        f.dialogs.AnswerYesNo(false).AnswerOpenFile((f.dir / c.file).string());
        EXPECT_FALSE(ShowFailure(f.dialogs, OpenEventFileCommand(f.ws, f.dialogs))) << c.file;
        const auto messages = f.dialogs.Messages();
        ASSERT_EQ(messages.size(), 1u) << c.file;
        EXPECT_EQ(messages[0].caption, c.caption);
        if (!c.text.empty()) {
            EXPECT_EQ(messages[0].text, c.text);
        }
        EXPECT_EQ(f.ws.events, before);
        EXPECT_EQ(f.ws.params(), params);
        EXPECT_FALSE(f.ws.history.CanUndo());
    }
}

// Open Event offers to save the current events first; a cancelled or failed save opens nothing.
TEST(EventFileCommands, AFailedOrCancelledSaveStopsOpenEvent) {
    Fixture f;
    f.AddEvents(487, 27);
    const auto before = f.ws.events;
    // Cancelled in the save dialog.
    f.dialogs.AnswerYesNo(true).AnswerSaveFile(std::nullopt);
    EXPECT_FALSE(OpenEventFileCommand(f.ws, f.dialogs));
    // A save that fails: its folder does not exist.
    f.dialogs.AnswerYesNo(true).AnswerSaveFile((f.dir / "gone" / "x.EVT").string());
    EXPECT_FALSE(ShowFailure(f.dialogs, OpenEventFileCommand(f.ws, f.dialogs)));
    EXPECT_NE(f.dialogs.Messages().back().text.find("No such file or directory"), std::string::npos);
    EXPECT_TRUE(f.dialogs.AllAnswersUsed());  // no open dialog (an unexpected one throws)
    EXPECT_EQ(f.ws.events, before);
}

// A data file name longer than 34 characters is stored cut and never matches again.
TEST(EventFileCommands, LongDataFileNameNeverMatches) {
    const std::string name = "a_very_long_recording_name_of_cell_42.abf";  // 41 characters
    Fixture f(name);
    f.AddEvents(1, 26);
    f.dialogs.AnswerSaveFile((f.dir / "long.EVT").string());
    ASSERT_TRUE(SaveEventFileCommand(f.ws, f.dialogs));
    f.dialogs.ClearTranscript();
    f.dialogs.AnswerYesNo(false).AnswerOpenFile((f.dir / "long.EVT").string());
    EXPECT_FALSE(ShowFailure(f.dialogs, OpenEventFileCommand(f.ws, f.dialogs)));
    ASSERT_EQ(f.dialogs.Messages().size(), 1u);
    EXPECT_EQ(f.dialogs.Messages()[0].text,
              texts::FileNotMatchingText(name.substr(0, 34), name));
}

TEST(EventFileCommands, OlderVersionIsConvertedAndRewrittenOnYes) {
    Fixture f;
    std::array<uint8_t, 24> rec{};
    le::Put(std::span(rec), 0, 3.5f);
    le::Put(std::span(rec), 4, int32_t(-77));
    const auto old = OldFile("Vessantorium 3.0", {rec, rec, rec}, -1, 0);
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

}  // namespace
}  // namespace vess
