#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/parameter_file.h"
#include "recording/random_events.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

// Complex peaks are never in a file: they tell what was read from what was kept.
AnalysisParameters Custom() {
    AnalysisParameters p = SomeParams();
    p.ComplexPeak = true;
    return p;
}

struct Fixture {
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
    Fixture() {
        ws.recording = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(2048, 0), 25);
        std::mt19937 rng(1);
        for (int k = 0; k < 3; ++k) ws.events.Append(RandomRecord(rng, 100));
    }
};

TEST(ParameterFile, LayoutAndByteExactRoundTrip) {
    Fixture f;
    f.ws.params() = Custom();
    f.dialogs.AnswerSaveFile((f.dir / "p").string());
    ASSERT_TRUE(SaveParameterFileCommand(f.ws, f.dialogs));
    const auto bytes = *ReadFileBytes(f.dir / "p.PAR");
    ASSERT_EQ(bytes.size(), 2048u);
    EXPECT_EQ(le::GetText(bytes, 294, 16), "Vessantorium 3.0");
    EXPECT_EQ(le::Get<int32_t>(bytes, 1986), 3);
    EXPECT_EQ(le::GetText(bytes, 2014, 34), "cell.abf" + std::string(26, ' '));
    // NumberPointsPeak is not written: the header's own bytes stay at 1960.
    const auto& header = f.ws.recording->HeaderBytes();
    EXPECT_EQ(bytes[1960], header[1960]);
    EXPECT_EQ(bytes[1961], header[1961]);
    EXPECT_TRUE(std::equal(header.begin(), header.begin() + 294, bytes.begin()));

    // What a header holds at 1960 (7 here) is no NumberPointsPeak of a parameter file.
    auto headerAt1960 = bytes;
    le::Put(std::span<uint8_t>(headerAt1960), 1960, int16_t(7));
    const auto read = ParseParameterFile(headerAt1960, AnalysisParameters{});
    ASSERT_EQ(read.problem, EventFileProblem::None);
    AnalysisParameters expected = Custom();
    expected.NumberPointsPeak = 1;    // not in a parameter file: the base's
    expected.ComplexPeak = false;     // never in the file
    EXPECT_EQ(read.params, expected);
    EXPECT_EQ(BuildParameterFile(bytes, read.params, 3, "cell.abf"), bytes);
}

TEST(ParameterFile, WithoutRecordingUsesABlankAbfHeader) {
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
    dialogs.AnswerSaveFile((dir / "blank.PAR").string());
    ASSERT_TRUE(SaveParameterFileCommand(ws, dialogs));
    const auto bytes = *ReadFileBytes(dir / "blank.PAR");
    EXPECT_EQ(le::GetText(bytes, 0, 4), "ABF ");
    EXPECT_EQ(le::GetText(bytes, 2014, 34), std::string(34, ' '));
}

// Loading keeps the recording and its events; only the parameters change.
TEST(ParameterFile, LoadChangesOnlyTheParameters) {
    Fixture f;
    const auto events = f.ws.events;
    const Recording* rec = f.ws.recording.get();
    ASSERT_EQ(WriteFileAtomic(f.dir / "q.PAR",
                              BuildParameterFile(rec->HeaderBytes(), Custom(), 0, "other.abf")),
              "");
    f.dialogs.AnswerOpenFile((f.dir / "q.PAR").string());
    ASSERT_TRUE(LoadParameterFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.ws.recording.get(), rec);
    EXPECT_EQ(f.ws.events, events);
    EXPECT_EQ(f.ws.params().AreaThreshold, 21.25f);
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);

    // An event file gives its NumberPointsPeak too, 0 becoming 1.
    AnalysisParameters zero = Custom();
    zero.NumberPointsPeak = 0;
    ASSERT_EQ(WriteFileAtomic(f.dir / "e.EVT", BuildEventFile(BlankHeaderCopy(), zero, {}, "x")), "");
    f.ws.params().NumberPointsPeak = 6;
    f.dialogs.AnswerOpenFile((f.dir / "e.EVT").string());
    ASSERT_TRUE(LoadParameterFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 1);
    ASSERT_EQ(WriteFileAtomic(f.dir / "e.EVT", BuildEventFile(BlankHeaderCopy(), Custom(), {}, "x")), "");
    f.dialogs.AnswerOpenFile((f.dir / "e.EVT").string());
    ASSERT_TRUE(LoadParameterFileCommand(f.ws, f.dialogs));
    EXPECT_EQ(f.ws.params().NumberPointsPeak, 3);
}

TEST(ParameterFile, ForeignOrShortFilesAreRefused) {
    Fixture f;
    f.ws.params() = Custom();
    auto foreign = BuildParameterFile(BlankHeaderCopy(), AnalysisParameters{}, 0, "x");
    le::PutText(foreign, 294, 16, "Other program");
    ASSERT_EQ(WriteFileAtomic(f.dir / "f.PAR", foreign), "");
    ASSERT_EQ(WriteFileAtomic(f.dir / "s.PAR", std::string("short")), "");
    for (const char* name : {"f.PAR", "s.PAR", "missing.PAR"}) {
        f.dialogs.ClearTranscript();
        f.dialogs.AnswerOpenFile((f.dir / name).string());
        EXPECT_FALSE(ShowFailure(f.dialogs, LoadParameterFileCommand(f.ws, f.dialogs)));
        ASSERT_EQ(f.dialogs.Messages().size(), 1u) << name;
        EXPECT_EQ(f.dialogs.Messages()[0].caption, "Not a Parameter File");
        EXPECT_EQ(f.ws.params(), Custom());
    }
}

TEST(SuggestParameters, PresetsAndResetFirst) {
    Fixture f;  // 25 us a point: PeriodBaselineAverage 250 us
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

}  // namespace
}  // namespace vess
