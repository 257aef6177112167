// A day's looking at traces: wheel and Shift+drag zoom (a view that never
// changes the screen), non-stop analysis from a freshly opened recording,
// the overview read away from the window, and the channel list.
#include <QApplication>
#include <QDialog>
#include <QListWidget>
#include <QTimer>
#include <QWheelEvent>

#include "app/background_job.h"
#include "app/qt_dialogs.h"
#include "detection/ui/overview_strip.h"
#include "detection/whole_file.h"
#include "gui_fixture.h"
#include "recording/open_recording.h"

namespace vess::test {
namespace {

using ZoomTest = GuiTest;

void Wheel(TraceView* t, QPointF at, int delta, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QWheelEvent e(at, t->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, mods,
                  Qt::NoScrollPhase, false);
    QApplication::sendEvent(t, &e);
}

TEST_F(ZoomTest, WheelAndShiftDragZoomTheViewOnlyAndResetReturnsToTheScreen) {
    OpenSample();
    Key(Qt::Key_D);  // a screen other than the first
    TraceView* t = window->Trace();
    const int32_t start = ws.screenStartBlock, blocks = ws.BlocksPerScreen();
    const TraceZoom screen = t->View();
    const QRect plot = t->PlotRect();
    const QPointF at(plot.left() + plot.width() * 0.25, plot.center().y());
    const double indexAt = t->IndexAtXUnclamped(at.x()), countsAt = t->CountsAtY(at.y());

    Wheel(t, at, 120);  // one notch: 0.8 of the time, the point under the pointer stays
    TraceZoom v = t->View();
    EXPECT_NEAR(v.lastIndex - v.firstIndex, 0.8 * (screen.lastIndex - screen.firstIndex), 1e-9);
    EXPECT_NEAR(t->IndexAtXUnclamped(at.x()), indexAt, 1e-6);
    EXPECT_EQ(v.topCounts, screen.topCounts);
    Wheel(t, at, 240, Qt::ControlModifier);  // two notches of amplitude
    v = t->View();
    EXPECT_NEAR(v.topCounts - v.bottomCounts, 0.64 * (screen.topCounts - screen.bottomCounts), 1e-6);
    EXPECT_NEAR(t->CountsAtY(at.y()), countsAt, 1e-6);
    Wheel(t, at, -120 * 40);  // zooming out stops at the screen
    EXPECT_EQ(t->View().firstIndex, 0);
    EXPECT_EQ(t->View().lastIndex, screen.lastIndex);

    // Shift+drag: the rectangle becomes the view.
    const QPoint from(plot.left() + plot.width() / 2, plot.top() + 20);
    const QPoint to(plot.left() + plot.width() * 3 / 4, plot.bottom() - 20);
    const double i0 = t->IndexAtXUnclamped(from.x()), i1 = t->IndexAtXUnclamped(to.x());
    const double c0 = t->CountsAtY(from.y()), c1 = t->CountsAtY(to.y());
    const int32_t eventsBefore = ws.events.Count();
    QTest::mousePress(t, Qt::LeftButton, Qt::ShiftModifier, from);
    QTest::mouseMove(t, to);
    QTest::mouseRelease(t, Qt::LeftButton, Qt::ShiftModifier, to);
    v = t->View();
    EXPECT_NEAR(v.firstIndex, i0, 1e-6);
    EXPECT_NEAR(v.lastIndex, i1, 1e-6);
    EXPECT_NEAR(v.topCounts, c0, 1e-6);
    EXPECT_NEAR(v.bottomCounts, c1, 1e-6);
    EXPECT_EQ(ws.events.Count(), eventsBefore);  // a drag is not a Shift+click
    EXPECT_EQ(ws.screenStartBlock, start);
    EXPECT_EQ(ws.BlocksPerScreen(), blocks);
    Snapshot("trace_zoomed");

    Key(Qt::Key_0);  // the toolbar's Reset
    EXPECT_FALSE(t->Zoomed());
    EXPECT_EQ(t->View(), screen);
    Wheel(t, at, 120);
    Key(Qt::Key_D);  // another screen opens whole
    EXPECT_FALSE(t->Zoomed());
}

// F11 right after opening finds the first screen's events too: the run
// equals the command line's whole-file detection.
TEST_F(ZoomTest, NonStopOnAFreshRecordingEqualsTheWholeFileRun) {
    OpenSample();
    Key(Qt::Key_F11);
    ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 60000));
    Workspace whole;
    whole.settings = ws.settings;
    ScriptedDialogs quiet;
    ASSERT_TRUE(OpenDataFile(whole, abfPath, quiet));
    DetectWholeFile(whole, quiet);
    ASSERT_GT(whole.events.Count(), 10);
    EXPECT_EQ(ws.events.Records(), whole.events.Records());
}

// The overview is read as a job that leaves every command enabled; a read
// for a recording that was replaced is dropped.
TEST_F(ZoomTest, OverviewIsReadAwayFromTheWindowForTheRecordingShown) {
    SynthOptions options;
    options.seconds = 3;
    options.seed = 2;
    const auto other = dir / "other.abf";
    ASSERT_EQ(WriteSynthetic(other, Synthesise(options)), "");
    ASSERT_TRUE(OpenFile(other));
    EXPECT_FALSE(window->Busy());
    OpenSample();  // replaces it before (or after) its read ends
    window->OverviewReader().Wait();
    OverviewStrip* strip = window->Overview();
    ASSERT_TRUE(strip->HasExtremes());
    EXPECT_EQ(strip->ExtremesReads(), 1);  // only the recording shown
    EXPECT_FALSE(window->OverviewReader().Running());
}

// The Qt channel question is a list of the channels, the first selected.
TEST_F(ZoomTest, ChannelQuestionIsAListWithNamesAndUnits) {
    QtDialogs qt(window.get());
    const std::vector<ChannelLabel> labels{{"Im", "pA"}, {"Vm", "mV"}};
    QStringList shown;
    int selected = -1;
    QTimer::singleShot(0, [&] {
        auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(d, nullptr);
        auto* list = d->findChild<QListWidget*>("lstChoice");
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < list->count(); ++i) shown << list->item(i)->text();
        selected = list->currentRow();
        QDir().mkpath(QString(VESS_BINARY_DIR) + "/app_screens");
        d->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/channel_list.png");
        list->setCurrentRow(1);
        d->accept();
    });
    EXPECT_EQ(AskChannel(labels, qt), std::optional<uint8_t>(1));
    EXPECT_EQ(shown, (QStringList{"0: Im (pA)", "1: Vm (mV)"}));
    EXPECT_EQ(selected, 0);
}

}  // namespace
}  // namespace vess::test
