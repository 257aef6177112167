// The batch window from the signal menu: a run over two recordings fills the
// summary table and writes the event files, Stop ends a long run that holds
// the spectra off, the summary is saved as the command line writes it, and
// the pickers go through the program's dialogs.
#include "app/gui_fixture.h"
#include "batch/texts.h"
#include "batch/ui/batch_window.h"
#include "hrv/ui/spectrum_window.h"

namespace vess::test {
namespace {

class BatchWindowTest : public GuiTest {
protected:
    BatchWindow* Open() {
        Trigger("menu_Batch");
        auto* w = window->findChild<BatchWindow*>("BatchWindow");
        EXPECT_NE(w, nullptr);
        return w;
    }
    void Click(BatchWindow* w, const char* name) {
        QTest::mouseClick(w->findChild<QPushButton*>(name), Qt::LeftButton);
    }
    static QString Cell(BatchWindow* w, int row, int summaryColumn) {
        const QTableWidgetItem* item = w->Table()->item(row, BatchWindow::kProgressColumn + 1 + summaryColumn);
        return item ? item->text() : QString();
    }
    static constexpr int kErrorsColumn = 10;
};

TEST_F(BatchWindowTest, RunsTwoRecordingsAndSavesTheSummary) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    WriteSynth("second.abf", 3);
    w->AddRecordings({dir.Path()});  // the folder: syn.abf and second.abf
    w->SetOutputFolder(dir / "events");
    std::filesystem::create_directories(dir / "events");
    ASSERT_EQ(w->Table()->rowCount(), 2);
    Click(w, "run");
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    for (int row = 0; row < 2; ++row) {
        const BatchRow& r = w->Rows()[std::size_t(row)];
        EXPECT_TRUE(r.analysed) << r.errors;
        EXPECT_EQ(Cell(w, row, 3), QString::number(r.events));  // Events column
        EXPECT_EQ(w->Table()->item(row, BatchWindow::kProgressColumn)->data(Qt::DisplayRole).toInt(), 100);
        EXPECT_TRUE(std::filesystem::exists(dir / "events" / (r.file.stem().string() + ".EVT")));
    }
    EXPECT_EQ(Cell(w, 0, 0), "second.abf");
    dialogs.AnswerSaveFile((dir / "summary.csv").string());
    Click(w, "saveSummary");
    EXPECT_EQ(ReadText(dir / "summary.csv"), SummaryCsv(w->Rows()));

    // A second run keeps the event files the first wrote, unless the box
    // asks to replace them.
    Click(w, "run");
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    EXPECT_EQ(Cell(w, 0, kErrorsColumn).toStdString(), batch_texts::kKeptEventFile);
    w->findChild<QCheckBox*>("overwrite")->setChecked(true);
    Click(w, "run");
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 20000));
    EXPECT_TRUE(w->Rows()[0].analysed);
}

// Stop ends a long run; meanwhile the window answers, and the file list
// waits for the run (Clear while a run went emptied the list its results
// were still being written into). Spectra plan Fourier transforms as the
// batch workers do: the noise and heart-rate spectra used to run on the
// windows' thread during a batch (an unlocked planner freed memory twice);
// now they wait for the batch's end.
TEST_F(BatchWindowTest, StopEndsALongRunThatHoldsTheSpectraAndTheFileListOff) {
    OpenSample();
    Trigger("menu_HRV_Spectrum");
    auto* spectrum = window->findChild<hrv::SpectrumWindow*>("frmHRVSpectrum");
    ASSERT_NE(spectrum, nullptr);
    QPushButton* compute = spectrum->findChild<QPushButton*>("Command1");
    ASSERT_TRUE(compute->isEnabled());
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    w->AddRecordings({WriteSynth("a.abf", 20), WriteSynth("b.abf", 20), WriteSynth("c.abf", 20)});
    w->findChild<QSpinBox*>("jobs")->setValue(1);
    Click(w, "run");
    // The run's end is applied by the event loop, which does not turn here.
    ASSERT_TRUE(w->Running());
    EXPECT_TRUE(w->findChild<QPushButton*>("stop")->isEnabled());
    for (const char* name : {"run", "addFiles", "addFolder", "clearFiles"})
        EXPECT_FALSE(w->findChild<QPushButton*>(name)->isEnabled()) << name;
    dialogs.ClearTranscript();
    dialogs.AnswerInput("256");
    window->Action("menu_NoiseSpectrum")->trigger();
    EXPECT_TRUE(dialogs.Transcript().empty());  // not even the segment length is asked
    EXPECT_EQ(CurrentGraphFrame(), nullptr);
    EXPECT_FALSE(compute->isEnabled());

    Click(w, "clearFiles");
    Click(w, "stop");
    ASSERT_TRUE(WaitFor([&] { return !w->Running(); }, 60000));
    ASSERT_EQ(w->Table()->rowCount(), 3);
    ASSERT_EQ(w->Rows().size(), 3u);
    // The last recording cannot have begun before Stop with one worker.
    EXPECT_FALSE(w->Rows()[2].analysed);
    EXPECT_EQ(Cell(w, 2, kErrorsColumn).toStdString(), batch_texts::kStopped);
    EXPECT_TRUE(w->findChild<QPushButton*>("run")->isEnabled());
    EXPECT_TRUE(w->findChild<QPushButton*>("clearFiles")->isEnabled());
    EXPECT_TRUE(compute->isEnabled());
    window->Action("menu_NoiseSpectrum")->trigger();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy() && CurrentGraphFrame(); }));
    EXPECT_EQ(CurrentGraphFrame()->CurrentPlot()->Description().series.at(0).x.size(), 129u);  // bins 0..128
    CloseGraphFrame();
}

// The file and folder pickers go through the program's dialogs: a scripted
// answer fills the file table, a cancel leaves it alone.
TEST_F(BatchWindowTest, FilesAndFoldersComeFromTheDialogs) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    const auto other = dir / "other";
    std::filesystem::create_directories(other);
    WriteSynth("other/b.abf", 2);
    WriteSynth("other/c.abf", 2);

    dialogs.AnswerOpenFiles(std::nullopt);
    Click(w, "addFiles");
    EXPECT_EQ(w->Table()->rowCount(), 0);
    dialogs.AnswerOpenFiles(std::vector<std::string>{(other / "c.abf").string(), abfPath.string()});
    Click(w, "addFiles");
    EXPECT_EQ(w->Table()->rowCount(), 2);
    dialogs.AnswerFolder(other.string());  // adds b.abf; c.abf is there already
    Click(w, "addFolder");
    EXPECT_EQ(w->Table()->rowCount(), 3);

    dialogs.AnswerFolder(std::nullopt);
    Click(w, "chooseOutputFolder");
    const QString beside = w->findChild<QLabel*>("outputFolder")->text();
    dialogs.AnswerFolder(other.string());
    Click(w, "chooseOutputFolder");
    EXPECT_NE(w->findChild<QLabel*>("outputFolder")->text(), beside);

    // The pickers said what they were for.
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
