#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "recording/event_file.h"
#include "statistics/array_text.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

class VessStats : public test::VessCliTest {
protected:
    // Student's sleep data (Biometrika 1908), one number a line.
    void SetUp() override {
        Put("d1.txt", "0.7\n-1.6\n-0.2\n-1.2\n-0.1\n3.4\n3.7\n0.8\n0.0\n2.0\n");
        Put("d2.txt", "1.9\n0.8\n1.1\n0.1\n-0.1\n4.4\n5.5\n1.6\n4.6\n3.4\n");
    }
};

TEST_F(VessStats, JsonKeysAreTheGridLabelsAtFullPrecision) {
    const auto run = Run("stats ttest-paired " + P("d1.txt") + " " + P("d2.txt") + " --json");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto j = nlohmann::json::parse(run.out);
    // scipy.stats.ttest_rel 1.10.1: t = -4.062127683382037, p = 0.00283289019738427.
    // The values pass through 32-bit floats, as in the work arrays, hence 1e-6.
    EXPECT_NEAR(j["t Stat"].get<double>(), -4.062127683382037, 1e-6 * 4.06);
    EXPECT_NEAR(j["P value: two-tail"].get<double>(), 0.00283289019738427, 1e-5 * 0.00283);
    EXPECT_EQ(j["Degree of Freedom"].get<double>(), 9);
    ASSERT_TRUE(j["Mean"].is_array());
    EXPECT_NEAR(j["Mean"][0].get<double>(), 0.75, 1e-7);
    EXPECT_TRUE(j["significant"].get<bool>());
    const auto desc = nlohmann::json::parse(Run("stats describe " + P("d2.txt") + " --json").out);
    EXPECT_NEAR(desc["Variance"].get<double>(), 4.009, 1e-6);
    EXPECT_NEAR(desc["Median"].get<double>(), 1.75, 1e-7);  // (1.6 + 1.9) / 2
}

TEST_F(VessStats, TextTableAndRefusalsOfEachCommand) {
    const auto run = Run("stats ttest-equal " + P("d1.txt") + " " + P("d2.txt"));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(test::Contains(run.out, "Pooled Variance\t3.605\n")) << run.out;
    // scipy.stats.ttest_ind 1.10.1 gives 0.07918671421593829 on the exact decimals;
    // the 32-bit values move the eighth decimal.
    EXPECT_TRUE(test::Contains(run.out, "P value: two-tail\t0.079186")) << run.out;
    const std::pair<std::string, std::string> refused[] = {
        {"stats ttest-paired " + P("d1.txt") + " " + Put("five.txt", "1\n2\n3\n4\n5\n"),
         "The number of two samples should be equal."},
        {"stats ftest " + Put("one.txt", "1\n") + " " + P("d1.txt"), "One of the Data Array is empty."},
        {"hist " + Put("wide.txt", "0\n60000\n") + " --bin 1", "Too many bins!  Please readjust the bin size and try again."},
        {"correlogram " + Put("same.txt", "5\n5\n5\n") + " --bin 1 --max-bins 60001", "Too many bins!"},
    };
    for (const auto& [args, message] : refused) {
        SCOPED_TRACE(args);
        test::ExpectRefused(Run(args), 1, message);
    }
}

TEST_F(VessStats, ArraySourcesHistogramsAndCorrelograms) {
    DataArray a1, a2;
    a1.Assign(std::vector<float>{0.5f, 1.0f, 1.5f, -0.5f});
    a2.Assign(std::vector<float>{7, 8});
    const std::string arrays = Put("arrays.txt", ArraysAtfText("x.abf", a1, a2));
    const auto col2 = Run("array " + arrays + ":2");
    ASSERT_EQ(col2.exitCode, 0) << col2.err;
    EXPECT_EQ(col2.out, "7\n8\n");
    // -0.5 in bin -1; 0.5 in bin 0; 1.0 and 1.5 in bin 1.
    const auto hist = Run("hist " + arrays + ":1 --bin 1 --csv");
    ASSERT_EQ(hist.exitCode, 0) << hist.err;
    EXPECT_EQ(hist.out, "Data Array#1,Number of Events\n-1,1\n0,1\n1,2\n");
    const auto cumulative = Run("hist " + arrays + ":1 --bin 1 --kind cumulative");
    EXPECT_TRUE(test::Contains(cumulative.out, "1\t1\n")) << cumulative.out;
    const auto auto_ = Run("correlogram " + Put("same.txt", "5\n5\n5\n") + " --bin 1 --max-bins 2");
    ASSERT_EQ(auto_.exitCode, 0) << auto_.err;
    EXPECT_EQ(auto_.out, "Interval\tAuto-correlation\n0\t3\n1\t0\n2\t0\n");
}

TEST_F(VessStats, EventFileFieldsAndIntervals) {
    // 2 counts a pA, 50 us a point.
    auto rec = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(2048, 0), 50, 2.0f);
    EventTable table;
    const float times[] = {30, 10, 25};
    for (int i = 0; i < 3; ++i)
        table.Append(EventRecord{.time = times[i], .riseTime = int16_t(10 * (i + 1)), .group = uint8_t(i == 1 ? 2 : 1),
                                 .rise1090 = 0.25f * float(i + 1)});
    ASSERT_EQ(WriteEventFile(dir / "cell.EVT", rec->HeaderBytes(), AnalysisParameters{}, table, "cell.abf"), "");
    const std::string array = "array " + P("cell.EVT");
    EXPECT_EQ(Run(array + ":rise10-90").out, "0.25\n0.5\n0.75\n");
    EXPECT_EQ(Run(array + ":timetorise --group 1").out, "0.5\n1.5\n");  // 10 and 30 points of 50 us
    EXPECT_EQ(Run(array + ":interevent").out, "15\n5\n");
    EXPECT_EQ(Run(array + " --intervals --group 1").out, "5\n");
    test::ExpectRefused(Run(array + ":time --group 9"), 1, "There is no events with group number 9.  Try another group.");
    // Converted fields need the data file; stored ones do not.
    std::filesystem::remove(dir / "cell.abf");
    EXPECT_EQ(Run(array + ":timetorise").exitCode, 1);
    EXPECT_EQ(Run(array + ":time").out, "30\n10\n25\n");
    EXPECT_EQ(Run(array + ":nosuchfield").exitCode, 1);
}

}  // namespace
}  // namespace vess
