// The path box above the folder tree, a tree that keeps the user's place
// while files and folders appear on disk (an acquisition writing into the
// folder shown) and shows the folder of a file the program starts with, and
// a file list that keeps the open file highlighted.
#include <QFileSystemModel>
#include <QScrollBar>
#include <QTreeView>

#include <fstream>

#include "gui_fixture.h"
#include "recording/typed_path.h"

namespace vess::test {
namespace {

using PathBoxTest = GuiTest;

void Enter(QLineEdit* box, const QString& text) {
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Return);
}

TEST_F(PathBoxTest, TypedFolderIsShownTypedFileIsOpenedAnythingElseIsMarked) {
    FileBrowser* files = window->Files();
    QLineEdit* box = files->PathBox();
    std::filesystem::create_directories(dir / "cells" / "day 2");

    Enter(box, QString::fromStdString((dir / "cells" / "day 2").string()));
    EXPECT_EQ(files->Folder(), QString::fromStdString((dir / "cells" / "day 2").string()));
    EXPECT_EQ(ws.recording, nullptr);

    Enter(box, "/no/such/folder");
    EXPECT_FALSE(box->toolTip().isEmpty());
    EXPECT_EQ(files->Folder(), QString::fromStdString((dir / "cells" / "day 2").string()));

    // A pasted file address, quoted.
    Enter(box, "'file://" + QString::fromStdString(abfPath.string()) + "'");
    ASSERT_NE(ws.recording, nullptr);
    EXPECT_EQ(ws.recording->Path(), abfPath);
    EXPECT_EQ(files->Folder(), QString::fromStdString(dir.Path().string()));
    EXPECT_TRUE(box->toolTip().isEmpty());
    Snapshot("path_box");
}

TEST_F(PathBoxTest, TreeKeepsSelectionAndScrollWhenTheFolderChangesOnDisk) {
    // Enough folders beside each other for the tree to scroll.
    for (int k = 0; k < 60; ++k) std::filesystem::create_directories(dir / ("f" + std::to_string(k)));
    for (const char* sub : {"a", "b", "c"}) std::filesystem::create_directories(dir / sub);
    FileBrowser* files = window->Files();
    QTreeView* tree = files->FolderTree();
    files->SetFolder(QString::fromStdString((dir / "a").string()));
    ASSERT_TRUE(WaitFor([&] { return !files->KeepsFolderInView(); }, 5000));

    // The user picks folder b in the tree and scrolls it elsewhere.
    const QString b = QString::fromStdString((dir / "b").string());
    auto* model = tree->model();
    QModelIndex bIndex;
    ASSERT_TRUE(WaitFor([&] {
        bIndex = static_cast<QFileSystemModel*>(model)->index(b);
        return bIndex.isValid() && tree->visualRect(bIndex).isValid();
    }));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(bIndex).center());
    ASSERT_EQ(files->Folder(), b);
    QScrollBar* bar = tree->verticalScrollBar();
    ASSERT_GT(bar->maximum(), 10);
    const int scrolled = bar->value() > 5 ? bar->value() - 5 : bar->value() + 5;
    bar->setValue(scrolled);

    // An acquisition writes a file and a folder into b, and a folder beside it.
    std::filesystem::create_directories(dir / "b" / "sweeps");
    std::filesystem::create_directories(dir / "a2");
    std::filesystem::copy_file(abfPath, dir / "b" / "new.abf");
    ASSERT_TRUE(WaitFor([&] { return files->IndexOfFile("new.abf").isValid(); }));
    QTest::qWait(300);  // the model's delayed sorting and layout
    EXPECT_EQ(tree->currentIndex(), static_cast<QFileSystemModel*>(model)->index(b));
    EXPECT_EQ(bar->value(), scrolled);
    EXPECT_EQ(files->Folder(), b);
}

// A click on a file that is not opened (here not an ABF file) leaves the
// open recording highlighted in the file list.
TEST_F(PathBoxTest, AnAbandonedSwitchKeepsTheOpenFileHighlighted) {
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
TEST_F(PathBoxTest, StartingWithAFileShowsItsFolderInTheTree) {
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

TEST(TypedPath, QuotesUrlsHomeAndRelativePathsResolve) {
    TempDir dir;
    std::filesystem::create_directories(dir / "x y");
    std::ofstream(dir / "x y" / "f.abf") << "ABF ";
    const auto home = dir.Path();
    const struct {
        std::string text;
        TypedPath::Kind kind;
        std::filesystem::path path;
    } cases[] = {
        {"  " + (dir / "x y").string() + "/ ", TypedPath::Kind::Folder, dir / "x y"},
        {"\"" + (dir / "x y" / "f.abf").string() + "\"", TypedPath::Kind::File, dir / "x y" / "f.abf"},
        {"file://" + dir.Path().string() + "/x%20y/f.abf", TypedPath::Kind::File, dir / "x y" / "f.abf"},
        {"~/x y", TypedPath::Kind::Folder, dir / "x y"},
        {"f.abf", TypedPath::Kind::File, dir / "x y" / "f.abf"},  // from the folder shown
        {"../x y/../x y", TypedPath::Kind::Folder, dir / "x y"},
        {"missing.abf", TypedPath::Kind::Missing, dir / "x y" / "missing.abf"},
        {"   ", TypedPath::Kind::Missing, {}},
    };
    for (const auto& c : cases) {
        const TypedPath t = ResolveTypedPath(c.text, dir / "x y", home);
        EXPECT_EQ(t.kind, c.kind) << c.text;
        EXPECT_EQ(t.path, c.path) << c.text;
    }
}

}  // namespace
}  // namespace vess::test
