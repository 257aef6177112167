// The heart-rate windows on the offscreen platform: options and presets,
// "Start Analysis" filling both grids, the definitions behind the column
// headers, copy and save; the geometric panes; the spectrum with its bands;
// and the main window's heart-rate menu.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "graphs/ui/plot_widget.h"
#include "hrv/texts.h"
#include "hrv/ui/geometric_window.h"
#include "hrv/ui/spectrum_window.h"
#include "hrv/ui/time_domain_window.h"
#include "recording/ini_file.h"
#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/test_recording.h"

namespace vess::test {
namespace {

class HrvWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        ws.iniPath = dir / "Vessanto.ini";
        ws.settings.DataDir = dir.Path().string();
        // 400 beats around 700 ms: 25 ms at 0.25 Hz and 15 ms at 0.08 Hz.
        double t = 0;
        for (int k = 0; k <= 400; ++k) {
            EventRecord r;
            r.time = float(t);
            ws.events.Append(r);
            t += 700 + 25 * std::sin(2 * M_PI * 0.25 * t / 1000) + 15 * std::sin(2 * M_PI * 0.08 * t / 1000);
        }
    }
    void Click(QWidget& w, const char* name) {
        auto* b = w.findChild<QPushButton*>(name);
        ASSERT_NE(b, nullptr) << name;
        QTest::mouseClick(b, Qt::LeftButton);
    }
    void Type(QWidget& w, const char* list, const QString& text) {
        auto* c = w.findChild<QComboBox*>(list);
        ASSERT_NE(c, nullptr) << list;
        c->setCurrentText(text);
    }
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

TEST_F(HrvWindowTest, TimeDomainGridsDefinitionsCopySaveAndPresets) {
    JobRunner jobs(dialogs);
    hrv::TimeDomainWindow w(ws, dialogs, jobs, dir.Path());
    w.show();
    auto* presetLabel = w.findChild<QLabel*>("lbPresetInForce");
    EXPECT_EQ(presetLabel->text(), "In force: Defaults (small rodents)");
    // The human preset sets both bounds (and the segment length) and says so.
    auto* preset = w.findChild<QComboBox*>("cbPreset");
    preset->setCurrentIndex(1);
    emit preset->activated(1);
    EXPECT_EQ(w.Options().upperBoundMs, 2000);
    EXPECT_EQ(w.Options().lowerBoundMs, 300);
    EXPECT_EQ(presetLabel->text(), "In force: Human");
    Type(w, "cbRRUBound", "900");
    EXPECT_EQ(presetLabel->text(), "In force: Custom");

    // The analysis is a job: Start Analysis waits while it runs, and the
    // grids fill when it ends.
    Click(w, "Command1");
    auto* results = w.findChild<QTableWidget*>("TDBGrid1");
    auto* segments = w.findChild<QTableWidget*>("TDBGrid2");
    EXPECT_FALSE(w.findChild<QPushButton*>("Command1")->isEnabled());
    EXPECT_EQ(results->rowCount(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !jobs.Running(); }, 10000));
    EXPECT_TRUE(w.findChild<QPushButton*>("Command1")->isEnabled());
    ASSERT_EQ(results->rowCount(), 1);
    EXPECT_EQ(results->columnCount(), 16);
    EXPECT_EQ(results->item(0, 1)->text(), "400");  // n RR
    EXPECT_EQ(segments->horizontalHeaderItem(1)->text(), "n RR ");
    EXPECT_GE(segments->rowCount(), 1);
    Click(w, "Command1");  // the same file again replaces its row
    ASSERT_TRUE(QTest::qWaitFor([&] { return !jobs.Running(); }, 10000));
    EXPECT_EQ(results->rowCount(), 1);

    // A click on the SDRR header shows its definition.
    QHeaderView* header = results->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(3) + 5, header->height() / 2));
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().text,
              "SDRR is the standard deviation of RR-intervals.  It is also called cyclic length variation "
              "(CLV).");

    w.Action("menu_TimeDomainCopy")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Copy Finished");
    EXPECT_EQ(dialogs.Messages().back().text, "Results are copied onto Clipboard.");
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("File Name\tn RR\tMRR"));

    dialogs.AnswerSaveFile((dir / "segments").string());
    w.Action("menu_SegmentResults")->trigger();
    EXPECT_TRUE(std::filesystem::exists(dir / "segments.txt"));
    dialogs.AnswerSaveFile((dir / "segments.txt").string());
    w.Action("menu_SegmentResults")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "File Exist");

    Click(w, "Command2");
    EXPECT_EQ(dialogs.Messages().back().caption, "Settings Saved");
    EXPECT_EQ(IniFile::Load(ws.iniPath).Get("HRV", "RRUBound"), "900");
    EXPECT_EQ(IniFile::Load(ws.iniPath).Get("HRV", "RRLBound"), "300");
}

TEST_F(HrvWindowTest, GeometricPanesAndMeasures) {
    hrv::GeometricWindow w(ws, dialogs);
    w.show();
    Type(w, "cbRRUBound", "2000");
    Type(w, "cbRRLBound", "300");
    EXPECT_EQ(w.findChild<QLabel*>("lbPresetInForce")->text(), "In force: Human");
    Type(w, "cbRRBinSize", "5");
    Click(w, "Command1");
    for (PlotWidget* pane : w.Panes()) ASSERT_NE(pane, nullptr);
    EXPECT_EQ(w.Panes()[0]->Description().title,
              "RR Interval Histogram  Frequency Histogram   bin size=5 msec");
    EXPECT_TRUE(w.findChild<QLabel*>("lbMeasures")->text().contains("TINN"));
    ASSERT_TRUE(w.Analysis());
    EXPECT_GT(w.Analysis()->lorenz.sd2Ms, w.Analysis()->lorenz.sd1Ms);

    // Bins of 0.001 ms over the delta RR spread are too many.
    Type(w, "cbDeltaRRBinSize", "0.001");
    Click(w, "Command1");
    EXPECT_EQ(dialogs.Messages().back().caption, "Too many bins");
}

// The stored bounds (10 to 100 ms) are no preset's; choosing "Human" sets
// the bounds it names as well as its bands.
TEST_F(HrvWindowTest, SpectrumPresetSetsTheBoundsItNames) {
    JobRunner jobs(dialogs);
    hrv::SpectrumWindow w(ws, dialogs, jobs);
    w.show();
    auto* label = w.findChild<QLabel*>("lbPresetInForce");
    EXPECT_EQ(label->text(), "In force: Custom");
    auto* preset = w.findChild<QComboBox*>("cbSpectrumPreset");
    preset->setCurrentIndex(0);
    emit preset->activated(0);
    EXPECT_EQ(w.findChild<QComboBox*>("cbRRUBound")->currentText(), "2000");
    EXPECT_EQ(w.findChild<QComboBox*>("cbRRLBound")->currentText(), "300");
    EXPECT_EQ(label->text(), "In force: Human");
}

TEST_F(HrvWindowTest, SpectrumBandsTableAndExport) {
    IniFile ini;
    ini.Set("HRV", "RRUBound", "2000");
    ini.Set("HRV", "RRLBound", "300");
    ASSERT_EQ(ini.Save(ws.iniPath), "");
    JobRunner jobs(dialogs);
    hrv::SpectrumWindow w(ws, dialogs, jobs);
    w.show();
    EXPECT_EQ(w.findChild<QLabel*>("lbPresetInForce")->text(), "In force: Human");
    // The spectrum is a job: Compute waits while it runs, the result follows.
    Click(w, "Command1");
    EXPECT_TRUE(jobs.Running());
    EXPECT_FALSE(w.findChild<QPushButton*>("Command1")->isEnabled());
    EXPECT_FALSE(w.Result());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !jobs.Running(); }, 10000));
    EXPECT_TRUE(w.findChild<QPushButton*>("Command1")->isEnabled());
    ASSERT_TRUE(w.Result());
    EXPECT_EQ(w.Table()->rowCount(), 4);
    EXPECT_EQ(w.Table()->item(2, 0)->text(), "HF");
    EXPECT_GT(w.Result()->hf.powerMs2, w.Result()->vlf.powerMs2);
    EXPECT_NEAR(w.Result()->hf.peakHz, 0.25, 1.0 / 64);
    ASSERT_NE(w.Plot(), nullptr);
    EXPECT_EQ(w.Plot()->Description().bands.size(), 3u);
    dialogs.AnswerSaveFile((dir / "spectrum").string());
    EXPECT_TRUE(w.SaveResults());
    EXPECT_TRUE(std::filesystem::exists(dir / "spectrum.txt"));
    dialogs.AnswerSaveFile((dir / "spectrum.png").string());
    EXPECT_TRUE(w.SavePlot());
}

TEST_F(HrvWindowTest, MainWindowHeartRateMenuOpensTheWindows) {
    MainWindow main(ws, dialogs);
    main.Action("menu_HRV")->trigger();
    auto* td = main.findChild<hrv::TimeDomainWindow*>("frmHRV");
    ASSERT_NE(td, nullptr);
    EXPECT_TRUE(td->isVisible());
    main.Action("menu_HRV")->trigger();  // raised, not opened twice
    EXPECT_EQ(main.findChildren<hrv::TimeDomainWindow*>().size(), 1);
    // The scan marks through the main window's workspace.
    dialogs.AnswerInput("701");
    main.Action("menu_ScanRejectRRIntervals")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Search Finished");
    td->close();
}

}  // namespace
}  // namespace vess::test
