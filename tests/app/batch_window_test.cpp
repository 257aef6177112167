// The batch window from the signal menu: a run over two recordings fills the
// summary table and writes the event files, Stop ends a long run, the
// summary is saved as the command line writes it, and the pickers go through
// the program's dialogs.
#include <QCheckBox>
#include <QLabel>
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
    w->findChild<QCheckBox*>("overwrite")->setChecked(true);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    EXPECT_TRUE(w->Rows()[0].analysed);
    EXPECT_EQ(Cell(w, 0, 10), "");
}

// Stop ends a long run; meanwhile the window answers, and the file list
// waits for the run (Clear while a run went emptied the list its results
// were still being written into).
TEST_F(BatchWindowTest, StopEndsALongRunAndTheFileListWaitsForIt) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    w->AddRecordings({Synth("a.abf", 20), Synth("b.abf", 20), Synth("c.abf", 20)});
    w->findChild<QSpinBox*>("jobs")->setValue(1);
    QTest::mouseClick(w->findChild<QPushButton*>("run"), Qt::LeftButton);
    ASSERT_TRUE(w->Running());
    EXPECT_TRUE(w->findChild<QPushButton*>("stop")->isEnabled());
    for (const char* name : {"run", "addFiles", "addFolder", "clearFiles"})
        EXPECT_FALSE(w->findChild<QPushButton*>(name)->isEnabled()) << name;
    QTest::mouseClick(w->findChild<QPushButton*>("clearFiles"), Qt::LeftButton);
    QTest::mouseClick(w->findChild<QPushButton*>("stop"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 60000));
    ASSERT_EQ(w->Table()->rowCount(), 3);
    ASSERT_EQ(w->Rows().size(), 3u);
    // The last recording cannot have begun before Stop with one worker.
    EXPECT_FALSE(w->Rows()[2].analysed);
    EXPECT_EQ(Cell(w, 2, 10).toStdString(), batch_texts::kStopped);
    EXPECT_TRUE(w->findChild<QPushButton*>("run")->isEnabled());
    EXPECT_TRUE(w->findChild<QPushButton*>("clearFiles")->isEnabled());
}

// The file and folder pickers go through the program's dialogs: a scripted
// answer fills the file table, a cancel leaves it alone.
TEST_F(BatchWindowTest, FilesAndFoldersComeFromTheDialogs) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    const auto other = dir / "other";
    std::filesystem::create_directories(other);
    Synth("other/b.abf", 2);
    Synth("other/c.abf", 2);

    const auto click = [w](const char* name) {
        QTest::mouseClick(w->findChild<QPushButton*>(name), Qt::LeftButton);
    };
    dialogs.AnswerOpenFiles(std::nullopt);
    click("addFiles");
    EXPECT_EQ(w->Table()->rowCount(), 0);
    dialogs.AnswerOpenFiles(std::vector<std::string>{(other / "c.abf").string(), abfPath.string()});
    click("addFiles");
    EXPECT_EQ(w->Table()->rowCount(), 2);
    dialogs.AnswerFolder(other.string());  // adds b.abf; c.abf is there already
    click("addFolder");
    EXPECT_EQ(w->Table()->rowCount(), 3);

    dialogs.AnswerFolder(std::nullopt);
    click("chooseOutputFolder");
    const QString beside = w->findChild<QLabel*>("outputFolder")->text();
    dialogs.AnswerFolder(other.string());
    click("chooseOutputFolder");
    EXPECT_NE(w->findChild<QLabel*>("outputFolder")->text(), beside);

    // The pickers started in the data folder and said what they were for.
    std::vector<std::string> captions;
    for (const DialogEntry& e : dialogs.Transcript())
        if (e.kind == DialogEntry::Kind::OpenFiles || e.kind == DialogEntry::Kind::Folder)
            captions.push_back(e.caption);
    EXPECT_EQ(captions, (std::vector<std::string>{
                            std::string(batch_texts::kAddFiles), std::string(batch_texts::kAddFiles),
                            std::string(batch_texts::kAddFolder), std::string(batch_texts::kOutputFolder),
                            std::string(batch_texts::kOutputFolder)}));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

}  // namespace
}  // namespace vess::test
