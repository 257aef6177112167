// vess batch finds in each recording exactly the events that vess detect
// finds in it alone, whatever the number of workers; shards, lists and empty
// folders.
#include <gtest/gtest.h>

#include <sstream>

#include "recording/event_file.h"
#include "recording/file_io.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

namespace fs = std::filesystem;

std::string Slurp(const fs::path& p) {
    const auto bytes = ReadFileBytes(p);
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

class VessBatch : public ::testing::Test {
protected:
    test::TempDir dir;
    test::VessRun Run(const std::string& args) { return test::RunVessCli(args, dir / "err.txt"); }
    // A small real recording of each format, and a synthetic one.
    std::vector<fs::path> Recordings() {
        const fs::path data = test::SharedData();
        std::vector<fs::path> files = {data / "abf1/130618-1-12.abf", data / "abf2/pclamp11_4ch.abf",
                                       dir / "syn.abf"};
        EXPECT_EQ(Run("synth '" + files.back().string() + "' --seconds 4 --seed 9").exitCode, 0);
        return files;
    }
    static std::string Quoted(const std::vector<fs::path>& files) {
        std::string s;
        for (const fs::path& f : files) s += " '" + f.string() + "'";
        return s;
    }
};

TEST_F(VessBatch, EachRecordingsEventsEqualThoseOfDetectAloneWithOneOrTwoWorkers) {
    VESS_REQUIRE_SHARED_DATA();
    const std::vector<fs::path> files = Recordings();
    for (const char* jobs : {"1", "2"}) {
        const auto r = Run("batch" + Quoted(files) + " --jobs " + jobs + " --quiet --out-dir '" +
                           (dir / jobs).string() + "' --summary '" + (dir / jobs).string() + ".csv'");
        ASSERT_EQ(r.exitCode, 0) << r.err;
    }
    EXPECT_EQ(Slurp(dir / "1.csv"), Slurp(dir / "2.csv"));
    for (const fs::path& f : files) {
        const fs::path single = dir / (f.stem().string() + ".single.EVT");
        const auto detect = Run("detect '" + f.string() + "' --quiet --out '" + single.string() + "'");
        ASSERT_EQ(detect.exitCode, 0) << detect.err;
        const EventFileContents alone = ReadEventFile(single);
        const std::string name = f.stem().string() + ".EVT";
        const EventFileContents batch = ReadEventFile(dir / "2" / name);
        ASSERT_TRUE(alone.Ok() && batch.Ok()) << f;
        EXPECT_EQ(alone.records, batch.records) << f;
        EXPECT_EQ(Slurp(dir / "1" / name), Slurp(dir / "2" / name)) << name;
        // The summary's row (file, channel, duration, events, ...) counts
        // what the event file holds.
        const std::string summary = Slurp(dir / "2.csv");
        const std::size_t row = summary.find("\n" + f.string() + ",0,");
        ASSERT_NE(row, std::string::npos) << summary;
        std::stringstream cells(summary.substr(row + 1, summary.find('\n', row + 1) - row - 1));
        std::string cell;
        for (int c = 0; c < 4; ++c) std::getline(cells, cell, ',');
        EXPECT_EQ(cell, std::to_string(batch.records.size())) << f;
    }
}

TEST_F(VessBatch, ShardsOfAListSplitItABadFileOnlyFailsItsRowAndAnEmptyFolderIsRefused) {
    ASSERT_EQ(Run("synth '" + (dir / "a.abf").string() + "' --seconds 1 --seed 1").exitCode, 0);
    ASSERT_EQ(Run("synth '" + (dir / "c.abf").string() + "' --seconds 1 --seed 2").exitCode, 0);
    ASSERT_EQ(WriteFileAtomic(dir / "b.abf", std::string_view("damaged")), "");
    ASSERT_EQ(WriteFileAtomic(dir / "list.txt", std::string_view("c.abf\nb.abf\na.abf\n")), "");
    const std::string list = " --list '" + (dir / "list.txt").string() + "' --quiet";
    const auto first = Run("batch" + list + " --shard 0/2");
    const auto second = Run("batch" + list + " --shard 1/2");
    // Sorted a, b, c: shard 0 takes a and c, shard 1 takes the damaged b.
    EXPECT_EQ(first.exitCode, 0) << first.err;
    EXPECT_NE(first.out.find("a.abf,0,1.000"), std::string::npos) << first.out;
    EXPECT_NE(first.out.find("c.abf,0,1.000"), std::string::npos) << first.out;
    EXPECT_EQ(first.out.find("b.abf"), std::string::npos) << first.out;
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_NE(second.out.find("b.abf,0,,,"), std::string::npos) << second.out;
    EXPECT_EQ(Run("batch" + list + " --shard 2/2").exitCode, 2);

    // A folder without recordings is an error, not an empty summary.
    fs::create_directory(dir / "empty");
    const auto none = Run("batch '" + (dir / "empty").string() + "'");
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_NE(none.err.find("no recordings (*.abf) in"), std::string::npos) << none.err;
}

}  // namespace
}  // namespace vess
