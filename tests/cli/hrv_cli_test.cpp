#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "recording/event_file.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using VessHrv = test::VessCliTest;

// Beats at 0, 800, 1600 and 3200 ms with bounds wide enough for all:
// RR 800, 800, 1600; dRR 0, 800 (nNN 1 of 2 at threshold 50).
TEST_F(VessHrv, EventAndTextSourcesGiveTheSameMeasures) {
    EventTable table;
    for (float t : {0.0f, 800.0f, 1600.0f, 3200.0f}) table.Append(EventRecord{.time = t});
    ASSERT_EQ(WriteEventFile(dir / "beats.EVT", BlankHeaderCopy(), AnalysisParameters{}, table, "heart.abf"), "");
    const std::string rr = Put("rr.txt", "RR (ms)\n800\n800\n1600\n"), bounds = " --upper 2000 --lower 0 --json";
    const auto fromEvents = Run("hrv " + P("beats.EVT") + bounds);
    ASSERT_EQ(fromEvents.exitCode, 0) << fromEvents.err;
    const auto fromRR = Run("hrv --rr " + rr + bounds);
    ASSERT_EQ(fromRR.exitCode, 0) << fromRR.err;
    const auto j = nlohmann::json::parse(fromEvents.out);
    EXPECT_EQ(j, nlohmann::json::parse(fromRR.out));
    // Hand-computed: 3 intervals, 1 of the 2 differences above 50 ms.
    EXPECT_EQ(j["n RR"], 3);
    EXPECT_EQ(j["nNN"], 1);
    EXPECT_DOUBLE_EQ(j["%NN"].get<double>(), 50);
    ASSERT_EQ(j["segments"].size(), 1u);
    EXPECT_TRUE(j.contains("SD1") && j.contains("TINN"));
    EXPECT_FALSE(j.contains("LF"));
    // The stored defaults (10 to 100 ms) leave a human series out entirely:
    // said, with the bounds, instead of measures of nothing.
    test::ExpectRefused(Run("hrv --rr " + rr + " --json"), 1, "None of the 3 RR intervals lies within the bounds");
    // No source, a missing one, or a text file given as an event file.
    for (const std::string& args : {std::string(), " --rr " + P("missing.txt"), " " + rr})
        EXPECT_NE(Run("hrv" + args).exitCode, 0) << args;
}

}  // namespace
}  // namespace vess
