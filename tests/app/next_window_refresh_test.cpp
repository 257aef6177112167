// What Next window leaves on the main window when it skips work: the trace
// shows the screen detection read only when that is the screen to show; the
// status line and the enabling, set again only when they change, follow
// undo and another file; the grid's current row, put in view again only when
// something moved, comes back after the user scrolled away; the trace and
// the overview are painted after every press.
#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include <cmath>

#include "detection/detection_start.h"
#include "detection/ui/overview_strip.h"
#include "detection/navigation.h"
#include "gui_fixture.h"
#include "signal/filter_commands.h"

namespace vess::test {
namespace {

class NextWindowRefreshTest : public GuiTest {
protected:
    QString Label(const char* name) const { return window->findChild<QLabel*>(name)->text(); }
    // The status line and title as the workspace says they should read.
    void ExpectStatusOfWorkspace() const {
        const ScreenGeometry g = GeometryOf(ws);
        EXPECT_EQ(Label("lbScreen"), QString("Screen %1 of %2")
                                         .arg(ws.screenStartBlock / g.blocksPerScreen + 1)
                                         .arg(g.LastScreenStart() / g.blocksPerScreen + 1));
        EXPECT_EQ(Label("lbEvents").toStdString(), EventsStatusText(ws));
        EXPECT_EQ(Label("lbFile").toStdString(), ws.recording->FileName());
        EXPECT_EQ(window->windowTitle().toStdString(),
                  ws.recording->FileName() + (ws.history.Modified() ? "*" : "") + " - Vessantorium");
    }
    bool Enabled(const char* action) const { return window->Action(action)->isEnabled(); }
};

// Counts the paints a widget receives.
struct PaintCounter : QObject {
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

// The trace and the overview pass on one repaint request between two paints:
// every press is painted once the event loop runs, also after the views
// were hidden while a press changed them.
TEST_F(NextWindowRefreshTest, EveryPressRepaintsTheTraceAndTheOverview) {
    OpenSample();
    PaintCounter trace(window->Trace()), overview(window->Overview());
    const auto pressPainted = [&] {
        const int traceBefore = trace.paints, overviewBefore = overview.paints;
        Trigger("menu_AnalyzeNext");
        return WaitFor([&] { return trace.paints > traceBefore && overview.paints > overviewBefore; });
    };
    for (int press = 0; press < 3; ++press) EXPECT_TRUE(pressPainted()) << press;
    window->Trace()->hide();
    window->Overview()->hide();
    Trigger("menu_AnalyzeNext");
    window->Trace()->show();
    window->Overview()->show();
    for (int press = 0; press < 2; ++press) EXPECT_TRUE(pressPainted()) << "after hiding " << press;
}

// With the filtered trace shown and detection reading the recorded samples,
// the screen detection read is not the one to show: the frame after Next
// window is the one a fresh read of the shown samples gives, and differs
// from the recorded samples' frame.
TEST_F(NextWindowRefreshTest, TraceShowsTheFilteredScreenWhileDetectionReadsTheRecordedOne) {
    OpenSample();
    ASSERT_TRUE(ApplyFilterCommand(ws, FilterChoice{.cutoffHz = 300}, {}));
    window->RedrawTrace(/*reread=*/true);
    ASSERT_TRUE(ws.showFiltered);
    ASSERT_FALSE(ws.settings.detectOnFiltered);

    window->findChild<QPushButton*>("Command2")->click();
    ASSERT_EQ(ws.screenStartBlock, ws.BlocksPerScreen());
    const DisplayFrame shown = window->Trace()->Frame();
    window->RedrawTrace(/*reread=*/true);
    EXPECT_EQ(std::pair(window->Trace()->Frame().centreCounts, window->Trace()->Frame().spanCounts),
              std::pair(shown.centreCounts, shown.spanCounts));

    ws.showFiltered = false;
    window->RedrawTrace(/*reread=*/true);
    EXPECT_NE(window->Trace()->Frame().spanCounts, shown.spanCounts);
}

TEST_F(NextWindowRefreshTest, StatusAndEnablingFollowUndoAndAnotherFile) {
    OpenSample();
    AnalyseUntilEvents(2);
    ExpectStatusOfWorkspace();
    ASSERT_TRUE(ws.history.Modified());
    EXPECT_EQ(std::tuple(Enabled("menu_Undo"), Enabled("menu_Reset")), std::tuple(true, true));

    // Undo every step back to the empty table: the count, the title's star
    // and the enabling of what needs events or an undo step all go back.
    for (int i = 0; i < 400 && Enabled("menu_Undo"); ++i) window->Action("menu_Undo")->trigger();
    ASSERT_EQ(ws.events.Count(), 0);
    ExpectStatusOfWorkspace();
    EXPECT_EQ(std::tuple(Enabled("menu_Undo"), Enabled("menu_Redo"), Enabled("menu_Reset")),
              std::tuple(false, true, false));

    // Another, shorter file seen from the first screen: the same screen
    // number but another count of screens, another name.
    window->Action("menu_FirstScreen")->trigger();
    ASSERT_EQ(ws.screenStartBlock, 0);
    ASSERT_EQ(WriteSynthetic(dir / "short.abf", Synthesise({.seconds = 2, .seed = 3})), "");
    ASSERT_TRUE(OpenFile(dir / "short.abf"));
    ExpectStatusOfWorkspace();
    EXPECT_FALSE(Enabled("menu_Redo"));
    Key(Qt::Key_F10);
    ExpectStatusOfWorkspace();
}

// The grid puts the current row back in view after a Next window that
// found nothing only when something moved since it was last put there: the
// user's scrolling away counts.
TEST_F(NextWindowRefreshTest, GridBringsTheKeptRowBackAfterTheUserScrolledAway) {
    OpenSample();
    AnalyseUntilEvents(30);
    QTableView* grid = window->Grid();
    const auto currentRowShown = [grid] {
        return grid->viewport()->rect().contains(grid->visualRect(grid->currentIndex()));
    };
    ASSERT_TRUE(currentRowShown());
    // Nothing more is found: 90 % of the channel's whole range.
    ws.params().ThresholdAmplitude = 0.9f * std::abs(ws.recording->Bit2pA2(65535));
    grid->scrollToTop();
    ASSERT_FALSE(currentRowShown());
    Key(Qt::Key_F10);
    EXPECT_TRUE(currentRowShown());
}

}  // namespace
}  // namespace vess::test
