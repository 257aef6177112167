// The main window's shell: opening recordings by menu, recent list and drop,
// the Help menu, dialogs in front of the window that asks, and read-outs
// cleared when what they described is gone.
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
    // A second recording beside the first.
    std::filesystem::path WriteOther(const std::string& name) { return WriteSynth(name, 3); }
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

TEST_F(ShellTest, CtrlOOpensARecordingAndTheRecentMenuReopensIt) {
    const auto other = WriteOther("other.abf");
    dialogs.AnswerOpenFile(abfPath.string());
    Press(Qt::Key_O, Qt::ControlModifier);
    ASSERT_NE(ws.recording, nullptr);
    EXPECT_EQ(ws.recording->Path(), abfPath);
    ASSERT_FALSE(dialogs.Transcript().empty());
    EXPECT_EQ(dialogs.Transcript().back().caption, "Open Recording");
    ASSERT_TRUE(OpenFile(other));

    // Kept in the settings file, newest first.
    EXPECT_EQ(ReadRecentRecordings(ws.iniPath), (std::vector<std::string>{other.string(), abfPath.string()}));
    QAction* second = RecentMenu()->findChild<QAction*>("menu_Recent2");
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(second->text().contains("syn.abf")) << second->text().toStdString();
    second->trigger();
    EXPECT_EQ(ws.recording->Path(), abfPath);
}

TEST_F(ShellTest, AMissingRecentRecordingIsRemovedWithAMessage) {
    const auto other = WriteOther("gone.abf");
    ASSERT_TRUE(OpenFile(other));
    ASSERT_TRUE(OpenFile(abfPath));
    std::filesystem::remove(other);
    RecentMenu()->findChild<QAction*>("menu_Recent2")->trigger();
    EXPECT_EQ(ws.recording->Path(), abfPath);  // still the open one
    const auto messages = dialogs.Messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back().caption, std::string(kRecentMissingCaption));
    EXPECT_EQ(messages.back().text, RecentMissingText(other.string()));
    EXPECT_EQ(ReadRecentRecordings(ws.iniPath), (std::vector<std::string>{abfPath.string()}));
}

TEST_F(ShellTest, DroppingARecordingOpensItAndOtherFilesAreRefused) {
    const auto text = dir / "notes.txt";
    std::ofstream(text) << "not a recording";
    EXPECT_FALSE(Drop(text));
    EXPECT_EQ(ws.recording, nullptr);
    EXPECT_TRUE(Drop(abfPath));
    ASSERT_NE(ws.recording, nullptr);
    EXPECT_EQ(ws.recording->Path(), abfPath);
}

TEST_F(ShellTest, PointerAndNonStopReadoutsAreClearedAfterUndoAndAnotherFile) {
    OpenSample();
    auto* pointer = window->findChild<QLabel*>("lbPointer");
    auto* progress = window->findChild<QProgressBar*>("pbNonStop");
    const auto stale = [&] {
        // Straight to the trace: another test's window may lie over it.
        const QPointF at = window->Trace()->PlotRect().center();
        QMouseEvent move(QEvent::MouseMove, at, window->Trace()->mapToGlobal(at), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window->Trace(), &move);
        Key(Qt::Key_F11);
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 30000));
        ASSERT_FALSE(pointer->text().isEmpty());
        ASSERT_NE(progress->format(), "Ready");
    };
    stale();
    Press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(pointer->text().isEmpty());
    EXPECT_EQ(progress->format(), "Ready");

    stale();
    dialogs.AnswerYesNoCancel(Answer::No);  // the unsaved events of the first file
    ASSERT_TRUE(OpenFile(WriteOther("other.abf")));
    EXPECT_TRUE(pointer->text().isEmpty());
    EXPECT_EQ(progress->format(), "Ready");
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
