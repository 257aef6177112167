// The batch window from the signal menu: a run over two recordings fills the
// summary table and writes the event files, Stop ends a long run, and the
// summary is saved as the command line writes it.
#include <QCheckBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include "batch/texts.h"
#include "batch/ui/batch_window.h"
#include "recording/file_io.h"
#include "app/gui_fixture.h"

namespace vess::test {
namespace {

class BatchWindowTest : public GuiTest {
protected:
    BatchWindow* Open() {
        QAction* a = window->findChild<QAction*>("menu_Batch");
        EXPECT_NE(a, nullptr);
        if (!a) return nullptr;
        a->trigger();
        auto* w = window->findChild<BatchWindow*>("BatchWindow");
        EXPECT_NE(w, nullptr);
        return w;
    }
    std::filesystem::path Synth(const std::string& name, double seconds) {
        SynthOptions o;
        o.seconds = seconds;
        o.seed = 5;
        const auto path = dir / name;
        EXPECT_EQ(WriteSynthetic(path, Synthesise(o)), "");
        return path;
    }
    static void Picture(QWidget* w, const QString& name) {
        const QString folder = QString(VESS_BINARY_DIR) + "/app_screens";
        QDir().mkpath(folder);
        EXPECT_TRUE(w->grab().save(folder + "/" + name + ".png"));
    }
    static QString Cell(BatchWindow* w, int row, int summaryColumn) {
        const QTableWidgetItem* item = w->Table()->item(row, BatchWindow::kProgressColumn + 1 + summaryColumn);
        return item ? item->text() : QString();
    }
};

TEST_F(BatchWindowTest, RunsTwoRecordingsAndSavesTheSummary) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    const auto second = Synth("second.abf", 3);
    w->AddRecordings({dir.Path()});  // the folder: syn.abf and second.abf
    w->SetOutputFolder(dir / "events");
    std::filesystem::create_directories(dir / "events");
    ASSERT_EQ(w->Table()->rowCount(), 2);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    for (int row = 0; row < 2; ++row) {
        const BatchRow& r = w->Rows()[std::size_t(row)];
        EXPECT_TRUE(r.analysed) << r.errors;
        EXPECT_GT(r.events, 5);
        EXPECT_EQ(Cell(w, row, 3), QString::number(r.events));  // Events column
        EXPECT_EQ(w->Table()->item(row, BatchWindow::kProgressColumn)->data(Qt::DisplayRole).toInt(), 100);
        EXPECT_TRUE(std::filesystem::exists(dir / "events" / (r.file.stem().string() + ".EVT")));
    }
    EXPECT_EQ(Cell(w, 0, 0), "second.abf");
    Picture(w, "batch_window");

    dialogs.AnswerSaveFile((dir / "summary.csv").string());
    QTest::mouseClick(w->findChild<QPushButton*>("saveSummary"), Qt::LeftButton);
    const auto saved = ReadFileBytes(dir / "summary.csv");
    ASSERT_TRUE(saved);
    EXPECT_EQ(std::string(saved->begin(), saved->end()), SummaryCsv(w->Rows()));

    // A second run keeps the event files the first wrote, unless the box
    // asks to replace them.
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    EXPECT_TRUE(w->Rows()[0].kept);
    EXPECT_EQ(Cell(w, 0, 10).toStdString(), batch_texts::kKeptEventFile);
    Picture(w, "batch_window_kept");
    w->findChild<QCheckBox*>("overwrite")->setChecked(true);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    EXPECT_TRUE(w->Rows()[0].analysed);
    EXPECT_EQ(Cell(w, 0, 10), "");
}

TEST_F(BatchWindowTest, StopEndsALongRunAndTheWindowAnswersMeanwhile) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    w->AddRecordings({Synth("long1.abf", 60), Synth("long2.abf", 60), Synth("long3.abf", 60)});
    w->findChild<QSpinBox*>("jobs")->setValue(1);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(w->Running());
    EXPECT_TRUE(w->findChild<QPushButton*>("stop")->isEnabled());
    EXPECT_FALSE(w->findChild<QPushButton*>("run")->isEnabled());
    QTest::mouseClick(w->findChild<QPushButton*>("stop"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    // The last recording cannot have begun before Stop with one worker.
    EXPECT_FALSE(w->Rows()[2].analysed);
    EXPECT_EQ(Cell(w, 2, 10).toStdString(), batch_texts::kStopped);
    EXPECT_TRUE(w->findChild<QPushButton*>("run")->isEnabled());
    Picture(w, "batch_window_stopped");
}

// Clear while a run went emptied the list its results were still being
// written into.
TEST_F(BatchWindowTest, TheFileListWaitsForARunningBatch) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    w->AddRecordings({Synth("a.abf", 20), Synth("b.abf", 20), Synth("c.abf", 20)});
    w->findChild<QSpinBox*>("jobs")->setValue(1);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(w->Running());
    for (const char* name : {"addFiles", "addFolder", "clearFiles"})
        EXPECT_FALSE(w->findChild<QPushButton*>(name)->isEnabled()) << name;
    QTest::mouseClick(w->findChild<QPushButton*>("clearFiles"), Qt::LeftButton);
    Picture(window.get(), "main_window_job_running");
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 60000));
    ASSERT_EQ(w->Table()->rowCount(), 3);
    ASSERT_EQ(w->Rows().size(), 3u);
    for (int row = 0; row < 3; ++row) {
        EXPECT_TRUE(w->Rows()[std::size_t(row)].analysed) << w->Rows()[std::size_t(row)].errors;
        EXPECT_EQ(Cell(w, row, 3), QString::number(w->Rows()[std::size_t(row)].events));
    }
    EXPECT_TRUE(w->findChild<QPushButton*>("clearFiles")->isEnabled());
}

}  // namespace
}  // namespace vess::test
