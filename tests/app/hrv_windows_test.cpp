// The heart-rate windows: each one's button reaches its command as a job and
// the result shows; presets and the measures themselves are checked in
// tests/hrv.
#include <QClipboard>
#include <QHeaderView>

#include <cmath>

#include "app/gui_fixture.h"
#include "app/job_runner.h"
#include "hrv/ui/geometric_window.h"
#include "hrv/ui/spectrum_window.h"
#include "hrv/ui/time_domain_window.h"
#include "recording/ini_file.h"

namespace vess::test {
namespace {

class HrvWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        ws.iniPath = dir / "Vessanto.ini";
        ws.settings.dataFolder = dir.Path().string();
        // 400 beats around 700 ms: 25 ms at 0.25 Hz and 15 ms at 0.08 Hz.
        double t = 0;
        for (int k = 0; k <= 400; ++k) {
            EventRecord r;
            r.time = float(t);
            ws.events.Append(r);
            t += 700 + 25 * std::sin(2 * M_PI * 0.25 * t / 1000) + 15 * std::sin(2 * M_PI * 0.08 * t / 1000);
        }
    }
    static void Click(QPushButton* b) { QTest::mouseClick(b, Qt::LeftButton); }
    // Start is disabled while the job runs and enabled again when it ends.
    void RunAsJob(QPushButton* start, JobRunner& jobs) {
        Click(start);
        EXPECT_FALSE(start->isEnabled());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !jobs.Running(); }, 10000));
        EXPECT_TRUE(start->isEnabled());
    }
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

TEST_F(HrvWindowTest, TimeDomainGridsDefinitionsCopySaveAndPresets) {
    JobRunner jobs(dialogs);
    hrv::TimeDomainWindow w(ws, dialogs, jobs, dir.Path());
    w.show();
    QComboBox* preset = w.PresetBox();
    preset->setCurrentIndex(1);
    emit preset->activated(1);
    EXPECT_EQ(w.Options().lowerBoundMs, 300);
    w.UpperBoundBox()->setCurrentText("900");
    EXPECT_EQ(w.PresetInForceLabel()->text(), "In force: Custom");

    QTableWidget* results = w.ResultsGrid();
    for (int run = 0; run < 2; ++run) RunAsJob(w.RunButton(), jobs);  // the same file again replaces its row
    ASSERT_EQ(results->rowCount(), 1);
    EXPECT_EQ(results->item(0, 1)->text(), "400");  // n RR
    EXPECT_GE(w.SegmentsGrid()->rowCount(), 1);

    QHeaderView* header = results->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(3) + 5, header->height() / 2));
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_TRUE(dialogs.Messages().back().text.starts_with("SDRR is the standard deviation"));
    w.Action("menu_TimeDomainCopy")->trigger();
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("File Name\tn RR\tMRR"));
    for (const char* answer : {"segments", "segments.txt"}) {
        dialogs.AnswerSaveFile((dir / answer).string());
        w.Action("menu_SegmentResults")->trigger();
    }
    EXPECT_TRUE(std::filesystem::exists(dir / "segments.txt"));
    EXPECT_EQ(dialogs.Messages().back().caption, "File Exist");

    Click(w.SaveButton());
    EXPECT_EQ(IniFile::Load(ws.iniPath).Get("HRV", "RRUBound"), "900");
}

TEST_F(HrvWindowTest, GeometricPanesAndMeasures) {
    hrv::GeometricWindow w(ws, dialogs);
    w.show();
    w.UpperBoundBox()->setCurrentText("2000");  // the beats of about 700 ms within the bounds
    w.LowerBoundBox()->setCurrentText("300");
    w.RRBinBox()->setCurrentText("5");
    Click(w.RunButton());
    for (PlotWidget* pane : w.Panes()) ASSERT_NE(pane, nullptr);
    EXPECT_NE(w.Panes()[0]->Description().title.find("bin size=5 msec"), std::string::npos);
    EXPECT_TRUE(w.MeasuresLabel()->text().contains("TINN"));
}

// The stored bounds are no preset's until "Human" is chosen; then the
// spectrum job fills the bands table and the plot.
TEST_F(HrvWindowTest, SpectrumPresetBandsAndExport) {
    JobRunner jobs(dialogs);
    hrv::SpectrumWindow w(ws, dialogs, jobs);
    w.show();
    QLabel* label = w.PresetInForceLabel();
    EXPECT_EQ(label->text(), "In force: Custom");
    QComboBox* preset = w.PresetBox();
    preset->setCurrentIndex(0);
    emit preset->activated(0);
    EXPECT_EQ(w.LowerBoundBox()->currentText(), "300");
    EXPECT_EQ(label->text(), "In force: Human");

    RunAsJob(w.RunButton(), jobs);
    ASSERT_TRUE(w.Result());
    EXPECT_EQ(w.Table()->item(2, 0)->text(), "HF");
    EXPECT_NEAR(w.Result()->hf.peakHz, 0.25, 1.0 / 64);  // the 0.25 Hz modulation built in
    ASSERT_NE(w.Plot(), nullptr);
    EXPECT_EQ(w.Plot()->Description().bands.size(), 3u);
    dialogs.AnswerSaveFile((dir / "spectrum").string());
    EXPECT_TRUE(w.SaveResults());
    EXPECT_TRUE(std::filesystem::exists(dir / "spectrum.txt"));
}

}  // namespace
}  // namespace vess::test
