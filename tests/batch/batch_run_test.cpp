// Batch runs: every recording gets a row, a bad one never stops the others,
// the stop flag ends the run, and the list, shard and event-file rules.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>

#include "batch/batch_run.h"
#include "batch/texts.h"
#include "detection/event_summary.h"
#include "detection/texts.h"
#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/synth.h"
#include "support/test_recording.h"

namespace vess {
namespace {

namespace fs = std::filesystem;

fs::path Synth(const test::TempDir& dir, const std::string& name, uint64_t seed, double seconds = 3) {
    const fs::path path = dir / name;
    EXPECT_EQ(WriteSynthetic(path, Synthesise({.seconds = seconds, .seed = seed, .eventsPerSecond = 8})), "");
    return path;
}

std::vector<uint8_t> Bytes(const fs::path& p) { return ReadFileBytes(p).value_or(std::vector<uint8_t>{}); }

TEST(BatchRun, BadRecordingsGetTheirRowAndTheOthersAreAnalysed) {
    test::TempDir dir;
    const fs::path good1 = Synth(dir, "a.abf", 1), good2 = Synth(dir, "z.abf", 2);
    // Cut inside its header, before the samples begin. (A file cut among
    // its samples opens as the stretch it holds, as it does for vess detect.)
    const std::vector<uint8_t> whole = Bytes(good1);
    ASSERT_EQ(WriteFileAtomic(dir / "cut.abf", std::span(whole).first(3000)), "");
    ASSERT_EQ(WriteFileAtomic(dir / "text.abf", std::string_view("not a recording\n")), "");
    const std::vector<fs::path> files =
        ExpandRecordings({good1, dir / "cut.abf", dir / "text.abf", dir / "missing.abf", good2});
    std::atomic<bool> stop{false};
    std::set<std::size_t> done;
    BatchCallbacks callbacks;
    callbacks.fileDone = [&](std::size_t i, const BatchRow&, std::size_t) { done.insert(i); };
    const std::vector<BatchRow> rows = RunBatch(PlanBatch(files, {}), {.settings = {}, .jobs = 2}, callbacks, stop);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(done.size(), 5u);
    for (const BatchRow& r : rows) {
        const bool good = r.file == good1 || r.file == good2;
        EXPECT_EQ(r.analysed, good) << r.file;
        EXPECT_EQ(r.errors.empty(), good) << r.file << ": " << r.errors;
        EXPECT_EQ(fs::exists(fs::path(r.file).replace_extension(".EVT")), good) << r.file;
        if (good) {
            EXPECT_GT(r.events, 10);  // 8 per second for 3 s
            EXPECT_EQ(ReadEventFile(r.eventFile).records.size(), std::size_t(r.events));
        }
    }
    const auto row = [&](const char* name) {
        return *std::find_if(rows.begin(), rows.end(), [&](const BatchRow& r) { return r.file == dir / name; });
    };
    EXPECT_NE(row("cut.abf").errors.find("outside"), std::string::npos) << row("cut.abf").errors;
    EXPECT_NE(row("text.abf").errors.find("ABF"), std::string::npos) << row("text.abf").errors;
}

TEST(BatchRun, AChannelTheFileLacksIsThatFilesError) {
    test::TempDir dir;
    const std::atomic<bool> stop{false};
    const BatchRow row = AnalyseRecording(PlanBatch({Synth(dir, "one.abf", 3, 1)}, {})[0], {.settings = {}, .channel = 1}, {}, stop);
    EXPECT_FALSE(row.analysed);
    EXPECT_NE(row.errors.find("has 1 channel(s); channel 1 does not exist"), std::string::npos) << row.errors;
    EXPECT_FALSE(std::isfinite(row.durationS));
}

TEST(BatchRun, StopEndsTheRunAndLeavesNoPartialEventFile) {
    test::TempDir dir;
    const std::vector<fs::path> files = {Synth(dir, "a.abf", 4, 20), Synth(dir, "b.abf", 5, 1)};
    BatchSetup setup{.settings = {}, .jobs = 1};
    setup.settings.blocksPerScreen = 1;  // many screens, many chances to stop
    std::atomic<bool> stop{false};
    BatchCallbacks callbacks;
    callbacks.fileProgress = [&](std::size_t, int percent) {
        if (percent >= 10) stop = true;
    };
    const std::vector<BatchRow> rows = RunBatch(PlanBatch(files, {}), setup, callbacks, stop);
    EXPECT_EQ(rows[0].errors, batch_texts::kStoppedPartway);
    EXPECT_FALSE(fs::exists(dir / "a.EVT"));
    EXPECT_EQ(rows[1].errors, batch_texts::kStopped);
    EXPECT_FALSE(rows[1].analysed);
}

// A reviewed event file is never replaced unless asked: the recording is
// skipped and its row says so; with overwrite it is analysed and replaced.
TEST(BatchRun, AnExistingEventFileIsKeptUnlessOverwriteIsAsked) {
    test::TempDir dir;
    const std::vector<BatchItem> items = PlanBatch({Synth(dir, "a.abf", 6, 1)}, {});
    ASSERT_EQ(WriteFileAtomic(dir / "a.EVT", std::string_view("reviewed")), "");
    const std::atomic<bool> stop{false};
    const BatchRow kept = AnalyseRecording(items[0], {}, {}, stop);
    EXPECT_TRUE(kept.kept);
    EXPECT_FALSE(kept.analysed);
    EXPECT_EQ(kept.errors, batch_texts::kKeptEventFile);
    EXPECT_EQ(Bytes(dir / "a.EVT"), (std::vector<uint8_t>{'r', 'e', 'v', 'i', 'e', 'w', 'e', 'd'}));
    const BatchRow replaced = AnalyseRecording(items[0], {.settings = {}, .overwrite = true}, {}, stop);
    EXPECT_TRUE(replaced.analysed);
    EXPECT_FALSE(replaced.kept);
    EXPECT_EQ(ReadEventFile(dir / "a.EVT").records.size(), std::size_t(replaced.events));
}

TEST(BatchFiles, FoldersListsAndEventFileNames) {
    test::TempDir dir;
    fs::create_directories(dir / "x");
    fs::create_directories(dir / "y");
    for (const char* name : {"x/b.ABF", "x/a.abf", "x/notes.txt", "y/a.abf"})
        ASSERT_EQ(WriteFileAtomic(dir / name, std::string_view("")), "");
    // The folder gives its recordings only, sorted; a file named twice is
    // one, also when once through a relative path and once through a link.
    fs::create_symlink(dir / "y", dir / "z");
    const fs::path relative = fs::relative(dir / "y/a.abf");
    const std::vector<fs::path> files =
        ExpandRecordings({dir / "y/a.abf", dir / "x", dir / "x/a.abf", relative, dir / "z/a.abf"});
    ASSERT_EQ(files, (std::vector<fs::path>{dir / "x/a.abf", dir / "x/b.ABF", dir / "y/a.abf"}));

    const std::vector<BatchItem> beside = PlanBatch(files, {});
    EXPECT_EQ(beside[1].eventFile, dir / "x/b.EVT");
    EXPECT_TRUE(beside[2].refusal.empty());
    // Into one folder, the two a.abf would write one a.EVT: the second is refused.
    const std::vector<BatchItem> together = PlanBatch(files, dir / "out");
    EXPECT_EQ(together[0].eventFile, dir / "out/a.EVT");
    EXPECT_TRUE(together[0].refusal.empty());
    EXPECT_NE(together[2].refusal.find("x/a.abf"), std::string::npos) << together[2].refusal;

    ASSERT_EQ(WriteFileAtomic(dir / "list.txt", std::string_view("# recordings\r\nx/a.abf\r\n\n  " +
                                                                  (dir / "y/a.abf").string() + "\n")),
              "");
    std::string problem;
    EXPECT_EQ(ReadRecordingList(dir / "list.txt", &problem),
              (std::vector<fs::path>{dir / "x/a.abf", dir / "y/a.abf"}));
    EXPECT_FALSE(ReadRecordingList(dir / "none.txt", &problem));
    EXPECT_NE(problem.find("none.txt"), std::string::npos);
    // A named pipe is refused at once, not waited on.
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE(ReadRecordingList(dir / "fifo", &problem));
    EXPECT_NE(problem.find("fifo"), std::string::npos);
}

TEST(BatchFiles, ShardsTakeEveryRecordingOnce) {
    std::vector<BatchItem> items(11);
    for (std::size_t i = 0; i < items.size(); ++i) items[i].file = std::to_string(100 + i);
    for (int count : {1, 3, 4, 11, 15}) {
        std::multiset<fs::path> seen;
        for (int k = 0; k < count; ++k)
            for (const BatchItem& item : SelectShard(items, {k, count})) seen.insert(item.file);
        EXPECT_EQ(seen.size(), items.size()) << count;
        EXPECT_EQ(std::set<fs::path>(seen.begin(), seen.end()).size(), items.size()) << count;
    }
    const auto shard = ParseShard("2/10", nullptr);
    ASSERT_TRUE(shard);
    EXPECT_EQ(shard->index, 2);
    EXPECT_EQ(shard->count, 10);
    for (const char* bad : {"10/10", "-1/4", "1/0", "3", "a/4", "1/4x", ""}) {
        std::string problem;
        EXPECT_FALSE(ParseShard(bad, &problem)) << bad;
        EXPECT_NE(problem.find("K/N"), std::string::npos) << bad;
    }
}

TEST(BatchSummary, CsvQuotesNamesAndLeavesUnmeasuredEmpty) {
    const BatchRow ok{.file = "a,b.abf", .durationS = 2, .events = 3, .frequencyHz = 1.5, .medianAmplitude = -12.25,
                      .units = "pA", .medianRise1090Ms = 0.5, .medianDecayMs = 4, .eventFile = {}, .errors = {}};
    const BatchRow bad{.file = "c.abf", .channel = 2, .units = {}, .eventFile = {}, .errors = "c.abf: the file does not begin with \"ABF \""};
    EXPECT_EQ(SummaryCsv({ok, bad}),
              "File,Channel,Duration (s),Events,Frequency (Hz),Median Amplitude,Units,"
              "Rise 10-90 (ms),Half-width (ms),Decay (ms),Errors\n"
              "\"a,b.abf\",0,2.000,3,1.5000,-12.25,pA,0.5,,4,\n"
              "c.abf,2,,,,,,,,,\"c.abf: the file does not begin with \"\"ABF \"\"\"\n");
}

// Medians of a hand-made table: amplitudes 10, 30, 20, 40 counts at one
// count a pA give (20 + 30) / 2 = 25; a half-width that could not be
// measured is left out, so 1, 3, 2 give 2.
TEST(BatchSummary, MediansSkipUnmeasured) {
    test::TempDir dir;
    const std::vector<int16_t> samples(2000, 0);
    const auto rec = test::MakeRecording(dir / "m.abf", samples, 50);
    EventTable table;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const int32_t amplitudes[] = {10, 30, 20, 40};
    const float halfWidths[] = {1, nan, 3, 2};
    for (int i = 0; i < 4; ++i)  // decay 1, 2, 3, 4 ms at 50 us
        table.Append({.time = float(i), .amplitude = amplitudes[i], .decayTime = int16_t(20 * (i + 1)),
                      .halfWidth = halfWidths[i]});
    const EventSummary s = SummariseEvents(*rec, table);
    EXPECT_FLOAT_EQ(s.medianAmplitude, 25);
    EXPECT_FLOAT_EQ(s.medianHalfWidthMs, 2);
    EXPECT_FLOAT_EQ(s.medianDecayMs, 2.5);
    EXPECT_DOUBLE_EQ(s.durationS, 2000 * 50e-6);
    EXPECT_DOUBLE_EQ(s.frequencyHz, 4 / 0.1);
}

// A recording its parameters do not suit: the row lists the refusal and no
// event file is written.
TEST(BatchImproperParameters, TheRowListsTheRefusalAndNoEventFileIsWritten) {
    test::TempDir dir;
    const std::filesystem::path abf = dir / "one.abf";
    ASSERT_EQ(WriteSynthetic(abf, Synthesise({.seconds = 1, .seed = 3})), "");
    BatchSetup setup;
    setup.settings.analysis.PeriodToSearchMax = 1;  // 1 us: below one sample
    const std::atomic<bool> stop{false};
    const BatchItem item = PlanBatch({abf}, {})[0];
    const BatchRow row = AnalyseRecording(item, setup, {}, stop);
    EXPECT_EQ(row.errors, std::string(detection_texts::kImproperParametersCaption) + ": " +
                              detection_texts::kImproperParametersText + "; " +
                              std::string(batch_texts::kImproperParameters));
    EXPECT_FALSE(row.analysed);
    EXPECT_TRUE(row.eventFile.empty() && !std::filesystem::exists(item.eventFile));
}

}  // namespace
}  // namespace vess
