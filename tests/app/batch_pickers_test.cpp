// The batch window's file and folder pickers go through the program's
// dialogs: a scripted answer fills the file table, a cancel leaves it alone.
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

#include "batch/texts.h"
#include "batch/ui/batch_window.h"
#include "app/gui_fixture.h"

namespace vess::test {
namespace {

class BatchPickersTest : public GuiTest {
protected:
    BatchWindow* Open() {
        window->findChild<QAction*>("menu_Batch")->trigger();
        return window->findChild<BatchWindow*>("BatchWindow");
    }
    void Click(BatchWindow* w, const char* name) {
        auto* button = w->findChild<QPushButton*>(name);
        ASSERT_NE(button, nullptr) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
};

TEST_F(BatchPickersTest, FilesAndFoldersComeFromTheDialogs) {
    BatchWindow* w = Open();
    ASSERT_NE(w, nullptr);
    const auto other = dir / "other";
    std::filesystem::create_directories(other);
    SynthOptions o;
    o.seconds = 2;
    ASSERT_EQ(WriteSynthetic(other / "b.abf", Synthesise(o)), "");
    ASSERT_EQ(WriteSynthetic(other / "c.abf", Synthesise(o)), "");

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
