#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "hrv/hrv_options.h"
#include "hrv/plot_commands.h"
#include "hrv/rr_intervals.h"
#include "hrv/scans.h"
#include "hrv/tachogram.h"
#include "hrv/texts.h"
#include "recording/file_io.h"
#include "recording/scripted_dialogs.h"
#include "recording/template_header.h"
#include "recording/workspace.h"
#include "support/beats.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess::hrv {
namespace {

using test::BeatsAt;

std::vector<int> Groups(const Workspace& ws) {
    std::vector<int> g;
    for (const EventRecord& r : ws.events.Records()) g.push_back(r.group);
    return g;
}

// A missing beat marks the beat before the gap; a short interval rejects the later beat.
TEST(Scans, MissingBeatsAndShortIntervalsMarkTheirBeats) {
    Workspace ws = BeatsAt({0, 800, 1600, 3200});
    ScriptedDialogs d;
    // An empty answer or 0 ends the scan without change, a cancel too.
    for (const char* answer : {"", "0"}) EXPECT_FALSE(ScanMissingBeatsCommand(ws, d.AnswerInput(std::string(answer))));
    EXPECT_FALSE(ScanRejectRRIntervalsCommand(ws, d.AnswerInput(std::nullopt)));
    EXPECT_EQ(std::tuple(Groups(ws), d.Messages().size()), std::tuple(std::vector<int>{0, 0, 0, 0}, 0u));
    ASSERT_TRUE(ScanMissingBeatsCommand(ws, d.AnswerInput("1000")));
    EXPECT_EQ(Groups(ws), (std::vector<int>{0, 0, 253, 0}));
    ASSERT_EQ(d.Messages().size(), 1u);
    EXPECT_EQ(d.Messages()[0].text,
              "There are 1 areas with potential missing beats.  The events are marked as group #253.");
    EXPECT_TRUE(ws.history.CanUndo());
    ASSERT_TRUE(ScanRejectRRIntervalsCommand(ws, d.AnswerInput("900")));
    EXPECT_EQ(Groups(ws), (std::vector<int>{0, 255, 255, 0}));
    EXPECT_EQ(d.Messages().back().text, "2 events are rejected and marked as group #255");
}

TEST(Scans, EventsOutOfOrderAreSortedOnlyOnYes) {
    Workspace ws = BeatsAt({800, 0, 3200, 1600});
    ScriptedDialogs d;
    d.AnswerYesNo(false);
    EXPECT_FALSE(ScanMissingBeatsCommand(ws, d));
    EXPECT_EQ(std::tuple(d.Transcript()[0].caption, ws.events[1].time), std::tuple("Sort Events", 800));
    d.AnswerYesNo(true).AnswerInput("1000");
    ASSERT_TRUE(ScanMissingBeatsCommand(ws, d));
    EXPECT_EQ(std::tuple(ws.events[1].time, ws.events[4].time, ws.events[3].group), std::tuple(0, 3200, 253));
}

TEST(Tachogram, AsciiFileLayout) {
    const std::vector<double> rr{800, 812.3456};
    EXPECT_EQ(TachogramAtfText("heart.abf", rr),
              "ATF\t1.0\r\n1\t2\r\n\"Tachogram: heart.abf\"\r\n\"Beat #\"\t\"RR Interval (ms)\"\r\n"
              "1\t800.000\r\n2\t812.346\r\n");
    test::TempDir dir;
    Workspace ws = BeatsAt({0, 800, 1600});
    ScriptedDialogs d;
    d.AnswerSaveFile((dir / "tacho").string());
    ASSERT_TRUE(SaveTachogramAsciiCommand(ws, d));
    const auto bytes = ReadFileBytes(dir / "tacho.txt");
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::string(bytes->begin(), bytes->end()), TachogramAtfText("", std::vector<double>{800, 800}));
    // Saving again over it asks to replace; No leaves it.
    ScriptedDialogs again;
    again.AnswerSaveFile((dir / "tacho.txt").string()).AnswerYesNo(false);
    EXPECT_EQ((std::tuple{bool(SaveTachogramAsciiCommand(ws, again)), again.Transcript().back().caption}),
              std::tuple(false, "Replace File"));
}

// Without the template nothing is asked or written; with it the file reads back in ms.
TEST(Tachogram, AbfOnTheTemplateReadsBackInMsOnAScaleFittingTheLongest) {
    test::TempDir dir;
    Workspace ws = BeatsAt({0, 812.5f, 1625, 3225, 3300});
    ScriptedDialogs d;  // no save answer queued: a file dialog would throw
    EXPECT_FALSE(ShowFailure(d, SaveTachogramAbfCommand(ws, d, dir.Path())));
    ASSERT_EQ(d.Messages().size(), 1u);
    EXPECT_NE(d.Messages()[0].text.find("SamplABF.dat does not exist"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(dir.Path()));
    ASSERT_EQ(EnsureTemplateHeader(dir.Path()).error, "");
    d.AnswerSaveFile((dir / "tacho").string());
    ASSERT_TRUE(SaveTachogramAbfCommand(ws, d, dir.Path()));
    EXPECT_EQ(d.Messages().back().text, "The Tachogram is saved as tacho.ABF");
    auto rec = test::OpenFile(dir / "tacho.ABF");
    ASSERT_TRUE(rec);
    EXPECT_EQ(std::tuple(rec->ChannelCount(), rec->PointsPerChannel(), rec->Units(), rec->IntervalUs()),
              std::tuple(1, 4, "ms", 1e6));
    const std::vector<double> expected{812.5, 812.5, 1600, 75};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(rec->Bit2pA(rec->Sample(i)), expected[std::size_t(i)], 1e-3);
    // The template's own fields outside the changed ones are kept.
    const auto tpl = ReadFileBytes(dir / "SamplABF.dat");
    EXPECT_EQ(std::vector<uint8_t>(tpl->begin() + 4, tpl->begin() + 8),
              std::vector<uint8_t>(rec->HeaderBytes().begin() + 4, rec->HeaderBytes().begin() + 8));
    // Intervals longer than 3276.7 ms are written on a coarser scale, not clipped.
    const std::vector<double> rr{800, 5000, 40000};
    EXPECT_EQ(std::tuple(TachogramCountsPerMs(std::vector<double>{800, 3276.7}),
                         TachogramCountsPerMs(std::vector<double>{800, 5000})), std::tuple(10, 1));
    const TachogramAbf abf = BuildTachogramAbf(*tpl, rr, "long");
    ASSERT_EQ(WriteFileAtomic(dir / "long.abf", abf.bytes), "");
    rec = test::OpenFile(dir / "long.abf");
    ASSERT_TRUE(rec);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(rec->Bit2pA(rec->Sample(i)), rr[std::size_t(i)], 5) << i;  // 10 ms a count
}

// Rejected beats are no beats; the sample index gives the exact time.
TEST(Beats, RejectedLeftOutExactTimesFromTheSampleIndex) {
    Workspace ws = BeatsAt({7200000.0f, 7200000.5f, 7200001.0f});
    ws.events[2].group = uint8_t(kGroupRejected);
    ws.events[3].sampleIndex = 144'000'021;  // 50 us samples: 7200001.05 ms
    const std::vector<double> beats = BeatTimesMs(ws.events, 50);
    ASSERT_EQ(beats.size(), 2u);
    EXPECT_EQ(beats[0], 7200000.0);  // no sample index: the stored time
    EXPECT_DOUBLE_EQ(beats[1], 7200001.05);
}

TEST(Options, DefaultsSaveAndPresets) {
    test::TempDir dir;
    const auto ini = dir / "Vessanto.ini";
    EXPECT_EQ(LoadHrvOptions(ini), HrvOptions{});  // no file: every default
    // The bin size is not a key of the time-domain window.
    const HrvOptions o{.upperBoundMs = 250, .pointsPerSegment = 12345, .includeZeroSegments = true, .rrBinMs = 4};
    ScriptedDialogs d;
    ASSERT_TRUE(SaveHrvOptionsCommand(ini, o, HrvWindow::TimeDomain, d));
    const HrvOptions back = LoadHrvOptions(ini);
    EXPECT_EQ(std::tuple(back.upperBoundMs, back.pointsPerSegment, back.includeZeroSegments, back.rrBinMs),
              std::tuple(250.0, 12345, true, 1.0));
    ASSERT_TRUE(SaveHrvOptionsCommand(ini, o, HrvWindow::Geometric, d));
    EXPECT_EQ(std::tuple(LoadHrvOptions(ini).rrBinMs, IniFile::Load(ini).Get("HRV", "IncludeZero")), std::tuple(4, "1"));
    // Presets set the segment length for the recording's interval, and are recognised.
    const HrvOptions human = ApplyPreset(HrvOptions{}, Preset::Human, 1000);
    EXPECT_EQ(human.pointsPerSegment, 300000);  // 5 minutes of 1 ms samples
    EXPECT_TRUE(PresetInForce(human, 1000) == Preset::Human &&
                PresetInForce(ApplyPreset(o, Preset::Mouse, 50), 50) == Preset::Mouse &&
                PresetInForce(HrvOptions{}, 50) == Preset::Stored && PresetInForce(o, 50) == Preset::Custom);
}

TEST(HrvPlots, HistogramsAskTheBinAndKeepTheLimit) {
    Workspace ws = BeatsAt({0, 800, 1600, 3200});
    ScriptedDialogs d;
    d.AnswerInput("100");
    const auto rr = RRHistogramCommand(ws, d);
    ASSERT_TRUE(rr);
    EXPECT_EQ(rr->title, "RR Interval Histogram  Frequency Histogram   bin size=100 msec");
    // 800, 800 in bin 8 and 1600 in bin 16: bins 8..16.
    const PlotSeries& bins = rr->series.at(0);
    ASSERT_EQ(bins.x.size(), 9u);
    EXPECT_EQ(std::tuple(bins.x.front(), bins.y.front(), bins.y.back()), std::tuple(800, 2, 1));
    d.AnswerInput("2");
    const auto delta = DeltaRRHistogramCommand(ws, d);
    ASSERT_TRUE(delta);
    EXPECT_EQ(delta->title.rfind("Delta RR Interval Histogram ", 0), 0u);
    // 800 ms in bins of 0.01 ms: 80001 bins are refused.
    d.AnswerInput("0.01");
    const auto refused = RRHistogramCommand(ws, d);
    EXPECT_EQ(std::tuple(refused.failed(), refused.caption()), std::tuple(true, "Too many bins"));
    d.AnswerInput("");
    EXPECT_TRUE(!RRHistogramCommand(ws, d) && d.AllAnswersUsed());
}

TEST(HrvPlots, LorenzEllipseArcsAndTachogram) {
    Workspace ws = BeatsAt({0, 800, 1650, 2400, 3300, 4000, 4850});
    ScriptedDialogs d;
    const auto plot = LorenzPlotCommand(ws, d);
    ASSERT_TRUE(plot);
    const PlotData& lorenz = *plot;
    // Points, two arcs of the ellipse, identity line.
    ASSERT_EQ(std::tuple(lorenz.series.size(), lorenz.series[0].x.size()), std::tuple(4u, 5u));
    // Each arc is drawn in x order, and together they meet at the extremes.
    for (int a : {1, 2}) EXPECT_TRUE(std::is_sorted(lorenz.series[a].x.begin(), lorenz.series[a].x.end()));
    EXPECT_EQ(std::tuple(lorenz.series[1].x.front(), lorenz.series[1].x.back()),
              std::tuple(lorenz.series[2].x.front(), lorenz.series[2].x.back()));
    const auto tacho = TachogramPlotCommand(ws, d);
    ASSERT_TRUE(tacho);
    EXPECT_EQ(std::tuple(tacho->series[0].x, tacho->series[0].y[1]), std::tuple(std::vector<double>{1, 2, 3, 4, 5, 6}, 850));
}

}  // namespace
}  // namespace vess::hrv
