// A main window over a synthetic recording in a temporary folder, driven
// with key presses and mouse clicks; dialogs answered from a script.
#pragma once

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "app/main_window.h"
#include "detection/ui/trace_view.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "detection/whole_file.h"
#include "recording/file_io.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"
#include "recording/ui/file_browser.h"
#include "support/test_recording.h"

namespace vess::test {

// Processes events until cond holds or timeoutMs passes; returns cond().
inline bool WaitFor(const std::function<bool()>& cond, int timeoutMs = 5000) {
    QElapsedTimer t;
    t.start();
    while (!cond() && t.elapsed() < timeoutMs) QTest::qWait(5);
    return cond();
}

class GuiTest : public ::testing::Test {
protected:
    void SetUp() override {
        abfPath = dir / "syn.abf";
        ASSERT_EQ(WriteSynthetic(abfPath, Synthesise({.seconds = 6, .seed = 11, .eventsPerSecond = 8})), "");
        ws.iniPath = dir / "Vessanto.ini";
        ws.settings.dataFolder = dir.Path().string();
        window = std::make_unique<MainWindow>(ws, dialogs);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    void TearDown() override {
        if (window) {
            window->hide();  // no closing questions
            window.reset();
        }
    }

    // Clicks the file's row in the file list (FListBoxFETCH).
    void ClickFile(const QString& name) {
        FileBrowser* files = window->Files();
        ASSERT_TRUE(WaitFor([&] { return files->IndexOfFile(name).isValid(); }));
        QListView* list = files->FileList();
        const QModelIndex index = files->IndexOfFile(name);
        ASSERT_TRUE(WaitFor([&] { return list->visualRect(index).isValid(); }));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(index).center());
    }
    // Opens a file by its path, as the file menu does; true when it is open.
    bool OpenFile(const std::filesystem::path& path) {
        window->OpenPath(QString::fromStdString(path.string()));
        window->Trace()->setFocus();
        return ws.recording && ws.recording->Path() == path;
    }
    void OpenSample() {
        ClickFile("syn.abf");
        ASSERT_NE(ws.recording, nullptr);
        window->Trace()->setFocus();
    }
    void Key(int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::keyClick(window->Trace(), Qt::Key(key), mods);
    }
    void Type(char c) { QTest::keyClick(window->Trace(), c); }
    int GridRows() const { return window->Grid()->model()->rowCount(); }
    int GridCurrentRow() const { return window->Grid()->currentIndex().row(); }
    // Saves a picture of the window, or of another widget, under the build folder.
    void Snapshot(const QString& name, QWidget* widget = nullptr) {
        const QString folder = QString(VESS_BINARY_DIR) + "/app_screens";
        QDir().mkpath(folder);
        (widget ? widget : window.get())->grab().save(folder + "/" + name + ".png");
    }
    // Mouse click on the trace at a sample of the screen, or at an event's peak.
    void ClickTrace(int64_t index, Qt::MouseButton button = Qt::LeftButton,
                    Qt::KeyboardModifiers mods = Qt::NoModifier) {
        TraceView* t = window->Trace();
        QTest::mouseClick(t, button, mods, QPoint(int(t->XOfIndex(double(index) + 0.5)), t->PlotRect().center().y()));
    }
    void ClickEvent(int32_t k, Qt::MouseButton button, Qt::KeyboardModifiers mods) {
        const auto peak = window->Trace()->PeakIndexOf(ws.events[k]);
        ASSERT_TRUE(peak.has_value());
        ClickTrace(*peak, button, mods);
    }
    // Triggers a main window action that must exist and be enabled.
    void Trigger(const char* name) {
        QAction* a = window->Action(name);
        ASSERT_NE(a, nullptr) << name;
        ASSERT_TRUE(a->isEnabled()) << name;
        a->trigger();
    }
    // A synthetic recording of `seconds` in the test folder.
    std::filesystem::path WriteSynth(const std::string& name, double seconds, uint64_t seed = 5) {
        const auto path = dir / name;
        EXPECT_EQ(WriteSynthetic(path, Synthesise({.seconds = seconds, .seed = seed})), "");
        return path;
    }
    // The events the core's whole-file detection (the command line's) finds
    // in the sample with the window's settings.
    EventTable WholeFileEvents() const {
        Workspace whole;
        whole.settings = ws.settings;
        ScriptedDialogs quiet;
        EXPECT_TRUE(OpenDataFile(whole, abfPath, quiet));
        DetectWholeFile(whole);
        return whole.events;
    }
    static std::string ReadText(const std::filesystem::path& path) {
        const auto bytes = ReadFileBytes(path);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string("(missing)");
    }
    // Analyses screen after screen until some events are found.
    void AnalyseUntilEvents(int atLeast) {
        Key(Qt::Key_F9);
        for (int i = 0; i < 200 && ws.events.Count() < atLeast; ++i) Key(Qt::Key_F10);
        ASSERT_GE(ws.events.Count(), atLeast);
    }

    TempDir dir;
    std::filesystem::path abfPath;
    Workspace ws;
    ScriptedDialogs dialogs;
    std::unique_ptr<MainWindow> window;
};

}  // namespace vess::test
