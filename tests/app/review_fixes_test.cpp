// Faults seen in review: what the window keeps from a previous file or
// command that it should not, and what it does without a recording.
#include <QFileSystemModel>
#include <QProgressBar>
#include <QTreeView>

#include <fstream>

#include "gui_fixture.h"
#include "recording/texts.h"

namespace vess::test {
namespace {

class FixesTest : public GuiTest {
protected:
    QProgressBar* Progress() const { return window->findChild<QProgressBar*>("pbNonStop"); }
    void RunNonStopToTheEnd() {
        Key(Qt::Key_F11);
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 60000));
        ASSERT_NE(Progress()->format(), "Ready");
    }
};

TEST_F(FixesTest, ProgressStartsAgainAfterReset) {
    OpenSample();
    RunNonStopToTheEnd();
    dialogs.AnswerOkCancel(true);
    window->Action("menu_Reset")->trigger();
    ASSERT_EQ(ws.events.Count(), 0);
    EXPECT_EQ(Progress()->format(), "Ready");
    EXPECT_EQ(Progress()->value(), 0);  // another file: see shell_test.cpp
}

TEST_F(FixesTest, PointerReadoutNamesTheUnitOfTheFileOpen) {
    auto abfLayout = MakeAbfLayout(50, 1.0f);
    abfLayout.channels[0].units = "mV";
    ASSERT_EQ(WriteAbf(dir / "volts.abf", abfLayout, std::vector<int16_t>(4096, 5)), "");
    OpenSample();
    auto* pointer = window->findChild<QLabel*>("lbPointer");
    QTest::mouseMove(window->Trace(), window->Trace()->PlotRect().center());
    ASSERT_TRUE(pointer->text().endsWith("pA")) << pointer->text().toStdString();
    ClickFile("volts.abf");
    ASSERT_EQ(ws.recording->Units(), "mV");
    EXPECT_FALSE(pointer->text().contains("pA")) << pointer->text().toStdString();
    QTest::mouseMove(window->Trace(), window->Trace()->PlotRect().center() + QPoint(3, 0));
    EXPECT_TRUE(pointer->text().endsWith("mV")) << pointer->text().toStdString();
}

// Events saved at the exit question are saved even when the settings
// question then cancels the exit: the title loses its "*".
TEST_F(FixesTest, TitleLosesItsStarWhenEventsAreSavedAndExitIsCancelled) {
    OpenSample();
    AnalyseUntilEvents(1);
    ASSERT_TRUE(window->windowTitle().contains('*'));
    const std::string evt = (dir / "saved.EVT").string();
    dialogs.AnswerYesNoCancel(Answer::Yes).AnswerSaveFile(evt).AnswerYesNoCancel(Answer::Cancel);
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(std::filesystem::exists(evt));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
    EXPECT_FALSE(window->windowTitle().contains('*')) << window->windowTitle().toStdString();
}

// An event file names its data file, so without a recording there is nothing
// to save: Ctrl+S asks nothing and writes nothing.
TEST_F(FixesTest, SavingEventsNeedsARecording) {
    window->Trace()->setFocus();
    EXPECT_FALSE(window->Action("menu_SaveEvent")->isEnabled());
    Key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(dialogs.Transcript().empty());
    OpenSample();
    EXPECT_TRUE(window->Action("menu_SaveEvent")->isEnabled());
}

// A click on a file that is not opened (here not an ABF file) leaves the
// open recording highlighted in the file list.
TEST_F(FixesTest, AnAbandonedSwitchKeepsTheOpenFileHighlighted) {
    std::ofstream(dir / "broken.abf") << "not a recording";
    OpenSample();
    ClickFile("broken.abf");
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    ASSERT_EQ(ws.recording->FileName(), "syn.abf");
    EXPECT_EQ(window->Files()->FileList()->currentIndex(), window->Files()->IndexOfFile("syn.abf"));
    EXPECT_TRUE(window->Files()->FileList()->selectionModel()->isSelected(
        window->Files()->IndexOfFile("syn.abf")));
}

// Started with a file as the program is from the command line: the file's
// folder is the start folder, selected and scrolled into view.
TEST_F(FixesTest, StartingWithAFileShowsItsFolderInTheTree) {
    for (int i = 0; i < 80; ++i) std::filesystem::create_directories(dir / ("s" + std::to_string(100 + i)));
    const std::filesystem::path deep = dir / "z" / "y" / "x";
    std::filesystem::create_directories(deep);
    std::filesystem::copy_file(abfPath, deep / "start.abf");
    window->hide();
    window.reset();
    ws.settings.dataFolder = deep.string();
    window = std::make_unique<MainWindow>(ws, dialogs);
    window->show();
    window->OpenPath(QString::fromStdString((deep / "start.abf").string()));
    ASSERT_NE(ws.recording, nullptr);

    QTreeView* tree = window->Files()->FolderTree();
    auto* model = qobject_cast<QFileSystemModel*>(tree->model());
    ASSERT_NE(model, nullptr);
    const auto shown = [&] {
        const QModelIndex start = model->index(QString::fromStdString(deep.string()));
        return start.isValid() && tree->currentIndex() == start && tree->selectionModel()->isSelected(start) &&
               tree->viewport()->rect().contains(tree->visualRect(start));
    };
    EXPECT_TRUE(WaitFor(shown)) << "current: " << model->filePath(tree->currentIndex()).toStdString();
    // And it stays in view once the 80 sibling folders above it have loaded.
    const QModelIndex top = model->index(QString::fromStdString(dir.Path().string()));
    ASSERT_TRUE(WaitFor([&] { return model->rowCount(top) >= 81; }));
    EXPECT_TRUE(shown()) << "row at " << tree->visualRect(tree->currentIndex()).y();
}

}  // namespace
}  // namespace vess::test
