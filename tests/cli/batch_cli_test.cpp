// vess batch finds in each recording exactly the events that vess detect
// finds in it alone, whatever the number of workers; shards, lists and empty
// folders.
#include <gtest/gtest.h>

#include "recording/event_file.h"
#include "support/read_back.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

namespace fs = std::filesystem;
using test::Contains;
using test::ReadText;
using VessBatch = test::VessCliTest;

TEST_F(VessBatch, EachRecordingsEventsEqualThoseOfDetectAloneWithOneOrTwoWorkers) {
    VESS_REQUIRE_SHARED_DATA();
    // A small real recording of each format, and a synthetic one.
    const fs::path data = test::SharedData();
    const fs::path files[] = {data / "abf1/130618-1-12.abf", data / "abf2/pclamp11_4ch.abf", dir / "syn.abf"};
    ASSERT_EQ(Run("synth " + P("syn.abf") + " --seconds 4 --seed 9").exitCode, 0);
    std::string quoted;
    for (const fs::path& f : files) quoted += " '" + f.string() + "'";
    for (const char* jobs : {"1", "2"}) {
        const auto r = Run("batch" + quoted + " --jobs " + jobs + " --quiet --out-dir " + P(jobs) + " --summary " +
                           P(std::string(jobs) + ".csv"));
        ASSERT_EQ(r.exitCode, 0) << r.err;
    }
    const std::string summary = ReadText(dir / "2.csv");
    EXPECT_EQ(ReadText(dir / "1.csv"), summary);
    for (const fs::path& f : files) {
        const std::string single = f.stem().string() + ".single.EVT", name = f.stem().string() + ".EVT";
        const auto detect = Run("detect '" + f.string() + "' --quiet --out " + P(single));
        ASSERT_EQ(detect.exitCode, 0) << detect.err;
        const EventFileContents alone = ReadEventFile(dir / single), batch = ReadEventFile(dir / "2" / name);
        ASSERT_TRUE(alone.Ok() && batch.Ok()) << f;
        EXPECT_EQ(alone.records, batch.records) << f;
        EXPECT_EQ(ReadText(dir / "1" / name), ReadText(dir / "2" / name)) << name;
        // The summary's row (file, channel, duration, events, ...) counts what the event file holds.
        const std::size_t row = summary.find("\n" + f.string() + ",0,");
        ASSERT_NE(row, std::string::npos) << summary;
        const std::size_t events = summary.find(',', row + f.string().size() + 4) + 1;  // past "\n<file>,0,<duration>,"
        EXPECT_EQ(summary.substr(events, summary.find(',', events) - events), std::to_string(batch.records.size()));
    }
}

TEST_F(VessBatch, ShardsOfAListSplitItABadFileOnlyFailsItsRowAndAnEmptyFolderIsRefused) {
    ASSERT_EQ(Run("synth " + P("a.abf") + " --seconds 1 --seed 1").exitCode, 0);
    ASSERT_EQ(Run("synth " + P("c.abf") + " --seconds 1 --seed 2").exitCode, 0);
    Put("b.abf", "damaged");
    const std::string list = " --list " + Put("list.txt", "c.abf\nb.abf\na.abf\n") + " --quiet";
    const auto first = Run("batch" + list + " --shard 0/2");
    const auto second = Run("batch" + list + " --shard 1/2");
    // Sorted a, b, c: shard 0 takes a and c, shard 1 takes the damaged b.
    EXPECT_EQ(first.exitCode, 0) << first.err;
    EXPECT_TRUE(Contains(first.out, "a.abf,0,1.000") && Contains(first.out, "c.abf,0,1.000")) << first.out;
    EXPECT_FALSE(Contains(first.out, "b.abf")) << first.out;
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(Contains(second.out, "b.abf,0,,,")) << second.out;
    EXPECT_EQ(Run("batch" + list + " --shard 2/2").exitCode, 2);
    // A folder without recordings is an error, not an empty summary.
    fs::create_directory(dir / "empty");
    test::ExpectRefused(Run("batch " + P("empty")), 2, "no recordings (*.abf) in");
}

}  // namespace
}  // namespace vess
