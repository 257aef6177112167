// vess info on every integer ABF 2 recording of ../shared/data/abf2 prints
// the values of its row in the ABF 2 table of ../shared/data/README.md. The
// table is read from the README itself, so a row added there is checked here.
#include <cmath>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "support/run_vess.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<std::string> Cells(const std::string& line) {
    std::vector<std::string> cells;
    std::stringstream in(line);
    for (std::string cell; std::getline(in, cell, '|');) {
        const auto first = cell.find_first_not_of(' '), last = cell.find_last_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return std::vector<std::string>(cells.begin() + 1, cells.end());  // before the first '|'
}

// The rows of the ABF 2 table with integer samples: cells of "| abf2/..." lines
// that have a unit.
std::vector<std::vector<std::string>> Abf2Rows() {
    std::ifstream readme(test::SharedData() / "README.md");
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(readme, line);)
        if (line.rfind("| abf2/", 0) == 0) {
            auto cells = Cells(line);
            if (cells.size() >= 14 && !cells[6].empty()) rows.push_back(std::move(cells));
        }
    return rows;
}

// The value printed after `label` on its own line of out.
std::string Printed(const std::string& out, const std::string& label) {
    const auto at = out.find("\n" + label);
    if (at == std::string::npos) return "(missing " + label + ")";
    const auto from = at + 1 + label.size();
    return out.substr(from, out.find('\n', from) - from);
}

std::vector<double> Numbers(const std::string& list) {
    std::vector<double> v;
    std::stringstream in(list);
    for (std::string item; std::getline(in, item, ',');) v.push_back(std::stod(item));
    return v;
}

TEST(VessInfoAbf2, EveryRowOfTheReadmeTable) {
    VESS_REQUIRE_SHARED_DATA();
    const auto rows = Abf2Rows();
    ASSERT_GE(rows.size(), 28u);
    test::TempDir dir;
    for (const auto& row : rows) {
        // file, version, mode, channels, channel (ADC), name, units, interval,
        // blocks, points, telegraph gain, first counts, first values, last value
        const std::string channel = row[4].substr(0, row[4].find(' '));
        SCOPED_TRACE(row[0] + " channel " + channel);
        const auto r = test::RunVessCli(
            "info '" + (test::SharedData() / row[0]).string() + "' --channel " + channel,
            dir / "err.txt");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        const std::string units = row[6];
        EXPECT_EQ(Printed(r.out, "FileVersionNumber "), row[1]);
        EXPECT_EQ(Printed(r.out, "Channels: "), row[3]);
        EXPECT_EQ(Printed(r.out, "Channel: "), row[4]);
        EXPECT_EQ(Printed(r.out, "ADCChannelName (" + channel + ") "), row[5]);
        EXPECT_EQ(Printed(r.out, "Units: "), units);
        EXPECT_EQ(Printed(r.out, "Interval per channel (us): "), row[7]);
        EXPECT_EQ(Printed(r.out, "Blocks (256 points): "), row[8]);
        EXPECT_EQ(Printed(r.out, "Points per channel: "), row[9]);
        const auto sweeps = row[2].find("sweeps");
        EXPECT_EQ(Printed(r.out, "Sweeps: "),
                  sweeps == std::string::npos ? "1" : row[2].substr(10, sweeps - 11));
        EXPECT_EQ(Printed(r.out, "First samples (counts): "), row[11]);
        const auto listed = Numbers(row[12]);
        const auto printed = Numbers(Printed(r.out, "First values (" + units + "): "));
        ASSERT_EQ(printed.size(), listed.size());
        for (std::size_t i = 0; i < listed.size(); ++i)
            EXPECT_NEAR(printed[i], listed[i], 2e-5 + 1e-6 * std::fabs(listed[i])) << i;
        EXPECT_NEAR(std::stod(Printed(r.out, "Last value (" + units + "): ")), std::stod(row[13]),
                    2e-5);
    }
}

TEST(VessInfoAbf2, FloatingPointFileIsRefused) {
    VESS_REQUIRE_SHARED_DATA();
    test::TempDir dir;
    const auto r = test::RunVessCli(
        "info '" + (test::SharedData() / "abf2/SWHLab_gain_float32.abf").string() + "'",
        dir / "err.txt");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Not in Integer Format"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace vess
