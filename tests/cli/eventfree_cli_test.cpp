// vess eventfree --json: the events removed, the hidden ones removed too, and
// the re-detection counts, with and without --table-only.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(VessEventFree, JsonSaysWhatWasRemovedAndFoundAgain) {
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    const std::string abf = (test::SharedData() / "abf1/05210017_vc_abf1.abf").string();
    const std::string out = (dir / "free.abf").string();
    nlohmann::json runs[2];
    for (int tableOnly = 0; tableOnly < 2; ++tableOnly) {
        const auto run = test::RunVessCli("eventfree " + abf + " --out " + out + " --redetect --json" +
                                              (tableOnly ? " --table-only" : ""),
                                          dir / "err.txt");
        ASSERT_EQ(run.exitCode, 0) << run.err;
        runs[tableOnly] = nlohmann::json::parse(run.out);
    }
    const nlohmann::json &hidden = runs[0], &table = runs[1];
    EXPECT_EQ(hidden["removed"], table["removed"]);
    EXPECT_EQ(table["hidden_removed"], 0);
    EXPECT_GT(hidden["hidden_removed"].get<int>(), 0);
    // Removing the hidden events leaves fewer to find again with the source's
    // noise levels, and at most 1 % of the table's.
    const int removed = hidden["removed"];
    const int left = hidden["redetected"]["source_noise_levels"];
    EXPECT_LT(left, table["redetected"]["source_noise_levels"].get<int>());
    EXPECT_LE(left, removed / 100);
    EXPECT_TRUE(hidden["redetected"].contains("own_noise_levels"));
}

}  // namespace
}  // namespace vess
