// The trace analyses of the group analysis window: each menu reaches its
// analysis, whose row joins the grid and whose marks are drawn (the measures
// themselves are checked in tests/group_analysis); analyses of superimposed
// traces run as jobs, and the picture is exported with scale bars.
#include <cmath>

#include "app/group_window_fixture.h"
#include "app/job_runner.h"
#include "group_analysis/result_row.h"
#include "support/ecg_beat.h"

namespace vess::test {
namespace {

using group::GroupAnalysisWindow;

class GroupAnalysesTest : public GroupWindowFixture {
protected:
    QString Cell(int row, int column) const { return w->Grid()->model()->index(row, column).data().toString(); }
    std::vector<std::string> MarkNames() const {
        std::vector<std::string> out;
        for (const auto& m : w->Picture()->Marks()) out.push_back(m.legend);
        return out;
    }
    void ClickPoint(int32_t point) {
        QTest::mouseClick(w->Picture(), Qt::LeftButton, {}, w->Picture()->PixelOf(w->CurrentTrace(), point).toPoint());
    }
};

TEST_F(GroupAnalysesTest, ManualDetectionAndPeaks) {
    GroupSampleEvents();
    Display("Average");
    w->Action("menu_ManualDetection")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Try Again");
    EXPECT_FALSE(w->ManualDetection());
    EXPECT_EQ(ws.results.Count(), 0);

    // Two clicks: two rows, the second with the difference; Escape ends.
    Display("Individual");
    w->MoveTo(1);
    w->Action("menu_ManualDetection")->trigger();
    ASSERT_TRUE(w->ManualDetection());
    const int32_t a = 40, b = 120;
    ClickPoint(a);
    ClickPoint(b);
    ASSERT_EQ(ws.results.Count(), 2);
    EXPECT_EQ(Cell(0, 3), "");   // no difference for the first point
    const double interval = w->Traces().intervalUs / 1000.0;
    EXPECT_EQ(Cell(1, 3), QString::number((b - a) * interval, 'f', 3));
    EXPECT_EQ(Cell(1, 4), QString::number(w->Picture()->ValueAt(b) - w->Picture()->ValueAt(a), 'f', 3));
    EXPECT_EQ(w->Picture()->Marks().at(0).x.size(), 2u);
    QTest::keyClick(w->Picture(), Qt::Key_Escape);
    EXPECT_FALSE(w->ManualDetection());
    ClickPoint(200);   // moves the cursor now
    EXPECT_EQ(ws.results.Count(), 2);
    EXPECT_EQ(w->Picture()->Cursor(0), 200);

    // Every event of the synthetic recording stands well out of its noise.
    Display("Individual", "4");
    w->MoveTo(2);
    w->Action("menu_Multipeak")->trigger();
    const int rows = ws.results.Count() - 2;
    ASSERT_GE(rows, 2);   // at least one peak and the summary
    EXPECT_EQ(Cell(ws.results.Count() - 1, 7), QString::number(rows - 1) + ".000");   // count
    EXPECT_EQ(MarkNames().front(), "Peaks");

    // The average event as an amperometric spike: its row and marks (the
    // superimposed run and the diffusion fit are jobs: GroupJobsTest below).
    Display("Average", "4");
    w->ElectronsBox()->setCurrentText("1");
    w->Action("menu_Ampero")->trigger();
    EXPECT_EQ(w->Settings().electrons, 1.0);
    EXPECT_EQ(MarkNames().front(), "Imax");
}

// Spontaneous action potentials (about one every 0.6 s, 50 us sampling).
TEST_F(GroupAnalysesTest, ActionPotentialsOfARealRecording) {
    VESS_REQUIRE_SHARED_DATA();
    ASSERT_TRUE(OpenFile(SharedData() / "abf2/SanPy_19114001.abf"));
    Display("Average", "100", true);
    w->Action("menu_APWave1")->trigger();
    ASSERT_EQ(ws.results.Count(), 1);
    EXPECT_GT(Cell(0, 8).toDouble(), 0.3);  // a half-width in ms (the measures: tests/group_analysis)
    EXPECT_EQ(MarkNames(), (std::vector<std::string>{"Peak", "Threshold", "Half-width", "AHP"}));

    Display("Average", "400", true);
    w->Action("menu_APWave2")->trigger();
    const int spikes = ws.results.Count() - 2;
    EXPECT_EQ(Cell(ws.results.Count() - 1, 19), QString::number(spikes) + ".000");
    ASSERT_TRUE(CurrentGraphFrame() && CurrentGraphFrame()->CurrentPlot());
    EXPECT_EQ(CurrentGraphFrame()->CurrentPlot()->Description().series.at(1).x.size(), std::size_t(spikes));
    CloseGraphFrame();  // a frame left open lies over the next test's window
}

// Synthetic ECG beats (2 ms sampling, 1 mV = 1000 counts) whose R peaks
// are the events: the averaged beat is delineated and QTc takes the events'
// mean RR.
TEST_F(GroupAnalysesTest, EcgOfAveragedBeats) {
    const double rr = 1000, dtMs = 2;
    const test::EcgBeatShape beat;   // QRS 361-441 ms, T to 681 ms, R at 401 ms
    std::vector<int16_t> samples;
    for (int i = 0; i * dtMs < 8 * rr; ++i)
        samples.push_back(int16_t(std::lround(1000 * beat.At(std::fmod(i * dtMs, rr)))));
    ASSERT_NE(MakeRecording(dir / "ecg.abf", samples, dtMs * 1000, 1000), nullptr);
    ASSERT_TRUE(OpenFile(dir / "ecg.abf"));
    for (int k = 1; k < 7; ++k)
        ws.events.Append(
            EventRecord{.time = float(k * rr + 400), .group = 1, .sampleIndex = int32_t((k * rr + 400) / dtMs)});
    // The average runs from one R peak over the next beat: the first cursor
    // after the T wave leaves the next P, QRS and T between the cursors.
    Display("Average", "4");
    ClickPoint(150);
    ASSERT_NEAR(w->Picture()->Cursor(0), 150, 2);   // the pixel nearest the point
    w->Action("menu_ECG")->trigger();
    ASSERT_EQ(ws.results.Count(), 1);
    EXPECT_EQ(group::ReadResultRow(ws.results[1]).kind, group::ResultKind::Ecg);
    // QRS 80 ms and QT 320 ms within a sample; the next
    // beat's QRS in the stretch must not pass for the end of T.
    EXPECT_NEAR(Cell(0, 10).toDouble(), 80, dtMs);
    EXPECT_NEAR(Cell(0, 11).toDouble(), 320, dtMs);
    EXPECT_EQ(Cell(0, 12), "1000.000");  // RR: the events' mean interval
    EXPECT_EQ(MarkNames(), (std::vector<std::string>{"QRS", "P", "T", "Isoelectric"}));
}

// Analyses of superimposed traces run as jobs; the picture drawn and exported
// as a plot with axes and scale bars.
class GroupJobsTest : public GroupWindowFixture {
protected:
    GroupAnalysisWindow* Display(const QString& type) {
        GroupSampleEvents();
        GroupWindowFixture::Display(type, "2");
        w->resize(1100, 800);
        return w;
    }
};

TEST_F(GroupJobsTest, SuperimposedAmperometryIsAJobWithOneRowPerEvent) {
    GroupAnalysisWindow* w = Display("Superimpose");
    const int32_t n = w->Traces().count;
    ASSERT_GE(n, 6);
    w->Action("menu_Ampero")->trigger();
    JobRunner& jobs = window->Jobs();
    ASSERT_TRUE(jobs.Running());
    // What would change the set or the results under the job waits for it.
    for (const char* name : {"menu_DisplayTrace", "menu_trace_remove", "menu_StartFitting", "menu_Ampero",
                             "menu_RandomWalk", "menu_NonStationary"})
        EXPECT_FALSE(w->Action(name)->isEnabled()) << name;
    EXPECT_FALSE(w->StartButton()->isEnabled());
    ASSERT_TRUE(WaitFor([&] { return !jobs.Running(); }, 60000));
    ASSERT_EQ(ws.results.Count(), n);  // the rows themselves: tests/group_analysis
    EXPECT_EQ(group::ReadResultRow(ws.results[n]).eventIndex, w->Traces().eventIndex[std::size_t(n)]);
    EXPECT_TRUE(w->Action("menu_Ampero")->isEnabled());
    // Every trace's peak is marked.
    ASSERT_FALSE(w->Picture()->Marks().empty());
    EXPECT_EQ(w->Picture()->Marks()[0].x.size(), std::size_t(n));
    Snapshot("group_ampero_superimposed", w);

    // Stop ends a diffusion fit of every trace early, keeping the rows made
    // (a search of a million simulations to 1e-15 cannot end before it).
    w->findChild<QLineEdit*>("Text2")->setText("1000000");
    w->findChild<QLineEdit*>("Text3")->setText("1e-15");
    w->Action("menu_RandomWalk")->trigger();
    ASSERT_TRUE(jobs.Running());
    jobs.Stop();
    ASSERT_TRUE(WaitFor([&] { return !jobs.Running(); }, 60000));
    EXPECT_LT(ws.results.Count(), 2 * n);
}

TEST_F(GroupJobsTest, ThePictureIsAPlotAndItsPngHasAxesAndScaleBars) {
    GroupAnalysisWindow* w = Display("Average");
    const PlotData& shown = w->Picture()->Description();
    EXPECT_EQ(shown.title, "Group # 1    Type: Average");
    EXPECT_EQ(shown.xAxis, "Time (ms)");
    ASSERT_FALSE(shown.series.empty());
    EXPECT_EQ(shown.series[0].x.size(), std::size_t(w->Traces().length));
    Snapshot("group_picture", w->Picture());

    const std::filesystem::path png = dir / "picture.png";
    dialogs.AnswerSaveFile(png.string()).AnswerYesNo(true);
    w->Action("menu_saveBMP")->trigger();
    EXPECT_EQ(dialogs.Transcript().back().caption, "Scale Bars");
    QImage image(QString::fromStdString(png.string()));
    ASSERT_FALSE(image.isNull());
    image.save(QString(VESS_BINARY_DIR) + "/app_screens/group_picture_export.png");
    EXPECT_EQ(image.size(), w->Picture()->size());
    // The scale bars are gone from the window again.
    for (const auto& s : w->Picture()->Description().series) EXPECT_EQ(s.legend.find(" ms"), std::string::npos);
}

}  // namespace
}  // namespace vess::test
