// vess average and vess fit, alone and piped together.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>

#include <nlohmann/json.hpp>

#include "recording/event_file.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using test::Contains;
using test::ExpectRefused;

// Two identical events of -400 counts (2 counts a pA: -200 pA) decaying with
// 60 points of 50 us (3 ms), in group 1, and one in group 2 that is twice as
// large. PeriodStartBaseline 1000 us puts the peak at point 20 of the trace.
// nan.EVT holds the same events with the third one's time not a number.
class VessAverage : public test::VessCliTest {
protected:
    void SetUp() override {
        std::vector<int16_t> samples(4096, 0);
        const std::pair<int, double> events[] = {{500, 400}, {1500, 400}, {2500, 800}};
        for (auto [peak, size] : events)
            for (int i = peak; i < peak + 1000; ++i)
                samples[std::size_t(i)] = int16_t(std::nearbyint(-size * std::exp(-(i - peak) / 60.0)));
        auto rec = test::MakeRecording(dir / "cell.abf", samples, 50, 2.0f);
        EventTable table;
        for (auto [peak, size] : events)
            table.Append(EventRecord{.time = float(peak * 0.05), .amplitude = -int32_t(size),
                                     .group = uint8_t(size > 400 ? 2 : 1)});
        AnalysisParameters params;
        params.PeriodStartBaseline = 1000;
        ASSERT_EQ(WriteEventFile(dir / "cell.EVT", rec->HeaderBytes(), params, table, "cell.abf"), "");
        table[2].time = std::nanf("");
        ASSERT_EQ(WriteEventFile(dir / "nan.EVT", rec->HeaderBytes(), params, table, "cell.abf"), "");
    }
};

// Refusals exit with 1, a reason and no output, never a header-only trace or
// the start of the data.
TEST_F(VessAverage, PrintsTheAverageInUnitsOrRefusesWithAReason) {
    const auto run = Run("average " + P("cell.EVT") + " --group 1");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    // Point 20 (1 ms) is the peak, -400 counts = -200 pA; point 80 is
    // -400 e^-1 = -147.15 -> -147 counts = -73.5 pA.
    EXPECT_EQ(run.out.substr(0, run.out.find("\n0.05,")), "Traces averaged: 2\nTime (ms),Value (pA)\n0,0");
    EXPECT_TRUE(Contains(run.out, "\n1,-200\n") && Contains(run.out, "\n4,-73.5\n")) << run.out;
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 2 + 256);
    const std::pair<std::string, std::string> refused[] = {
        {P("cell.EVT") + " --group 7", "no event in group 7"},
        {P("cell.EVT") + " --group 1 --blocks 0.001", "--blocks 0.001 gives a trace of no point"},
        {P("cell.EVT") + " --group 1 --blocks 1000000", "would need 3.1 GB of memory"},
        {P("nan.EVT") + " --group 1", "event 2 of group 1 has no time (not a number)"},
    };
    for (const auto& [args, message] : refused) {
        SCOPED_TRACE(args);
        const auto r = Run("average " + args);
        ExpectRefused(r, 1, message);
        EXPECT_EQ(r.out, "");
    }
}

TEST_F(VessAverage, PipedIntoFitGivesTheDecay) {
    const auto run = Run("average " + P("cell.EVT") + " --group 2 --csv - 2>/dev/null | " VESS_CLI " fit - --exp 1 --json");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_NEAR(j["tau1"].get<double>(), 3.0, 0.01);
    EXPECT_NEAR(j["A1"].get<double>(), -400.0, 0.5);  // 800 counts at 2 a pA
}

using VessFit = test::VessCliTest;

// A trace file of n points stepMs apart whose values are f(time).
template <class F>
void WriteTrace(const std::filesystem::path& p, int n, double stepMs, F f) {
    std::ofstream csv(p);
    csv << "Time (ms),Value\n";
    for (int i = 0; i < n; ++i) csv << i * stepMs << "," << f(i * stepMs) << "\n";
}

// The fitting rules are checked in tests/group_analysis; here each option
// reaches them and each refusal exits with 1.
TEST_F(VessFit, OptionsReachTheFitAndBadRequestsAreRefused) {
    WriteTrace(dir / "exp.csv", 300, 0.1, [](double t) { return 80 * std::exp(-t / 3); });  // 0..29.9 ms
    const std::string fit = "fit " + P("exp.csv");
    // The single search from tau 5, A 100 only moves along A = 20 tau and stops near tau 3.56.
    const auto single = Run(fit + " --exp 1 --guess 5,100 --method simplex --no-restart --json");
    ASSERT_EQ(single.exitCode, 0) << single.err;
    EXPECT_NEAR(nlohmann::json::parse(single.out)["tau1"].get<double>(), 3.56, 0.02);
    const auto full = nlohmann::json::parse(Run(fit + " --exp 1 --range 2:20 --json").out);
    EXPECT_NEAR(full["tau1"].get<double>(), 3.0, 1e-3);
    EXPECT_NEAR(full["A1"].get<double>(), 80 * std::exp(-2.0 / 3), 1e-2);  // x from 2 ms
    EXPECT_EQ(full["range"]["points"].get<int>(), 181);
    // 90 % of 80 is reached at 3 ln(1/0.9) = 0.32 ms -> 0.4, 10 % at 6.91 -> 7.
    EXPECT_TRUE(Contains(Run(fit + " --exp 1 --range 10-90").out, "Fit range: 0.4 to 7 ms"));
    // Two exponentials on one: the second collapses and no parameter is given.
    const auto two = Run(fit + " --exp 2 --json");
    EXPECT_EQ(two.exitCode, 1);
    const auto t = nlohmann::json::parse(two.out);
    EXPECT_EQ(t["status"], "too many exponentials");
    EXPECT_TRUE(t["tau1"].is_null());
    for (const auto& [options, message] : {std::pair{" --exp 2 --guess 1,2,3", "--guess needs 4 values"},
                                           {" --exp 1 --range 29.8:29.9", "need at least 4"},
                                           {" --exp 1 --guess nan,80", "finite"},
                                           {" --exp 1 --guess -3,80", "above 0"}}) {
        SCOPED_TRACE(options);
        ExpectRefused(Run(fit + options), 1, message);
    }
}

// A noisy double decay that starts at its peak is fitted whole, though the
// furthest raw sample from the first lies in the noisy tail; the truth lies
// within four standard errors.
TEST_F(VessFit, NoisyDecayFromItsPeakIsFittedWhole) {
    std::mt19937 rng(19);
    std::normal_distribution<double> noise(0, 0.5);
    WriteTrace(dir / "noisy.csv", 2001, 0.05,
               [&](double t) { return -80 * std::exp(-t / 3) - 30 * std::exp(-t / 25) + noise(rng); });
    const auto run = Run("fit " + P("noisy.csv") + " --json");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    EXPECT_EQ(j["range"]["points"].get<int>(), 2001);
    for (auto [key, truth] : {std::pair{"tau1", 3.0}, {"A1", -80.0}, {"tau2", 25.0}, {"A2", -30.0}})
        EXPECT_NEAR(j[key].get<double>(), truth, 4 * j["standard errors"][key].get<double>()) << key;
}

}  // namespace
}  // namespace vess
