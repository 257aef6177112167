// The main window's shell: opening recordings by menu, recent list and drop,
// the Help menu, dialogs in front of the window that asks, read-outs cleared
// when what they described is gone, and saving without a recording.
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QProgressBar>
#include <QTextBrowser>
#include <QTimer>

#include <fstream>

#include "app/qt_dialogs.h"
#include "app/gui_fixture.h"
#include "hrv/ui/geometric_window.h"
#include "recording/recent_recordings.h"

namespace vess::test {
namespace {

class ShellTest : public GuiTest {
protected:
    // Runs ask, which shows a modal box; the box is saved as a picture and
    // closed. Returns the box's parent widget.
    static const QWidget* AnswerBox(const QString& picture, const std::function<void()>& ask) {
        const QWidget* parent = nullptr;
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [&] {
            if (QWidget* box = QApplication::activeModalWidget()) {
                parent = box->parentWidget();
                QDir().mkpath(QString(VESS_BINARY_DIR) + "/app_screens");
                box->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/" + picture + ".png");
                box->close();
            }
        });
        closer.start(20);
        ask();
        return parent;
    }
    void Press(int key, Qt::KeyboardModifiers mods) { QTest::keyClick(window->Trace(), Qt::Key(key), mods); }
    // The recent-recordings menu as it is when opened.
    QMenu* RecentMenu() {
        auto* menu = window->findChild<QMenu*>("menu_RecentRecordings");
        if (menu) emit menu->aboutToShow();
        return menu;
    }
    // Sends a drag of path over the window and drops it; returns whether the
    // window accepted the drag.
    bool Drop(const std::filesystem::path& path) {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
        QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &drop);
        return true;
    }
};

TEST_F(ShellTest, CtrlORecentMenuAndDropOpenRecordings) {
    const auto other = WriteSynth("other.abf", 3);
    dialogs.AnswerOpenFile(abfPath.string());
    Press(Qt::Key_O, Qt::ControlModifier);
    ASSERT_NE(ws.recording, nullptr);
    EXPECT_EQ(ws.recording->Path(), abfPath);
    ASSERT_FALSE(dialogs.Transcript().empty());
    EXPECT_EQ(dialogs.Transcript().back().caption, "Open Recording");
    // A file dropped on the window opens; a file that is no recording is refused.
    const auto text = dir / "notes.txt";
    std::ofstream(text) << "not a recording";
    EXPECT_FALSE(Drop(text));
    EXPECT_TRUE(Drop(other));
    EXPECT_EQ(ws.recording->Path(), other);

    // Kept in the settings file, newest first.
    EXPECT_EQ(ReadRecentRecordings(ws.iniPath), (std::vector<std::string>{other.string(), abfPath.string()}));
    QAction* second = RecentMenu()->findChild<QAction*>("menu_Recent2");
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(second->text().contains("syn.abf")) << second->text().toStdString();
    second->trigger();
    EXPECT_EQ(ws.recording->Path(), abfPath);

    // A recent recording gone from the disk is removed with a message.
    std::filesystem::remove(other);
    RecentMenu()->findChild<QAction*>("menu_Recent2")->trigger();
    EXPECT_EQ(ws.recording->Path(), abfPath);  // still the open one
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().caption, std::string(kRecentMissingCaption));
    EXPECT_EQ(dialogs.Messages().back().text, RecentMissingText(other.string()));
    EXPECT_EQ(ReadRecentRecordings(ws.iniPath), (std::vector<std::string>{abfPath.string()}));
}

// The pointer and non-stop read-outs start again after an undo, a reset and
// another file; the pointer names the unit of the file open.
TEST_F(ShellTest, PointerAndNonStopReadoutsAreClearedAfterUndoResetAndAnotherFile) {
    auto layout = MakeAbfLayout(50, 1.0f);
    layout.channels[0].units = "mV";
    ASSERT_EQ(WriteAbf(dir / "volts.abf", layout, std::vector<int16_t>(4096, 5)), "");
    OpenSample();
    auto* pointer = window->findChild<QLabel*>("lbPointer");
    auto* progress = window->findChild<QProgressBar*>("pbNonStop");
    // Straight to the trace: another test's window may lie over it.
    const auto hover = [&] {
        const QPointF at = window->Trace()->PlotRect().center();
        QMouseEvent move(QEvent::MouseMove, at, window->Trace()->mapToGlobal(at), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window->Trace(), &move);
    };
    const auto stale = [&] {
        hover();
        Type('a');  // non-stop from the first screen finds events
        Key(Qt::Key_F11);
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 30000));
        ASSERT_FALSE(pointer->text().isEmpty());
        ASSERT_NE(progress->format(), "Ready");
        ASSERT_GT(ws.events.Count(), 0);
    };
    stale();
    ASSERT_TRUE(pointer->text().endsWith("pA")) << pointer->text().toStdString();
    Press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(pointer->text().isEmpty());
    EXPECT_EQ(progress->format(), "Ready");

    stale();
    dialogs.AnswerOkCancel(true);
    window->Action("menu_Reset")->trigger();
    ASSERT_EQ(ws.events.Count(), 0);
    EXPECT_EQ(progress->format(), "Ready");
    EXPECT_EQ(progress->value(), 0);

    stale();
    dialogs.AnswerYesNo(false);  // the unsaved events of the first file
    ClickFile("volts.abf");
    ASSERT_EQ(ws.recording->Units(), "mV");
    EXPECT_TRUE(pointer->text().isEmpty());
    EXPECT_EQ(progress->format(), "Ready");
    hover();
    EXPECT_TRUE(pointer->text().endsWith("mV")) << pointer->text().toStdString();
}

// An event file names its data file, so without a recording there is nothing
// to save: Ctrl+S asks nothing and writes nothing.
TEST_F(ShellTest, SavingEventsNeedsARecording) {
    window->Trace()->setFocus();
    EXPECT_FALSE(window->Action("menu_SaveEvent")->isEnabled());
    Press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(dialogs.Transcript().empty());
    OpenSample();
    EXPECT_TRUE(window->Action("menu_SaveEvent")->isEnabled());
}

TEST_F(ShellTest, HelpOpensTheUserGuideOnce) {
    Press(Qt::Key_F1, Qt::NoModifier);
    auto* guide = window->findChild<QTextBrowser*>("UserGuide");
    ASSERT_NE(guide, nullptr);
    EXPECT_TRUE(guide->isVisible());
    QFile source(QString(VESS_SOURCE_DIR) + "/docs/user-guide.md");
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QString firstLine = QString::fromUtf8(source.readLine()).remove('#').trimmed();
    EXPECT_TRUE(guide->toPlainText().startsWith(firstLine)) << firstLine.toStdString();
    Press(Qt::Key_F1, Qt::NoModifier);  // asked again: the same window
    EXPECT_EQ(window->findChildren<QTextBrowser*>("UserGuide").size(), 1);
    Snapshot("shell_user_guide", guide);
}

TEST_F(ShellTest, AToolWindowsDialogOpensInFrontOfIt) {
    QtDialogs desktop(window.get());
    hrv::GeometricWindow geo(ws, desktop, window.get());
    geo.setWindowFlag(Qt::Window);
    geo.show();
    const QWidget* parentOfBox = AnswerBox("shell_tool_window_box", [&] {
        QTest::mouseClick(geo.findChild<QPushButton*>("Command2"), Qt::LeftButton);  // save settings
    });
    EXPECT_EQ(parentOfBox, &geo);
}

}  // namespace
}  // namespace vess::test
