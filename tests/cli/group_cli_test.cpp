// vess average and vess fit, alone and piped together.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <string>

#include <nlohmann/json.hpp>

#include "recording/event_file.h"
#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::RunVessCli;

// Two identical events of -400 counts (2 counts a pA: -200 pA) decaying with
// 60 points of 50 us (3 ms), in group 1, and one in group 2 that is twice as
// large. PeriodStartBaseline 1000 us puts the peak at point 20 of the trace.
struct EventFileOnDisk {
    test::TempDir dir;
    EventFileOnDisk() {
        std::vector<int16_t> samples(4096, 0);
        const std::pair<int, double> events[] = {{500, 400}, {1500, 400}, {2500, 800}};
        for (auto [peak, size] : events)
            for (int i = peak; i < peak + 1000; ++i)
                samples[std::size_t(i)] = int16_t(std::nearbyint(-size * std::exp(-(i - peak) / 60.0)));
        auto rec = test::MakeRecording(dir / "cell.abf", samples, 50, 2.0f);
        EventTable table;
        for (auto [peak, size] : events) {
            EventRecord r;
            r.time = float(peak * 0.05);
            r.amplitude = -int32_t(size);
            r.group = size > 400 ? 2 : 1;
            table.Append(r);
        }
        AnalysisParameters params;
        params.PeriodStartBaseline = 1000;
        EXPECT_EQ(WriteEventFile(dir / "cell.EVT", rec->HeaderBytes(), params, table, "cell.abf"), "");
    }
    std::string Evt() const { return (dir / "cell.EVT").string(); }
};

// One run per way of calling average; refusals exit with 1, a reason and no
// output, never a header-only trace or the start of the data.
TEST(VessAverage, PrintsTheAverageInUnitsOrRefusesWithAReason) {
    EventFileOnDisk f;
    const test::VessRun run = RunVessCli("average " + f.Evt() + " --group 1", f.dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    // Point 20 (1 ms) is the peak, -400 counts = -200 pA; point 80 is
    // -400 e^-1 = -147.15 -> -147 counts = -73.5 pA.
    EXPECT_EQ(run.out.substr(0, run.out.find("\n0.05,")), "Traces averaged: 2\nTime (ms),Value (pA)\n0,0");
    EXPECT_NE(run.out.find("\n1,-200\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n4,-73.5\n"), std::string::npos);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 2 + 256);

    const EventFileContents stored = ReadEventFile(f.dir / "cell.EVT");
    EventTable nan;
    nan.Assign(stored.records);
    nan[2].time = std::nanf("");
    AbfError error{};
    const auto rec = Recording::Open(f.dir / "cell.abf", &error);
    ASSERT_TRUE(rec);
    ASSERT_EQ(WriteEventFile(f.dir / "nan.EVT", rec->HeaderBytes(), stored.params, nan, "cell.abf"), "");
    const struct {
        std::string args, message;
    } refused[] = {
        {f.Evt() + " --group 7", "no event in group 7"},
        {f.Evt() + " --group 1 --blocks 0.001", "--blocks 0.001 gives a trace of no point"},
        {f.Evt() + " --group 1 --blocks 1000000", "would need 3.1 GB of memory"},
        {(f.dir / "nan.EVT").string() + " --group 1", "event 2 of group 1 has no time (not a number)"},
    };
    for (const auto& c : refused) {
        SCOPED_TRACE(c.args);
        const test::VessRun r = RunVessCli("average " + c.args, f.dir / "err.txt");
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }
}

TEST(VessAverage, PipedIntoFitGivesTheDecay) {
    EventFileOnDisk f;
    const std::string cli = VESS_CLI;
    const test::VessRun run = RunVessCli(
        "average " + f.Evt() + " --group 2 --csv - 2>/dev/null | " + cli + " fit - --exp 1 --json",
        f.dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_NEAR(j["tau1"].get<double>(), 3.0, 0.01);
    EXPECT_NEAR(j["A1"].get<double>(), -400.0, 0.5);  // 800 counts at 2 a pA
}

// The fitting rules are checked in tests/group_analysis; here each option
// reaches them and each refusal exits with 1.
TEST(VessFit, OptionsReachTheFitAndBadRequestsAreRefused) {
    // 80 exp(-x/3) on 0..29.9 ms.
    test::TempDir dir;
    {
        std::ofstream csv(dir / "exp.csv");
        csv << "Time (ms),Value\n";
        for (int i = 0; i < 300; ++i) csv << i * 0.1 << "," << 80 * std::exp(-i * 0.1 / 3) << "\n";
    }
    const std::string file = (dir / "exp.csv").string();
    // The single search from tau 5, A 100 only moves along A = 20 tau and
    // stops near tau 3.56.
    const auto single = RunVessCli("fit " + file + " --exp 1 --guess 5,100 --method simplex --no-restart --json",
                                   dir / "err.txt");
    ASSERT_EQ(single.exitCode, 0) << single.err;
    EXPECT_NEAR(nlohmann::json::parse(single.out)["tau1"].get<double>(), 3.56, 0.02);
    const auto full = nlohmann::json::parse(RunVessCli("fit " + file + " --exp 1 --range 2:20 --json", dir / "err.txt").out);
    EXPECT_NEAR(full["tau1"].get<double>(), 3.0, 1e-3);
    EXPECT_NEAR(full["A1"].get<double>(), 80 * std::exp(-2.0 / 3), 1e-2);  // x from 2 ms
    EXPECT_EQ(full["range"]["points"].get<int>(), 181);
    // 90 % of 80 is reached at 3 ln(1/0.9) = 0.32 ms -> 0.4, 10 % at 6.91 -> 7.
    const auto text = RunVessCli("fit " + file + " --exp 1 --range 10-90", dir / "err.txt");
    EXPECT_NE(text.out.find("Fit range: 0.4 to 7 ms"), std::string::npos) << text.out;

    // Two exponentials on one: the second collapses and no parameter is given.
    const auto two = RunVessCli("fit " + file + " --exp 2 --json", dir / "err.txt");
    EXPECT_EQ(two.exitCode, 1);
    const auto t = nlohmann::json::parse(two.out);
    EXPECT_EQ(t["status"], "too many exponentials");
    EXPECT_TRUE(t["tau1"].is_null());
    const std::vector<std::pair<std::string, std::string>> refused = {
        {" --exp 2 --guess 1,2,3", "--guess needs 4 values"},
        {" --exp 1 --range 29.8:29.9", "need at least 4"},
        {" --exp 1 --guess nan,80", "finite"},
        {" --exp 1 --guess -3,80", "above 0"}};
    for (const auto& [options, message] : refused) {
        SCOPED_TRACE(options);
        const auto r = RunVessCli("fit " + file + options, dir / "err.txt");
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
    }
}

// A noisy double decay that starts at its peak is fitted whole, though the
// furthest raw sample from the first lies in the noisy tail; the truth lies
// within four standard errors.
TEST(VessFit, NoisyDecayFromItsPeakIsFittedWhole) {
    test::TempDir dir;
    {
        std::ofstream csv(dir / "noisy.csv");
        std::mt19937 rng(19);
        std::normal_distribution<double> noise(0, 0.5);
        csv << "Time (ms),Value\n";
        for (int i = 0; i <= 2000; ++i)
            csv << i * 0.05 << "," << -80 * std::exp(-i * 0.05 / 3) - 30 * std::exp(-i * 0.05 / 25) + noise(rng) << "\n";
    }
    const auto run = RunVessCli("fit " + (dir / "noisy.csv").string() + " --json", dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_EQ(j["range"]["points"].get<int>(), 2001);
    for (auto [key, truth] : {std::pair{"tau1", 3.0}, {"A1", -80.0}, {"tau2", 25.0}, {"A2", -30.0}})
        EXPECT_NEAR(j[key].get<double>(), truth, 4 * j["standard errors"][key].get<double>()) << key;
}

}  // namespace
}  // namespace vess
