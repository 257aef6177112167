#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "recording/event_exports.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<std::string> Split(const std::string& line, char sep) {
    std::vector<std::string> out(1);
    for (char c : line) {
        if (c == sep) out.emplace_back();
        else out.back() += c;
    }
    return out;
}

// The CSV file holds the grid as the window shows it: the event number and
// all 17 columns headed with their units, values converted (2 counts a pA,
// 50 us a point), a half-width that was not measured left empty; the file
// name is asked with a .csv default and an existing file is replaced only
// after the question.
TEST(GridCsv, EveryGridColumnInTheGridsUnitsThroughTheSaveDialog) {
    test::TempDir dir;
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "cell.abf", std::vector<int16_t>(1024, 0), 50, 2.0f);
    EventRecord r;
    r.time = 12.5f;
    r.amplitude = -30;
    r.riseTime = 4;
    r.decayTime = 20;
    r.halfWidth = std::nanf("");
    r.peakDirection = -1;
    ws.events.Append(r);
    ws.events.Append(r);

    ScriptedDialogs dialogs;
    dialogs.AnswerSaveFile((dir / "grid").string());
    ASSERT_TRUE(SaveGridCsvCommand(ws, dialogs));
    EXPECT_EQ(dialogs.Transcript()[0].text, "CSV File (*.csv)");
    const auto bytes = ReadFileBytes(dir / "grid.csv");
    ASSERT_TRUE(bytes);
    std::istringstream in(std::string(bytes->begin(), bytes->end()));
    std::string header, first, second, extra;
    std::getline(in, header);
    std::getline(in, first);
    std::getline(in, second);
    EXPECT_FALSE(std::getline(in, extra));

    const auto titles = Split(header, ',');
    ASSERT_EQ(titles.size(), 18u);
    EXPECT_EQ(titles[0], "Event");
    EXPECT_EQ(titles[1], "Time (ms)");
    EXPECT_EQ(titles[2], "Amplitude (pA)");
    EXPECT_EQ(titles[4], "Time to Decay (ms)");
    const auto cells = Split(first, ',');
    ASSERT_EQ(cells.size(), 18u);
    EXPECT_EQ(cells[0], "1");
    EXPECT_EQ(cells[1], "12.5");
    EXPECT_EQ(cells[2], "-15");  // -30 counts at 2 counts a pA
    EXPECT_EQ(cells[4], "1");    // 20 points of 50 us
    EXPECT_EQ(cells[11], "");    // half-width not measured
    EXPECT_EQ(Split(second, ',')[0], "2");

    dialogs.AnswerSaveFile((dir / "grid.csv").string()).AnswerYesNo(false);
    EXPECT_FALSE(SaveGridCsvCommand(ws, dialogs));
}

}  // namespace
}  // namespace vess
